// Dialogs driven through UISystem: the answer each button, key and the
// title bar's close button gives, once; the message box's size and button
// rows; the file dialog's folders-first listing, filters, "Up" at the roots
// and the extension rule; the class dialogs' levels, "Up" and the leaf that
// confirms at once.
#include <chrono>
#include <filesystem>
#include <string>

#include "app/application.h"
#include "reflection/typeinfo.h"
#include "testfiles.h"
#include "ui/uibutton.h"
#include "ui/uidialog.h"
#include "ui/uisystem.h"
#include "uitest.h"

using namespace uitest;

namespace {

struct Answers {
    void answer(UIDialog* dialog)
    {
        mAnswers += std::to_string(dialog->getReturnValue());
        if (UIFileDialog* files = mpFileDialog) {
            mPath = files->getFullPath().empty() ? "" : files->getFullPath().c_str();
        }
        if (mpObjectDialog != nullptr && mpObjectDialog->getSelectedTypeInfo() != nullptr) {
            mClass = mpObjectDialog->getSelectedTypeInfo()->getName();
        }
    }
    std::string mAnswers;
    std::string mPath;
    std::string mClass;
    UIFileDialog* mpFileDialog = nullptr;
    UIObjectDialog* mpObjectDialog = nullptr;
};

// A small class tree of its own: DialogRoot > DialogMiddle > DialogLeaf.
class DialogRoot : public ObjectBase {
public:
    DECLARE_TYPEINFO(TypeInfo)
};
class DialogMiddle : public DialogRoot {
public:
    DECLARE_TYPEINFO(UniqueTypeInfo<DialogMiddle>)
};
class DialogLeaf : public DialogMiddle {
public:
    DECLARE_TYPEINFO(UniqueTypeInfo<DialogLeaf>)
};
IMPLEMENT_TYPEINFO(DialogRoot, "ObjectBase", TypeInfo::eAttribute_Abstract);
IMPLEMENT_OBJECT_TYPEINFO(DialogMiddle, "DialogRoot");
IMPLEMENT_OBJECT_TYPEINFO(DialogLeaf, "DialogMiddle");

} // namespace

class DialogTest : public UITest {
protected:
    template <typename D>
    D* show(D* dialog)
    {
        mpUI->addWindow(dialog);
        frame();
        return dialog;
    }
    void clickOn(UIBase* widget)
    {
        sPoint const p = widget->getAbsPosition();
        tap(p.x + 4, p.y + 4);
    }
    // Row r of a dialog's list, at its left.
    void doubleClickRow(UIListDialog* dialog, unsigned int row)
    {
        sPoint const p = dialog->getList()->getAbsPosition() + sPoint(8, UIList::kHeaderBottom + 16 * row + 4);
        advance(1000);
        click(p.x, p.y);
        click(p.x, p.y);
    }
    Answers mAnswers;
};

TEST_F(DialogTest, ButtonsKeysAndTheCloseButtonAnswerOnce)
{
    // Mode 2: Yes, No and Cancel under the message, the box centred.
    UIMessageDialog* box = show(new UIMessageDialog("Causion", "Really sure?", UIDialog::eButtonMode_YesNoCancel, &mAnswers,
                                                    &Answers::answer));
    int const width = 12 * 6 + 32;
    EXPECT_EQ(box->getSize(), sSize(width, 96));
    EXPECT_EQ(box->getPosition(), sPoint((640 - width) / 2, (480 - 96) / 2));
    EXPECT_EQ(box->getOkButton(), nullptr);
    clickOn(box->getNoButton());
    frame();
    EXPECT_EQ(mAnswers.mAnswers, "2");
    EXPECT_EQ(mpUI->getWindowList().size(), 0u);

    struct {
        char const* how;
        unsigned int mode;
        unsigned int usage; // 0: the close button of the title bar
        char const* answer;
    } const cases[] = {
        {"Return", UIDialog::eButtonMode_Ok, kUsageReturn, "0"},
        {"ESC", UIDialog::eButtonMode_OkCancel, kUsageEscape, "3"},
        {"close button", UIDialog::eButtonMode_YesNoCancel, 0, "3"},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.how);
        mAnswers.mAnswers.clear();
        UIMessageDialog* dialog = show(new UIMessageDialog("Title", "A message", c.mode, &mAnswers, &Answers::answer));
        if (c.usage != 0) {
            type(c.usage);
        } else {
            clickOn(dialog->getCloseButton());
        }
        frame();
        EXPECT_EQ(mAnswers.mAnswers, c.answer);
        EXPECT_EQ(mpUI->getWindowList().size(), 0u);
    }
    // A close by button and key in one frame answers once.
    mAnswers.mAnswers.clear();
    UIMessageDialog* twice = show(new UIMessageDialog("Title", "A", 1, &mAnswers, &Answers::answer));
    twice->eventOk();
    twice->eventCancel();
    frame();
    EXPECT_EQ(mAnswers.mAnswers, "0");
}

