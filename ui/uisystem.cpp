#include "ui/uisystem.h"

#include "tool/toolbase.h"

#include "app/application.h"
#include "foundation/debug.h"
#include "input/keyboardsystem.h"
#include "input/mousesystem.h"
#include "platform/cursor.h"
#include "reflection/property.h"
#include "render/drawcontext.h"
#include "render/rendersystem.h"
#include "render/viewsystem.h"
#include "tool/toolbase.h"
#include "ui/uidesktop.h"
#include "ui/uigameviewcontrol.h"
#include "ui/uimenu.h"
#include "ui/uimessage.h"
#include "ui/uipainter.h"
#include "ui/uishortcut.h"
#include "ui/uiwindow.h"

IMPLEMENT_TYPEINFO(UISystem, "System", TypeInfo::eAttribute_Singleton);

UISystem* UISystem::mpInstance = nullptr;

sColor const UISystem::mDefaultFontColor = sColor::White;
sColor const UISystem::mDefaultClientFontColor = sColor::Black;
sColor const UISystem::mDefaultClientSelectFontColor = sColor::White;
sColor const UISystem::mDefaultDisableFontColor = sColor::DarkGray;
sColor const UISystem::mDefaultWindowColor = sColor(0, 0, 255, 255);
sColor const UISystem::mDefaultHighLightColor = sColor(192, 192, 255, 255);
sColor const UISystem::mDefaultDarkLightColor = sColor(0, 0, 128, 255);
sColor const UISystem::mDefaultClientRegionColor = sColor::White;
sColor const UISystem::mDefaultClientRegionSelectColor = sColor(32, 32, 255, 255);
sColor const UISystem::mDefaultActiveTitleBarColor = sColor(0, 0, 128, 255);
sColor const UISystem::mDefaultDeactiveTitleBarColor = sColor(0, 0, 64, 255);
sColor const UISystem::mDefaultActiveTitleFontColor = sColor(255, 255, 255, 255);
sColor const UISystem::mDefaultDeactiveTitleFontColor = sColor(128, 128, 128, 255);
sColor const UISystem::mDefaultScrollBarBaseColor = sColor(128, 128, 255, 255);
sColor const UISystem::mDefaultMenuColor = sColor(224, 224, 224, 255);
sColor const UISystem::mDefaultMenuSelectColor = sColor(32, 32, 255, 255);
sColor const UISystem::mDefaultMenuFontColor = sColor::Black;
sColor const UISystem::mDefaultMenuDisableFontColor = sColor::DarkGray;
sColor const UISystem::mDefaultMenuSelectFontColor = sColor::White;

namespace {

unsigned int const kUIView = ViewSystem::kInterfaceView;

// The modifier usages never reach the UI as keys of their own.
int const kFirstModifierUsage = KeyboardSystem::eKeyCodeLeftControl;
int const kLastModifierUsage = KeyboardSystem::eKeyCodeRightGUI;

// Usage ranges and their UI key codes; a range maps its usages in order.
struct sKeyRange {
    u8 mFirstUsage;
    u8 mLastUsage;
    u8 mFirstCode;
};

sKeyRange const kKeyRanges[] = {
    {4, 29, 'A'},    {30, 38, '1'},   {39, 39, '0'},   {40, 40, 13},    {41, 41, 27},    {42, 42, 8},
    {43, 43, 9},     {44, 44, ' '},   {45, 45, '-'},   {49, 49, '\\'},  {135, 135, '\\'}, {51, 51, ';'},
    {53, 53, ':'},   {54, 54, ','},   {55, 55, '.'},   {56, 56, '/'},   {58, 69, 128},   {73, 73, 168},
    {74, 74, 166},   {75, 75, 164},   {76, 76, 127},   {77, 77, 167},   {78, 78, 165},   {79, 79, 162},
    {80, 80, 160},   {81, 81, 163},   {82, 82, 161},   {84, 84, '/'},   {85, 85, '*'},   {86, 86, '-'},
    {87, 87, '+'},   {88, 88, 13},    {89, 97, '1'},   {98, 98, '0'},
    // The keypad's decimal key gives a comma, on purpose.
    {99, 99, ','},   {100, 100, ']'}, {137, 137, ']'}, {104, 106, 140}, {225, 225, 144}, {229, 229, 144},
    {226, 226, 145}, {230, 230, 145}, {227, 227, 146}, {231, 231, 146},
};

struct sKeyName {
    u32 mCode;
    char const* mpName;
};

sKeyName const kKeyNames[] = {
    {8, "BackSpace"},      {9, "Tab"},          {13, "Return"},      {27, "ESC"},
    {127, "Delete"},       {160, "Left Arrow"}, {161, "Up Arrow"},   {162, "Right Arrow"},
    {163, "Down Arrow"},   {164, "Page Up"},    {165, "Page Down"},  {166, "Home"},
    {167, "End"},          {168, "Insert"},
};

platform::eThemeCursor const kThemeCursor[eCursor_Num] = {
    platform::eThemeCursor_Arrow,
    platform::eThemeCursor_Arrow, // the size grip shows no shape of its own
    platform::eThemeCursor_ResizeUpDown,
    platform::eThemeCursor_ResizeLeftRight,
    platform::eThemeCursor_PointingHand,
    platform::eThemeCursor_OpenHand,
    platform::eThemeCursor_ClosedHand,
};
static_assert(sizeof(kThemeCursor) / sizeof(kThemeCursor[0]) == eCursor_Num, "one theme cursor per eCursor");

} // namespace

