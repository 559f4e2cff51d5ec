// UIMenu and UIMainMenu: a pop-up menu and a menu bar. Neither lies in a
// window's tree: UISystem holds the open pop-up menus as a chain from its
// mpMenu through getSubMenu(), and the active window's bar as its main menu,
// and hit-tests, updates and paints them itself. A pop-up menu is rows of 14
// pixels under a 4-pixel margin; a bar is items side by side, 6 pixels a
// character plus 16.
#pragma once

#include "foundation/functor.h"
#include "foundation/vector.h"
#include "ui/uibase.h"

class UIMenu : public UIBase {
public:
    typedef FunctorIntermediate<void, void> Function;

    enum eItemAttribute {
        eItemAttribute_Normal,
        eItemAttribute_Check,
        eItemAttribute_Radio,
        eItemAttribute_Separator,
    };

    static constexpr int kRowHeight = 14;
    static constexpr int kTopMargin = 4;
    static constexpr int kTextLeft = 12;

    class Item {
    public:
        Item(char const* name, Function* function, UIMenu* subMenu, eItemAttribute attribute, bool enabled,
             bool checked, unsigned int index);
        // Deletes the functor and the sub-menu.
        ~Item();

        char const* getName() const { return mpName; }
        UIMenu* getSubMenu() const { return mpSubMenu; }
        bool isChecked() const { return mChecked; }
        // Only check and radio items keep a check.
        void setCheck(bool checked);
        bool isEnabled() const { return mEnabled; }
        void setEnable(bool enabled) { mEnabled = enabled; }
        eItemAttribute getAttribute() const { return mAttribute; }
        unsigned int getIndex() const { return mIndex; }
        // Calls the functor, if any.
        void occurEvent();

        static void* operator new(std::size_t size) noexcept { return UIBase::allocate(static_cast<unsigned int>(size)); }
        static void operator delete(void* pointer) { UIBase::deallocate(pointer); }

    private:
        Function* mpFunction;
        char const* mpName;
        UIMenu* mpSubMenu;
        bool mEnabled;
        bool mChecked;
        eItemAttribute mAttribute;
        u32 mIndex;
    };

    UIMenu();
    ~UIMenu() override;

    // Appends a row; the size becomes longest name * 6 + 24 by rows * 14 + 8.
    // The functor and sub-menu are owned; name is not copied (null for a
    // separator).
    void addItem(char const* name, Function* function = nullptr, UIMenu* subMenu = nullptr,
                 eItemAttribute attribute = eItemAttribute_Normal, bool enabled = true, bool checked = false);
    template <typename T>
    void addItem(char const* name, T* target, void (T::*member)(), eItemAttribute attribute = eItemAttribute_Normal,
                 bool enabled = true, bool checked = false)
    {
        addItem(name, new Functor<T, void, void>(target, member), nullptr, attribute, enabled, checked);
    }
    void addSeparator() { addItem(nullptr, nullptr, nullptr, eItemAttribute_Separator); }

    // Every time the menu opens: nothing open, nothing selected.
    void initialize();
    // The sub-menu of the open item, when that item is enabled.
    UIMenu* getSubMenu() const;
    void openSubMenu(Item* item);
    // A radio item ignores false and clears the menu's other checks first.
    void checkItem(Item* item, bool checked);
    // By name, the first match; nothing, false or null without one.
    void setItemCheck(char const* name, bool checked);
    bool isItemChecked(char const* name) const;
    void setItemEnable(char const* name, bool enabled);
    bool isItemEnabled(char const* name) const;
    UIMenu* findSubMenu(char const* name) const;

    unsigned int getItemCount() const { return mItems.size(); }
    Item* getItem(unsigned int index) const { return mItems[index]; }
    Item* getSelectItem() const { return mpSelectItem; }

    void eventPaint(UIPainter* painter) override;
    void eventMouseMove(sPoint const& position) override;
    void eventMouseUp(sPoint const& position, unsigned int button) override;
    void eventKeyDown(unsigned int key, unsigned int combination) override;
    void eventKeyUp(unsigned int, unsigned int) override {}

private:
    Item* findItem(char const* name) const;
    // The row under a local position, or null.
    Item* itemAt(sPoint const& position) const;
    void fire(Item* item);

    Vector<Item> mItems;
    Item* mpOpenItem;
    Item* mpSelectItem;
};

class UIMainMenu : public UIBase {
public:
    static constexpr int kItemPadding = 16;

    class Item {
    public:
        Item(char const* name, UIMenu* menu, unsigned int index)
            : mRegion(sRect::Zero), mpName(name), mpSubMenu(menu), mIndex(index)
        {
        }
        ~Item() { delete mpSubMenu; }

        char const* getName() const { return mpName; }
        UIMenu* getSubMenu() const { return mpSubMenu; }
        sRect const& getRegion() const { return mRegion; }
        unsigned int getIndex() const { return mIndex; }

        static void* operator new(std::size_t size) noexcept { return UIBase::allocate(static_cast<unsigned int>(size)); }
        static void operator delete(void* pointer) { UIBase::deallocate(pointer); }

    private:
        friend class UIMainMenu;
        sRect mRegion;
        char const* mpName;
        UIMenu* mpSubMenu;
        u32 mIndex;
    };

    UIMainMenu();
    ~UIMainMenu() override;

    // The menu is owned.
    void addItem(char const* name, UIMenu* menu);
    // When the bar becomes current and when a menu chain closes: nothing
    // open or selected, item regions laid out from the left.
    void initialize();
    // The pull-down opened from the bar, or null.
    UIMenu* getSubMenu() const;
    void openSubMenu(Item* item);
    // The index of the named item whose region holds the point, or -1.
    int getMenuIndex(sPoint const& position) const;
    unsigned int getItemCount() const { return mItems.size(); }
    Item* getItem(unsigned int index) const { return mItems[index]; }
    Item* getSelectItem() const { return mpSelectItem; }

    void eventPaint(UIPainter* painter) override;
    void eventMouseMove(sPoint const& position) override;
    void eventMouseDown(sPoint const& position, unsigned int button) override;
    void eventKeyDown(unsigned int key, unsigned int combination) override;
    void eventKeyUp(unsigned int, unsigned int) override {}

private:
    Vector<Item> mItems;
    Item* mpOpenItem;
    Item* mpSelectItem;
};
