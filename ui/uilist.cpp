#include "ui/uilist.h"

#include <cstdint>
#include <cstring>

#include "foundation/utils.h"
#include "reflection/control.h"
#include "reflection/objectlist.h"
#include "reflection/property.h"
#include "ui/uibutton.h"
#include "ui/uimessage.h"
#include "ui/uiscrollbar.h"
#include "ui/uisystem.h"

namespace {

unsigned int const kPrimary = 1;
// The header and the frame below it: the view of the rows is the list's
// height less this.
int const kRowViewMargin = 18;
// Text keeps off the grid lines by this much on either side.
int const kCellMargin = 2;

// The property lists of the rows live in the widget heap like the widgets.
class Row : public PropertyList {
public:
    static void* operator new(std::size_t size) noexcept { return UIBase::allocate(static_cast<unsigned int>(size)); }
    static void operator delete(void* pointer) { UIBase::deallocate(pointer); }
};

eAlignment toAlignment(unsigned int alignment)
{
    switch (alignment) {
    case eColumnAlignment_Center:
        return eAlignment_CenterMiddle;
    case eColumnAlignment_Right:
        return eAlignment_RightMiddle;
    default:
        return eAlignment_LeftMiddle;
    }
}

} // namespace

// ---------------------------------------------------------------------------
// UIList

UIList::UIList(bool multiSelect)
    : mMultiSelect(multiSelect), mRowCount(0), mpSelectFunction(nullptr), mpDecideFunction(nullptr),
      mSelectRow(kNoRow), mpSelectFlags(nullptr), mpScrollBar(nullptr)
{
    setBorderStyle(eBorderStyle_Concave);
    setMinimumSize(sSize(16, 16));
    mpScrollBar = new UIScrollBar(eBarDirection_Vertical);
    add(mpScrollBar);
    mpScrollBar->hide();
}

UIList::~UIList()
{
    clearRows();
    for (Column* column : mColumns) {
        delete column;
    }
    delete mpSelectFunction;
    delete mpDecideFunction;
}

void UIList::setFunction(Function* select, Function* decide)
{
    delete mpSelectFunction;
    delete mpDecideFunction;
    mpSelectFunction = select;
    mpDecideFunction = decide;
}

void UIList::addColumn(char const* name, unsigned int characterCount, unsigned int width, eColumnAlignment alignment)
{
    int x = 1;
    for (Column const* column : mColumns) {
        x += column->mWidth;
    }
    UIButton* button = new UIButton(this, &UIList::notifyColumnButton, name);
    button->setPosition(sPoint(x, 1));
    button->setSize(sSize(width, kRowHeight));
    add(button);
    mColumns.addLast(new Column(button, name, characterCount, width, alignment));
}

void UIList::clearRows()
{
    for (u32 i = 0; i < mRows.size(); ++i) {
        delete static_cast<Row*>(mRows[i]);
    }
    mRows.clear();
    mRowCount = 0;
    if (mpSelectFlags != nullptr) {
        UIBase::deallocate(mpSelectFlags);
        mpSelectFlags = nullptr;
    }
}

void UIList::setObjectList(ObjectList* list)
{
    clearRows();
    mSelectRow = kNoRow;
    if (list == nullptr) {
        return;
    }
    unsigned int const count = list->size();
    if (mMultiSelect && count != 0) {
        mpSelectFlags = static_cast<unsigned char*>(UIBase::allocate(count));
        memset(mpSelectFlags, 0, count);
    }
    if (count > mRows.getCapacity()) {
        mRows.reserve(count);
    }
    for (ObjectBase* object : *list) {
        Row* row = new Row();
        if (object != nullptr) {
            object->makePropertyList(*row);
        }
        mRows.addLast(row);
    }
    mRowCount = count;
}

void UIList::refresh()
{
    setSelectRow(kNoRow);
    mpScrollBar->setBarPosition(0);
    setScrollBarParam();
}

bool UIList::isSelected(unsigned int row) const
{
    if (row >= mRowCount) {
        return false;
    }
    if (mMultiSelect) {
        return mpSelectFlags[row] != 0;
    }
    return row == mSelectRow;
}

void UIList::setSelectFlag(unsigned int row, bool selected)
{
    if (mMultiSelect && row < mRowCount) {
        mpSelectFlags[row] = selected ? 1 : 0;
    }
}

