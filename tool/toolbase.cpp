#include "tool/toolbase.h"

#include "app/application.h"
#include "foundation/debug.h"
#include "resource/resourcebase.h"
#include "resource/resourcesystem.h"
#include "serial/stream.h"
#include "ui/uidialog.h"
#include "ui/uimenu.h"
#include "ui/uisystem.h"

IMPLEMENT_TYPEINFO(ToolBase, "UIWindow", TypeInfo::eAttribute_Abstract);

namespace {

char const* const kModifiedText = "Resource is modified.Do you save it?";

} // namespace

ToolBase::ToolBase()
    : UIWindow(eStyle_Convex, kWindowAttribute, true, true, true, kFormAttribute, nullptr), mpFilterName(nullptr),
      mpResourceTypeInfo(nullptr), mpManagedResource(nullptr)
{
}

ToolBase::ToolBase(unsigned int windowAttribute, bool closeButton, bool minimizeButton, bool maximizeButton,
                   unsigned int formAttribute)
    : UIWindow(eStyle_Convex, windowAttribute, closeButton, minimizeButton, maximizeButton, formAttribute, nullptr),
      mpFilterName(nullptr), mpResourceTypeInfo(nullptr), mpManagedResource(nullptr)
{
}

ToolBase::~ToolBase()
{
    delete mpManagedResource;
}

void ToolBase::setAccessor(char const* filterName, TypeInfo const* type, AccessorBase<ResourceBase*>* accessor)
{
    delete mpManagedResource;
    mpManagedResource = accessor;
    mpFilterName = filterName;
    mpResourceTypeInfo = type;
}

ResourceBase* ToolBase::getManagedResource() const
{
    return mpManagedResource != nullptr ? mpManagedResource->get(0) : nullptr;
}

void ToolBase::setManagedResource(ResourceBase* resource)
{
    if (mpManagedResource == nullptr || resource == nullptr || mpResourceTypeInfo == nullptr ||
        !resource->getTypeInfo()->isDerivedFrom(mpResourceTypeInfo)) {
        return;
    }
    mpManagedResource->set(resource, 0);
}

void ToolBase::makeFileMenu(UIMenu* menu)
{
    menu->addItem("Open", this, &ToolBase::eventLoad);
    menu->addItem("Save", this, &ToolBase::eventSave);
    menu->addItem("Save as", this, &ToolBase::eventSaveAs);
    menu->addSeparator();
    menu->addItem("Exit", static_cast<UIWindow*>(this), &UIWindow::close);
}

bool ToolBase::writeResource(ResourceBase* resource, char const* fullPath)
{
    if (resource == nullptr || fullPath == nullptr || fullPath[0] == '\0') {
        return false;
    }
    ReplacingTextFileStream stream(fullPath);
    if (!resource->save(stream) || !stream.commit()) {
        DEV_TRACE("Resource not saved: %s\n", fullPath);
        return false;
    }
    return true;
}

AutoString ToolBase::getFilterExtension() const
{
    if (ResourceBase const* resource = getManagedResource()) {
        return AutoString(resource->getExtension());
    }
    if (mpResourceTypeInfo == nullptr) {
        return AutoString();
    }
    ResourceBase* temporary = static_cast<ResourceBase*>(mpResourceTypeInfo->newInstance());
    if (temporary == nullptr) {
        return AutoString();
    }
    AutoString const extension(temporary->getExtension());
    temporary->release();
    return extension;
}

void ToolBase::askModified(void (ToolBase::*callback)(UIDialog*))
{
    UISystem::getInstance()->addWindow(
        new UIMessageDialog("Causion", kModifiedText, UIDialog::eButtonMode_YesNoCancel, this, callback));
}

// A class without an extension of its own (the viewer of any resource)
// lists every file.
void ToolBase::openFileDialog(char const* title, void (ToolBase::*callback)(UIDialog*), bool overwriteCheck)
{
    AutoString const extension = getFilterExtension();
    char const* filters[] = {extension.c_str(), nullptr};
    UISystem::getInstance()->addWindow(new UIFileDialog(title, this, callback, mpFilterName,
                                                        extension.empty() ? nullptr : filters, overwriteCheck, this));
}

void ToolBase::openSaveDialog(void (ToolBase::*callback)(UIDialog*))
{
    openFileDialog("Save", callback, true);
}

// ---------------------------------------------------------------------------
// Closing

void ToolBase::eventClose()
{
    ResourceBase const* resource = getManagedResource();
    if (resource != nullptr && resource->isModified()) {
        askModified(&ToolBase::notifyCloseModifyWarning);
        return;
    }
    UIWindow::eventClose();
}

