// Index: [SECTION] UIDialog, [SECTION] UIMessageDialog, [SECTION] UIListDialog,
// [SECTION] UIFileDialog, [SECTION] UIObjectDialog, [SECTION] UIPlaneObjectDialog,
// [SECTION] UIControlDialog
#include "ui/uidialog.h"

#include <cstdio>
#include <cstring>
#include <initializer_list>

#include "app/application.h"
#include "foundation/utils.h"
#include "reflection/control.h"
#include "reflection/property.h"
#include "reflection/typeinfo.h"
#include "ui/uibutton.h"
#include "ui/uicontrol.h"
#include "ui/uipainter.h"
#include "ui/uisystem.h"

namespace {

// A row of a class list: the class and what the columns show of it.
class ClassRow : public ObjectBase {
public:
    explicit ClassRow(TypeInfo const* type)
        : mpType(type), mName(type->getName()), mAttribute(type->getAttribute()),
          mDerivation(type->getOffshoot() != nullptr)
    {
    }
    void makePropertyList(PropertyList& list) override
    {
        list.add(new ReferenceProperty<AutoString>("TypeName", &mName));
        list.add(new ReferenceProperty<u32>("Attribute", &mAttribute));
        list.add(new ReferenceProperty<bool>("Derivation", &mDerivation));
    }

    TypeInfo const* mpType;
    AutoString mName;
    u32 mAttribute;
    bool mDerivation;
};

// A row of the control list.
class ControlRow : public ObjectBase {
public:
    ControlRow(char const* name, unsigned int type) : mName(name), mType(type) {}
    void makePropertyList(PropertyList& list) override
    {
        list.add(new ReferenceProperty<AutoString>("Name", &mName));
        list.add(new ReferenceProperty<u32>("Type", &mType));
    }

    AutoString mName;
    u32 mType;
};

char const* const kAttributeNames[] = {"None", "Abstruct", "Singleton"};

} // namespace

// ---------------------------------------------------------------------------
// [SECTION] UIDialog

UIDialog::UIDialog(unsigned int windowAttribute, bool closeButton, bool minimizeButton, bool maximizeButton,
                   Function* function, UIWindow* owner)
    : UIWindow(eStyle_Convex, windowAttribute, closeButton, minimizeButton, maximizeButton, 0, owner),
      mpFunction(function), mReturnValue(eReturnValue_Cancel), mpOkButton(nullptr), mpCancelButton(nullptr),
      mpYesButton(nullptr), mpNoButton(nullptr), mClosed(false)
{
    setBorderStyle(eBorderStyle_Convex);
}

UIDialog::~UIDialog()
{
    delete mpFunction;
}

UIButton* UIDialog::makeButton(char const* caption)
{
    UIButton* button = new UIButton(this, &UIDialog::notifyButton, caption);
    button->setSize(sSize(kButtonWidth, kButtonHeight));
    add(button);
    return button;
}

void UIDialog::initialize(char const* title, unsigned int buttonMode)
{
    setTitle(title);
    for (UIButton** button : {&mpOkButton, &mpCancelButton, &mpYesButton, &mpNoButton}) {
        if (*button != nullptr) {
            (*button)->remove();
            delete *button;
            *button = nullptr;
        }
    }
    switch (buttonMode) {
    case eButtonMode_Ok:
        mpOkButton = makeButton("Ok");
        break;
    case eButtonMode_OkCancel:
        mpOkButton = makeButton("Ok");
        mpCancelButton = makeButton("Cancel");
        break;
    default:
        mpYesButton = makeButton("Yes");
        mpNoButton = makeButton("No");
        mpCancelButton = makeButton("Cancel");
        break;
    }
}

void UIDialog::center()
{
    sRect const view = UISystem::getInstance()->getUIViewRect();
    sSize const size = getSize();
    setPosition(sPoint((view.getWidth() - static_cast<int>(size.width)) / 2,
                       (view.getHeight() - static_cast<int>(size.height)) / 2));
}

