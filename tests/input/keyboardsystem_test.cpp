// KeyboardSystem: level and edge bits per frame from the scripted HID source,
// the lowest-code readers, and the keyboards it finds or misses.
#include "inputtest.h"

namespace {

typedef KeyboardSystem K;

class KeyboardSystemTest : public InputTest {
protected:
    void start()
    {
        startSystems();
        mpKeyboard = KeyboardSystem::getInstance();
    }
    KeyboardSystem* mpKeyboard = nullptr;
};

platform::sHIDScriptedDevice const kKeyboard = {1, 6};
platform::sHIDScriptedDevice const kMouse = {1, 2};

} // namespace

TEST_F(KeyboardSystemTest, KeyHeldForThreeFramesTriggersOnceAndReleasesInTheFourth)
{
    start();
    key(K::eKeyCodeA, true);
    EXPECT_FALSE(mpKeyboard->checkKeyOn(K::eKeyCodeA)) << "sampled at the frame, not at the press";
    for (int i = 0; i < 3; ++i) {
        frame();
        EXPECT_TRUE(mpKeyboard->checkKeyOn(K::eKeyCodeA)) << "frame " << i;
        EXPECT_EQ(mpKeyboard->checkKeyTrgOn(K::eKeyCodeA), i == 0) << "frame " << i;
        EXPECT_FALSE(mpKeyboard->checkKeyTrgOff(K::eKeyCodeA)) << "frame " << i;
    }
    key(K::eKeyCodeA, false);
    frame();
    EXPECT_TRUE(mpKeyboard->checkKeyOff(K::eKeyCodeA));
    EXPECT_FALSE(mpKeyboard->checkKeyTrgOn(K::eKeyCodeA));
    EXPECT_TRUE(mpKeyboard->checkKeyTrgOff(K::eKeyCodeA));

    key(K::eKeyCodeSpace, true);
    key(K::eKeyCodeSpace, false);
    frame();
    EXPECT_EQ(mpKeyboard->getKeyTrgOn(), -1) << "a press between two frames goes unseen";
}

TEST_F(KeyboardSystemTest, ReadersGiveTheLowestCodeOrMinusOne)
{
    start();
    frame();
    EXPECT_EQ(mpKeyboard->getKeyOn(), -1);
    EXPECT_EQ(mpKeyboard->getKeyTrgOn(), -1);
    EXPECT_EQ(mpKeyboard->getKeyTrgOff(), -1);

    // 62 and 40 lie in word 1, the right GUI key (231) at the top of word 7.
    key(K::eKeyCodeRightGUI, true);
    key(62, true);
    key(K::eKeyCodeReturn, true);
    frame();
    EXPECT_EQ(mpKeyboard->getKeyTrgOn(), K::eKeyCodeReturn);
    EXPECT_TRUE(mpKeyboard->checkKeyTrgOn(K::eKeyCodeRightGUI));

    key(K::eKeyCodeReturn, false);
    key(62, false);
    key(K::eKeyCodeA, true);
    frame();
    EXPECT_EQ(mpKeyboard->getKeyTrgOn(), K::eKeyCodeA);
    EXPECT_EQ(mpKeyboard->getKeyTrgOff(), K::eKeyCodeReturn);
    EXPECT_DEATH(mpKeyboard->checkKeyOn(static_cast<K::eKeyCode>(256)), "Key code out of range\\.");
}

TEST_F(KeyboardSystemTest, SeveralKeyboardsAreOredAndOtherDevicesIgnored)
{
    platform::sHIDScriptedDevice const devices[] = {kKeyboard, kMouse, kKeyboard};
    platform::hidSetScriptedDevices(devices, 3);
    start();
    key(K::eKeyCodeA, true, 2);
    key(K::eKeyCodeTab, true, 1);  // an element of the mouse, not a key
    frame();
    EXPECT_TRUE(mpKeyboard->checkKeyOn(K::eKeyCodeA));
    EXPECT_FALSE(mpKeyboard->checkKeyOn(K::eKeyCodeTab));
    key(K::eKeyCodeA, true, 0);
    key(K::eKeyCodeA, false, 2);
    frame();
    EXPECT_TRUE(mpKeyboard->checkKeyOn(K::eKeyCodeA)) << "still held on the other keyboard";
    EXPECT_EQ(mpKeyboard->getKeyTrgOff(), -1);
}

TEST_F(KeyboardSystemTest, MissingDevicesAreFatal)
{
    platform::hidSetScriptedDevices(&kMouse, 1);
    EXPECT_DEATH(start(), "Keyboard device not found\\.");
    platform::hidSetScriptedDevices(nullptr, 0);
    EXPECT_DEATH(start(), "hidsystem\\.cpp\\([0-9]+\\) : \n");  // the empty message
}