void UIList::setSelectRow(unsigned int row)
{
    if (mRowCount == 0) {
        return;
    }
    if (mMultiSelect) {
        memset(mpSelectFlags, 0, mRowCount);
    }
    if (row == kNoRow) {
        mSelectRow = kNoRow;
        return;
    }
    if (row < mRowCount) {
        mSelectRow = row;
        if (mMultiSelect) {
            mpSelectFlags[row] = 1;
        }
    }
}

void UIList::selectRow(unsigned int row)
{
    setSelectRow(row);
    if (mRowCount != 0 && row < mRowCount && mpSelectFunction != nullptr) {
        (*mpSelectFunction)(row);
    }
}

void UIList::decideRow(unsigned int row)
{
    if (row == kNoRow) {
        setSelectRow(kNoRow);
        return;
    }
    if (row < mRowCount) {
        setSelectRow(row);
        if (mpDecideFunction != nullptr) {
            (*mpDecideFunction)(row);
        }
    }
}

int UIList::getScrollPosition() const
{
    return mpScrollBar->isVisible() ? mpScrollBar->getBarPosition() : 0;
}

unsigned int UIList::getRowFromPosition(sPoint const& position) const
{
    int const y = position.y - kHeaderBottom + getScrollPosition();
    return (y < 0) ? kNoRow : static_cast<unsigned int>(y / kRowHeight);
}

void UIList::scrollTo(unsigned int row)
{
    if (!mpScrollBar->isVisible() || row >= mRowCount) {
        return;
    }
    int const view = static_cast<int>(getSize().height) - kRowViewMargin;
    int const top = static_cast<int>(row) * kRowHeight;
    int position = mpScrollBar->getBarPosition();
    if (top < position) {
        position = top;
    } else if (top + kRowHeight > position + view) {
        position = top + kRowHeight - view;
    }
    mpScrollBar->setBarPosition(position);
}

void UIList::setScrollBarParam()
{
    if (mRowCount == 0) {
        mpScrollBar->hide();
        return;
    }
    int const view = static_cast<int>(getSize().height) - kRowViewMargin;
    s64 const content = static_cast<s64>(mRowCount) * kRowHeight + 1;
    if (view < content) {
        unsigned int const barWidth = mpScrollBar->getMinimumSize().width;
        mpScrollBar->setSize(sSize(barWidth, view > 0 ? view : 0));
        mpScrollBar->setPosition(sPoint(static_cast<int>(getSize().width) - static_cast<int>(barWidth) - 1,
                                        kHeaderBottom));
        if (!mpScrollBar->isVisible()) {
            mpScrollBar->setBarPosition(0);
            mpScrollBar->show();
        }
        s64 const maximum = static_cast<s64>(mRowCount) * kRowHeight - 1;
        mpScrollBar->setMaximum(maximum > INT32_MAX ? INT32_MAX : static_cast<int>(maximum));
        mpScrollBar->setBarRange(view > 0 ? static_cast<unsigned int>(view - 1) : 0);
    } else {
        mpScrollBar->hide();
    }
}

// A column that reaches the right edge is cut to what is left, and the ones
// after it get the same place: the first button past the edge has no size.
void UIList::updateButtonLayout()
{
    int const width = static_cast<int>(getSize().width);
    int x = 1;
    for (Column* column : mColumns) {
        column->mpButton->setPosition(sPoint(x, 1));
        int const columnWidth = static_cast<int>(column->mWidth);
        if (x >= width) {
            column->mpButton->setSize(sSize(0, 0));
        } else if (x + columnWidth >= width - 1) {
            column->mpButton->setSize(sSize(width - 1 - x > 0 ? width - 1 - x : 0, kRowHeight));
        } else {
            column->mpButton->setSize(sSize(columnWidth, kRowHeight));
            x += columnWidth;
        }
    }
}

void UIList::updateRegion(sRect const& parentRegion, sRect const& parentDrawRegion)
{
    updateOwnRegion(parentRegion, parentDrawRegion);
    setScrollBarParam();
    updateButtonLayout();
    updateChildrenRegion(getAbsRegion(), getDrawRegion());
}

PropertyBase* UIList::findCell(PropertyList* row, char const* name)
{
    u32 const hash = Utils::hash(name);
    for (PropertyBase* property : *row) {
        if (property->getNameHash() == hash) {
            return property;
        }
    }
    return nullptr;
}

