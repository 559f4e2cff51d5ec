// Dialogs: modal windows that ask one question and answer through a callback
// when they close. Nothing blocks: the caller builds a dialog, hands it to
// UISystem::addWindow and returns; the callback runs during the close, while
// everything in the dialog can still be read, and the dialog is deleted at
// the end of that frame. UIMessageDialog shows a line of text, UIFileDialog
// picks a file below the two data roots, UIObjectDialog and
// UIPlaneObjectDialog pick a class of the type tree, UIControlDialog picks a
// control of an object. Main thread only, as all widget events.
#pragma once

#include "foundation/autostring.h"
#include "foundation/functor.h"
#include "foundation/vector.h"
#include "reflection/objectlist.h"
#include "ui/uilist.h"
#include "ui/uiwindow.h"

class PropertyBase;
class TypeInfo;
class UIButton;
class UIEnumControl;
class UITextControl;

class UIDialog : public UIWindow {
public:
    typedef FunctorIntermediate<UIDialog*, void> Function;

    enum eReturnValue {
        eReturnValue_Ok,
        eReturnValue_Yes,
        eReturnValue_No,
        eReturnValue_Cancel,
    };
    enum eButtonMode {
        eButtonMode_Ok,
        eButtonMode_OkCancel,
        eButtonMode_YesNoCancel,
    };
    // Title bar, movable, modal.
    static constexpr unsigned int kWindowAttribute = 11;
    static constexpr int kButtonWidth = 48;
    static constexpr int kButtonHeight = 16;

    template <typename T>
    UIDialog(unsigned int windowAttribute, bool closeButton, bool minimizeButton, bool maximizeButton,
             char const* title, unsigned int buttonMode, T* target, void (T::*callback)(UIDialog*), UIWindow* owner)
        : UIDialog(windowAttribute, closeButton, minimizeButton, maximizeButton,
                   makeFunction(target, callback), owner)
    {
        initialize(title, buttonMode);
    }
    // Deletes the callback.
    ~UIDialog() override;

    unsigned int getReturnValue() const { return mReturnValue; }
    // The title and the buttons of the mode; buttons made before are deleted.
    void initialize(char const* title, unsigned int buttonMode);
    void notifyButton(UIButton* button);
    UIButton* getOkButton() const { return mpOkButton; }
    UIButton* getCancelButton() const { return mpCancelButton; }
    UIButton* getYesButton() const { return mpYesButton; }
    UIButton* getNoButton() const { return mpNoButton; }

    // Calls the callback once, then asks UISystem to remove the window.
    void eventClose() override;
    // ESC cancels and Return confirms, without modifiers.
    void eventKeyDown(unsigned int keyCode, unsigned int combinationKey) override;

    // Each sets its return value and closes.
    virtual void eventOk();
    virtual void eventCancel();
    virtual void eventYes();
    virtual void eventNo();

protected:
    // function is owned; may be null.
    UIDialog(unsigned int windowAttribute, bool closeButton, bool minimizeButton, bool maximizeButton,
             Function* function, UIWindow* owner);

    template <typename T>
    static Function* makeFunction(T* target, void (T::*callback)(UIDialog*))
    {
        return (target != nullptr && callback != nullptr) ? new Functor<T, UIDialog*, void>(target, callback)
                                                           : nullptr;
    }
    // Moves the window to the middle of the UI view.
    void center();
    // Places the buttons of the mode in a row at y, as the message box does.
    void placeButtons(int y);

private:
    UIButton* makeButton(char const* caption);

    Function* mpFunction;
    u32 mReturnValue;
    UIButton* mpOkButton;
    UIButton* mpCancelButton;
    UIButton* mpYesButton;
    UIButton* mpNoButton;
    bool mClosed; // the callback has run
};

class UIMessageDialog : public UIDialog {
public:
    static constexpr int kHeight = 96;
    static constexpr int kButtonTop = 64;

    template <typename T>
    UIMessageDialog(char const* title, char const* message, unsigned int buttonMode, T* target,
                    void (T::*callback)(UIDialog*))
        : UIDialog(kWindowAttribute, true, false, false, makeFunction(target, callback), nullptr)
    {
        construct(title, message, buttonMode);
    }

    AutoString const& getMessage() const { return mMessage; }
    void eventPaint(UIPainter* painter) override;

private:
    void construct(char const* title, char const* message, unsigned int buttonMode);