// ---------------------------------------------------------------------------
// Life

UISystem* UISystem::create()
{
    if (mpInstance == nullptr) {
        mpInstance = new UISystem();
    }
    return mpInstance;
}

void UISystem::destroy()
{
    delete this;
    mpInstance = nullptr;
}

UISystem::UISystem()
    : mpActiveWindow(nullptr), mpFocus(nullptr), mpCapture(nullptr), mpMenu(nullptr), mpMainMenu(nullptr),
      mpDesktop(nullptr), mMouseView(kUIView), mDrawContexts(kDrawContextReserve), mKeyDown(0), mKeyUp(0),
      mCombinationKey(0), mLastClickButton(0), mLastClickTime(0), mpLastClickTarget(nullptr),
      mCurrentCursor(eCursor_Normal)
{
    mFontColor = mDefaultFontColor;
    mClientFontColor = mDefaultClientFontColor;
    mClientSelectFontColor = mDefaultClientSelectFontColor;
    mDisableFontColor = mDefaultDisableFontColor;
    mWindowColor = mDefaultWindowColor;
    mHighLightColor = mDefaultHighLightColor;
    mDarkLightColor = mDefaultDarkLightColor;
    mClientRegionColor = mDefaultClientRegionColor;
    mClientRegionSelectColor = mDefaultClientRegionSelectColor;
    mActiveTitleBarColor = mDefaultActiveTitleBarColor;
    mDeactiveTitleBarColor = mDefaultDeactiveTitleBarColor;
    mActiveTitleFontColor = mDefaultActiveTitleFontColor;
    mDeactiveTitleFontColor = mDefaultDeactiveTitleFontColor;
    mScrollBarBaseColor = mDefaultScrollBarBaseColor;
    mMenuColor = mDefaultMenuColor;
    mMenuSelectColor = mDefaultMenuSelectColor;
    mMenuFontColor = mDefaultMenuFontColor;
    mMenuDisableFontColor = mDefaultMenuDisableFontColor;
    mMenuSelectFontColor = mDefaultMenuSelectFontColor;

    // Set before the desktop exists: its destructor reaches back here.
    mpInstance = this;
    mpDesktop = new UIDesktop();
    mpDesktop->setPosition(sPoint(0, 0));
    if (Application* application = Application::getInstance()) {
        mpDesktop->setSize(application->getWindowSize());
    }
    setProcessEnable(true, true, true);
    makeKeyCodeTable();
    if (Application* application = Application::getInstance()) {
        application->addResizeListener(&Application::ResizeList::member<UISystem, &UISystem::notifyResize>, this);
    }
    DEV_TRACE("UISystem : start.\n");
}

UISystem::~UISystem()
{
    if (Application* application = Application::getInstance()) {
        application->removeResizeListener(this);
    }
    if (ViewSystem* views = ViewSystem::getInstance()) {
        views->removeDrawer(this);
    }
    // Windows still waiting for admission were never live: they only go.
    for (ObjectBase* window : mAddWindowList) {
        delete window;
    }
    mAddWindowList.clear();
    removeAllWindow();
    removeAllGameViewControl();
    delete mpDesktop;
    mpDesktop = nullptr;
    DEV_TRACE("UISystem : end.\n");
}

