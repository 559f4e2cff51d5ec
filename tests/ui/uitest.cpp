#include "uitest.h"

#include <cstdio>

#include "foundation/autostring.h"
#include "foundation/memorymanager.h"
#include "input/hidsystem.h"
#include "jobs/jobsystem.h"
#include "platform/hid.h"
#include "platform/window.h"
#include "reflection/property.h"
#include "render/rendersystem.h"
#include "render/viewsystem.h"
#include "tool/toolsystem.h"
#include "ui/uimessage.h"
#include "ui/uishortcut.h"

namespace uitest {

namespace {

} // namespace

Probe::Probe(char const* name, std::vector<std::string>* log, sRect const& rect, unsigned int windowAttribute,
             unsigned int attribute)
    : UIWindow(UIWindow::eStyle_Plain, windowAttribute, false, false, false, 0, nullptr), mName(name), mpLog(log)
{
    setAttribute(attribute);
    setMinimumSize(sSize(0, 0));
    setPosition(rect.getTranslate());
    setSize(rect.getSize());
}

void Probe::note(char const* event)
{
    mpLog->push_back(mName + ":" + event);
}

void Probe::note(char const* event, sPoint const& p, int extra)
{
    char text[96];
    if (extra >= 0) {
        snprintf(text, sizeof(text), "%s(%d,%d/%d)", event, p.x, p.y, extra);
    } else {
        snprintf(text, sizeof(text), "%s(%d,%d)", event, p.x, p.y);
    }
    note(text);
}

void Probe::eventActive()
{
    UIWindow::eventActive();
    note("Active");
}

void Probe::eventDeactive()
{
    UIWindow::eventDeactive();
    note("Deactive");
}

void Probe::eventMouseDown(sPoint const& p, unsigned int button)
{
    note("MouseDown", p, static_cast<int>(button));
    if (mCloseOnDown) {
        // Closes its own window from inside the handler.
        UIBase* top = this;
        while (top->getParent() != nullptr) {
            top = top->getParent();
        }
        static_cast<UIWindow*>(top)->close();
    }
}

void Probe::eventMouseUp(sPoint const& p, unsigned int button)
{
    mDragOnUp = isDragging();
    note("MouseUp", p, static_cast<int>(button));
}

void Probe::noteKey(char const* event, unsigned int key, unsigned int combination)
{
    char text[32];
    snprintf(text, sizeof(text), "%s(%u/%u)", event, key, combination);
    note(text);
    if (mDelegateKeys) {
        delegate();
    }
}

void Probe::eventCustom(UIMessage const& message)
{
    char text[32];
    snprintf(text, sizeof(text), "Custom(%u)", message.getType());
    note(text);
}

UIShortcutBase const* Probe::findShortcut(unsigned int keyCode, unsigned int combinationKey) const
{
    static UIShortcut<Probe> const table[] = {UIShortcut<Probe>(0, 0, &Probe::fire)};
    if (mShortcutKey != 0 && keyCode == mShortcutKey && combinationKey == 0) {
        return &table[0];
    }
    return nullptr;
}

namespace {

ScriptedClock sClock;
Application* sApplication = nullptr;

// One application per process (its heaps are set once): every test shares
// it and its Systems, and leaves no window behind.
class UIEnvironment : public testing::Environment {
public:
    void SetUp() override
    {
        platform::setHeadless(true);
        platform::hidResetScripted();
        Application::sInitializer const initializer = {"UI", 640, 480, 60, 20, 240};
        sApplication = new TestApp(&initializer, &sClock);
        MemoryManager* memory = MemoryManager::getInstance();
        AutoString::setAllocator(memory->createAllocator(0x200000, "String"));
        sApplication->setTempAllocator(memory->createAllocator(0x1000000, "Temp"));
        PropertyBase::setAllocator(memory->createBlockAllocator(48, 0x1000, "Property"));
        System::setAllocator(memory->createAllocator(0x1000000, "System"));
        SystemManager* manager = SystemManager::getInstance();
        manager->addSystem(JobSystem::create(0x10000, 4));
        manager->addSystem(RenderSystem::create());
        manager->addSystem(HIDSystem::create());
        manager->addSystem(ViewSystem::create());
        manager->addSystem(UISystem::create());
        manager->addSystem(ToolSystem::create());
        manager->setup();
        // As the host wires them: the renderer closes the frame after the
        // tools and outlives their font texture.
        RenderSystem::getInstance()->addPostprocessDependency(ToolSystem::getInstance());
        RenderSystem::getInstance()->addDestroyDependency(ToolSystem::getInstance());
        manager->order();
        // As execute() does: window events reach the application.
        platform::installEventHandler(sApplication->getWindowHandle(), &Application::eventHandler, sApplication);
    }
    void TearDown() override
    {
        delete sApplication; // destroys the Systems in their order
        sApplication = nullptr;
    }
};

[[maybe_unused]] testing::Environment* const sEnvironment = testing::AddGlobalTestEnvironment(new UIEnvironment);

} // namespace

std::vector<sDrawCommand const*> recordedDraws()
{
    std::vector<sDrawCommand const*> list;
    for (sCommand* const* entry = RenderSystem::getInstance()->getSortedEntry(); (*entry)->mType != sCommand::eType_End;
         ++entry) {
        if ((*entry)->mType == sCommand::eType_Draw) {
            list.push_back(static_cast<sDrawCommand const*>(*entry));
        }
    }
    return list;
}

ScriptedClock& UITest::clock()
{
    return sClock;
}

void UITest::SetUp()
{
    mpApp = sApplication;
    mpUI = UISystem::getInstance();
    JobSystem::getInstance()->setJobThreadNum(4);
    // Every test starts with the pointer at the bottom right, no button or
    // key down, and a second since the last press.
    platform::hidResetScripted();
    release(639, 479, 1);
    release(639, 479, 2);
    release(639, 479, 3);
    move(639, 479);
    frame();
    advance(1000);
    mLog.clear();
}

void UITest::TearDown()
{
    mpUI->removeAllWindow();
    mpUI->setActiveWindow(nullptr);
    EXPECT_TRUE(mpUI->validate());
    EXPECT_EQ(mpUI->getFocus(), nullptr);
    EXPECT_EQ(mpUI->getCapture(), nullptr);
}

void UITest::frame()
{
    SystemManager* manager = SystemManager::getInstance();
    manager->preprocess();
    manager->update();
    mpUI->draw();
    manager->postprocess();
    RenderSystem::getInstance()->executeCommand();
    EXPECT_TRUE(mpUI->validate());
    advance(17);
}

void UITest::key(u32 usage, bool down)
{
    platform::hidSetScriptedKeyState(usage, down);
}

void UITest::type(u32 usage, u32 modifier)
{
    if (modifier != 0) {
        key(modifier, true);
    }
    key(usage, true);
    frame();
    key(usage, false);
    frame();
    if (modifier != 0) {
        key(modifier, false);
        frame();
    }
}

void UITest::click(int x, int y, u16 button)
{
    press(x, y, button);
    frame();
    release(x, y, button);
    frame();
}

Probe* UITest::openWindow(char const* name, sRect const& rect, unsigned int windowAttribute)
{
    Probe* window = new Probe(name, &mLog, rect, windowAttribute);
    mpUI->addWindow(window);
    frame();
    return window;
}

std::string UITest::take(char const* only)
{
    std::string const wanted = only != nullptr ? std::string(" ") + only + " " : std::string();
    std::string text;
    for (std::string const& entry : mLog) {
        size_t const begin = entry.find(':') + 1;
        std::string const event = entry.substr(begin, entry.find('(') - begin);
        if (only == nullptr || wanted.find(" " + event + " ") != std::string::npos) {
            text += (text.empty() ? "" : " ") + entry;
        }
    }
    mLog.clear();
    return text;
}

} // namespace uitest
