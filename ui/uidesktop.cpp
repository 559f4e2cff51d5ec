#include "ui/uidesktop.h"

#include "reflection/property.h"
#include "resource/textureresource.h"
#include "ui/uicontrolcomposite.h"
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

UIDesktop::Launcher UIDesktop::sLaunchers[UIDesktop::eLauncher_Num] = {};

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

void UIDesktop::setLauncher(eLauncher which, Launcher launcher)
{
    sLaunchers[which] = launcher;
}

void UIDesktop::launchSystemManager()
{
    if (sLaunchers[eLauncher_SystemManager] != nullptr) {
        sLaunchers[eLauncher_SystemManager]();
    }
}

void UIDesktop::launchResourceManager()
{
    if (sLaunchers[eLauncher_ResourceManager] != nullptr) {
        sLaunchers[eLauncher_ResourceManager]();
    }
}

void UIDesktop::launchUnitManager()
{
    if (sLaunchers[eLauncher_UnitManager] != nullptr) {
        sLaunchers[eLauncher_UnitManager]();
    }
}

void UIDesktop::lanchTool()
{
    if (sLaunchers[eLauncher_Tool] != nullptr) {
        sLaunchers[eLauncher_Tool]();
    }
}

void UIDesktop::changeWallpaper()
{
    if (sLaunchers[eLauncher_ChangeWallpaper] != nullptr) {
        sLaunchers[eLauncher_ChangeWallpaper]();
    }
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
