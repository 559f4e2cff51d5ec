// Tool windows over live resources and units: the tool base's questions and
// its three ways of saving, the one-tool-per-resource rule, createTool, the
// viewers letting go of what dies, and the information windows rebuilding
// their lists from the running systems while keeping the selection.
#include <filesystem>
#include <string>

#include "app/application.h"
#include "../render/renderfixture.h"
#include "reflection/typeinfo.h"
#include "resource/resourcebase.h"
#include "resource/resourcesystem.h"
#include "resource/textureresource.h"
#include "serial/stream.h"
#include "testfiles.h"
#include "tool/infowindow.h"
#include "tool/toolbase.h"
#include "tool/viewerwindow.h"
#include "ui/uidialog.h"
#include "ui/uisystem.h"
#include "unit/coordinateunit.h"
#include "unit/unitsystem.h"

namespace {

// A text resource of its own: "note" files hold one line. Only an
// intermediate resource is ever written by a tool.
class NoteResource : public ResourceBase {
public:
    explicit NoteResource(bool text = true) : ResourceBase(text ? eAttribute_Intermediate : 0) { mText = "note"; }
    bool load(Stream&) override { return true; }
    bool save(Stream& stream) override
    {
        ++mSaves;
        return stream.getTextAccessor()->write(mText.c_str(), mText.size()) == mText.size();
    }
    char const* getExtension() const override { return "note"; }
    DECLARE_TYPEINFO(UniqueTypeInfo<NoteResource>)
    AutoString mText;
    int mSaves = 0;
};
IMPLEMENT_OBJECT_TYPEINFO(NoteResource, "ResourceBase");

class NoteTool : public ToolBase {
public:
    NoteTool() { setManagedResource("Note Resource", this, &NoteTool::getNote, &NoteTool::setNote); }
    ~NoteTool() override { setNote(nullptr); }
    NoteResource* getNote() const { return mpNote; }
    void setNote(NoteResource* note)
    {
        if (note != nullptr) {
            note->addRef();
        }
        if (mpNote != nullptr) {
            mpNote->release();
        }
        mpNote = note;
    }
    DECLARE_TYPEINFO(UniqueTypeInfo<NoteTool>)
    NoteResource* mpNote = nullptr;
};
IMPLEMENT_OBJECT_TYPEINFO(NoteTool, "ToolBase");

} // namespace

class ToolWindowTest : public rendertest::RenderTest {
protected:
    void SetUp() override
    {
        RenderTest::SetUp();
        mpResources = ResourceSystem::create();
        mpUnits = UnitSystem::create();
        mpUI = UISystem::create();
    }
    void TearDown() override
    {
        mpUI->removeAllWindow();
        mpUI->destroy();
        mpUnits->destroy();
        mpResources->destroy();
        RenderTest::TearDown();
    }
    // The UI's part of a frame: admit, then delete what was closed.
    void frame()
    {
        mpUI->preprocess();
        mpUI->postprocess();
    }
    UIWindow* front() const
    {
        return mpUI->getWindowList().empty() ? nullptr : static_cast<UIWindow*>(mpUI->getWindowList()[0]);
    }
    NoteResource* newNote(char const* path)
    {
        NoteResource* note = new NoteResource();
        if (path != nullptr) {
            note->setPath(path);
        }
        note->setModify();
        return note;
    }
    ResourceSystem* mpResources = nullptr;
    UnitSystem* mpUnits = nullptr;
    UISystem* mpUI = nullptr;
};