void UISystem::setup()
{
    addUpdateDependency(MouseSystem::getInstance());
    addUpdateDependency(KeyboardSystem::getInstance());
    // The in-scene controls paint over the units of each game view.
    if (ViewSystem* views = ViewSystem::getInstance()) {
        views->addGameViewDrawer(ViewSystem::eDrawStage_Interface,
                                 &ViewSystem::DrawerList::member<UISystem, &UISystem::draw>, this);
    }
}

void UISystem::makePropertyList(PropertyList& list)
{
    struct sNamedColor {
        char const* mpName;
        sColor* mpColor;
    };
    sNamedColor const colors[] = {
        {"FontColor", &mFontColor},
        {"ClientFontColor", &mClientFontColor},
        {"DisableFontColor", &mDisableFontColor},
        {"WindowColor", &mWindowColor},
        {"HighLightColor", &mHighLightColor},
        {"DarkLightColor", &mDarkLightColor},
        {"ClientRegionColor", &mClientRegionColor},
        {"ActiveTitleBarColor", &mActiveTitleBarColor},
        {"DeactiveTitleBarColor", &mDeactiveTitleBarColor},
        {"ActiveTitleFontColor", &mActiveTitleFontColor},
        {"DeactiveTitleFontColor", &mDeactiveTitleFontColor},
        {"ScrollBarBaseColor", &mScrollBarBaseColor},
        {"MenuSelectColor", &mMenuSelectColor},
        {"MenuFontColor", &mMenuFontColor},
        {"MenuDisableFontColor", &mMenuDisableFontColor},
        {"MenuSelectFontColor", &mMenuSelectFontColor},
    };
    // The client selection and menu colours have no name on purpose: no
    // editor changes them and they are never saved.
    for (sNamedColor const& color : colors) {
        list.add(new ReferenceProperty<sColor>(color.mpName, color.mpColor));
    }
    mpDesktop->makePropertyList(list);
}

// ---------------------------------------------------------------------------
// Frame phases

void UISystem::preprocess()
{
    if (!mAddWindowList.empty()) {
        executeAdd();
    }
    // The modal window created last ends up in front of all others.
    for (UIWindow* modal : mModalWindowList) {
        mWindowList.remove(modal);
        mWindowList.addFirst(modal);
    }
    if (!mWindowList.empty()) {
        UIWindow* front = static_cast<UIWindow*>(mWindowList[0]);
        if (front != mpActiveWindow) {
            setActiveWindow(front);
        }
    }
}

void UISystem::update()
{
    routeInput();
    updateLayout();
}

void UISystem::postprocess()
{
    if (!mRemoveWindowList.empty()) {
        executeRemove();
    }
}

void UISystem::executeAdd()
{
    UICreateMessage const message;
    mWindowList.reserve(mWindowList.size() + mAddWindowList.size());
    for (ObjectBase* object : mAddWindowList) {
        UIWindow* window = static_cast<UIWindow*>(object);
        mWindowList.addFirst(window);
        window->sendMessage(message);
        if (window->isModalWindow()) {
            mModalWindowList.addLast(window);
        }
    }
    mAddWindowList.clear();
    mAddWindowList.reserve(0);
}

void UISystem::executeRemove()
{
    UIDestroyMessage const message;
    for (ObjectBase* object : mRemoveWindowList) {
        UIWindow* window = static_cast<UIWindow*>(object);
        window->sendMessage(message);
        mWindowList.remove(window);
        // Closed before it was admitted: it must not come back next frame.
        mAddWindowList.remove(window);
        if (mpFocus != nullptr && window->find(mpFocus) != nullptr) {
            mpFocus->sendMessage(UIDefocusMessage());
            mpFocus = nullptr;
        }
        if (mpCapture != nullptr && window->find(mpCapture) != nullptr) {
            mpCapture = nullptr;
        }
        if (window == mpActiveWindow) {
            // An owner that went earlier in this batch is no longer listed.
            UIWindow* owner = window->getOwnerWindow();
            setActiveWindow(mWindowList.find(owner) != mWindowList.end() ? owner : nullptr);
        }
        if (window->isModalWindow()) {
            mModalWindowList.remove(window);
        }
        delete window;
    }
    mRemoveWindowList.clear();
    mRemoveWindowList.reserve(0);
    mWindowList.reserve(mWindowList.size());
}

// ---------------------------------------------------------------------------
// Windows and controls