TEST_F(DialogTest, TheFileDialogListsFoldersFirstFiltersAndCompletesTheExtension)
{
    namespace fs = std::filesystem;
    std::string const name =
        "dialogtest" + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count() % 1000000);
    fs::path const folder = fs::path(Application::getInstance()->getIntermediatePath()) / name;
    fs::create_directories(folder / "sub");
    for (char const* file : {"b.tga", "a.bmp", "c.seq.xml", "d.tga"}) {
        writeFile((folder / file).string(), "x");
    }
    char const* filters[] = {"tga|Targa", "bmp|Bitmap", nullptr};
    UIFileDialog* dialog =
        new UIFileDialog("Texture open", &mAnswers, &Answers::answer, "All Texture", filters, true, nullptr);
    mAnswers.mpFileDialog = dialog;
    show(dialog);
    EXPECT_EQ(dialog->getFilterIndex(), 2u); // "All Texture"
    dialog->setCurrentDirectory(UIFileDialog::eRootDirectory_Intermediate, name.c_str());

    // Folders first, then the files of any filter, each by name.
    struct {
        unsigned int filter;
        char const* rows;
    } const listings[] = {
        {2, "sub a.bmp b.tga d.tga"},
        {0, "sub b.tga d.tga"},
        {1, "sub a.bmp"},
    };
    for (auto const& listing : listings) {
        SCOPED_TRACE(listing.filter);
        dialog->setFilterIndex(listing.filter);
        std::string rows;
        for (ObjectBase* row : dialog->getRows()) {
            rows += (rows.empty() ? "" : " ") + std::string(static_cast<UIFileDialog::FileInfo*>(row)->mName.c_str());
        }
        EXPECT_EQ(rows, listing.rows);
    }
    EXPECT_STREQ(static_cast<UIFileDialog::FileInfo*>(dialog->getRows()[0])->mDate.c_str(), "<dir>");

    // A name whose extension is no filter's: no file name, no extension.
    dialog->setText("picture.seq.xml");
    EXPECT_EQ(dialog->getFileName(), nullptr);
    EXPECT_TRUE(dialog->getExtension().empty());
    dialog->setText("b.tga");
    EXPECT_STREQ(dialog->getFileName(), "b.tga");
    EXPECT_STREQ(dialog->getExtension().c_str(), "tga");
    EXPECT_STREQ(dialog->getResourcePath().c_str(), (name + "/b").c_str());

    // Into "sub" by a double click, "Up" back, "Up" at the root stays.
    doubleClickRow(dialog, 0);
    EXPECT_EQ(std::string(dialog->getDirectory().c_str()), (folder / "sub").string() + "/");
    dialog->notifyUp(nullptr);
    dialog->notifyUp(nullptr);
    EXPECT_STREQ(dialog->getDirectory().c_str(), Application::getInstance()->getIntermediatePath());
    dialog->notifyUp(nullptr);
    EXPECT_STREQ(dialog->getDirectory().c_str(), Application::getInstance()->getIntermediatePath());

    // A name without an extension takes the first filter's; an existing
    // file asks before it is overwritten, and No cancels.
    dialog->setCurrentDirectory(UIFileDialog::eRootDirectory_Intermediate, name.c_str());
    dialog->setText("d");
    dialog->eventOk();
    frame();
    EXPECT_STREQ(dialog->getText().c_str(), "d.tga");
    ASSERT_EQ(mpUI->getWindowList().size(), 2u);
    UIMessageDialog* question = static_cast<UIMessageDialog*>(mpUI->getWindowList()[0]);
    EXPECT_STREQ(question->getTitle().c_str(), "Causion");
    EXPECT_STREQ(question->getMessage().c_str(), "File already exists.Are you sure to overwrite?");
    question->eventNo();
    frame();
    EXPECT_EQ(mAnswers.mAnswers, "3");
    EXPECT_EQ(mpUI->getWindowList().size(), 0u);

    // A new name is confirmed at once; an empty one cancels.
    mAnswers.mAnswers.clear();
    dialog = new UIFileDialog("Save", &mAnswers, &Answers::answer, "All Texture", filters, true, nullptr);
    mAnswers.mpFileDialog = dialog;
    show(dialog);
    dialog->setCurrentDirectory(UIFileDialog::eRootDirectory_Intermediate, name.c_str());
    dialog->setText("new");
    dialog->eventOk();
    frame();
    EXPECT_EQ(mAnswers.mAnswers, "0");
    EXPECT_EQ(mAnswers.mPath, (folder / "new.tga").string());
    mAnswers.mAnswers.clear();
    dialog = show(new UIFileDialog("Save", &mAnswers, &Answers::answer, nullptr, nullptr, false, nullptr));
    mAnswers.mpFileDialog = dialog;
    EXPECT_EQ(dialog->getFilterControl(), nullptr);
    dialog->eventOk();
    frame();
    EXPECT_EQ(mAnswers.mAnswers, "3");
    fs::remove_all(folder);
}