    AutoString mMessage;
};

// The frame that the file, class and control dialogs share: 320 by 240,
// a list at (16, 64), a text field at (16, 194), Ok and Cancel on the right,
// and a caption line at (16, 24).
class UIListDialog : public UIDialog {
public:
    static constexpr int kWidth = 320;
    static constexpr int kHeight = 240;
    static constexpr int kCaptionLeft = 16;
    static constexpr int kCaptionTop = 24;
    static constexpr int kTopButtonTop = 40;
    static constexpr int kListLeft = 16;
    static constexpr int kListTop = 64;
    static constexpr int kListWidth = 288;
    static constexpr int kListHeight = 122;
    static constexpr int kTextTop = 194;
    static constexpr int kTextWidth = 224;
    static constexpr int kOkLeft = 256;
    static constexpr int kOkTop = 194;
    static constexpr int kCancelTop = 214;

    ~UIListDialog() override;

    UIList* getList() const { return mpList; }
    UITextControl* getTextControl() const { return mpTextControl; }
    // The text of the field: a file name, a class name or a control name.
    AutoString const& getText() const { return mText; }
    void setText(AutoString const& text) { mText = text; }
    ObjectList& getRows() { return mRows; }
    // The caption line.
    void setCaption(AutoString const& caption) { mCaption = caption; }
    AutoString const& getCaption() const { return mCaption; }

    void eventPaint(UIPainter* painter) override;

protected:
    UIListDialog(Function* function, char const* title, UIWindow* owner, UIList* list);
    // Rebuilds the list's rows from mRows.
    void refreshList();

private:
    UIList* mpList;
    UITextControl* mpTextControl;
    PropertyBase* mpTextProperty;
    AutoString mText;
    AutoString mCaption;
    ObjectList mRows; // owned row objects
};

class UIFileDialog : public UIListDialog {
public:
    enum eRootDirectory {
        eRootDirectory_Intermediate,
        eRootDirectory_Native,
    };

    // A row of the list. Not a reflected class: it only lends its
    // properties to the list's columns.
    class FileInfo : public ObjectBase {
    public:
        void makePropertyList(PropertyList& list) override;
        bool isDirectory() const { return mDirectory; }

        AutoString mName;
        AutoString mDate;
        u32 mSize = 0;
        bool mDirectory = false;
    };
    class FilterInfo {
    public:
        static void* operator new(std::size_t size) noexcept { return UIBase::allocate(static_cast<unsigned int>(size)); }
        static void operator delete(void* pointer) { UIBase::deallocate(pointer); }

        AutoString mExtension;
        AutoString mDisplayName;
    };

    // filters: "tga|Targa" entries ended by null. Without allName or filters
    // every file shows and there is no filter control.
    template <typename T>
    UIFileDialog(char const* title, T* target, void (T::*callback)(UIDialog*), char const* allName,
                 char const** filters, bool overwriteCheck, UIWindow* owner)
        : UIListDialog(makeFunction(target, callback), title, owner, new UIList(false))
    {
        construct(allName, filters, overwriteCheck);
    }
    ~UIFileDialog() override;

    // Absolute, ending in "/".
    AutoString const& getDirectory() const { return mDirectory; }
    // Null while filters are set and the name's extension is none of them.
    char const* getFileName() const;
    // Directory and name, or empty.
    AutoString getFullPath() const;
    // The chosen file as resources name it: relative to the data root,
    // without extension.
    AutoString getResourcePath() const;
    // The name's extension when it is one of the filters (any without
    // filters); else empty.
    AutoString getExtension() const;
    void setCurrentDirectory(eRootDirectory root, char const* subDirectory);
    void enterSubDirectory(AutoString const& name);
    // The filter entry: a filter's index, or the filter count for all.
    unsigned int getFilterIndex() const { return mFilterIndex; }
    void setFilterIndex(unsigned int index);
    unsigned int getFilterCount() const { return mFilters.size(); }
    UIEnumControl* getFilterControl() const { return mpFilterControl; }
    // Rereads the directory into the list.
    void updateFileList();

    void notifyIntermediate(UIButton*);
    void notifyNative(UIButton*);
    void notifyUp(UIButton*);
    void notifySelectList(unsigned int row);
    void notifyDecideList(unsigned int row);
    void notifyFilter(unsigned int index);
    void notifyOverwrite(UIDialog* question);