// A resource has at most one tool window: a second one is deleted at once.
// Windows still waiting to be admitted are not searched.
void UISystem::addWindow(UIWindow* window)
{
    if (window == nullptr) {
        return;
    }
    if (window->getTypeInfo()->isDerivedFrom(ToolBase::getStaticTypeInfo())) {
        ResourceBase const* resource = static_cast<ToolBase const*>(window)->getManagedResource();
        if (resource != nullptr) {
            for (ObjectBase* object : mWindowList) {
                UIWindow const* open = static_cast<UIWindow const*>(object);
                if (open->getTypeInfo()->isDerivedFrom(ToolBase::getStaticTypeInfo()) &&
                    static_cast<ToolBase const*>(open)->getManagedResource() == resource) {
                    delete window;
                    return;
                }
            }
        }
    }
    mAddWindowList.addLast(window);
}

void UISystem::removeWindow(UIWindow* window)
{
    // A second request in the same frame (a close button and Alt+F4
    // together) must not delete the window twice.
    if (window == nullptr || mRemoveWindowList.find(window) != mRemoveWindowList.end()) {
        return;
    }
    mRemoveWindowList.addLast(window);
}

void UISystem::removeAllWindow()
{
    for (ObjectBase* window : mWindowList) {
        removeWindow(static_cast<UIWindow*>(window));
    }
    executeRemove();
}

void UISystem::setActiveWindow(UIWindow* window)
{
    if (mpCapture != nullptr) {
        UIBase* capture = mpCapture;
        mpCapture = nullptr;
        capture->sendMessage(UIMouseUpMessage(mMousePosition - capture->getAbsPosition(), UIMessage::kAllButtons));
    }
    if (mpFocus != nullptr) {
        UIBase* focused = mpFocus;
        mpFocus = nullptr;
        focused->sendMessage(UIDefocusMessage());
    }
    if (mpActiveWindow != nullptr) {
        mpActiveWindow->sendMessage(UIDeactiveMessage());
    }
    mpActiveWindow = window;
    if (window == nullptr) {
        mpMainMenu = nullptr;
        return;
    }
    window->sendMessage(UIActiveMessage());
    mpMainMenu = window->getMainMenu();
    if (mpMainMenu != nullptr) {
        mpMainMenu->setPosition(sPoint(0, 0));
        mpMainMenu->setSize(sSize(getUIViewRect().getWidth(), kMainMenuHeight));
        mpMainMenu->initialize();
    }
    mWindowList.remove(window);
    mWindowList.addFirst(window);
}

// Units add and remove their handles from their own updates, which may run
// on the job threads: the list is locked for them.
void UISystem::addGameViewControl(UIGameViewControl* control)
{
    if (control == nullptr) {
        return;
    }
    lock();
    mGameViewControlList.addLast(control);
    unlock();
}

void UISystem::removeGameViewControl(UIGameViewControl* control)
{
    if (control == nullptr) {
        return;
    }
    lock();
    mGameViewControlList.remove(control);
    delete control;
    unlock();
}

void UISystem::removeAllGameViewControl()
{
    for (UIGameViewControl* control : mGameViewControlList) {
        delete control;
    }
}

// ---------------------------------------------------------------------------
// Focus and notifications

void UISystem::defocus()
{
    if (mpFocus != nullptr) {
        UIBase* focused = mpFocus;
        mpFocus = nullptr;
        focused->sendMessage(UIDefocusMessage());
    }
}

void UISystem::focus(UIBase* widget)
{
    defocus();
    mpFocus = widget;
    if (widget != nullptr) {
        widget->sendMessage(UIFocusMessage());
    }
}

void UISystem::notifyResize(sRect const& rect)
{
    mpDesktop->setSize(rect.getSize());
    resetLayout();
}

// Focus and capture go first and silently, so that the deactivation is the
// only message a new window size causes.
void UISystem::resetLayout()
{
    mpFocus = nullptr;
    mpCapture = nullptr;
    setActiveWindow(nullptr);
}

void UISystem::notifyInvalidate(UIBase* widget)
{
    if (mpCapture == widget) {
        mpCapture = nullptr;
    }
    if (mpFocus == widget) {
        mpFocus = nullptr;
    }
    // Only compared, never followed; a new widget at the same address must
    // not inherit a click.
    if (mpLastClickTarget == widget) {
        mpLastClickTarget = nullptr;
    }
    if (mpMenu != nullptr && mpMenu == widget->getMenu()) {
        mpMenu = nullptr;
    }
}