void UIDialog::placeButtons(int y)
{
    int const width = static_cast<int>(getSize().width);
    if (mpYesButton != nullptr) {
        mpYesButton->setPosition(sPoint((width - kButtonWidth) / 2 - 56, y));
        mpNoButton->setPosition(sPoint((width - kButtonWidth) / 2, y));
        mpCancelButton->setPosition(sPoint((width + kButtonWidth) / 2 + 8, y));
    } else if (mpCancelButton != nullptr) {
        mpOkButton->setPosition(sPoint(width / 2 - 56, y));
        mpCancelButton->setPosition(sPoint(width / 2 + 8, y));
    } else if (mpOkButton != nullptr) {
        mpOkButton->setPosition(sPoint((width - kButtonWidth) / 2, y));
    }
}

void UIDialog::notifyButton(UIButton* button)
{
    if (button == mpOkButton) {
        eventOk();
    } else if (button == mpCancelButton) {
        eventCancel();
    } else if (button == mpYesButton) {
        eventYes();
    } else if (button == mpNoButton) {
        eventNo();
    }
}

// A close button and a key in the same frame must not answer twice.
void UIDialog::eventClose()
{
    if (mClosed) {
        return;
    }
    mClosed = true;
    if (mpFunction != nullptr) {
        (*mpFunction)(this);
    }
    UISystem::getInstance()->removeWindow(this);
}

void UIDialog::eventKeyDown(unsigned int keyCode, unsigned int combinationKey)
{
    if (combinationKey != 0) {
        return;
    }
    if (keyCode == UISystem::eKey_Escape) {
        eventCancel();
    } else if (keyCode == UISystem::eKey_Return) {
        eventOk();
    }
}

void UIDialog::eventOk()
{
    mReturnValue = eReturnValue_Ok;
    close();
}

void UIDialog::eventCancel()
{
    mReturnValue = eReturnValue_Cancel;
    close();
}

void UIDialog::eventYes()
{
    mReturnValue = eReturnValue_Yes;
    close();
}

void UIDialog::eventNo()
{
    mReturnValue = eReturnValue_No;
    close();
}

// ---------------------------------------------------------------------------
// [SECTION] UIMessageDialog

void UIMessageDialog::construct(char const* title, char const* message, unsigned int buttonMode)
{
    mMessage = message;
    initialize(title, buttonMode);
    setSize(sSize(mMessage.size() * UIPainter::kFontWidth + 32, kHeight));
    center();
    placeButtons(kButtonTop);
}

void UIMessageDialog::eventPaint(UIPainter* painter)
{
    UIDialog::eventPaint(painter);
    painter->drawString(sRect(0, 32, static_cast<int>(getSize().width), 44), mMessage,
                        UISystem::getInstance()->mFontColor, eAlignment_CenterTop);
}

// ---------------------------------------------------------------------------
// [SECTION] UIListDialog

UIListDialog::UIListDialog(Function* function, char const* title, UIWindow* owner, UIList* list)
    : UIDialog(kWindowAttribute, true, false, false, function, owner), mpList(list), mpTextControl(nullptr),
      mpTextProperty(nullptr)
{
    mRows.setContentStability(false);
    initialize(title, eButtonMode_OkCancel);
    setSize(sSize(kWidth, kHeight));
    center();
    getOkButton()->setPosition(sPoint(kOkLeft, kOkTop));
    getCancelButton()->setPosition(sPoint(kOkLeft, kCancelTop));
    mpList->setPosition(sPoint(kListLeft, kListTop));
    mpList->setSize(sSize(kListWidth, kListHeight));
    add(mpList);
    mpTextProperty = new ReferenceProperty<AutoString>("Name", &mText);
    mpTextProperty->addRef();
    mpTextControl = new UITextControl(mpTextProperty, false, UIControl::NoIndex, UIControl::eMode_Decimal);
    mpTextControl->setPosition(sPoint(kListLeft, kTextTop));
    mpTextControl->setSize(sSize(kTextWidth, kButtonHeight));
    add(mpTextControl);
}

