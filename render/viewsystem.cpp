#include "render/viewsystem.h"

#include <cstdio>

#include "reflection/control.h"

#include "app/application.h"
#include "foundation/debug.h"
#include "reflection/objectlist.h"
#include "reflection/property.h"
#include "render/drawcontext.h"
#include "render/rendersystem.h"

IMPLEMENT_TYPEINFO(ViewSystem, "System", TypeInfo::eAttribute_Singleton);
ViewSystem* ViewSystem::mpInstance = nullptr;

// ---------------------------------------------------------------------------
// View

ViewSystem::View::View() : mEnable(false), mGrid(false), mIndex(0)
{
    Application const* application = Application::getInstance();
    sRect const window = application != nullptr ? sRect(0, 0, static_cast<int>(application->getWindowWidth()),
                                                        static_cast<int>(application->getWindowHeight()))
                                                : sRect::Zero;
    mViewport = window;
    mProjection = window;
    mDrawers.add(&DrawerList::member<View, &View::drawGrid>, this, eDrawStage_Grid);
}

void ViewSystem::View::makePropertyList(PropertyList& list)
{
    list.add(new ReferenceProperty<AutoString>("Name", &mName));
    list.add(new ReferenceProperty<bool>("Enable", &mEnable));
    list.add(new ReferenceProperty<bool>("Grid", &mGrid));
    list.add(new ReferenceProperty<sRect>("Viewport", &mViewport));
    list.add(new ReferenceProperty<sRect>("Projection", &mProjection));
}

void ViewSystem::View::draw(DrawContext* context)
{
    context->setView(mIndex);
    context->setViewport(mViewport);
    context->setScissorRect(mViewport);
    context->setProjectionRect(mProjection);
    mDrawers.call(context);
}

// Black lines every 32 world units over the projection, on the last level.
void ViewSystem::View::drawGrid(DrawContext* context)
{
    if (!mGrid) {
        return;
    }
    context->setDrawLevel(16383, 0); // masked to 4095, the last level
    context->setVertexDecl(eVertexDecl_Plain);
    context->setBlendMode(eBlendMode_Opaque);
    sRect const& area = mProjection;
    int const columns = (area.right - area.left - kGridPitch) / kGridPitch;
    int const rows = (area.bottom - area.top - kGridPitch) / kGridPitch;
    int const count = (columns + rows) * 2;
    if (columns < 0 || rows < 0 || count <= 0) {
        return;
    }
    DrawContext::sVertex* vertex =
        static_cast<DrawContext::sVertex*>(context->allocateVertices(ePrimitiveType_Line, static_cast<unsigned int>(count)));
    DrawContext::sVertex* const end = vertex + count;
    sColor const black = sColor::Black;
    // Each walk stops at its count as well: a size that is no multiple of the
    // pitch has room for one line less than the walk would reach.
    int x = area.left + kGridPitch;
    for (int line = 0; line < columns && x < area.right; ++line, x += kGridPitch) {
        vertex[0].mPosition = sVector(sFixed(x, 16), sFixed(area.top, 16));
        vertex[0].mColor = black;
        vertex[1].mPosition = sVector(sFixed(x, 16), sFixed(area.bottom, 16));
        vertex[1].mColor = black;
        vertex += 2;
    }
    int y = area.top + kGridPitch;
    for (int line = 0; line < rows && y < area.bottom; ++line, y += kGridPitch) {
        vertex[0].mPosition = sVector(sFixed(area.left, 16), sFixed(y, 16));
        vertex[0].mColor = black;
        vertex[1].mPosition = sVector(sFixed(area.right, 16), sFixed(y, 16));
        vertex[1].mColor = black;
        vertex += 2;
    }
    // Whatever the walks left over draws nothing.
    while (vertex != end) {
        vertex->mPosition = sVector(sFixed::Zero, sFixed::Zero);
        vertex->mColor = sColor(0, 0, 0, 0);
        ++vertex;
    }
}

// ---------------------------------------------------------------------------
// ViewSystem