TEST_F(ToolWindowTest, TheToolBaseAsksBeforeChangesAreLostAndSavesByItsOwnRules)
{
    NoteTool* tool = new NoteTool();
    NoteResource* note = newNote("intermediate/tooltest.note");
    tool->setManagedResource(note);
    mpUI->addWindow(tool);
    frame();
    // Another class is refused; the same resource in a second tool too.
    ResourceBase* texture = mpResources->createResource(nullptr, TextureResource::getStaticTypeInfo());
    tool->setManagedResource(texture);
    EXPECT_EQ(tool->getManagedResource(), note);
    texture->release();
    NoteTool* second = new NoteTool();
    second->setManagedResource(note);
    mpUI->addWindow(second);
    frame();
    EXPECT_EQ(mpUI->getWindowList().size(), 1u);

    // Closing a modified resource asks; Cancel keeps the tool and the change.
    struct {
        char const* answer;
        void (UIDialog::*press)();
        unsigned int windows;
    } const answers[] = {{"Cancel", &UIDialog::eventCancel, 1}, {"No", &UIDialog::eventNo, 0}};
    for (auto const& a : answers) {
        SCOPED_TRACE(a.answer);
        tool->close();
        frame();
        UIMessageDialog* question = static_cast<UIMessageDialog*>(front());
        ASSERT_NE(static_cast<UIWindow*>(question), static_cast<UIWindow*>(tool));
        EXPECT_STREQ(question->getTitle().c_str(), "Causion");
        EXPECT_STREQ(question->getMessage().c_str(), "Resource is modified.Do you save it?");
        (question->*a.press)();
        frame();
        EXPECT_EQ(mpUI->getWindowList().size(), a.windows);
    }
    EXPECT_EQ(note->mSaves, 0); // No closes without writing
    note->release();
}

TEST_F(ToolWindowTest, SaveWritesInPlaceOrAsksForANameAndLeavesOtherFormsAlone)
{
    namespace fs = std::filesystem;
    std::string const file = std::string(Application::getInstance()->getRootPath()) + "intermediate/tooltest.note";
    fs::remove(file);
    NoteTool* tool = new NoteTool();
    NoteResource* note = newNote("intermediate/tooltest.note");
    tool->setManagedResource(note);
    mpUI->addWindow(tool);
    frame();
    // With a path: written beside and renamed in place, no longer modified.
    tool->save();
    EXPECT_FALSE(note->isModified());
    EXPECT_EQ(readFile(file), "note");
    EXPECT_FALSE(fs::exists(file + ".new"));
    // Not modified: nothing happens; a resource that is not a text form is
    // never written.
    tool->save();
    EXPECT_EQ(note->mSaves, 1);
    NoteResource* binary = new NoteResource(false);
    binary->setPath("intermediate/binary.note");
    binary->setModify();
    tool->setManagedResource(binary);
    tool->save();
    EXPECT_EQ(binary->mSaves, 0);
    EXPECT_TRUE(binary->isModified());
    binary->release();

    // Without a path, Save is Save as: the "Save" file dialog.
    NoteResource* fresh = newNote(nullptr);
    tool->setManagedResource(fresh);
    tool->save();
    frame();
    EXPECT_STREQ(front()->getTitle().c_str(), "Save");
    static_cast<UIDialog*>(front())->eventCancel();
    frame();
    EXPECT_TRUE(fresh->isModified());
    EXPECT_EQ(fresh->mSaves, 0);
    fs::remove(file);
    note->release();
    fresh->release();
}

