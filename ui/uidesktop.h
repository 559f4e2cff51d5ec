// UIDesktop: the root widget behind all windows, as large as the application
// window. Input that hits nothing else lands here, so a press on it closes
// menus and takes the focus away. It paints the wallpaper stretched over the
// whole window, carries the start menu that a right click opens, and holds
// the Ctrl+Alt shortcuts of the manager windows. Owned by UISystem.
#pragma once

#include "ui/uibase.h"

class ResourceBase;
class UIMainMenu;
class UIDialog;

class UIDesktop : public UIBase {
public:
    UIDesktop();
    // Releases the wallpaper.
    ~UIDesktop() override;

    // Always null: nothing sets it.
    UIMainMenu* getMainMenu() const { return mpMainMenu; }
    // A TextureResource or null; one reference held.
    ResourceBase* getWallpaper() const { return mpWallpaper; }

    UIShortcutBase const* findShortcut(unsigned int keyCode, unsigned int combinationKey) const override;
    void eventPaint(UIPainter* painter) override;
    // "Wallpaper": the texture resource, persisted with the UI's settings.
    void makePropertyList(PropertyList& list) override;
    // The wallpaper's resource control with its preview.
    void makeUIList(List<UIBase>& list) override;

    // The start menu's actions: the three information windows, the tool
    // chooser, and the wallpaper's file dialog.
    void launchSystemManager();
    void launchResourceManager();
    void launchUnitManager();
    void lanchTool();
    void notifySelectTool(UIDialog* dialog);
    // "Texture open" over the texture files; the chosen one, if it loads,
    // becomes the wallpaper and the old one is released.
    void changeWallpaper();
    void notifySelectWallpaper(UIDialog* dialog);

private:
    UIMainMenu* mpMainMenu;
    ResourceBase* mpWallpaper;
};
