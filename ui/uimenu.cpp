#include "ui/uimenu.h"

#include <cstring>

#include "ui/uipainter.h"
#include "ui/uisystem.h"

namespace {

unsigned int const kPrimary = 1;
int const kMenuPadding = 24;
int const kMenuBottom = 8;

} // namespace

// ---------------------------------------------------------------------------
// [SECTION] UIMenu::Item

UIMenu::Item::Item(char const* name, Function* function, UIMenu* subMenu, eItemAttribute attribute, bool enabled,
                   bool checked, unsigned int index)
    : mpFunction(function), mpName(name), mpSubMenu(subMenu), mEnabled(enabled), mChecked(false),
      mAttribute(attribute), mIndex(index)
{
    setCheck(checked);
}

UIMenu::Item::~Item()
{
    delete mpFunction;
    delete mpSubMenu;
}

void UIMenu::Item::setCheck(bool checked)
{
    if (mAttribute == eItemAttribute_Check || mAttribute == eItemAttribute_Radio) {
        mChecked = checked;
    }
}

void UIMenu::Item::occurEvent()
{
    if (mpFunction != nullptr) {
        (*mpFunction)();
    }
}

// ---------------------------------------------------------------------------
// [SECTION] UIMenu

UIMenu::UIMenu() : mpOpenItem(nullptr), mpSelectItem(nullptr) {}

// A menu that goes away must not stay in UISystem's chain.
UIMenu::~UIMenu()
{
    if (UISystem* system = UISystem::getInstance()) {
        system->notifyMenuChange(this);
    }
    for (Item* item : mItems) {
        delete item;
    }
}

void UIMenu::addItem(char const* name, Function* function, UIMenu* subMenu, eItemAttribute attribute, bool enabled,
                     bool checked)
{
    mItems.addLast(new Item(name, function, subMenu, attribute, enabled, checked, mItems.size()));
    size_t longest = 0;
    for (Item const* item : mItems) {
        if (item->getAttribute() != eItemAttribute_Separator && item->getName() != nullptr) {
            size_t const length = strlen(item->getName());
            longest = (length > longest) ? length : longest;
        }
    }
    setSize(sSize(static_cast<unsigned int>(longest) * UIPainter::kFontWidth + kMenuPadding,
                  mItems.size() * kRowHeight + kMenuBottom));
}

void UIMenu::initialize()
{
    mpOpenItem = nullptr;
    mpSelectItem = nullptr;
    setBorderStyle(eBorderStyle_Frame);
}

UIMenu* UIMenu::getSubMenu() const
{
    return (mpOpenItem != nullptr && mpOpenItem->isEnabled()) ? mpOpenItem->getSubMenu() : nullptr;
}

void UIMenu::openSubMenu(Item* item)
{
    UIMenu* subMenu = item->getSubMenu();
    if (subMenu == nullptr) {
        return;
    }
    mpOpenItem = item;
    sRect const view = UISystem::getInstance()->getUIViewRect();
    sPoint const at = getPosition();
    int const width = static_cast<int>(getSize().width);
    int const subWidth = static_cast<int>(subMenu->getSize().width);
    int const subHeight = static_cast<int>(subMenu->getSize().height);
    sPoint place(at.x + width - kTopMargin, at.y + static_cast<int>(item->getIndex()) * kRowHeight + kTopMargin);
    if (place.x + subWidth > view.right) {
        place.x = at.x - subWidth + kTopMargin;
    }
    // Deliberately from the parent menu's top, not from the row.
    if (place.y + subHeight > view.bottom) {
        place.y = at.y - subHeight + kRowHeight;
    }
    subMenu->initialize();
    subMenu->setPosition(place);
}

void UIMenu::checkItem(Item* item, bool checked)
{
    if (item->getAttribute() == eItemAttribute_Radio) {
        if (!checked) {
            return;
        }
        for (Item* other : mItems) {
            other->setCheck(false);
        }
    }
    item->setCheck(checked);
}

UIMenu::Item* UIMenu::findItem(char const* name) const
{
    for (Item* item : mItems) {
        if (item->getName() != nullptr && strcmp(item->getName(), name) == 0) {
            return item;
        }
    }
    return nullptr;
}