TEST_F(ToolWindowTest, CreateToolAndTheViewersLetGoOfWhatEnds)
{
    ToolSystem* tools = ToolSystem::getInstance();
    EXPECT_EQ(tools->createTool(nullptr), nullptr);
    ToolBase* tool = tools->createTool(NoteResource::getStaticTypeInfo());
    EXPECT_EQ(tool->getTypeInfo(), NoteTool::getStaticTypeInfo());
    delete tool;
    tool = tools->createTool(TextureResource::getStaticTypeInfo());
    ASSERT_EQ(tool->getTypeInfo(), ResourceViewerWindow::getStaticTypeInfo());
    ResourceViewerWindow* viewer = static_cast<ResourceViewerWindow*>(tool);
    NoteResource* note = newNote("intermediate/viewed.note");
    viewer->setResource(note);
    EXPECT_STREQ(viewer->getTitle().c_str(), "viewed.note");
    EXPECT_EQ(note->getRefCount(), 2);
    viewer->setResource(nullptr);
    EXPECT_STREQ(viewer->getTitle().c_str(), "ResourceViewer");
    EXPECT_EQ(viewer->getClientHolder()->getChildCount(), 0u);
    EXPECT_EQ(note->getRefCount(), 1);
    delete viewer;
    note->release();

    // A killed unit empties its viewer at the next update, a deleted one at
    // once; the title stays.
    for (bool deleted : {false, true}) {
        SCOPED_TRACE(deleted ? "deleted" : "killed");
        CoordinateUnit* unit = new CoordinateUnit();
        UnitViewerWindow* unitViewer = new UnitViewerWindow(unit);
        EXPECT_GT(unitViewer->getClientHolder()->getChildCount(), 0u);
        if (deleted) {
            delete unit;
        } else {
            unit->setSystemStatus(unit->getSystemStatus() | UnitBase::eSystemStatus_Kill);
            unitViewer->update(1.0f);
            delete unit;
        }
        EXPECT_EQ(unitViewer->getUnit(), nullptr);
        EXPECT_EQ(unitViewer->getClientHolder()->getChildCount(), 0u);
        EXPECT_STREQ(unitViewer->getTitle().c_str(), "CoordinateUnit");
        delete unitViewer;
    }
}

TEST_F(ToolWindowTest, InformationWindowsFollowTheLiveSystemsAndKeepTheSelection)
{
    ResourceInfoWindow* resources = new ResourceInfoWindow();
    resources->updateResourceList();
    EXPECT_EQ(resources->getList()->getRowCount(), 0u);
    EXPECT_EQ(resources->getResourceNum(), 0u);
    NoteResource* first = static_cast<NoteResource*>(mpResources->createResource(nullptr, NoteResource::getStaticTypeInfo()));
    resources->updateResourceList();
    resources->getList()->selectRow(0);
    EXPECT_EQ(resources->getSelectResource(), first);
    EXPECT_EQ(first->getRefCount(), 3); // the creation, the row, the selection
    // More resources: the selected row stays on the same resource, which the
    // window keeps alive when its creator lets go.
    NoteResource* second = static_cast<NoteResource*>(mpResources->createResource(nullptr, NoteResource::getStaticTypeInfo()));
    first->release();
    resources->updateResourceList();
    EXPECT_EQ(resources->getResourceNum(), 2u);
    unsigned int const row = resources->getList()->getSelectRow();
    ASSERT_LT(row, 2u);
    EXPECT_EQ(resources->getSelectResource(), first);
    EXPECT_EQ(first->getRefCount(), 2);
    delete resources;
    second->release();

    // Units: "All" shows every unit, a category filter only its own; the
    // selection lives in the units.
    UnitInfoWindow* units = new UnitInfoWindow();
    CoordinateUnit* a = new CoordinateUnit();
    CoordinateUnit* b = new CoordinateUnit();
    a->setCategory(2);
    mpUnits->addUnit(a);
    mpUnits->addUnit(b);
    mpUnits->preprocess();
    units->update(1.0f);
    EXPECT_EQ(units->getShownUnits().size(), 2u);
    units->setCategoryFilter(3); // category 2
    units->update(1.0f);
    ASSERT_EQ(units->getShownUnits().size(), 1u);
    units->getList()->selectRow(0);
    EXPECT_TRUE(a->isSelected());
    EXPECT_FALSE(b->isSelected());
    units->setCategoryFilter(0);
    units->update(1.0f);
    EXPECT_EQ(units->getShownUnits().size(), 2u);
    // "Delete" kills the selected units, also those a filter hides.
    units->setCategoryFilter(1);
    units->eventDelete();
    EXPECT_FALSE(a->isEnable());
    EXPECT_TRUE(b->isEnable());
    delete units;
}
