// The host with two windows opened the way game code opens them: "Back" at
// (500, 250) and "Front" at (600, 350), each 300 by 200, with a title bar, a
// size grip and all three system buttons. Traces "probe ready" once running.
// Driven by tests/window/desktop.sh in a real window.
#include <cstdio>

#include "host/harborapp.h"
#include "ui/uisystem.h"
#include "ui/uiwindow.h"

namespace {

class DesktopProbe : public HarborApp {
public:
    explicit DesktopProbe(sInitializer const* initializer) : HarborApp(initializer) {}

    void setup() override
    {
        HarborApp::setup();
        UISystem* ui = UISystem::getInstance();
        if (ui == nullptr) {
            return;
        }
        open(ui, "Back", sPoint(500, 250));
        open(ui, "Front", sPoint(600, 350));
    }

    void update(float delta) override
    {
        HarborApp::update(delta);
        if (!mReady) {
            fprintf(stderr, "probe ready\n");
            fflush(stderr);
            mReady = true;
        }
    }

private:
    static void open(UISystem* ui, char const* title, sPoint const& at)
    {
        unsigned int const attribute = UIWindow::eWindowAttribute_TitleBar | UIWindow::eWindowAttribute_Movable |
                                       UIWindow::eWindowAttribute_Sizable;
        UIWindow* window = new UIWindow(UIWindow::eStyle_Convex, attribute, true, true, true, 0, nullptr);
        window->setTitle(AutoString(title));
        window->setPosition(at);
        window->setSize(sSize(300, 200));
        ui->addWindow(window);
    }

    bool mReady = false;
};

} // namespace

int main()
{
    return runHost<DesktopProbe>("Harbor Desktop Probe");
}
