// HIDSystem: the three input Systems as the host gets them (places, phases,
// orders, names), and the device list it keeps for their lifetime.
#include <string>

#include "inputtest.h"

namespace {

std::string names(List<System>& order)
{
    std::string result;
    for (List<System>::Iterator it = order.begin(); it != order.end(); ++it) {
        result += result.empty() ? "" : " ";
        result += (*it)->getTypeInfo()->getName();
    }
    return result;
}

class HIDSystemTest : public InputTest {};

} // namespace

TEST_F(HIDSystemTest, CreationPutsMouseAndKeyboardBeforeItself)
{
    startSystems();
    SystemManager* manager = SystemManager::getInstance();
    ASSERT_EQ(manager->getSystemNum(), 3u);
    EXPECT_EQ(manager->getSystem(0), MouseSystem::getInstance());
    EXPECT_EQ(manager->getSystem(1), KeyboardSystem::getInstance());
    EXPECT_EQ(manager->getSystem(2), HIDSystem::getInstance());
    EXPECT_EQ(HIDSystem::create(), HIDSystem::getInstance()) << "a second create returns the one instance";
    EXPECT_EQ(manager->getSystemNum(), 3u);

    for (u32 i = 0; i < 3; ++i) {
        EXPECT_EQ(manager->getSystem(i)->getTypeInfo()->getAttribute(), 2u) << "singleton";
    }
    EXPECT_EQ(names(manager->getPreprocessOrder()), "");
    EXPECT_EQ(names(manager->getUpdateOrder()), "MouseSystem KeyboardSystem");
    EXPECT_EQ(names(manager->getPostprocessOrder()), "");
    EXPECT_EQ(names(manager->getDestroyOrder()), "MouseSystem KeyboardSystem HIDSystem");
}

TEST_F(HIDSystemTest, DeviceListLivesFromCreationToDestruction)
{
    EXPECT_FALSE(HIDHaveDeviceList());
    startSystems();
    EXPECT_TRUE(HIDHaveDeviceList());
    delete mpApp;
    mpApp = nullptr;
    EXPECT_FALSE(HIDHaveDeviceList());
    EXPECT_EQ(HIDSystem::getInstance(), nullptr);
    EXPECT_EQ(MouseSystem::getInstance(), nullptr);
    EXPECT_EQ(KeyboardSystem::getInstance(), nullptr);
}

TEST_F(HIDSystemTest, GetDeviceListAppendsOnlyMatchingDevices)
{
    platform::sHIDScriptedDevice const devices[] = {{1, 6}, {1, 2}, {12, 1}, {1, 6}};
    platform::hidSetScriptedDevices(devices, 4);
    startSystems();
    HIDSystem* hid = HIDSystem::getInstance();

    Vector<recDevice> list;
    EXPECT_TRUE(hid->getDeviceList(list, 1, 6));
    ASSERT_EQ(list.size(), 2u);
    EXPECT_NE(list[0], list[1]);
    EXPECT_TRUE(hid->getDeviceList(list, 12, 1));
    ASSERT_EQ(list.size(), 3u) << "appended behind what the list held";
    EXPECT_EQ(list[2]->mUsagePage, 12u);
    EXPECT_FALSE(hid->getDeviceList(list, 1, 4));
    EXPECT_FALSE(hid->getDeviceList(list, 0, 0)) << "0 is no wildcard here";
    EXPECT_EQ(list.size(), 3u);
}
