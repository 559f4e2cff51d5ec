// ToolBase: the window of a tool that edits or shows one resource. It reaches
// the resource only through an accessor to two member functions of the
// concrete tool, knows the resource class it manages and the name of its file
// filter, offers the "File" menu, and asks before unsaved changes are lost.
// Files are written beside their target and renamed over it, so a failed or
// interrupted save leaves the old file whole. Main thread only.
#pragma once

#include "reflection/accessor.h"
#include "ui/uiwindow.h"

class ResourceBase;
class TypeInfo;
class UIDialog;
class UIMenu;

class ToolBase : public UIWindow {
public:
    // Title bar, movable, sizable.
    static constexpr unsigned int kWindowAttribute = 7;
    // Scroll bars and automatic alignment.
    static constexpr unsigned int kFormAttribute = 3;

    ToolBase();
    ToolBase(unsigned int windowAttribute, bool closeButton, bool minimizeButton, bool maximizeButton,
             unsigned int formAttribute);
    // Deletes the accessor.
    ~ToolBase() override;

    DECLARE_TYPEINFO(TypeInfo)

    template <typename Tool, typename Resource>
    void setManagedResource(char const* filterName, Tool* tool, Resource* (Tool::*getter)() const,
                            void (Tool::*setter)(Resource*))
    {
        setManagedResource(filterName, Resource::getStaticTypeInfo(), tool, getter, setter);
    }
    template <typename Tool, typename Resource>
    void setManagedResource(char const* filterName, TypeInfo const* type, Tool* tool,
                            Resource* (Tool::*getter)() const, void (Tool::*setter)(Resource*))
    {
        setAccessor(filterName, type, new ProxyAccessor<Tool, Resource*, ResourceBase*>(tool, getter, setter));
    }
    // Null without an accessor.
    ResourceBase* getManagedResource() const;
    // Hands the resource to the tool only when its class is the managed one
    // or derived from it; anything else is refused without a word.
    void setManagedResource(ResourceBase* resource);
    TypeInfo const* getResourceTypeInfo() const { return mpResourceTypeInfo; }
    char const* getFilterName() const { return mpFilterName; }

    // "Open", "Save", "Save as", a separator and "Exit".
    void makeFileMenu(UIMenu* menu);

    // Creates the resource of the path and hands it to the tool, whatever
    // the result (null for a failed load).
    void load(char const* path);
    // The same with the class to create.
    void load(char const* path, TypeInfo const* type);
    void load();
    void save();
    void saveAs();
    void eventLoad();
    void eventSave();
    void eventSaveAs();

    void notifyLoading(UIDialog* dialog);
    void notifySaving(UIDialog* dialog);
    void notifyCloseSaving(UIDialog* dialog);
    void notifyLoadSaving(UIDialog* dialog);
    void notifyLoadModifyWarning(UIDialog* dialog);
    void notifyCloseModifyWarning(UIDialog* dialog);

    // A modified resource asks first; "Exit", the close button and Alt+F4
    // all come here.
    void eventClose() override;

    // Writes the resource's text form to the file, beside it first and then
    // renamed over it. False, with the old file untouched, when it fails.
    static bool writeResource(ResourceBase* resource, char const* fullPath);

protected:
    void setAccessor(char const* filterName, TypeInfo const* type, AccessorBase<ResourceBase*>* accessor);

private:
    // The "Causion" question about unsaved changes.
    void askModified(void (ToolBase::*callback)(UIDialog*));
    // A file dialog over the resource's extension.
    void openFileDialog(char const* title, void (ToolBase::*callback)(UIDialog*), bool overwriteCheck);
    void openSaveDialog(void (ToolBase::*callback)(UIDialog*));
    // The resource's own extension, or that of a temporary instance of the
    // managed class.
    AutoString getFilterExtension() const;

    char const* mpFilterName;
    TypeInfo const* mpResourceTypeInfo;
    AccessorBase<ResourceBase*>* mpManagedResource;
};