void UIMenu::setItemCheck(char const* name, bool checked)
{
    if (Item* item = findItem(name)) {
        checkItem(item, checked);
    }
}

bool UIMenu::isItemChecked(char const* name) const
{
    Item const* item = findItem(name);
    return item != nullptr && item->isChecked();
}

void UIMenu::setItemEnable(char const* name, bool enabled)
{
    if (Item* item = findItem(name)) {
        item->setEnable(enabled);
    }
}

bool UIMenu::isItemEnabled(char const* name) const
{
    Item const* item = findItem(name);
    return item != nullptr && item->isEnabled();
}

UIMenu* UIMenu::findSubMenu(char const* name) const
{
    Item const* item = findItem(name);
    return item != nullptr ? item->getSubMenu() : nullptr;
}

UIMenu::Item* UIMenu::itemAt(sPoint const& position) const
{
    // Integer division rounds toward zero: the top margin counts as row 0.
    int const row = (position.y - kTopMargin) / kRowHeight;
    return (row >= 0 && static_cast<unsigned int>(row) < mItems.size()) ? mItems[static_cast<unsigned int>(row)]
                                                                         : nullptr;
}

void UIMenu::fire(Item* item)
{
    checkItem(item, !item->isChecked());
    item->occurEvent();
    UISystem::getInstance()->notifyMenuEnd();
}

void UIMenu::eventMouseMove(sPoint const& position)
{
    if (Item* item = itemAt(position)) {
        mpSelectItem = item;
    }
}

// The mouse does not look at the enabled flag: a disabled item with a
// functor fires all the same. Only the keyboard honours it.
void UIMenu::eventMouseUp(sPoint const& position, unsigned int button)
{
    Item* item = itemAt(position);
    if ((button & kPrimary) == 0 || item == nullptr) {
        return;
    }
    if (item->getSubMenu() == nullptr) {
        fire(item);
    } else {
        openSubMenu(item);
    }
}

void UIMenu::eventKeyDown(unsigned int key, unsigned int combination)
{
    if (combination != 0) {
        return;
    }
    UISystem* system = UISystem::getInstance();
    switch (key) {
    case UISystem::eKey_Return:
        if (mpSelectItem == nullptr || !mpSelectItem->isEnabled() ||
            mpSelectItem->getAttribute() == eItemAttribute_Separator) {
            system->notifyMenuEnd();
        } else if (mpSelectItem->getSubMenu() == nullptr) {
            fire(mpSelectItem);
        } else {
            openSubMenu(mpSelectItem);
        }
        break;
    case UISystem::eKey_Escape:
        system->notifyMenuEnd();
        break;
    case UISystem::eKey_Up:
    case UISystem::eKey_Down: {
        if (mItems.empty()) {
            break;
        }
        bool const down = key == UISystem::eKey_Down;
        if (mpSelectItem == nullptr) {
            mpSelectItem = down ? mItems[0] : mItems[mItems.size() - 1];
            break;
        }
        // Over separators, stopping at the ends.
        int const step = down ? 1 : -1;
        for (int i = static_cast<int>(mpSelectItem->getIndex()) + step; i >= 0 && i < static_cast<int>(mItems.size());
             i += step) {
            if (mItems[i]->getAttribute() != eItemAttribute_Separator) {
                mpSelectItem = mItems[i];
                break;
            }
        }
        break;
    }
    default:
        break;
    }
}