UIListDialog::~UIListDialog()
{
    // The list's rows and the field are views of members: they go first.
    mpList->setObjectList(nullptr);
    mpTextControl->remove();
    delete mpTextControl;
    mpTextProperty->release();
}

void UIListDialog::refreshList()
{
    mpList->setObjectList(&mRows);
    mpList->refresh();
}

void UIListDialog::eventPaint(UIPainter* painter)
{
    UIDialog::eventPaint(painter);
    int const width = static_cast<int>(getSize().width);
    painter->drawString(sRect(kCaptionLeft, kCaptionTop, width - kCaptionLeft, kCaptionTop + UIPainter::kFontHeight),
                        mCaption, UISystem::getInstance()->mFontColor, eAlignment_LeftTop);
}

// ---------------------------------------------------------------------------
// [SECTION] UIFileDialog

void UIFileDialog::FileInfo::makePropertyList(PropertyList& list)
{
    list.add(new ReferenceProperty<AutoString>("Name", &mName));
    list.add(new ReferenceProperty<AutoString>("Date", &mDate));
    list.add(new ReferenceProperty<u32>("Size", &mSize));
}

void UIFileDialog::construct(char const* allName, char const** filters, bool overwriteCheck)
{
    mFilterIndex = 0;
    mpFilterControl = nullptr;
    mpFilterProperty = nullptr;
    mOverwriteCheck = overwriteCheck;
    mAsking = false;

    UIList* list = getList();
    list->addColumn("Name", 20, 102, eColumnAlignment_Left);
    list->addColumn("Date", 20, 120, eColumnAlignment_Left);
    list->addColumn("Size", 8, 64, eColumnAlignment_Right);
    list->setFunction(this, &UIFileDialog::notifySelectList, &UIFileDialog::notifyDecideList);

    struct {
        char const* caption;
        int left;
        int width;
        void (UIFileDialog::*action)(UIButton*);
    } const buttons[] = {
        {"Intermediate", 16, 80, &UIFileDialog::notifyIntermediate},
        {"Native", 104, 80, &UIFileDialog::notifyNative},
        {"Up", 188, 48, &UIFileDialog::notifyUp},
    };
    for (auto const& entry : buttons) {
        UIButton* button = new UIButton(this, entry.action, entry.caption);
        button->setPosition(sPoint(entry.left, kTopButtonTop));
        button->setSize(sSize(entry.width, kButtonHeight));
        add(button);
    }

    if (allName != nullptr && filters != nullptr) {
        unsigned int count = 0;
        while (filters[count] != nullptr) {
            ++count;
        }
        mFilters.reserve(count != 0 ? count : 1);
        for (unsigned int i = 0; i < count; ++i) {
            FilterInfo* filter = new FilterInfo();
            char const* bar = strchr(filters[i], '|');
            if (bar == nullptr) {
                filter->mExtension = filters[i];
                filter->mDisplayName = allName;
            } else {
                filter->mExtension = AutoString(filters[i]).substr(0, static_cast<u32>(bar - filters[i]));
                filter->mDisplayName.format("%s(*.%s)", bar + 1, filter->mExtension.c_str());
            }
            mFilters.addLast(filter);
        }
        // The display names, then the entry for all filters, whose value
        // is the filter count; the dialog starts there.
        sEnumInfo* names = static_cast<sEnumInfo*>(UIBase::allocate(sizeof(sEnumInfo) * (count + 1)));
        for (unsigned int i = 0; i < count; ++i) {
            names[i].mpName = mFilters[i]->mDisplayName.c_str();
            names[i].mValue = i;
        }
        names[count].mpName = allName;
        names[count].mValue = count;
        mFilterIndex = count;
        // Nameless, so that the control is the one-row field without a caption.
        mpFilterProperty = new ReferenceProperty<u32>("", &mFilterIndex);
        mpFilterProperty->addRef();
        // The control copies the table, not the names, which mFilters keeps.
        mpFilterControl = new UIEnumControl(mpFilterProperty, names, count + 1, false, UIControl::NoIndex);
        UIBase::deallocate(names);
        mpFilterControl->setSelectFunction(this, &UIFileDialog::notifyFilter);
        mpFilterControl->setPosition(sPoint(kListLeft, kCancelTop));
        mpFilterControl->setSize(sSize(kTextWidth, kButtonHeight));
        add(mpFilterControl);
    }
    setCurrentDirectory(eRootDirectory_Intermediate, nullptr);
}