// Only the rows inside the list are walked: the first visible row is found
// by arithmetic, so the cost follows the list's height, not its row count.
void UIList::eventPaint(UIPainter* painter)
{
    UISystem const* system = UISystem::getInstance();
    sSize const size = getSize();
    int const width = static_cast<int>(size.width);
    int const height = static_cast<int>(size.height);
    painter->drawRect(sRect(size), system->mClientRegionColor);
    int const scroll = getScrollPosition();
    unsigned int row = static_cast<unsigned int>(scroll / kRowHeight);
    for (; row < mRowCount; ++row) {
        int const top = kHeaderBottom - scroll + static_cast<int>(row) * kRowHeight;
        if (top >= height - 1) {
            break;
        }
        if (top + kRowHeight <= kHeaderBottom - 1) {
            continue;
        }
        drawRow(painter, mRows[row], sRect(1, top, width - 1, top + kRowHeight), row, isSelected(row));
    }
    for (int y = 32 - scroll % kRowHeight; y < height - 1; y += kRowHeight) {
        if (y > kRowHeight) {
            painter->drawLine(sPoint(1, y), sPoint(width - 1, y), sColor::Gray);
        }
    }
    int x = 1;
    for (Column const* column : mColumns) {
        x += column->mWidth;
        if (x >= width - 1) {
            break;
        }
        painter->drawLine(sPoint(x, 1), sPoint(x, height - 1), sColor::Gray);
    }
    drawBorder(painter);
}

void UIList::drawRow(UIPainter* painter, PropertyList* row, sRect const& rect, unsigned int rowIndex, bool selected)
{
    UISystem const* system = UISystem::getInstance();
    sColor color = system->mClientFontColor;
    if (selected) {
        painter->drawRect(rect, system->mClientRegionSelectColor);
        color = system->mClientSelectFontColor;
    }
    int x = rect.left;
    unsigned int columnIndex = 0;
    for (Column const* column : mColumns) {
        if (x >= rect.right - 1) {
            break;
        }
        int right = x + static_cast<int>(column->mWidth);
        if (right > rect.right - 1) {
            right = rect.right - 1;
        }
        if (PropertyBase* property = findCell(row, column->mpName)) {
            drawColumn(painter, property, sRect(x, rect.top, right, rect.bottom),
                       static_cast<eColumnAlignment>(column->mAlignment), rowIndex, columnIndex,
                       color);
        }
        x += static_cast<int>(column->mWidth);
        ++columnIndex;
    }
}

void UIList::drawColumn(UIPainter* painter, PropertyBase* property, sRect const& rect, eColumnAlignment alignment,
                        unsigned int, unsigned int column, sColor color)
{
    if (property->getType() == 1) {
        if (property->getNumeric(PropertyBase::CurrentIndex) != 0) {
            painter->drawCheck(rect, color);
        }
        return;
    }
    char buffer[256];
    char const* text = property->getString(buffer, PropertyBase::CurrentIndex);
    if (text == nullptr) {
        return;
    }
    // The column's character count caps the text; the painter also cuts it
    // to the cell's width.
    unsigned int const cap = mColumns[column]->mCharacterCount;
    if (cap != 0 && strlen(text) > cap) {
        char cut[256];
        unsigned int const length = cap < sizeof(cut) - 1 ? cap : sizeof(cut) - 1;
        memcpy(cut, text, length);
        cut[length] = '\0';
        painter->drawString(sRect(rect.left + kCellMargin, rect.top, rect.right - kCellMargin, rect.bottom), cut, color,
                            toAlignment(alignment));
        return;
    }
    painter->drawString(sRect(rect.left + kCellMargin, rect.top, rect.right - kCellMargin, rect.bottom), text, color,
                        toAlignment(alignment));
}

void UIList::eventMouseDown(sPoint const& position, unsigned int button)
{
    if ((button & kPrimary) == 0 || mRowCount == 0) {
        return;
    }
    unsigned int const row = getRowFromPosition(position);
    UISystem const* system = UISystem::getInstance();
    if (mMultiSelect && (system->getCombinationKey() & UISystem::eCombinationKey_Command) != 0) {
        if (row < mRowCount) {
            mpSelectFlags[row] ^= 1;
            mSelectRow = row;
            if (mpSelectFunction != nullptr) {
                (*mpSelectFunction)(row);
            }
        }
        return;
    }
    selectRow(row < mRowCount ? row : kNoRow);
}

