// Lists. UIList: a table of 16-pixel rows under a row of column buttons,
// showing an ObjectList by reading each object's properties by column name
// every frame (rows hold the property views, never copies of the values).
// UIPulldownList: a floating list of strings that applies its highlighted
// row when it loses the focus, whatever took it. Both scroll by the pixel.
// Main thread for events; update, layout and paint in the window's job.
#pragma once

#include "foundation/autostring.h"
#include "foundation/functor.h"
#include "foundation/list.h"
#include "foundation/vector.h"
#include "ui/uibase.h"
#include "ui/uipainter.h"

class ObjectList;
class PropertyBase;
class PropertyList;
class UIButton;
class UIScrollBar;

enum eColumnAlignment {
    eColumnAlignment_Left,
    eColumnAlignment_Center,
    eColumnAlignment_Right,
};

class UIList : public UIBase {
public:
    typedef FunctorIntermediate<unsigned int, void> Function;

    static constexpr unsigned int kNoRow = 0xFFFFFFFFu;
    static constexpr int kRowHeight = 16;
    // The header row of column buttons takes y 1 to 17; rows start below it.
    static constexpr int kHeaderBottom = 17;

    class Column {
    public:
        Column(UIButton* button, char const* name, unsigned int characterCount, unsigned int width,
               eColumnAlignment alignment)
            : mpButton(button), mpName(name), mCharacterCount(characterCount), mWidth(width),
              mAlignment(alignment)
        {
        }
        static void* operator new(std::size_t size) noexcept { return UIBase::allocate(static_cast<unsigned int>(size)); }
        static void operator delete(void* pointer) { UIBase::deallocate(pointer); }

        UIButton* mpButton;
        char const* mpName;
        u32 mCharacterCount : 8;
        u32 mWidth : 12;
        u32 mAlignment : 2;
    };

    explicit UIList(bool multiSelect);
    // Deletes the rows, the flags, the columns and the functors.
    ~UIList() override;

    template <typename T>
    void setFunction(T* target, void (T::*select)(unsigned int), void (T::*decide)(unsigned int))
    {
        setFunction(select != nullptr ? new Functor<T, unsigned int, void>(target, select) : nullptr,
                    decide != nullptr ? new Functor<T, unsigned int, void>(target, decide) : nullptr);
    }
    // Both owned; replace and delete the previous ones.
    void setFunction(Function* select, Function* decide);
    // name is not copied: it names the property and is the caption.
    void addColumn(char const* name, unsigned int characterCount, unsigned int width, eColumnAlignment alignment);
    // Null for no rows. Selection and flags start empty.
    void setObjectList(ObjectList* list);
    // Clears the selection and scrolls back to the top.
    void refresh();
    unsigned int getRowCount() const { return mRowCount; }
    unsigned int getSelectRow() const { return mSelectRow; }
    // As selectRow, without calling the select functor.
    void setSelectRow(unsigned int row);
    bool isSelected(unsigned int row) const;
    // One row's flag in multiple selection, without the select functor:
    // for owners that keep the selection in their objects.
    void setSelectFlag(unsigned int row, bool selected);
    void selectRow(unsigned int row);
    void decideRow(unsigned int row);
    void notifyColumnButton(UIButton*) {}
    // The row under a point of the list (its own coordinates), kNoRow above
    // the rows; may be past the last row.
    unsigned int getRowFromPosition(sPoint const& position) const;
    // 0 while the bar is hidden.
    int getScrollPosition() const;
    UIScrollBar* getScrollBar() const { return mpScrollBar; }
    unsigned int getColumnCount() const { return mColumns.size(); }
    UIButton* getColumnButton(unsigned int column) const { return mColumns[column]->mpButton; }

    void updateRegion(sRect const& parentRegion, sRect const& parentDrawRegion) override;
    void eventPaint(UIPainter* painter) override;
    void eventMouseDown(sPoint const& position, unsigned int button) override;
    void eventMouseDoubleClick(sPoint const& position, unsigned int button) override;
    void eventKeyDown(unsigned int keyCode, unsigned int combinationKey) override;
    void eventMouseWheel(sPoint const& amount) override;

    // Cells of a row, then one cell; subclasses paint cells of their own.
    virtual void drawRow(UIPainter* painter, PropertyList* row, sRect const& rect, unsigned int rowIndex,
                         bool selected);
    virtual void drawColumn(UIPainter* painter, PropertyBase* property, sRect const& rect,
                            eColumnAlignment alignment, unsigned int row, unsigned int column, sColor color);

protected:
    // The named property of a row, whatever its type; null when absent.
    static PropertyBase* findCell(PropertyList* row, char const* name);

private:
    void clearRows();
    void setScrollBarParam();
    void updateButtonLayout();
    // Moves the bar so that the row is inside the view.
    void scrollTo(unsigned int row);

    bool mMultiSelect;
    List<Column> mColumns;
    // Kept in an array rather than a linked list so that painting reaches
    // the first visible row at once: the cost follows the visible rows.
    Vector<PropertyList> mRows;
    u32 mRowCount;
    Function* mpSelectFunction;
    Function* mpDecideFunction;
    u32 mSelectRow;
    unsigned char* mpSelectFlags;
    UIScrollBar* mpScrollBar;
};

class UIPulldownList : public UIBase {
public:
    typedef FunctorIntermediate<void, void> Function;

    static constexpr unsigned int kNoItem = 0xFFFFFFFFu;
    static constexpr int kRowHeight = 16;
    static constexpr int kTextLeft = 4;

    struct sItem {
        AutoString mName;
        u32 mIndex;
        static void* operator new(std::size_t size) noexcept { return UIBase::allocate(static_cast<unsigned int>(size)); }
        static void operator delete(void* pointer) { UIBase::deallocate(pointer); }
    };

    UIPulldownList();
    ~UIPulldownList() override;

    template <typename T>
    void setFunction(T* target, void (T::*member)())
    {
        setFunction(new Functor<T, void, void>(target, member));
    }
    // Owned; called when the list loses the focus.
    void setFunction(Function* function);

    void addItem(char const* name);
    // Later items move up by one.
    void removeItem(unsigned int item);
    void clearItem();
    unsigned int getItemCount() const { return mItems.size(); }
    // Null for an index out of range.
    char const* getItemName(unsigned int item) const;
    unsigned int getSelectItem() const { return mSelectItem; }
    // The highlight: kNoItem or a valid index, scrolled into view.
    void setSelectItem(unsigned int item);
    // A valid item is kept and the list closes; kNoItem clears; any other
    // index does nothing and the list stays open.
    void selectItem(unsigned int item);
    unsigned int getItemFromPosition(sPoint const& position) const;
    UIScrollBar* getScrollBar() const { return mpScrollBar; }

    void updateRegion(sRect const& parentRegion, sRect const& parentDrawRegion) override;
    void eventPaint(UIPainter* painter) override;
    void eventMouseMove(sPoint const& position) override;
    void eventMouseDown(sPoint const& position, unsigned int button) override;
    void eventKeyDown(unsigned int keyCode, unsigned int combinationKey) override;
    void eventDefocus() override;

private:
    void setScrollBarParam();
    int getScrollPosition() const;

    Function* mpFunction;
    u32 mSelectItem;
    List<sItem> mItems;
    UIScrollBar* mpScrollBar;
};
