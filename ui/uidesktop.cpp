#include "ui/uidesktop.h"

#include "reflection/property.h"
#include "resource/resourcesystem.h"
#include "resource/textureresource.h"
#include "tool/infowindow.h"
#include "tool/toolbase.h"
#include "ui/uicontrolcomposite.h"
#include "ui/uidialog.h"
#include "ui/uimenu.h"
#include "ui/uipainter.h"
#include "ui/uishortcut.h"
#include "ui/uisystem.h"

namespace {

// Option together with Control or Command.
unsigned int const kLaunchCombination = 6;

UIShortcut<UIDesktop> const kShortcutTable[] = {
    UIShortcut<UIDesktop>('S', kLaunchCombination, &UIDesktop::launchSystemManager),
    UIShortcut<UIDesktop>('R', kLaunchCombination, &UIDesktop::launchResourceManager),
    UIShortcut<UIDesktop>('U', kLaunchCombination, &UIDesktop::launchUnitManager),
};

} // namespace

UIDesktop::UIDesktop() : mpMainMenu(nullptr), mpWallpaper(nullptr)
{
    UIMenu* menu = new UIMenu();
    menu->addItem("SystemManager", this, &UIDesktop::launchSystemManager);
    menu->addItem("ResourceManager", this, &UIDesktop::launchResourceManager);
    menu->addItem("UnitManager", this, &UIDesktop::launchUnitManager);
    menu->addItem("TextureManager");
    menu->addSeparator();
    menu->addItem("Tool", this, &UIDesktop::lanchTool);
    menu->addSeparator();
    menu->addItem("Change Wallpaper", this, &UIDesktop::changeWallpaper);
    setMenu(menu);
}

UIDesktop::~UIDesktop()
{
    delete mpMainMenu;
    if (mpWallpaper != nullptr) {
        mpWallpaper->release();
    }
}

void UIDesktop::launchSystemManager()
{
    UISystem::getInstance()->addWindow(new SystemInfoWindow());
}

void UIDesktop::launchResourceManager()
{
    UISystem::getInstance()->addWindow(new ResourceInfoWindow());
}

void UIDesktop::launchUnitManager()
{
    UISystem::getInstance()->addWindow(new UnitInfoWindow());
}

void UIDesktop::lanchTool()
{
    UISystem::getInstance()->addWindow(new UIPlaneObjectDialog("Tool select", this, &UIDesktop::notifySelectTool,
                                                               ToolBase::getStaticTypeInfo(), nullptr));
}

void UIDesktop::notifySelectTool(UIDialog* dialog)
{
    if (dialog->getReturnValue() != UIDialog::eReturnValue_Ok) {
        return;
    }
    TypeInfo const* type = static_cast<UIPlaneObjectDialog const*>(dialog)->getSelecteTypeInfo();
    if (type == nullptr) {
        return;
    }
    if (ObjectBase* tool = type->newInstance()) {
        UISystem::getInstance()->addWindow(static_cast<UIWindow*>(tool));
    }
}

void UIDesktop::changeWallpaper()
{
    static char const* filters[] = {"tex|Texture", "bmp|Bitmap", "tga|Targa", nullptr};
    UISystem::getInstance()->addWindow(
        new UIFileDialog("Texture open", this, &UIDesktop::notifySelectWallpaper, "All Texture", filters, false, nullptr));
}

void UIDesktop::notifySelectWallpaper(UIDialog* dialog)
{
    UIFileDialog const* fileDialog = static_cast<UIFileDialog const*>(dialog);
    if (fileDialog->getReturnValue() != UIDialog::eReturnValue_Ok) {
        return;
    }
    AutoString const extension = fileDialog->getExtension();
    if (extension.empty()) {
        return;
    }
    ResourceSystem* resources = ResourceSystem::getInstance();
    TypeInfo const* type = resources->getTypeInfoByExtension(extension.c_str());
    if (type == nullptr) {
        return;
    }
    ResourceBase* wallpaper = resources->createResource(fileDialog->getResourcePath().c_str(), type);
    if (wallpaper == nullptr) {
        return;
    }
    if (mpWallpaper != nullptr) {
        mpWallpaper->release();
    }
    mpWallpaper = wallpaper;
}

UIShortcutBase const* UIDesktop::findShortcut(unsigned int keyCode, unsigned int combinationKey) const
{
    if (UIShortcutBase const* found = UIBase::findShortcut(keyCode, combinationKey)) {
        return found;
    }
    return UIShortcut<UIDesktop>::find(kShortcutTable, keyCode, combinationKey);
}

// Stretched over the whole desktop; without a wallpaper the cleared
// background shows.
void UIDesktop::eventPaint(UIPainter* painter)
{
    if (mpWallpaper == nullptr) {
        return;
    }
    TextureResource const* wallpaper = static_cast<TextureResource const*>(mpWallpaper);
    Texture* texture = wallpaper->getTexture();
    if (texture == nullptr) {
        return;
    }
    painter->setBlendMode(eBlendMode_Opaque);
    painter->setTextureFiltering(eTextureFiltering_Linear);
    painter->setTexture(texture);
    painter->drawRect(sRect(getSize()), sColor::White, UIPainter::sTexel(0, 0),
                      UIPainter::sTexel(static_cast<unsigned short>(wallpaper->getWidth()),
                                        static_cast<unsigned short>(wallpaper->getHeight())));
    painter->setTexture(nullptr);
}

void UIDesktop::makePropertyList(PropertyList& list)
{
    list.add(new ResourceProperty("Wallpaper", TextureResource::getStaticTypeInfo(), &mpWallpaper));
}

void UIDesktop::makeUIList(List<UIBase>& list)
{
    UIControl* control = new UITextureResourceControl(
        new ResourceProperty("Wallpaper", TextureResource::getStaticTypeInfo(), &mpWallpaper), false,
        UIControl::NoIndex);
    control->setDefaultSize();
    list.addLast(control);
}