void UIList::eventMouseDoubleClick(sPoint const& position, unsigned int button)
{
    if ((button & kPrimary) == 0 || mRowCount == 0) {
        return;
    }
    unsigned int const row = getRowFromPosition(position);
    if (row < mRowCount) {
        decideRow(row);
    }
}

void UIList::eventKeyDown(unsigned int keyCode, unsigned int combinationKey)
{
    if (combinationKey != 0) {
        delegate();
        return;
    }
    switch (keyCode) {
    case UISystem::eKey_Return:
        decideRow(mSelectRow);
        break;
    case UISystem::eKey_Down:
        if (mSelectRow == kNoRow) {
            selectRow(0);
        } else if (mSelectRow + 1 < mRowCount) {
            selectRow(mSelectRow + 1);
        }
        scrollTo(mSelectRow);
        break;
    case UISystem::eKey_Up:
        if (mSelectRow != kNoRow && mSelectRow != 0) {
            selectRow(mSelectRow - 1);
        }
        scrollTo(mSelectRow);
        break;
    default:
        delegate();
        break;
    }
}

void UIList::eventMouseWheel(sPoint const& amount)
{
    if (!mpScrollBar->isVisible()) {
        delegate();
        return;
    }
    if (amount.x != 0) {
        mpScrollBar->sendMessage(UIMouseWheelMessage(sPoint(amount.x, 0)));
    }
    if (amount.y != 0) {
        mpScrollBar->sendMessage(UIMouseWheelMessage(sPoint(0, amount.y)));
    }
}

// ---------------------------------------------------------------------------
// UIPulldownList

UIPulldownList::UIPulldownList() : UIBase(eAttribute_Floating), mpFunction(nullptr), mSelectItem(kNoItem), mpScrollBar(nullptr)
{
    setBorderStyle(eBorderStyle_Frame);
    setMinimumSize(sSize(16, 16));
    mpScrollBar = new UIScrollBar(eBarDirection_Vertical);
    add(mpScrollBar);
    mpScrollBar->hide();
}

UIPulldownList::~UIPulldownList()
{
    clearItem();
    delete mpFunction;
}

void UIPulldownList::setFunction(Function* function)
{
    delete mpFunction;
    mpFunction = function;
}

void UIPulldownList::addItem(char const* name)
{
    sItem* item = new sItem();
    item->mName = name;
    item->mIndex = mItems.size();
    mItems.addLast(item);
    mSelectItem = kNoItem;
    setScrollBarParam();
}

void UIPulldownList::removeItem(unsigned int item)
{
    if (item >= mItems.size()) {
        return;
    }
    sItem* removed = mItems[item];
    mItems.remove(removed);
    delete removed;
    unsigned int index = 0;
    for (sItem* entry : mItems) {
        entry->mIndex = index++;
    }
    mSelectItem = kNoItem;
    setScrollBarParam();
}

void UIPulldownList::clearItem()
{
    for (sItem* item : mItems) {
        delete item;
    }
    mItems.clear();
    mSelectItem = kNoItem;
    setScrollBarParam();
}

char const* UIPulldownList::getItemName(unsigned int item) const
{
    return item < mItems.size() ? mItems[item]->mName.c_str() : nullptr;
}

int UIPulldownList::getScrollPosition() const
{
    return mpScrollBar->isVisible() ? mpScrollBar->getBarPosition() : 0;
}

unsigned int UIPulldownList::getItemFromPosition(sPoint const& position) const
{
    int const y = position.y - 1 + getScrollPosition();
    return (y < 0) ? kNoItem : static_cast<unsigned int>(y / kRowHeight);
}

void UIPulldownList::setSelectItem(unsigned int item)
{
    if (item != kNoItem && item >= mItems.size()) {
        return;
    }
    mSelectItem = item;
    if (item == kNoItem || !mpScrollBar->isVisible()) {
        return;
    }
    int const view = static_cast<int>(getSize().height) - 2;
    int const top = static_cast<int>(item) * kRowHeight;
    int position = mpScrollBar->getBarPosition();
    if (top < position) {
        position = top;
    } else if (top + kRowHeight > position + view) {
        position = top + kRowHeight - view;
    }
    mpScrollBar->setBarPosition(position);
}

void UIPulldownList::selectItem(unsigned int item)
{
    if (item == kNoItem) {
        mSelectItem = kNoItem;
        return;
    }
    if (item >= mItems.size()) {
        return;
    }
    mSelectItem = item;
    UISystem::getInstance()->defocus();
}

