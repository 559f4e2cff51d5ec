// KeyboardSystem: the keyboard sampled once per frame into bit sets of 256 key
// codes: the level, and the edges of press and release since the last frame.
// A key held over many frames is one press, whatever the platform's key repeat
// does; a key pressed and released between two frames goes unseen. Written in
// the update phase on the main thread; read afterwards, also from jobs.
#pragma once

#include "app/system.h"
#include "foundation/vector.h"
#include "platform/hid.h"

class HIDSystem;
class UIBase;

class KeyboardSystem : public System {
public:
    // A key's usage number in the USB HID keyboard usage table, 0 to 255.
    // Letters A..Z run from 4 to 29, digits 1..9 and 0 from 30 to 39, F1..F12
    // from 58 to 69; the rest of the program uses the codes by number.
    enum eKeyCode {
        eKeyCodeA = 4,
        eKeyCodeReturn = 40,
        eKeyCodeEscape = 41,
        eKeyCodeBackspace = 42,
        eKeyCodeTab = 43,
        eKeyCodeSpace = 44,
        eKeyCodeF1 = 58,
        eKeyCodeDelete = 76,
        eKeyCodeRight = 79,
        eKeyCodeLeft = 80,
        eKeyCodeDown = 81,
        eKeyCodeUp = 82,
        eKeyCodeLeftControl = 224,
        eKeyCodeLeftShift = 225,
        eKeyCodeLeftAlt = 226,
        eKeyCodeLeftGUI = 227,
        eKeyCodeRightControl = 228,
        eKeyCodeRightShift = 229,
        eKeyCodeRightAlt = 230,
        eKeyCodeRightGUI = 231,
        eKeyCodeNum = 256,
    };
    enum { eKeyWordNum = eKeyCodeNum / 32 };

    static KeyboardSystem* create(HIDSystem* hidSystem);
    static KeyboardSystem* getInstance() { return mpInstance; }
    void destroy() override;
    void update() override;

    bool checkKeyOn(eKeyCode code) const { return (mKeyOn[word(code)] & bit(code)) != 0; }
    bool checkKeyOff(eKeyCode code) const { return !checkKeyOn(code); }
    bool checkKeyTrgOn(eKeyCode code) const { return (mKeyTrgOn[word(code)] & bit(code)) != 0; }
    bool checkKeyTrgOff(eKeyCode code) const { return (mKeyTrgOff[word(code)] & bit(code)) != 0; }
    // The lowest code whose bit is set, or -1: one key per frame reaches a
    // reader through these.
    int getKeyOn() const { return lowestCode(mKeyOn); }
    int getKeyTrgOn() const { return lowestCode(mKeyTrgOn); }
    int getKeyTrgOff() const { return lowestCode(mKeyTrgOff); }

    // The state's editors ("KeyOn", "KeyTrgOn", "KeyTrgOff", 8 words each)
    // belong here once the widget toolkit exists; until then it adds nothing.
    void makeUIList(List<UIBase>& list);

    TypeInfo const* getTypeInfo() const override { return &mUniqueTypeInfo; }
    static TypeInfo const* getStaticTypeInfo() { return &mUniqueTypeInfo; }
    static TypeInfo mUniqueTypeInfo;

protected:
    explicit KeyboardSystem(HIDSystem* hidSystem);
    ~KeyboardSystem() override;

private:
    static u32 word(eKeyCode code);
    static u32 bit(eKeyCode code) { return 1u << (static_cast<u32>(code) & 31); }
    static int lowestCode(u32 const* keys);

    Vector<recDevice> mDeviceList;  // all keyboards; their states are OR-ed
    u32 mKeyPrevious[eKeyWordNum];  // key bits of the last frame
    u32 mKeyOn[eKeyWordNum];        // bit n of word w stands for code 32 w + n
    u32 mKeyTrgOn[eKeyWordNum];     // went down in this frame
    u32 mKeyTrgOff[eKeyWordNum];    // went up in this frame

    static KeyboardSystem* mpInstance;
};