void UISystem::notifyMenuChange(UIMenu* menu)
{
    if (mpMenu == menu) {
        mpMenu = nullptr;
    }
}

void UISystem::notifyMainMenuChange(UIMainMenu* oldMenu, UIMainMenu* newMenu)
{
    if (mpMainMenu != oldMenu) {
        return;
    }
    mpMainMenu = newMenu;
    if (newMenu != nullptr) {
        newMenu->initialize();
    }
    mpMenu = nullptr;
}

void UISystem::notifyMainMenuSelect(UIMenu* menu)
{
    mpMenu = menu;
}

// The closed menus keep living with their owners, but input must not stay
// with them: keys would go on reaching a menu that is no longer shown.
void UISystem::notifyMenuEnd()
{
    for (UIMenu* menu = mpMenu; menu != nullptr; menu = menu->getSubMenu()) {
        if (mpFocus == menu) {
            defocus();
        }
        if (mpCapture == menu) {
            mpCapture = nullptr;
        }
        if (mpLastClickTarget == menu) {
            mpLastClickTarget = nullptr;
        }
    }
    mpMenu = nullptr;
    if (mpMainMenu != nullptr) {
        mpMainMenu->initialize();
    }
}

// ---------------------------------------------------------------------------
// Keyboard

void UISystem::makeKeyCodeTable()
{
    for (u8& code : mKeyCodeTable) {
        code = 0;
    }
    for (sKeyRange const& range : kKeyRanges) {
        for (unsigned int usage = range.mFirstUsage; usage <= range.mLastUsage; ++usage) {
            mKeyCodeTable[usage] = static_cast<u8>(range.mFirstCode + (usage - range.mFirstUsage));
        }
    }
}

unsigned int UISystem::transferKeyCode(int usage) const
{
    if (usage < 0) {
        return 0;
    }
    if (usage > 255) {
        dev_assert("Invalid key code.", __FILE__, __LINE__);
    }
    if (usage >= kFirstModifierUsage && usage <= kLastModifierUsage) {
        return 0;
    }
    return mKeyCodeTable[usage];
}

void UISystem::updateKeyInput()
{
    KeyboardSystem const* keyboard = KeyboardSystem::getInstance();
    mKeyDown = transferKeyCode(keyboard->getKeyTrgOn());
    mKeyUp = transferKeyCode(keyboard->getKeyTrgOff());
    mCombinationKey = 0;
    if (keyboard->checkKeyOn(KeyboardSystem::eKeyCodeLeftShift) ||
        keyboard->checkKeyOn(KeyboardSystem::eKeyCodeRightShift)) {
        mCombinationKey |= eCombinationKey_Shift;
    }
    if (keyboard->checkKeyOn(KeyboardSystem::eKeyCodeLeftAlt) ||
        keyboard->checkKeyOn(KeyboardSystem::eKeyCodeRightAlt)) {
        mCombinationKey |= eCombinationKey_Option;
    }
    if (keyboard->checkKeyOn(KeyboardSystem::eKeyCodeLeftControl) ||
        keyboard->checkKeyOn(KeyboardSystem::eKeyCodeRightControl) ||
        keyboard->checkKeyOn(KeyboardSystem::eKeyCodeLeftGUI) ||
        keyboard->checkKeyOn(KeyboardSystem::eKeyCodeRightGUI)) {
        mCombinationKey |= eCombinationKey_Command;
    }
}

AutoString UISystem::getKeyDown() const
{
    AutoString name;
    if (mKeyDown >= 32 && mKeyDown <= 92) {
        char const text[2] = {static_cast<char>(mKeyDown), '\0'};
        name = text;
    } else if (mKeyDown >= 128 && mKeyDown <= 142) {
        name.format("F%u", mKeyDown - 127);
    } else {
        for (sKeyName const& entry : kKeyNames) {
            if (entry.mCode == mKeyDown) {
                name = entry.mpName;
            }
        }
    }
    return name;
}

// ---------------------------------------------------------------------------
// Routing

sRect UISystem::getUIViewRect() const
{
    Application const* application = Application::getInstance();
    return application != nullptr ? sRect(application->getWindowSize()) : sRect::Zero;
}

