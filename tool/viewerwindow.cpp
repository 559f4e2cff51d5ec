#include "tool/viewerwindow.h"

#include "foundation/utils.h"
#include "reflection/objectlist.h"
#include "reflection/property.h"
#include "render/renderobject.h"
#include "resource/resourcebase.h"
#include "ui/uicontrolcomposite.h"
#include "ui/uimenu.h"
#include "ui/uitexture.h"
#include "unit/unitbase.h"
#include "unit/unitsystem.h"

IMPLEMENT_OBJECT_TYPEINFO(ResourceViewerWindow, "ToolBase");
IMPLEMENT_OBJECT_TYPEINFO(UnitViewerWindow, "ToolBase");
IMPLEMENT_OBJECT_TYPEINFO(TextureViewerWindow, "UIWindow");

namespace {

unsigned int const kViewerSide = 256;

// The widgets an object offers, added as clients of the form.
void addWidgets(UIForm* form, ObjectBase* object)
{
    List<UIBase> widgets;
    object->makeUIList(widgets);
    for (UIBase* widget : widgets) {
        form->addClient(widget);
    }
}

UIMainMenu* makeFileBar(ToolBase* tool)
{
    UIMenu* file = new UIMenu();
    tool->makeFileMenu(file);
    UIMainMenu* bar = new UIMainMenu();
    bar->addItem("File", file);
    return bar;
}

} // namespace

// ---------------------------------------------------------------------------
// ResourceViewerWindow

ResourceViewerWindow::ResourceViewerWindow() : mpResource(nullptr)
{
    setTitle("ResourceViewer");
    setSize(sSize(kViewerSide, kViewerSide));
    setManagedResource("Resource", ResourceBase::getStaticTypeInfo(), this, &ResourceViewerWindow::getResource,
                       &ResourceViewerWindow::setResource);
    setMainMenu(makeFileBar(this));
}

ResourceViewerWindow::~ResourceViewerWindow()
{
    // The widgets read the resource: they go first.
    removeClient();
    if (mpResource != nullptr) {
        mpResource->release();
    }
}

void ResourceViewerWindow::setResource(ResourceBase* resource)
{
    removeClient();
    if (mpResource != nullptr) {
        mpResource->release();
    }
    mpResource = resource;
    if (resource == nullptr) {
        setTitle("ResourceViewer");
        return;
    }
    resource->addRef();
    addWidgets(this, resource);
    setTitle(Utils::getFileName(resource->getPath().c_str()));
}

void ResourceViewerWindow::makePropertyList(PropertyList& list)
{
    if (mpResource != nullptr) {
        list.add(new ResourceProperty("Resource", mpResource->getTypeInfo(), &mpResource));
    }
}

// ---------------------------------------------------------------------------
// UnitViewerWindow

UnitViewerWindow::UnitViewerWindow(UnitBase* unit) : mpUnit(unit)
{
    setSize(sSize(kViewerSide, kViewerSide));
    if (unit == nullptr) {
        setTitle("UnitViewer");
        return;
    }
    setTitle(unit->getTypeInfo()->getName());
    addWidgets(this, unit);
    UnitSystem::getInstance()->addDestroyListener(&UnitViewerWindow::notifyUnitDestroy, this);
}

UnitViewerWindow::~UnitViewerWindow()
{
    forgetUnit();
}

void UnitViewerWindow::forgetUnit()
{
    if (mpUnit == nullptr) {
        return;
    }
    mpUnit = nullptr;
    removeClient();
    if (UnitSystem* units = UnitSystem::getInstance()) {
        units->removeDestroyListener(&UnitViewerWindow::notifyUnitDestroy, this);
    }
}

// A killed unit lives through one more frame, which is when the window lets
// go of it; a unit deleted outright is reported by UnitSystem at once.
void UnitViewerWindow::update(float deltaTime)
{
    ToolBase::update(deltaTime);
    if (mpUnit != nullptr && !mpUnit->isEnable()) {
        forgetUnit();
    }
}

void UnitViewerWindow::notifyUnitDestroy(UnitBase* unit, void* user)
{
    UnitViewerWindow* window = static_cast<UnitViewerWindow*>(user);
    if (window->mpUnit == unit) {
        window->forgetUnit();
    }
}

void UnitViewerWindow::makePropertyList(PropertyList& list)
{
    list.add(new ObjectProperty("Unit", mpUnit));
}

// ---------------------------------------------------------------------------
// TextureViewerWindow

TextureViewerWindow::TextureViewerWindow()
    : UIWindow(eStyle_Convex, eWindowAttribute_TitleBar | eWindowAttribute_Movable | eWindowAttribute_Sizable, true,
               false, false, 0, nullptr),
      mpTexture(nullptr), mpForm(nullptr), mpUITexture(nullptr)
{
    setTitle("TextureViewer");
    setSize(sSize(512, 256));
    mpForm = new UIForm(UIForm::eFormAttribute_AutoAlign);
    mpForm->setSize(sSize(kSideWidth, 320));
    mpForm->setClientRegion(sRect(mpForm->getSize()));
    mpUITexture = new UITexture();
    mpUITexture->setPosition(sPoint(kSideWidth, 0));
    PropertyBase* size = new IndirectProperty<sSize>("Size", this, &TextureViewerWindow::getTextureSize,
                                                     &TextureViewerWindow::setTextureSize);
    PropertyBase* color =
        new IndirectProperty<sColor>("Color", mpUITexture, &UITexture::getColor, &UITexture::setColor);
    UISizeControl* sizeControl = new UISizeControl(size, true, UIControl::NoIndex);
    sizeControl->setDefaultSize();
    mpForm->addClient(sizeControl);
    UIColorControl* colorControl = new UIColorControl(color, false, UIControl::NoIndex);
    colorControl->setDefaultSize();
    mpForm->addClient(colorControl);
    addClient(mpForm);
    addClient(mpUITexture);
}

TextureViewerWindow::~TextureViewerWindow()
{
    if (mpTexture != nullptr) {
        mpTexture->release();
    }
}

void TextureViewerWindow::setTexture(Texture* texture)
{
    if (texture != nullptr) {
        texture->addRef();
    }
    if (mpTexture != nullptr) {
        mpTexture->release();
    }
    mpTexture = texture;
    mpUITexture->setTexture(texture);
}

sSize TextureViewerWindow::getTextureSize() const
{
    return mpTexture != nullptr ? sSize(mpTexture->getWidth(), mpTexture->getHeight()) : sSize(0, 0);
}
