// The host with a trace of its input: each frame in which a key or button is
// down or changed, one line on standard error with what KeyboardSystem and
// MouseSystem report. Driven by tests/window/input.sh in a real window.
#include <cstdio>
#include <cstring>

#include "host/harborapp.h"
#include "input/keyboardsystem.h"
#include "input/mousesystem.h"

namespace {

// Codes whose bit the reader reports, as ",4,225," (just "," for none), so
// that a script can look for ",4," without matching 40 or 14.
void appendCodes(char* text, size_t size, bool (KeyboardSystem::*check)(KeyboardSystem::eKeyCode) const)
{
    KeyboardSystem const* keyboard = KeyboardSystem::getInstance();
    snprintf(text, size, ",");
    for (int code = 0; code < KeyboardSystem::eKeyCodeNum; ++code) {
        if ((keyboard->*check)(static_cast<KeyboardSystem::eKeyCode>(code))) {
            size_t const used = strlen(text);
            snprintf(text + used, size - used, "%d,", code);
        }
    }
}

class InputProbe : public HarborApp {
public:
    explicit InputProbe(sInitializer const* initializer) : HarborApp(initializer) {}

    void update(float delta) override
    {
        HarborApp::update(delta);
        KeyboardSystem* keyboard = KeyboardSystem::getInstance();
        MouseSystem* mouse = MouseSystem::getInstance();
        if (!mReady) {
            fprintf(stderr, "probe ready\n");
            mReady = true;
        }
        bool const active = keyboard->getKeyOn() >= 0 || keyboard->getKeyTrgOff() >= 0 || mouse->getButtonOn() != 0 ||
                            mouse->getButtonTrgOff() != 0;
        if (!active) {
            return;
        }
        char on[1024], trgOn[1024], trgOff[1024];
        appendCodes(on, sizeof(on), &KeyboardSystem::checkKeyOn);
        appendCodes(trgOn, sizeof(trgOn), &KeyboardSystem::checkKeyTrgOn);
        appendCodes(trgOff, sizeof(trgOff), &KeyboardSystem::checkKeyTrgOff);
        sPoint const position = mouse->getPosition();
        fprintf(stderr,
                "input frame=%u on=%s trgon=%s trgoff=%s first=%d buttons=%u btrgon=%u btrgoff=%u pos=%d,%d\n",
                getCurrentFrame(), on, trgOn, trgOff, keyboard->getKeyTrgOn(), mouse->getButtonOn(),
                mouse->getButtonTrgOn(), mouse->getButtonTrgOff(), position.x, position.y);
        fflush(stderr);
    }

private:
    bool mReady = false;
};

} // namespace

int main()
{
    return runHost<InputProbe>("Harbor Input Probe");
}