void UIMenu::eventPaint(UIPainter* painter)
{
    UISystem const* system = UISystem::getInstance();
    sRect const r(getSize());
    painter->drawRect(r, system->mMenuColor);
    drawBorder(painter);
    for (Item const* item : mItems) {
        int const y = kTopMargin + kRowHeight * static_cast<int>(item->getIndex());
        if (item->getAttribute() == eItemAttribute_Separator) {
            painter->drawLine(sPoint(kTextLeft, y + 6), sPoint(r.right - 8, y + 6), system->mMenuDisableFontColor);
            continue;
        }
        bool const selected = item == mpSelectItem;
        if (selected) {
            painter->drawRect(sRect(r.left + 2, y, r.right - 2, y + kRowHeight), system->mMenuSelectColor);
        }
        sColor const color = !item->isEnabled() ? system->mMenuDisableFontColor
                             : selected         ? system->mMenuSelectFontColor
                                                : system->mMenuFontColor;
        if (item->getName() != nullptr) {
            painter->drawString(sPoint(kTextLeft, y), item->getName(), color);
        }
        if (item->getSubMenu() != nullptr) {
            sPoint const at(r.right - 8, y);
            painter->drawTriangle(at + sPoint(2, 4), at + sPoint(6, 7), at + sPoint(2, 10), color);
        }
        if (item->isChecked()) {
            if (item->getAttribute() == eItemAttribute_Radio) {
                painter->drawRect(sRect(r.left + 3, y + 4, r.left + 9, y + 10), color);
            } else {
                painter->drawLine(sPoint(r.left + 4, y + 7), sPoint(r.left + 6, y + 9), color);
                painter->drawLine(sPoint(r.left + 6, y + 9), sPoint(r.left + 9, y + 3), color);
            }
        }
    }
}

// ---------------------------------------------------------------------------
// [SECTION] UIMainMenu

UIMainMenu::UIMainMenu() : mpOpenItem(nullptr), mpSelectItem(nullptr) {}

UIMainMenu::~UIMainMenu()
{
    for (Item* item : mItems) {
        delete item;
    }
}

void UIMainMenu::addItem(char const* name, UIMenu* menu)
{
    mItems.addLast(new Item(name, menu, mItems.size()));
}

void UIMainMenu::initialize()
{
    mpOpenItem = nullptr;
    mpSelectItem = nullptr;
    int left = 0;
    int const height = static_cast<int>(getSize().height);
    for (Item* item : mItems) {
        int const width = (item->getName() != nullptr)
                              ? static_cast<int>(strlen(item->getName())) * UIPainter::kFontWidth + kItemPadding
                              : kItemPadding;
        item->mRegion = sRect(left, 0, left + width, height);
        left += width;
    }
    setBorderStyle(eBorderStyle_Frame);
}

UIMenu* UIMainMenu::getSubMenu() const
{
    return mpOpenItem != nullptr ? mpOpenItem->getSubMenu() : nullptr;
}

void UIMainMenu::openSubMenu(Item* item)
{
    mpOpenItem = item;
    UIMenu* menu = item->getSubMenu();
    if (menu == nullptr) {
        return;
    }
    menu->initialize();
    menu->setPosition(sPoint(item->getRegion().left, item->getRegion().bottom) + getPosition());
    UISystem::getInstance()->notifyMainMenuSelect(menu);
}

int UIMainMenu::getMenuIndex(sPoint const& position) const
{
    for (Item const* item : mItems) {
        sRect const& region = item->getRegion();
        if (item->getName() != nullptr && region.left <= position.x && position.x < region.right &&
            region.top <= position.y && position.y < region.bottom) {
            return static_cast<int>(item->getIndex());
        }
    }
    return -1;
}

void UIMainMenu::eventMouseMove(sPoint const& position)
{
    int const index = getMenuIndex(position);
    if (index >= 0) {
        mpSelectItem = mItems[static_cast<unsigned int>(index)];
    }
}

void UIMainMenu::eventMouseDown(sPoint const& position, unsigned int button)
{
    int const index = getMenuIndex(position);
    if ((button & kPrimary) != 0 && index >= 0) {
        openSubMenu(mItems[static_cast<unsigned int>(index)]);
    }
}

void UIMainMenu::eventKeyDown(unsigned int key, unsigned int combination)
{
    if (key == UISystem::eKey_Return && combination == 0 && mpSelectItem != nullptr) {
        openSubMenu(mpSelectItem);
    }
}

void UIMainMenu::eventPaint(UIPainter* painter)
{
    UISystem const* system = UISystem::getInstance();
    painter->drawRect(sRect(getSize()), system->mMenuColor);
    for (Item const* item : mItems) {
        if (item->getName() == nullptr) {
            continue;
        }
        bool const selected = item == mpSelectItem;
        if (selected) {
            painter->drawRect(item->getRegion(), system->mMenuSelectColor);
        }
        painter->drawString(item->getRegion(), item->getName(),
                            selected ? system->mMenuSelectFontColor : system->mMenuFontColor, eAlignment_CenterMiddle);
    }
    drawBorder(painter);
}
