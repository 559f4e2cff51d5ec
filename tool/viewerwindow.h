// Viewer windows: ResourceViewerWindow shows the editing widgets of one
// resource (and is the tool of every resource class without a tool of its
// own), UnitViewerWindow those of one unit, TextureViewerWindow one texture
// with its size and a tint. The resource viewer and the texture viewer hold a
// reference to what they show; a unit viewer lets go of its unit as soon as
// the unit is killed or destroyed. Main thread only.
#pragma once

#include "tool/toolbase.h"

class ResourceBase;
class Texture;
class UITexture;
class UnitBase;

class ResourceViewerWindow : public ToolBase {
public:
    ResourceViewerWindow();
    // Releases the resource.
    ~ResourceViewerWindow() override;

    DECLARE_TYPEINFO(UniqueTypeInfo<ResourceViewerWindow>)

    // Releases the old resource and its widgets; takes a reference to the
    // new one and shows its widgets, titled with its file name.
    void setResource(ResourceBase* resource);
    ResourceBase* getResource() const { return mpResource; }

    // "Resource", with the resource's own class, while there is one.
    void makePropertyList(PropertyList& list) override;

private:
    ResourceBase* mpResource;
};

class UnitViewerWindow : public ToolBase {
public:
    explicit UnitViewerWindow(UnitBase* unit = nullptr);
    ~UnitViewerWindow() override;

    DECLARE_TYPEINFO(UniqueTypeInfo<UnitViewerWindow>)

    UnitBase* getUnit() const { return mpUnit; }

    // Forgets a unit whose kill is pending and empties the window; the
    // title stays.
    void update(float deltaTime) override;
    // "Unit".
    void makePropertyList(PropertyList& list) override;

private:
    void forgetUnit();
    // Told by UnitSystem when any unit is destroyed.
    static void notifyUnitDestroy(UnitBase* unit, void* user);

    UnitBase* mpUnit;
};

class TextureViewerWindow : public UIWindow {
public:
    static constexpr int kSideWidth = 192;

    TextureViewerWindow();
    // Releases the texture.
    ~TextureViewerWindow() override;

    DECLARE_TYPEINFO(UniqueTypeInfo<TextureViewerWindow>)

    // Takes a reference and shows the texture.
    void setTexture(Texture* texture);
    Texture* getTexture() const { return mpTexture; }
    // Zero without a texture.
    sSize getTextureSize() const;
    void setTextureSize(sSize) {}
    UITexture* getUITexture() const { return mpUITexture; }

private:
    Texture* mpTexture;
    UIForm* mpForm;
    UITexture* mpUITexture;
};