sPoint UISystem::transformView(sPoint const& position, unsigned int view) const
{
    ViewSystem const* views = ViewSystem::getInstance();
    if (view == kUIView || views == nullptr) {
        return position;
    }
    sRect const viewport = views->getViewport(view);
    sRect const projection = views->getProjection(view);
    sPoint result;
    for (int axis = 0; axis < 2; ++axis) {
        float const size = static_cast<float>(viewport[axis + 2] - viewport[axis]);
        float const t = size != 0.0f ? static_cast<float>(position[axis] - viewport[axis]) / size : 0.0f;
        result[axis] =
            static_cast<int>(static_cast<float>(projection[axis + 2] - projection[axis]) * t + projection[axis]);
    }
    return result;
}

void UISystem::routeInput()
{
    MouseSystem const* mouse = MouseSystem::getInstance();
    sPoint position = mouse->getPosition();
    updateKeyInput();

    if (mpCapture != nullptr) {
        position = transformView(position, mMouseView);
        UIBase* capture = mpCapture;
        sPoint const local = position - capture->getAbsPosition();
        if (position != mMousePosition) {
            mMousePosition = position;
            capture->sendMessage(UIMouseMoveMessage(local));
        }
        // Any release ends the capture, also with another button still down.
        // A capture with every button up lost its release edge (the press
        // and the release fell into one frame): it ends now all the same.
        u32 released = mouse->getButtonTrgOff();
        if (released == 0 && mouse->getButtonOn() == 0) {
            released = mLastClickButton;
        }
        if (released != 0 && mpCapture != nullptr) {
            mpCapture = nullptr;
            capture->sendMessage(UIMouseUpMessage(local, released));
        } else if (mpCapture != nullptr) {
            handleKeyEvent(nullptr, mpCapture);
        }
        return;
    }

    UIBase* hit = nullptr;
    UIWindow* window = nullptr;
    unsigned int view = kUIView;
    UIShortcutBase const* shortcut = nullptr;
    void* target = nullptr;
    if (mpMainMenu != nullptr && mpMainMenu->intersect(position, sRect::Max) != nullptr) {
        hit = mpMainMenu;
    }
    if (mpMenu != nullptr) {
        UIMenu* deepest = mpMenu;
        for (UIMenu* menu = mpMenu; menu != nullptr; menu = menu->getSubMenu()) {
            if (menu->intersect(position, sRect::Max) != nullptr) {
                hit = menu;
            }
            deepest = menu;
        }
        handleKeyEvent(nullptr, deepest);
        if (mKeyDown != 0) {
            shortcut = deepest->findShortcut(mKeyDown, mCombinationKey);
            target = deepest;
        }
    } else {
        handleKeyEvent(mpActiveWindow, mpFocus);
        if (mKeyDown != 0 && mpFocus != nullptr) {
            shortcut = mpFocus->findShortcut(mKeyDown, mCombinationKey);
            target = mpFocus;
        }
    }
    // The widget has seen the key as a message; the shortcut fires on top.
    if (mKeyDown != 0 && shortcut == nullptr) {
        if (mpActiveWindow != nullptr) {
            shortcut = mpActiveWindow->findShortcut(mKeyDown, mCombinationKey);
            target = mpActiveWindow;
        }
        if (shortcut == nullptr) {
            shortcut = mpDesktop->findShortcut(mKeyDown, mCombinationKey);
            target = mpDesktop;
        }
    }
    if (shortcut != nullptr) {
        shortcut->shortcut(target);
    }

    if (hit == nullptr) {
        for (ObjectBase* object : mWindowList) {
            UIWindow* candidate = static_cast<UIWindow*>(object);
            if (UIBase* found = candidate->intersect(position, sRect::Max)) {
                hit = found;
                window = candidate;
                break;
            }
        }
    }
    ViewSystem const* views = ViewSystem::getInstance();
    if (hit == nullptr && views != nullptr) {
        // The highest view with a hit wins.
        for (unsigned int candidate = ViewSystem::kGameViewFirst; candidate <= kUIView; ++candidate) {
            if (!views->getEnable(candidate) || !views->getViewport(candidate).intersect(position)) {
                continue;
            }
            sPoint const inView = transformView(position, candidate);
            for (UIGameViewControl* control : mGameViewControlList) {
                if ((control->getView() & (1u << candidate)) == 0) {
                    continue;
                }
                if (UIBase* found = control->intersect(inView, sRect::Max)) {
                    hit = found;
                    view = candidate;
                    break;
                }
            }
        }
    }
    if (hit == nullptr) {
        hit = mpDesktop;
    }
    handleMouseEvent(window, hit, transformView(position, view));
    mMouseView = view;
    setCursor(hit->getCursor());
}