TEST_F(DialogTest, TheClassDialogWalksOneLevelAtATimeAndALeafConfirms)
{
    UIObjectDialog* dialog =
        new UIObjectDialog("Unit", &mAnswers, &Answers::answer, DialogRoot::getStaticTypeInfo(), nullptr);
    mAnswers.mpObjectDialog = dialog;
    show(dialog);
    EXPECT_EQ(dialog->getCurrentTypeInfo(), DialogRoot::getStaticTypeInfo());
    ASSERT_EQ(dialog->getRows().size(), 2u); // the class, then DialogMiddle
    // "Up" at the root stays; a double click on a class with subclasses
    // enters it; "Up" goes back.
    dialog->notifyUp(nullptr);
    EXPECT_EQ(dialog->getCurrentTypeInfo(), DialogRoot::getStaticTypeInfo());
    doubleClickRow(dialog, 1);
    EXPECT_EQ(dialog->getCurrentTypeInfo(), DialogMiddle::getStaticTypeInfo());
    EXPECT_EQ(mAnswers.mAnswers, "");
    dialog->notifyUp(nullptr);
    EXPECT_EQ(dialog->getCurrentTypeInfo(), DialogRoot::getStaticTypeInfo());
    doubleClickRow(dialog, 1);
    // A double click on the leaf confirms at once, with the leaf chosen.
    doubleClickRow(dialog, 1);
    frame();
    EXPECT_EQ(mAnswers.mAnswers, "0");
    EXPECT_EQ(mAnswers.mClass, "DialogLeaf");

    // The flat dialog lists the whole subtree and answers only classes
    // below its root.
    mAnswers = Answers();
    UIPlaneObjectDialog* plane =
        show(new UIPlaneObjectDialog("Tool select", &mAnswers, &Answers::answer, DialogRoot::getStaticTypeInfo(), nullptr));
    EXPECT_EQ(plane->getRows().size(), 3u);
    plane->setText("DialogLeaf");
    EXPECT_EQ(plane->getSelecteTypeInfo(), DialogLeaf::getStaticTypeInfo());
    plane->setText("ObjectBase");
    EXPECT_EQ(plane->getSelecteTypeInfo(), nullptr);
    plane->eventCancel();
    frame();
    EXPECT_EQ(mAnswers.mAnswers, "3");
}