void UIPulldownList::setScrollBarParam()
{
    int const height = static_cast<int>(getSize().height);
    int const total = static_cast<int>(mItems.size()) * kRowHeight + 2;
    if (height < total) {
        unsigned int const barWidth = mpScrollBar->getMinimumSize().width;
        mpScrollBar->setSize(sSize(barWidth, height > 2 ? height - 2 : 0));
        mpScrollBar->setPosition(sPoint(static_cast<int>(getSize().width) - static_cast<int>(barWidth) - 1, 1));
        if (!mpScrollBar->isVisible()) {
            mpScrollBar->setBarPosition(0);
            mpScrollBar->show();
        }
        mpScrollBar->setMaximum(mItems.empty() ? 0 : static_cast<int>(mItems.size()) * kRowHeight - 1);
        mpScrollBar->setBarRange(height > 2 ? static_cast<unsigned int>(height - 2) : 0);
    } else {
        mpScrollBar->hide();
    }
}

void UIPulldownList::updateRegion(sRect const& parentRegion, sRect const& parentDrawRegion)
{
    updateOwnRegion(parentRegion, parentDrawRegion);
    setScrollBarParam();
    updateChildrenRegion(getAbsRegion(), getDrawRegion());
}

void UIPulldownList::eventPaint(UIPainter* painter)
{
    UISystem const* system = UISystem::getInstance();
    sSize const size = getSize();
    int const width = static_cast<int>(size.width);
    int const height = static_cast<int>(size.height);
    painter->drawRect(sRect(size), system->mClientRegionColor);
    int const scroll = getScrollPosition();
    for (unsigned int item = static_cast<unsigned int>(scroll / kRowHeight); item < mItems.size(); ++item) {
        int const top = 1 - scroll + static_cast<int>(item) * kRowHeight;
        if (top >= height - 1) {
            break;
        }
        sRect const row(1, top, width - 1, top + kRowHeight);
        sColor color = system->mClientFontColor;
        if (item == mSelectItem) {
            painter->drawRect(row, system->mClientRegionSelectColor);
            color = system->mClientSelectFontColor;
        }
        painter->drawString(sRect(kTextLeft, top, width - 1, top + kRowHeight), mItems[item]->mName, color,
                            eAlignment_LeftMiddle);
    }
    drawBorder(painter);
}

void UIPulldownList::eventMouseMove(sPoint const& position)
{
    if (position.y > 0) {
        unsigned int const item = getItemFromPosition(position);
        if (item < mItems.size()) {
            setSelectItem(item);
        }
    }
}

void UIPulldownList::eventMouseDown(sPoint const& position, unsigned int button)
{
    if ((button & 1) != 0) {
        selectItem(getItemFromPosition(position));
    }
}

void UIPulldownList::eventKeyDown(unsigned int keyCode, unsigned int combinationKey)
{
    if (combinationKey != 0) {
        return;
    }
    switch (keyCode) {
    case UISystem::eKey_Return:
        // Confirms the highlight, or closes with none.
        UISystem::getInstance()->defocus();
        break;
    case UISystem::eKey_Down:
        if (mSelectItem == kNoItem) {
            setSelectItem(0);
        } else if (mSelectItem + 1 < mItems.size()) {
            setSelectItem(mSelectItem + 1);
        }
        break;
    case UISystem::eKey_Up:
        if (mSelectItem != kNoItem && mSelectItem != 0) {
            setSelectItem(mSelectItem - 1);
        }
        break;
    default:
        break;
    }
}

// Any loss of the focus, a click elsewhere too, applies the highlight.
void UIPulldownList::eventDefocus()
{
    if (mpFunction != nullptr) {
        (*mpFunction)();
    }
    hide();
}

// ---------------------------------------------------------------------------
// The table of the editing forms below the widget layer.

UIBase* makeObjectListUI(ObjectList* list, sListColumn const* columns, unsigned int count, sSize const& size,
                         FunctorIntermediate<unsigned int, void>* decide)
{
    UIList* widget = new UIList(false);
    for (unsigned int i = 0; i < count; ++i) {
        widget->addColumn(columns[i].mpName, 16, columns[i].mWidth, eColumnAlignment_Left);
    }
    widget->setFunction(nullptr, decide);
    widget->setSize(size);
    widget->setObjectList(list);
    return widget;
}