void UISystem::setCursor(eCursor cursor)
{
    if (cursor == mCurrentCursor) {
        return;
    }
    mCurrentCursor = cursor;
    unsigned int const index = static_cast<unsigned int>(cursor) < eCursor_Num ? cursor : eCursor_Normal;
    platform::setThemeCursor(kThemeCursor[index]);
}

void UISystem::handleMouseEvent(UIWindow* window, UIBase* target, sPoint const& position)
{
    sPoint const local = position - target->getAbsPosition();
    if (position != mMousePosition) {
        mMousePosition = position;
        target->sendMessage(UIMouseMoveMessage(local));
    }
    // Modal blocking: presses and wheel turns outside the modal window
    // vanish; moves above have already arrived, so hovering still works.
    if (mpActiveWindow != nullptr && mpActiveWindow->isModalWindow() && mpActiveWindow != window) {
        return;
    }
    MouseSystem const* mouse = MouseSystem::getInstance();
    u32 const pressed = mouse->getButtonTrgOn();
    if (pressed != 0) {
        if (target != mpFocus && target->isEnabled()) {
            focus(target);
        }
        u64 const now = Application::getInstance()->getAbsoluteTime();
        bool const doubleClick = (mLastClickButton & pressed) != 0 && mpLastClickTarget == target &&
                                 now - mLastClickTime < kDoubleClickTime;
        if (doubleClick) {
            // In place of the second press; a third press is a plain one.
            mpLastClickTarget = nullptr;
            target->sendMessage(UIMouseDoubleClickMessage(local, pressed));
        } else {
            mpLastClickTarget = target;
            mLastClickTime = now;
            target->sendMessage(UIMouseDownMessage(local, pressed));
        }
        if (target != mpMainMenu && window != nullptr) {
            if (window != mpActiveWindow) {
                setActiveWindow(window);
            }
            mpMenu = nullptr;
            if (mpMainMenu != nullptr) {
                mpMainMenu->initialize();
            }
        } else if (target == mpDesktop) {
            defocus();
            if (mpActiveWindow != nullptr) {
                mpActiveWindow->sendMessage(UIDeactiveMessage());
            }
            mpActiveWindow = nullptr;
            mpMenu = nullptr;
            mpMainMenu = nullptr;
        }
        if (pressed == 2 && target->getMenu() != nullptr) {
            // A context menu that would leave the view opens to the left of
            // and above the pointer instead.
            UIMenu* menu = target->getMenu();
            mpMenu = menu;
            sRect const view = getUIViewRect();
            sSize const size = menu->getSize();
            sPoint place = position;
            if (place.x + static_cast<int>(size.width) > view.right) {
                place.x -= static_cast<int>(size.width);
            }
            if (place.y + static_cast<int>(size.height) > view.bottom) {
                place.y -= static_cast<int>(size.height);
            }
            menu->initialize();
            menu->setPosition(place);
        }
        mpCapture = target;
        mLastClickButton = pressed;
    }
    sPoint const wheel = mouse->getWheelAmount();
    if (wheel != sPoint(0, 0)) {
        target->sendMessage(UIMouseWheelMessage(wheel));
    }
}

void UISystem::handleKeyEvent(UIWindow* window, UIBase* target)
{
    UIBase* receiver = target != nullptr ? target : window;
    if (receiver == nullptr) {
        return;
    }
    if (mKeyDown != 0) {
        receiver->sendMessage(UIKeyDownMessage(mKeyDown, mCombinationKey));
    }
    if (mKeyUp != 0) {
        receiver->sendMessage(UIKeyUpMessage(mKeyUp, mCombinationKey));
    }
}

// ---------------------------------------------------------------------------
// Update, layout and paint

void UISystem::updateJob(void* object)
{
    UIWindow* window = static_cast<UIWindow*>(object);
    float const delta = Application::getInstance()->getDeltaTime();
    window->sendMessage(UITimerMessage(delta));
    window->update(delta);
    sRect const view = getUIViewRect();
    window->updateRegion(view, view);
}