UIFileDialog::~UIFileDialog()
{
    // The filter control reads the names and the property: it goes first.
    if (mpFilterControl != nullptr) {
        mpFilterControl->remove();
        delete mpFilterControl;
        mpFilterProperty->release();
    }
    for (FilterInfo* filter : mFilters) {
        delete filter;
    }
}

bool UIFileDialog::isFilterExtension(char const* extension) const
{
    if (mFilters.empty()) {
        return true;
    }
    if (extension == nullptr) {
        return false;
    }
    for (FilterInfo const* filter : mFilters) {
        if (filter->mExtension == extension) {
            return true;
        }
    }
    return false;
}

char const* UIFileDialog::getFileName() const
{
    AutoString const& name = getText();
    if (name.empty()) {
        return nullptr;
    }
    if (!mFilters.empty() && !isFilterExtension(Utils::getFileExtension(name.c_str()))) {
        return nullptr;
    }
    return name.c_str();
}

AutoString UIFileDialog::getFullPath() const
{
    char const* name = getFileName();
    if (name == nullptr) {
        return AutoString();
    }
    return mDirectory + name;
}

AutoString UIFileDialog::getResourcePath() const
{
    AutoString const full = getFullPath();
    return Utils::getResourcePath(Utils::getPath(full.c_str()));
}

AutoString UIFileDialog::getExtension() const
{
    char const* extension = Utils::getFileExtension(getText().c_str());
    if (extension == nullptr || !isFilterExtension(extension)) {
        return AutoString();
    }
    return AutoString(extension);
}

void UIFileDialog::setCurrentDirectory(eRootDirectory root, char const* subDirectory)
{
    Application const* application = Application::getInstance();
    mDirectory = (root == eRootDirectory_Native) ? application->getNativePath() : application->getIntermediatePath();
    if (subDirectory != nullptr && subDirectory[0] != '\0') {
        mDirectory += subDirectory;
        if (mDirectory[mDirectory.size() - 1] != '/') {
            mDirectory += '/';
        }
    }
    updateFileList();
}

void UIFileDialog::enterSubDirectory(AutoString const& name)
{
    if (name.empty() || name == "." || name == ".." || name.findFirst('/') != AutoString::NotFound) {
        return;
    }
    mDirectory += name;
    mDirectory += '/';
    updateFileList();
}

bool UIFileDialog::isRoot() const
{
    Application const* application = Application::getInstance();
    return mDirectory == application->getIntermediatePath() || mDirectory == application->getNativePath();
}

void UIFileDialog::setFilterIndex(unsigned int index)
{
    if (index > mFilters.size()) {
        return;
    }
    mFilterIndex = index;
    notifyFilter(index);
}

// Folders first, then the files the filter lets through.
void UIFileDialog::updateFileList()
{
    ObjectList& rows = getRows();
    rows.setCount(0);
    Vector<Utils::FileInfo> entries;
    Utils::getFileList(entries, mDirectory.c_str());
    rows.reserve(entries.size());
    for (int pass = 0; pass < 2; ++pass) {
        bool const directories = pass == 0;
        for (Utils::FileInfo const* entry : entries) {
            if (entry->mDirectory != directories) {
                continue;
            }
            if (!directories && !mFilters.empty()) {
                char const* extension = Utils::getFileExtension(entry->mName);
                bool const shown = (mFilterIndex >= mFilters.size())
                                       ? isFilterExtension(extension)
                                       : (extension != nullptr && mFilters[mFilterIndex]->mExtension == extension);
                if (!shown) {
                    continue;
                }
            }
            FileInfo* info = new FileInfo();
            info->mName = entry->mName;
            info->mDirectory = directories;
            if (directories) {
                info->mDate = "<dir>";
            } else {
                info->mDate.format("%d/%d/%d %d:%d:%d", entry->mYear, entry->mMonth, entry->mDay, entry->mHour,
                                   entry->mMinute, entry->mSecond);
                info->mSize = entry->mSize > 0xFFFFFFFFull ? 0xFFFFFFFFu : static_cast<u32>(entry->mSize);
            }
            rows.addLast(info);
        }
    }
    for (Utils::FileInfo* entry : entries) {
        delete entry;
    }
    char const* shown = Utils::getPath(mDirectory.c_str());
    setCaption(shown != nullptr ? shown : mDirectory.c_str());
    refreshList();
}

