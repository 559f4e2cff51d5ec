// HIDSystem: the three input Systems as the host gets them (places, phases,
// orders) and the device list it keeps for their lifetime.
#include <string>
#include <vector>

#include "inputtest.h"

namespace {

std::string names(List<System>& order)
{
    std::string result;
    for (List<System>::Iterator it = order.begin(); it != order.end(); ++it) {
        result += std::string(result.empty() ? "" : " ") + (*it)->getTypeInfo()->getName();
    }
    return result;
}

} // namespace

TEST_F(InputTest, HIDSystemStandsBehindTheSystemsItCreatesAndOutlivesThem)
{
    EXPECT_FALSE(HIDHaveDeviceList());
    startSystems();
    EXPECT_TRUE(HIDHaveDeviceList());
    SystemManager* manager = SystemManager::getInstance();
    EXPECT_EQ(HIDSystem::create(), HIDSystem::getInstance()) << "one instance";
    ASSERT_EQ(manager->getSystemNum(), 3u);
    EXPECT_EQ((std::vector<System*>{manager->getSystem(0), manager->getSystem(1), manager->getSystem(2)}),
              (std::vector<System*>{MouseSystem::getInstance(), KeyboardSystem::getInstance(), HIDSystem::getInstance()}));
    EXPECT_EQ(names(manager->getPreprocessOrder()) + names(manager->getPostprocessOrder()), "");
    EXPECT_EQ(names(manager->getUpdateOrder()), "MouseSystem KeyboardSystem");
    EXPECT_EQ(names(manager->getDestroyOrder()), "MouseSystem KeyboardSystem HIDSystem");

    delete mpApp;
    mpApp = nullptr;
    EXPECT_FALSE(HIDHaveDeviceList());
    EXPECT_EQ(HIDSystem::getInstance(), nullptr);
    EXPECT_EQ(KeyboardSystem::getInstance(), nullptr);
}