void UISystem::updateLayout()
{
    float const delta = Application::getInstance()->getDeltaTime();
    sRect const view = getUIViewRect();
    mpDesktop->update(delta);
    mpDesktop->updateRegion(view, view);
    if (mpMainMenu != nullptr) {
        mpMainMenu->update(delta);
        mpMainMenu->updateRegion(view, view);
    }
    JobSystem* jobs = JobSystem::getInstance();
    for (ObjectBase* window : mWindowList) {
        jobs->addJob(new Job<UISystem>(this, &UISystem::updateJob, window));
    }
    jobs->executeJob();
    for (UIMenu* menu = mpMenu; menu != nullptr; menu = menu->getSubMenu()) {
        menu->update(delta);
    }
    for (UIMenu* menu = mpMenu; menu != nullptr; menu = menu->getSubMenu()) {
        menu->updateRegion(view, view);
    }
}

void UISystem::DrawJob::execute(void* threadData)
{
    drawJob(mpWidget, mPriority, static_cast<DrawContext*>(threadData));
}

void UISystem::drawJob(UIBase* widget, unsigned int priority, DrawContext* context)
{
    UIPainter painter(context, priority);
    widget->sendMessage(UIPaintMessage(&painter));
}

void UISystem::draw()
{
    JobSystem* jobs = JobSystem::getInstance();
    RenderSystem* render = RenderSystem::getInstance();
    u32 const threads = jobs->getJobThreadNum();
    for (u32 i = 0; i < threads; ++i) {
        DrawContext* context = render->popContext();
        mDrawContexts.addLast(context);
        jobs->setThreadUniqueData(i, context);
    }
    unsigned int priority = 0;
    if (mpDesktop != nullptr) {
        jobs->addJob(new DrawJob(mpDesktop, priority++));
    }
    if (mpMainMenu != nullptr) {
        jobs->addJob(new DrawJob(mpMainMenu, priority++));
    }
    for (ObjectList::ReverseIterator it = mWindowList.rbegin(); it != mWindowList.rend(); ++it) {
        UIWindow* window = static_cast<UIWindow*>(*it);
        window->setPriority(priority);
        jobs->addJob(new DrawJob(window, priority));
        priority += kWindowPriorityStep;
    }
    for (UIMenu* menu = mpMenu; menu != nullptr; menu = menu->getSubMenu()) {
        jobs->addJob(new DrawJob(menu, priority++));
    }
    jobs->executeJob();
    for (DrawContext* context : mDrawContexts) {
        render->pushContext(context);
    }
    mDrawContexts.clear();
}

void UISystem::draw(DrawContext* context)
{
    if (mGameViewControlList.empty()) {
        return;
    }
    UIPainter painter(context);
    unsigned int const mask = 1u << context->getView();
    for (List<UIGameViewControl>::ReverseIterator it = mGameViewControlList.rbegin();
         it != mGameViewControlList.rend(); ++it) {
        UIGameViewControl* control = *it;
        if (control->isVisible() && (control->getView() & mask) != 0) {
            control->draw(&painter);
        }
    }
}

// ---------------------------------------------------------------------------
// Checks

bool UISystem::validate() const
{
    auto live = [this](UIBase const* widget) {
        if (widget == nullptr || mpDesktop->find(widget) != nullptr) {
            return true;
        }
        if (mpMainMenu != nullptr && mpMainMenu->find(widget) != nullptr) {
            return true;
        }
        for (UIMenu* menu = mpMenu; menu != nullptr; menu = menu->getSubMenu()) {
            if (menu->find(widget) != nullptr) {
                return true;
            }
        }
        for (ObjectBase* object : mWindowList) {
            if (static_cast<UIWindow*>(object)->find(widget) != nullptr) {
                return true;
            }
        }
        for (UIGameViewControl* control : mGameViewControlList) {
            if (control->find(widget) != nullptr) {
                return true;
            }
        }
        return false;
    };
    if (!live(mpFocus) || !live(mpCapture) || !live(mpLastClickTarget)) {
        return false;
    }
    if (mpActiveWindow != nullptr && mWindowList.find(mpActiveWindow) == mWindowList.end()) {
        return false;
    }
    for (UIWindow* modal : mModalWindowList) {
        if (mWindowList.find(modal) == mWindowList.end()) {
            return false;
        }
    }
    for (ObjectBase* object : mWindowList) {
        if (!static_cast<UIWindow*>(object)->validate()) {
            return false;
        }
    }
    return mpDesktop->validate();
}
