// KeyboardSystem: level and edge bits per frame from the scripted HID source,
// the lowest-code readers, and the keyboards it finds or misses.
#include "inputtest.h"

namespace {

typedef KeyboardSystem K;

class KeyboardSystemTest : public InputTest {
protected:
    void SetUp() override
    {
        InputTest::SetUp();
        startSystems();
        mpKeyboard = KeyboardSystem::getInstance();
        ASSERT_NE(mpKeyboard, nullptr);
    }
    KeyboardSystem* mpKeyboard = nullptr;
};

} // namespace

TEST_F(KeyboardSystemTest, KeyHeldForThreeFramesTriggersOnceAndReleasesInTheFourth)
{
    key(K::eKeyCodeA, true);
    for (int i = 0; i < 3; ++i) {
        frame();
        SCOPED_TRACE(testing::Message() << "held frame " << i + 1);
        EXPECT_TRUE(mpKeyboard->checkKeyOn(K::eKeyCodeA));
        EXPECT_FALSE(mpKeyboard->checkKeyOff(K::eKeyCodeA));
        EXPECT_EQ(mpKeyboard->checkKeyTrgOn(K::eKeyCodeA), i == 0);
        EXPECT_FALSE(mpKeyboard->checkKeyTrgOff(K::eKeyCodeA));
    }
    key(K::eKeyCodeA, false);
    frame();
    EXPECT_FALSE(mpKeyboard->checkKeyOn(K::eKeyCodeA));
    EXPECT_TRUE(mpKeyboard->checkKeyOff(K::eKeyCodeA));
    EXPECT_FALSE(mpKeyboard->checkKeyTrgOn(K::eKeyCodeA));
    EXPECT_TRUE(mpKeyboard->checkKeyTrgOff(K::eKeyCodeA));
    EXPECT_EQ(mpKeyboard->getKeyTrgOff(), K::eKeyCodeA);
    frame();
    EXPECT_FALSE(mpKeyboard->checkKeyTrgOff(K::eKeyCodeA)) << "the release edge lasts one frame";
}

TEST_F(KeyboardSystemTest, NoKeyGivesMinusOneFromEveryReader)
{
    frame();
    EXPECT_EQ(mpKeyboard->getKeyOn(), -1);
    EXPECT_EQ(mpKeyboard->getKeyTrgOn(), -1);
    EXPECT_EQ(mpKeyboard->getKeyTrgOff(), -1);
    for (int code = 0; code < K::eKeyCodeNum; ++code) {
        ASSERT_TRUE(mpKeyboard->checkKeyOff(static_cast<K::eKeyCode>(code))) << code;
    }
}

TEST_F(KeyboardSystemTest, KeysTogetherReportTheLowestCodeAcrossWords)
{
    // 225 in word 7, 62 in word 1, 40 in word 1: the scan takes word 1 first.
    key(K::eKeyCodeLeftShift, true);
    key(62, true);
    key(K::eKeyCodeReturn, true);
    frame();
    EXPECT_EQ(mpKeyboard->getKeyTrgOn(), K::eKeyCodeReturn);
    EXPECT_EQ(mpKeyboard->getKeyOn(), K::eKeyCodeReturn);
    EXPECT_TRUE(mpKeyboard->checkKeyTrgOn(K::eKeyCodeLeftShift));
    EXPECT_TRUE(mpKeyboard->checkKeyTrgOn(static_cast<K::eKeyCode>(62)));

    key(K::eKeyCodeReturn, false);
    key(K::eKeyCodeA, true);
    frame();
    EXPECT_EQ(mpKeyboard->getKeyTrgOn(), K::eKeyCodeA);
    EXPECT_EQ(mpKeyboard->getKeyTrgOff(), K::eKeyCodeReturn);
    EXPECT_EQ(mpKeyboard->getKeyOn(), K::eKeyCodeA);

    key(K::eKeyCodeA, false);
    key(62, false);
    frame();
    EXPECT_EQ(mpKeyboard->getKeyOn(), K::eKeyCodeLeftShift) << "a modifier alone is a key like any other";
    EXPECT_EQ(mpKeyboard->getKeyTrgOn(), -1);
    EXPECT_EQ(mpKeyboard->getKeyTrgOff(), K::eKeyCodeA);
}