void UIFileDialog::notifyIntermediate(UIButton*)
{
    setCurrentDirectory(eRootDirectory_Intermediate, nullptr);
}

void UIFileDialog::notifyNative(UIButton*)
{
    setCurrentDirectory(eRootDirectory_Native, nullptr);
}

void UIFileDialog::notifyUp(UIButton*)
{
    if (isRoot() || mDirectory.size() < 2) {
        return;
    }
    // The slash before the trailing one ends the parent.
    char const* text = mDirectory.c_str();
    u32 slash = mDirectory.size() - 1;
    while (slash > 0 && text[slash - 1] != '/') {
        --slash;
    }
    if (slash == 0) {
        return;
    }
    mDirectory = mDirectory.substr(0, slash);
    updateFileList();
}

void UIFileDialog::notifySelectList(unsigned int row)
{
    FileInfo const* info = static_cast<FileInfo const*>(getRows()[row]);
    if (!info->isDirectory()) {
        setText(info->mName);
    }
}

void UIFileDialog::notifyDecideList(unsigned int row)
{
    FileInfo const* info = static_cast<FileInfo const*>(getRows()[row]);
    if (info->isDirectory()) {
        AutoString const name = info->mName; // the rows go with the reload
        enterSubDirectory(name);
    } else {
        setText(info->mName);
        eventOk();
    }
}

void UIFileDialog::notifyFilter(unsigned int)
{
    setText(AutoString());
    updateFileList();
}

void UIFileDialog::notifyOverwrite(UIDialog* question)
{
    mAsking = false;
    switch (question->getReturnValue()) {
    case eReturnValue_Yes:
        UIDialog::eventOk();
        break;
    case eReturnValue_No:
        eventCancel();
        break;
    default:
        break;
    }
}

// The extension is completed before the overwrite question, so that the
// question is asked about the file that will really be written.
void UIFileDialog::eventOk()
{
    if (getText().empty()) {
        eventCancel();
        return;
    }
    if (mAsking) {
        return;
    }
    if (!mFilters.empty() && !isFilterExtension(Utils::getFileExtension(getText().c_str()))) {
        setText(getText() + "." + mFilters[0]->mExtension);
    }
    if (mOverwriteCheck && Utils::isFileExist(getFullPath().c_str())) {
        mAsking = true;
        UISystem::getInstance()->addWindow(new UIMessageDialog("Causion", "File already exists.Are you sure to overwrite?",
                                                               eButtonMode_YesNoCancel, this,
                                                               &UIFileDialog::notifyOverwrite));
        return;
    }
    UIDialog::eventOk();
}

// ---------------------------------------------------------------------------
// [SECTION] UIObjectDialog

void UIObjectDialog::construct(TypeInfo const* root)
{
    mpRoot = root;
    mpCurrent = nullptr;
    UIList* list = getList();
    list->addColumn("TypeName", 20, 144, eColumnAlignment_Left);
    list->addColumn("Attribute", 8, 72, eColumnAlignment_Left);
    list->addColumn("Derivation", 1, 70, eColumnAlignment_Left);
    list->setFunction(this, &UIObjectDialog::notifySelectList, &UIObjectDialog::notifyDecideList);
    UIButton* up = new UIButton(this, &UIObjectDialog::notifyUp, "Up");
    up->setPosition(sPoint(16, kTopButtonTop));
    up->setSize(sSize(kButtonWidth, kButtonHeight));
    add(up);
    enterOffshoot(root);
}