ViewSystem* ViewSystem::create()
{
    if (mpInstance == nullptr) {
        ViewSystem* instance = new ViewSystem();
        mpInstance = instance;
    }
    return mpInstance;
}

void ViewSystem::destroy()
{
    delete this;
    mpInstance = nullptr;
}

ViewSystem::ViewSystem()
{
    // The text names JobSystem; it stands as it is.
    DEV_ASSERT(mpInstance == nullptr, "JobSystem already instanced.");
    for (u32 i = 0; i < kViewNum; ++i) {
        mViews[i].mIndex = i;
    }
    for (u32 i = kGameViewFirst; i <= kGameViewLast; ++i) {
        View& view = mViews[i];
        view.mName.format("GAME%d", static_cast<int>(i - kGameViewFirst));
        // World (0, 0) at the centre of the view.
        sRect& projection = view.mProjection;
        projection.translateRel(sPoint(-static_cast<int>(projection.getWidth() / 2), -static_cast<int>(projection.getHeight() / 2)));
    }
    for (u32 i = kGameViewFirst; i <= kGameViewLast; ++i) {
        mGameViewList.addLast(&mViews[i]);
    }
    mViews[0].mEnable = true;
    mViews[1].mEnable = true;
    mViews[kInterfaceView].mEnable = true;
    mViews[kOverlayView].mEnable = true;
    if (Application* application = Application::getInstance()) {
        application->addResizeListener(&Application::ResizeList::member<ViewSystem, &ViewSystem::notifyResize>, this);
    }
    DEV_TRACE("ViewSystem : start.\n");
}

ViewSystem::~ViewSystem()
{
    if (Application* application = Application::getInstance()) {
        application->removeResizeListener(this);
    }
    DEV_TRACE("ViewSystem : end.\n");
}

void ViewSystem::addDrawer(unsigned int view, eDrawStage stage, DrawerList::Function function, void* object)
{
    DEV_ASSERT(view < kViewNum, "No such view.");
    mViews[view].mDrawers.add(function, object, stage);
}

void ViewSystem::addGameViewDrawer(eDrawStage stage, DrawerList::Function function, void* object)
{
    for (u32 i = kGameViewFirst; i <= kGameViewLast; ++i) {
        addDrawer(i, stage, function, object);
    }
}

void ViewSystem::removeDrawer(void* object)
{
    for (View& view : mViews) {
        view.mDrawers.remove(object);
    }
}

void ViewSystem::notifyResize(sRect const& window)
{
    unsigned int const resized[] = {0, kInterfaceView, kOverlayView};
    for (unsigned int view : resized) {
        setViewport(view, window);
        setProjection(view, window);
    }
}

void ViewSystem::update()
{
    RenderSystem* renderSystem = RenderSystem::getInstance();
    DrawContext* context = renderSystem->popContext();
    for (u32 i = kGameViewFirst; i <= kGameViewLast; ++i) {
        if (mViews[i].mEnable) {
            mViews[i].draw(context);
        }
    }
    renderSystem->pushContext(context);
}

// ---------------------------------------------------------------------------
// Editing

void ViewSystem::makeUIList(List<UIBase>& list)
{
    static sListColumn const columns[] = {
        {"Name", 48}, {"Enable", 48}, {"Grid", 48}, {"Viewport", 96}, {"Projection", 112},
    };
    if (UIBase* table = makeObjectListUI(&mGameViewList, columns, sizeof(columns) / sizeof(columns[0]), sSize(354, 82),
                                         new Functor<ViewSystem, unsigned int, void>(this, &ViewSystem::eventDecideList))) {
        list.addLast(table);
    }
}

void ViewSystem::eventDecideList(unsigned int row)
{
    static char const* const names[] = {"Enable", "Grid", "Viewport", "Projection"};
    if (row >= kGameViewLast - kGameViewFirst + 1) {
        return;
    }
    char title[16];
    snprintf(title, sizeof(title), "GAME%u", row + 1);
    openPropertyDialog(title, &mViews[kGameViewFirst + row], names, 4);
}