    void eventOk() override;

private:
    void construct(char const* allName, char const** filters, bool overwriteCheck);
    bool isFilterExtension(char const* extension) const;
    bool isRoot() const;

    AutoString mDirectory;
    u32 mFilterIndex;
    Vector<FilterInfo> mFilters;
    UIEnumControl* mpFilterControl;
    PropertyBase* mpFilterProperty;
    bool mOverwriteCheck;
    bool mAsking; // the overwrite question is open
};

// One level of the class tree below a class, with "Up".
class UIObjectDialog : public UIListDialog {
public:
    template <typename T>
    UIObjectDialog(char const* title, T* target, void (T::*callback)(UIDialog*), TypeInfo const* root,
                   UIWindow* owner)
        : UIListDialog(makeFunction(target, callback), title, owner, new ClassList())
    {
        construct(root);
    }

    TypeInfo const* getCurrentTypeInfo() const { return mpCurrent; }
    // The class the text names, or null.
    TypeInfo const* getSelectedTypeInfo() const;
    // Shows the class and its direct subclasses.
    void enterOffshoot(TypeInfo const* type);

    void notifyUp(UIButton*);
    void notifySelectList(unsigned int row);
    void notifyDecideList(unsigned int row);

private:
    class ClassList : public UIList {
    public:
        ClassList() : UIList(false) {}
        void drawColumn(UIPainter* painter, PropertyBase* property, sRect const& rect, eColumnAlignment alignment,
                        unsigned int row, unsigned int column, sColor color) override;
    };

    void construct(TypeInfo const* root);

    TypeInfo const* mpRoot;
    TypeInfo const* mpCurrent;
};

// The whole subtree below a class, flat, optionally filtered.
class UIPlaneObjectDialog : public UIListDialog {
public:
    typedef FunctorIntermediate<TypeInfo const*, bool> Filter;

    template <typename T>
    UIPlaneObjectDialog(char const* title, T* target, void (T::*callback)(UIDialog*), TypeInfo const* root,
                        UIWindow* owner)
        : UIListDialog(makeFunction(target, callback), title, owner, new UIList(false)), mpRoot(root),
          mpFilter(nullptr)
    {
        construct();
    }
    ~UIPlaneObjectDialog() override;

    // Owned; rebuilds the rows with only the classes it accepts.
    void setFilter(Filter* filter);
    template <typename T>
    void setFilter(T* target, bool (T::*member)(TypeInfo const*))
    {
        setFilter(new Functor<T, TypeInfo const*, bool>(target, member));
    }
    // The class the text names if it derives from the root, else null.
    TypeInfo const* getSelecteTypeInfo() const;

    void notifySelectList(unsigned int row);
    void notifyDecideList(unsigned int row);

private:
    void construct();
    void rebuild();
    void addObjectList(TypeInfo const* type);

    TypeInfo const* mpRoot;
    Filter* mpFilter;
};

// The controls an object offers.
class UIControlDialog : public UIListDialog {
public:
    template <typename T>
    UIControlDialog(char const* title, T* target, void (T::*callback)(UIDialog*), ObjectBase* object)
        : UIListDialog(makeFunction(target, callback), title, nullptr, new ControlList())
    {
        construct(object);
    }

    AutoString const& getSelectedControlName() const { return getText(); }
    // 0 property, 1 trigger; the type of the row the text names, 2 for none.
    unsigned int getSelectedControlType() const;

    void notifySelectList(unsigned int row);
    void notifyDecideList(unsigned int row);

private:
    class ControlList : public UIList {
    public:
        ControlList() : UIList(false) {}
        void drawColumn(UIPainter* painter, PropertyBase* property, sRect const& rect, eColumnAlignment alignment,
                        unsigned int row, unsigned int column, sColor color) override;
    };

    void construct(ObjectBase* object);
};

// Edits chosen properties of an object through their controls, with an Ok
// button; what is typed is written at once, as everywhere in the toolkit.
class UIPropertyDialog : public UIDialog {
public:
    static constexpr int kWidth = 240;

    // names: the properties to show, in this order; others are left out.
    UIPropertyDialog(char const* title, ObjectBase* object, char const* const* names, unsigned int count);
};