void UIObjectDialog::enterOffshoot(TypeInfo const* type)
{
    if (type == nullptr) {
        return;
    }
    mpCurrent = type;
    ObjectList& rows = getRows();
    rows.setCount(0);
    rows.addLast(new ClassRow(type));
    for (TypeInfo const* child = type->getOffshoot(); child != nullptr; child = child->getLoop()) {
        rows.addLast(new ClassRow(child));
    }
    setCaption(type->getName());
    refreshList();
}

TypeInfo const* UIObjectDialog::getSelectedTypeInfo() const
{
    return getText().empty() ? nullptr : TypeInfo::find(getText().c_str());
}

void UIObjectDialog::notifyUp(UIButton*)
{
    if (mpCurrent != nullptr && mpCurrent != mpRoot && mpCurrent->getBase() != nullptr) {
        enterOffshoot(mpCurrent->getBase());
    }
}

void UIObjectDialog::notifySelectList(unsigned int row)
{
    setText(static_cast<ClassRow const*>(getRows()[row])->mName);
}

void UIObjectDialog::notifyDecideList(unsigned int row)
{
    ClassRow const* entry = static_cast<ClassRow const*>(getRows()[row]);
    setText(entry->mName);
    if (entry->mpType->getOffshoot() != nullptr) {
        TypeInfo const* type = entry->mpType;
        enterOffshoot(type);
    } else {
        eventOk();
    }
}

void UIObjectDialog::ClassList::drawColumn(UIPainter* painter, PropertyBase* property, sRect const& rect,
                                           eColumnAlignment alignment, unsigned int row, unsigned int column,
                                           sColor color)
{
    if (column == 1) {
        long long const attribute = property->getNumeric(PropertyBase::CurrentIndex);
        char const* text = (attribute >= 0 && attribute < 3) ? kAttributeNames[attribute] : "";
        painter->drawString(rect, text, color, eAlignment_LeftMiddle);
    } else if (column == 2) {
        char const* text = (row == 0) ? "*" : (property->getNumeric(PropertyBase::CurrentIndex) != 0 ? "true" : "false");
        painter->drawString(rect, text, color, eAlignment_LeftMiddle);
    } else {
        UIList::drawColumn(painter, property, rect, alignment, row, column, color);
    }
}

// ---------------------------------------------------------------------------
// [SECTION] UIPlaneObjectDialog

void UIPlaneObjectDialog::construct()
{
    UIList* list = getList();
    list->addColumn("TypeName", 20, 144, eColumnAlignment_Left);
    list->setFunction(this, &UIPlaneObjectDialog::notifySelectList, &UIPlaneObjectDialog::notifyDecideList);
    if (mpRoot != nullptr) {
        setCaption(mpRoot->getName());
    }
    rebuild();
}

UIPlaneObjectDialog::~UIPlaneObjectDialog()
{
    delete mpFilter;
}

void UIPlaneObjectDialog::setFilter(Filter* filter)
{
    delete mpFilter;
    mpFilter = filter;
    rebuild();
}

void UIPlaneObjectDialog::rebuild()
{
    getRows().setCount(0);
    addObjectList(mpRoot);
    refreshList();
}

void UIPlaneObjectDialog::addObjectList(TypeInfo const* type)
{
    if (type == nullptr) {
        return;
    }
    if (mpFilter == nullptr || (*mpFilter)(type)) {
        getRows().addLast(new ClassRow(type));
    }
    for (TypeInfo const* child = type->getOffshoot(); child != nullptr; child = child->getLoop()) {
        addObjectList(child);
    }
}