TEST_F(KeyboardSystemTest, ModifiersAreReadByUsageOnBothSides)
{
    key(K::eKeyCodeRightGUI, true);
    key(K::eKeyCodeLeftControl, true);
    frame();
    EXPECT_TRUE(mpKeyboard->checkKeyOn(K::eKeyCodeLeftControl));
    EXPECT_TRUE(mpKeyboard->checkKeyOn(K::eKeyCodeRightGUI));
    EXPECT_FALSE(mpKeyboard->checkKeyOn(K::eKeyCodeRightControl));
    EXPECT_EQ(mpKeyboard->getKeyTrgOn(), K::eKeyCodeLeftControl);
}

TEST_F(KeyboardSystemTest, KeyPressedAndReleasedBetweenFramesGoesUnseen)
{
    frame();
    key(K::eKeyCodeSpace, true);
    key(K::eKeyCodeSpace, false);
    frame();
    EXPECT_EQ(mpKeyboard->getKeyTrgOn(), -1);
    EXPECT_EQ(mpKeyboard->getKeyTrgOff(), -1);
}

TEST_F(KeyboardSystemTest, NothingChangesOutsideTheUpdatePhase)
{
    key(K::eKeyCodeA, true);
    EXPECT_FALSE(mpKeyboard->checkKeyOn(K::eKeyCodeA)) << "state is sampled at the frame, not on the press";
    frame();
    key(K::eKeyCodeA, false);
    SystemManager::getInstance()->preprocess();
    SystemManager::getInstance()->postprocess();
    EXPECT_TRUE(mpKeyboard->checkKeyOn(K::eKeyCodeA));
    EXPECT_TRUE(mpKeyboard->checkKeyTrgOn(K::eKeyCodeA));
}

TEST_F(KeyboardSystemTest, CodeOutsideTheTableIsFatal)
{
    EXPECT_DEATH(mpKeyboard->checkKeyOn(static_cast<K::eKeyCode>(256)), "Key code out of range\\.");
}

namespace {

class KeyboardDevicesTest : public InputTest {};

platform::sHIDScriptedDevice const kKeyboard = {1, 6};
platform::sHIDScriptedDevice const kMouse = {1, 2};

} // namespace

TEST_F(KeyboardDevicesTest, SeveralKeyboardsAreOredAndOtherDevicesIgnored)
{
    platform::sHIDScriptedDevice const devices[] = {kKeyboard, kMouse, kKeyboard};
    platform::hidSetScriptedDevices(devices, 3);
    startSystems();
    KeyboardSystem* keyboard = KeyboardSystem::getInstance();

    key(K::eKeyCodeA, true, 2);
    key(K::eKeyCodeTab, true, 1);  // an element of the mouse: not a key
    frame();
    EXPECT_TRUE(keyboard->checkKeyOn(K::eKeyCodeA));
    EXPECT_FALSE(keyboard->checkKeyOn(K::eKeyCodeTab));

    // The same key held on two keyboards: released on one, still down.
    key(K::eKeyCodeA, true, 0);
    key(K::eKeyCodeA, false, 2);
    frame();
    EXPECT_TRUE(keyboard->checkKeyOn(K::eKeyCodeA));
    EXPECT_FALSE(keyboard->checkKeyTrgOn(K::eKeyCodeA));
    EXPECT_FALSE(keyboard->checkKeyTrgOff(K::eKeyCodeA));
}

TEST_F(KeyboardDevicesTest, MachineWithoutKeyboardIsFatal)
{
    platform::hidSetScriptedDevices(&kMouse, 1);
    EXPECT_DEATH(startSystems(), "Keyboard device not found\\.");
}

TEST_F(KeyboardDevicesTest, MachineWithoutDevicesIsFatalWithAnEmptyMessage)
{
    platform::hidSetScriptedDevices(nullptr, 0);
    EXPECT_DEATH(startSystems(), "hidsystem\\.cpp\\([0-9]+\\) : \n");
}