void ToolBase::notifyCloseModifyWarning(UIDialog* dialog)
{
    switch (dialog->getReturnValue()) {
    case UIDialog::eReturnValue_Yes:
        openSaveDialog(&ToolBase::notifyCloseSaving);
        break;
    case UIDialog::eReturnValue_No:
        UIWindow::eventClose();
        break;
    default:
        break;
    }
}

// The object is dropped with the tool: it is written as it stands, to the
// file the user chose.
void ToolBase::notifyCloseSaving(UIDialog* dialog)
{
    if (dialog->getReturnValue() != UIDialog::eReturnValue_Ok) {
        return;
    }
    UIFileDialog const* files = static_cast<UIFileDialog const*>(dialog);
    writeResource(getManagedResource(), files->getFullPath().c_str());
    UIWindow::eventClose();
}

// ---------------------------------------------------------------------------
// Loading

void ToolBase::eventLoad()
{
    ResourceBase const* resource = getManagedResource();
    if (resource != nullptr && resource->isModified()) {
        askModified(&ToolBase::notifyLoadModifyWarning);
        return;
    }
    load();
}

void ToolBase::notifyLoadModifyWarning(UIDialog* dialog)
{
    switch (dialog->getReturnValue()) {
    case UIDialog::eReturnValue_Yes:
        openSaveDialog(&ToolBase::notifyLoadSaving);
        break;
    case UIDialog::eReturnValue_No:
        load();
        break;
    default:
        break;
    }
}

void ToolBase::notifyLoadSaving(UIDialog* dialog)
{
    if (dialog->getReturnValue() != UIDialog::eReturnValue_Ok) {
        return;
    }
    ResourceBase* resource = getManagedResource();
    if (resource != nullptr && resource->checkAttribute(ResourceBase::eAttribute_Intermediate)) {
        writeResource(resource, static_cast<UIFileDialog const*>(dialog)->getFullPath().c_str());
    }
    load();
}

void ToolBase::load()
{
    if (mpManagedResource == nullptr || mpResourceTypeInfo == nullptr) {
        return;
    }
    openFileDialog("Load", &ToolBase::notifyLoading, false);
}

void ToolBase::notifyLoading(UIDialog* dialog)
{
    if (dialog->getReturnValue() != UIDialog::eReturnValue_Ok) {
        return;
    }
    UIFileDialog const* files = static_cast<UIFileDialog const*>(dialog);
    // The file's own class when the managed class is a base of it: the
    // viewer of any resource opens a texture as a texture.
    TypeInfo const* type = ResourceSystem::getInstance()->getTypeInfoByExtension(files->getExtension().c_str());
    load(files->getResourcePath().c_str(),
         (type != nullptr && type->isDerivedFrom(mpResourceTypeInfo)) ? type : mpResourceTypeInfo);
}

void ToolBase::load(char const* path)
{
    load(path, mpResourceTypeInfo);
}

void ToolBase::load(char const* path, TypeInfo const* type)
{
    if (mpManagedResource == nullptr) {
        return;
    }
    ResourceBase* resource = ResourceSystem::getInstance()->createResource(path, type);
    mpManagedResource->set(resource, 0);
    if (resource != nullptr) {
        resource->release();
    }
}

// ---------------------------------------------------------------------------
// Saving

void ToolBase::eventSave()
{
    save();
}

// Save keeps the object and clears its modified state; Save as swaps it for
// the one read back from the new file.
void ToolBase::save()
{
    ResourceBase* resource = getManagedResource();
    if (resource == nullptr || !resource->isModified()) {
        return;
    }
    if (resource->getPath().empty()) {
        saveAs();
        return;
    }
    if (resource->checkAttribute(ResourceBase::eAttribute_Intermediate)) {
        AutoString const path = AutoString(Application::getInstance()->getRootPath()) + resource->getPath();
        if (writeResource(resource, path.c_str())) {
            resource->clearModify();
        }
    }
}

void ToolBase::eventSaveAs()
{
    saveAs();
}

void ToolBase::saveAs()
{
    if (getManagedResource() != nullptr) {
        openSaveDialog(&ToolBase::notifySaving);
    }
}

void ToolBase::notifySaving(UIDialog* dialog)
{
    ResourceBase* resource = getManagedResource();
    if (dialog->getReturnValue() != UIDialog::eReturnValue_Ok || resource == nullptr ||
        !resource->checkAttribute(ResourceBase::eAttribute_Intermediate)) {
        return;
    }
    UIFileDialog const* files = static_cast<UIFileDialog const*>(dialog);
    AutoString const fullPath = files->getFullPath();
    if (!fullPath.empty() && !writeResource(resource, fullPath.c_str())) {
        return;
    }
    TypeInfo const* type = resource->getTypeInfo();
    ResourceBase* saved = ResourceSystem::getInstance()->createResource(files->getResourcePath().c_str(), type);
    mpManagedResource->set(saved, 0);
    if (saved != nullptr) {
        saved->release();
    }
}