TypeInfo const* UIPlaneObjectDialog::getSelecteTypeInfo() const
{
    if (getText().empty()) {
        return nullptr;
    }
    TypeInfo const* type = TypeInfo::find(getText().c_str());
    return (type != nullptr && type->isDerivedFrom(mpRoot)) ? type : nullptr;
}

void UIPlaneObjectDialog::notifySelectList(unsigned int row)
{
    setText(static_cast<ClassRow const*>(getRows()[row])->mName);
}

void UIPlaneObjectDialog::notifyDecideList(unsigned int row)
{
    setText(static_cast<ClassRow const*>(getRows()[row])->mName);
    eventOk();
}

// ---------------------------------------------------------------------------
// [SECTION] UIControlDialog

void UIControlDialog::construct(ObjectBase* object)
{
    UIList* list = getList();
    list->addColumn("Name", 20, 144, eColumnAlignment_Left);
    list->addColumn("Type", 8, 142, eColumnAlignment_Left);
    list->setFunction(this, &UIControlDialog::notifySelectList, &UIControlDialog::notifyDecideList);
    if (object == nullptr) {
        refreshList();
        return;
    }
    setCaption(object->getTypeInfo()->getName());
    List<ControlBase> controls;
    object->makeControlList(controls);
    for (ControlBase* control : controls) {
        char const* name = control->getName();
        getRows().addLast(new ControlRow(name != nullptr ? name : "", control->getType()));
        delete control;
    }
    refreshList();
}

unsigned int UIControlDialog::getSelectedControlType() const
{
    for (ObjectBase const* object : const_cast<UIControlDialog*>(this)->getRows()) {
        ControlRow const* row = static_cast<ControlRow const*>(object);
        if (row->mName == getText()) {
            return row->mType;
        }
    }
    return eControlType_Invalid;
}

void UIControlDialog::notifySelectList(unsigned int row)
{
    setText(static_cast<ControlRow const*>(getRows()[row])->mName);
}

void UIControlDialog::notifyDecideList(unsigned int row)
{
    setText(static_cast<ControlRow const*>(getRows()[row])->mName);
    eventOk();
}

void UIControlDialog::ControlList::drawColumn(UIPainter* painter, PropertyBase* property, sRect const& rect,
                                              eColumnAlignment alignment, unsigned int row, unsigned int column,
                                              sColor color)
{
    if (column == 1) {
        painter->drawString(rect, property->getNumeric(PropertyBase::CurrentIndex) == 0 ? "Property" : "Trigger", color,
                            eAlignment_LeftMiddle);
    } else {
        UIList::drawColumn(painter, property, rect, alignment, row, column, color);
    }
}

// ---------------------------------------------------------------------------
// [SECTION] UIPropertyDialog

UIPropertyDialog::UIPropertyDialog(char const* title, ObjectBase* object, char const* const* names,
                                   unsigned int count)
    : UIDialog(kWindowAttribute, true, false, false, nullptr, nullptr)
{
    initialize(title, eButtonMode_Ok);
    PropertyList properties;
    object->makePropertyList(properties);
    int y = UIWindow::kTitleHeight + 4;
    for (unsigned int i = 0; i < count; ++i) {
        PropertyBase* property = nullptr;
        for (PropertyBase* candidate : properties) {
            if (candidate->getNameHash() == Utils::hash(names[i])) {
                property = candidate;
                break;
            }
        }
        if (property == nullptr) {
            continue;
        }
        PropertyControl control(property);
        UIBase* widget = Utils::makeUIFromControl(&control);
        if (widget == nullptr) {
            continue;
        }
        widget->setPosition(sPoint(8, y));
        widget->setSize(sSize(kWidth - 16, widget->getMinimumSize().height));
        add(widget);
        y += static_cast<int>(widget->getSize().height) + 4;
    }
    setSize(sSize(kWidth, y + kButtonHeight + 12));
    center();
    placeButtons(y + 4);
}

void openPropertyDialog(char const* title, ObjectBase* object, char const* const* names, unsigned int count)
{
    UISystem::getInstance()->addWindow(new UIPropertyDialog(title, object, names, count));
}
