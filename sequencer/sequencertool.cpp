#include "sequencer/sequencertool.h"

#include <cstring>

#include "foundation/debug.h"
#include "foundation/utils.h"
#include "reflection/control.h"
#include "reflection/property.h"
#include "resource/resourcebase.h"
#include "sequencer/sequencer.h"
#include "sequencer/sequencerresource.h"
#include "ui/uicontrol.h"
#include "ui/uidialog.h"
#include "ui/uimenu.h"
#include "ui/uishortcut.h"
#include "ui/uisystem.h"

IMPLEMENT_OBJECT_TYPEINFO(SequencerTool, "ToolBase");

namespace {

UIShortcut<SequencerTool> const kShortcuts[] = {
    UIShortcut<SequencerTool>(132, 0, &SequencerTool::togglePlay),
    UIShortcut<SequencerTool>(166, 4, &SequencerTool::seekStart),
    UIShortcut<SequencerTool>(167, 4, &SequencerTool::seekEnd),
    UIShortcut<SequencerTool>(160, 4, &SequencerTool::seekPreviousTargetMarker),
    UIShortcut<SequencerTool>(162, 4, &SequencerTool::seekNextTargetMarker),
};

// A frame field of the top form over two accessors of the tool.
UIParameterControl* makeFrameControl(SequencerTool* tool, char const* label, u32 (SequencerTool::*getter)() const,
                                     void (SequencerTool::*setter)(u32), u32 minimum, u32 maximum, int index)
{
    uNumeric low;
    uNumeric high;
    low.mU64 = 0;
    high.mU64 = 0;
    low.mU32 = minimum;
    high.mU32 = maximum;
    UIParameterControl* control = new UIParameterControl(new IndirectProperty<u32>(label, tool, getter, setter), low,
                                                         high, false, UIControl::NoIndex, UIControl::eMode_Decimal);
    control->setPosition(sPoint(4 + index * 68, 0));
    control->setSize(sSize(64, SequencerTool::kTopFormHeight));
    return control;
}

} // namespace

// ---------------------------------------------------------------------------
// Construction

SequencerTool::SequencerTool()
    : ToolBase(kWindowAttribute, true, true, true, 0), mpResource(nullptr), mpTopForm(nullptr),
      mpTrackForm(nullptr), mpControlForm(nullptr), mpSplitter(nullptr), mNewTrackNumber(0), mNewMarkerNumber(0),
      mpSequencer(nullptr), mpSelectMarker(nullptr), mpSelectTrack(nullptr), mpSelectLane(nullptr),
      mpSelectKey(nullptr), mMarkerTrackSelected(false)
{
    mSnapshot.mpKey = nullptr;
    mSnapshot.mpMarker = nullptr;
    mSnapshot.mpResource = nullptr;
    setTitle("Sequencer Tool");
    setMinimumSize(sSize(256, 160));
    setSize(sSize(512, 512));
    setManagedResource("Sequencer Resource", this, &SequencerTool::getResource, &SequencerTool::setResource);

    mpTopForm = new UIForm(0);
    mpTopForm->addClient(makeFrameControl(this, "Start", &SequencerTool::getStartFrame, &SequencerTool::setStartFrame,
                                          0, kMaxFrame, 0));
    mpTopForm->addClient(
        makeFrameControl(this, "End", &SequencerTool::getEndFrame, &SequencerTool::setEndFrame, 0, kMaxFrame, 1));
    mpTopForm->addClient(makeFrameControl(this, "Current", &SequencerTool::getCurrentFrame,
                                          &SequencerTool::setCurrentFrame, 0, kMaxFrame, 2));
    mpTopForm->addClient(makeFrameControl(this, "FPS", &SequencerTool::getFPS, &SequencerTool::setFPS, 15, 120, 3));
    addClient(mpTopForm);

    mpTrackForm = new TrackForm(this);
    mpControlForm = new ControlForm(this);
    mpSplitter = new UISplitter(mpTrackForm, mpControlForm, UISplitter::eSplitDirection_LeftRight, kSplitSize,
                                UISplitter::eSplitBase_Second);
    addClient(mpSplitter);

    UIMenu* file = new UIMenu();
    makeFileMenu(file);
    UIMenu* marker = new UIMenu();
    marker->addItem("Add Marker", this, &SequencerTool::eventAddMarker);
    marker->addItem("Remove Marker", this, &SequencerTool::eventRemoveMarker);
    marker->addSeparator();
    marker->addItem("Remove All Marker", this, &SequencerTool::eventRemoveAllMarker);
    marker->addSeparator();
    marker->addItem("Reset Marker Count", this, &SequencerTool::eventResetMarkerCount);
    UIMenu* track = new UIMenu();
    track->addItem("Add Track", this, &SequencerTool::eventAddTrack);
    track->addItem("Remove Track", this, &SequencerTool::eventRemoveTrack);
    track->addSeparator();
    track->addItem("Add Sequencer Track", this, &SequencerTool::eventAddSequencerTrack);
    UIMenu* lane = new UIMenu();
    lane->addItem("Add Lane", this, &SequencerTool::eventAddLane);
    lane->addItem("Remove Lane", this, &SequencerTool::eventRemoveLane);
    lane->addSeparator();
    lane->addItem("Add All Lane", this, &SequencerTool::eventAddAllLane);
    lane->addItem("Remove All Lane", this, &SequencerTool::eventRemoveAllLane);
    UIMenu* key = new UIMenu();
    key->addItem("Add Key", this, &SequencerTool::eventAddKey);
    key->addItem("Remove Key", this, &SequencerTool::eventRemoveKey);
    key->addSeparator();
    key->addItem("Add Key All Lane", this, &SequencerTool::eventAddKeyAllLane);
    UIMenu* transport = new UIMenu();
    transport->addItem("Play/Stop", this, &SequencerTool::togglePlay);
    transport->addItem("Seek Start", this, &SequencerTool::seekStart);
    transport->addItem("Seek End", this, &SequencerTool::seekEnd);
    UIMainMenu* bar = new UIMainMenu();
    bar->addItem("File", file);
    bar->addItem("Marker", marker);
    bar->addItem("Track", track);
    bar->addItem("Lane", lane);
    bar->addItem("Key", key);
    bar->addItem("Transport", transport);
    setMainMenu(bar);
}

SequencerTool::~SequencerTool()
{
    releaseSnapshot();
    // The widgets read the sequencer's objects and the resource's: they go
    // first, then the player, then the resource.
    removeClient();
    delete mpSequencer;
    mpSequencer = nullptr;
    if (mpResource != nullptr) {
        mpResource->release();
    }
}

TypeInfo const* SequencerTool::getSequencerTypeInfo() const
{
    return Sequencer::getStaticTypeInfo();
}

TypeInfo const* SequencerTool::getRootTypeInfo() const
{
    return ObjectBase::getStaticTypeInfo();
}

void SequencerTool::eventCreate()
{
    ToolBase::eventCreate();
    TypeInfo const* type = getSequencerTypeInfo();
    if (type == nullptr || !type->isDerivedFrom(Sequencer::getStaticTypeInfo())) {
        dev_assert("TypeInfo is not derived from Sequencer.", __FILE__, __LINE__);
        return;
    }
    delete mpSequencer;
    mpSequencer = static_cast<Sequencer*>(type->newInstance());
    if (mpSequencer != nullptr) {
        mpSequencer->setResource(mpResource);
    }
}

void SequencerTool::update(float deltaTime)
{
    UIForm::update(deltaTime);
    if (mpSequencer != nullptr) {
        mpSequencer->update(deltaTime);
    }
    // A rebuilt sequencer made new objects: the control widgets over the old
    // ones are remade.
    if (mpResource != nullptr && mpResource->isUpdated()) {
        rebuildControlForm();
    }
    updateLayout();
}

void SequencerTool::updateLayout()
{
    layoutContent(mpSplitter);
}

void SequencerTool::layoutContent(UIBase* content)
{
    sRect const region = getClientRegion();
    int const width = region.getWidth();
    int const height = region.getHeight() - kTopFormHeight;
    mpTopForm->setPosition(sPoint(0, 0));
    mpTopForm->setSize(sSize(static_cast<unsigned int>(width), kTopFormHeight));
    mpTopForm->setClientRegion(sRect(mpTopForm->getSize()));
    if (content != nullptr) {
        content->setPosition(sPoint(0, kTopFormHeight));
        content->setSize(sSize(static_cast<unsigned int>(width), static_cast<unsigned int>(height < 0 ? 0 : height)));
    }
}

UIShortcutBase const* SequencerTool::findShortcut(unsigned int keyCode, unsigned int combinationKey) const
{
    if (UIShortcutBase const* found = ToolBase::findShortcut(keyCode, combinationKey)) {
        return found;
    }
    return UIShortcut<SequencerTool>::find(kShortcuts, keyCode, combinationKey);
}

// ---------------------------------------------------------------------------
// Resource and top form

void SequencerTool::setResource(SequencerResourceIntermediate* resource)
{
    releaseSnapshot();
    if (resource != nullptr) {
        resource->addRef();
    }
    SequencerResourceIntermediate* old = mpResource;
    mpResource = resource;
    resetTrack();
    if (mpSequencer != nullptr) {
        mpSequencer->Sequencer::setResource(resource);
    }
    if (old != nullptr) {
        old->release();
    }
    seekStart();
}

u32 SequencerTool::getStartFrame() const
{
    return mpResource != nullptr ? mpResource->getStartFrame() : 0;
}

void SequencerTool::setStartFrame(u32 frame)
{
    if (mpResource != nullptr) {
        mpResource->setStartFrame(frame);
    }
}

u32 SequencerTool::getEndFrame() const
{
    return mpResource != nullptr ? mpResource->getEndFrame() : 0;
}

void SequencerTool::setEndFrame(u32 frame)
{
    if (mpResource != nullptr) {
        mpResource->setEndFrame(frame);
    }
}

u32 SequencerTool::getCurrentFrame() const
{
    return mpSequencer != nullptr ? static_cast<u32>(static_cast<int>(mpSequencer->getCurrentFrame())) : 0;
}

void SequencerTool::setCurrentFrame(u32 frame)
{
    if (mpSequencer != nullptr && mpResource != nullptr) {
        mpSequencer->seek(frame > kMaxFrame ? kMaxFrame : frame);
    }
}

u32 SequencerTool::getFPS() const
{
    return mpResource != nullptr ? mpResource->getFPS() : 0;
}

void SequencerTool::setFPS(u32 fps)
{
    if (mpResource != nullptr) {
        mpResource->setFPS(fps);
    }
}

// ---------------------------------------------------------------------------
// Selection

void SequencerTool::setSelectMarker(SequencerMarker* marker)
{
    mpSelectMarker = marker;
    mMarkerTrackSelected = true;
    mpSelectTrack = nullptr;
    mpSelectLane = nullptr;
    mpSelectKey = nullptr;
    rebuildControlForm();
}

void SequencerTool::setSelectTrack(SequencerTrack* track)
{
    mpSelectTrack = track;
    mpSelectMarker = nullptr;
    mMarkerTrackSelected = false;
    mpSelectLane = nullptr;
    mpSelectKey = nullptr;
    rebuildControlForm();
}

SequencerTrack* SequencerTool::findLaneOwner(SequencerLane const* lane) const
{
    if (mpResource == nullptr || lane == nullptr) {
        return nullptr;
    }
    ObjectList const& tracks = mpResource->getTrackList();
    for (ObjectList::Iterator it = tracks.begin(); it != tracks.end(); ++it) {
        SequencerTrack* track = static_cast<SequencerTrack*>(*it);
        for (ObjectList::Iterator l = track->mLaneList.begin(); l != track->mLaneList.end(); ++l) {
            if (*l == lane) {
                return track;
            }
        }
    }
    return nullptr;
}

void SequencerTool::setSelectLane(SequencerLane* lane)
{
    if (lane == mpSelectLane) {
        return;
    }
    if (lane != nullptr) {
        SequencerTrack* owner = findLaneOwner(lane);
        if (owner == nullptr) {
            return;
        }
        if (owner != mpSelectTrack) {
            setSelectTrack(owner);
        }
    }
    mpSelectMarker = nullptr;
    mMarkerTrackSelected = false;
    mpSelectLane = lane;
    setSelectKey(lane != nullptr ? lane->findKeyBlock(getCurrentFrame()) : nullptr);
}

void SequencerTool::setSelectKey(SequencerKey* key)
{
    mpSelectKey = key;
    rebuildControlForm();
}

void SequencerTool::selectMarkerTrack()
{
    mMarkerTrackSelected = true;
    setSelectMarker(mpResource != nullptr ? mpResource->findMarkerBlock(getCurrentFrame()) : nullptr);
}

void SequencerTool::rebuildControlForm()
{
    if (mpResource == nullptr) {
        mpControlForm->clear();
        return;
    }
    if (mMarkerTrackSelected) {
        setupControlList(mpSelectMarker);
    } else if (mpSelectTrack != nullptr) {
        setupControlList(mpResource->getTrackIndex(mpSelectTrack), mpSelectKey);
    } else {
        mpControlForm->clear();
    }
}

// ---------------------------------------------------------------------------
// Names

AutoString SequencerTool::getNewTrackName()
{
    AutoString name;
    name.format("Track%d", mNewTrackNumber);
    while (mpResource != nullptr && mpResource->findTrack(name) != nullptr) {
        ++mNewTrackNumber;
        name.format("Track%d", mNewTrackNumber);
    }
    ++mNewTrackNumber;
    return name;
}

// The retry's "Track%d" is what the editor has always produced after a
// clash; files and users rely on those names, so it stays.
AutoString SequencerTool::getNewMarkerName()
{
    AutoString name;
    name.format("Marker%d", mNewMarkerNumber);
    while (mpResource != nullptr && mpResource->findMarker(name) != nullptr) {
        ++mNewMarkerNumber;
        name.format("Track%d", mNewMarkerNumber);
    }
    ++mNewMarkerNumber;
    return name;
}

// ---------------------------------------------------------------------------
// Markers

void SequencerTool::eventAddMarker()
{
    if (mpResource == nullptr) {
        return;
    }
    u32 const frame = getCurrentFrame();
    if (mpResource->findMarker(frame) != nullptr) {
        return;
    }
    AutoString const name = getNewMarkerName();
    mpResource->addMarker(name, frame);
    setSelectMarker(mpResource->findMarker(name));
}

void SequencerTool::eventRemoveMarker()
{
    if (mpResource == nullptr || mpSelectMarker == nullptr) {
        return;
    }
    AutoString const name = mpSelectMarker->mMarkerName;
    mpSelectMarker = nullptr;
    mpResource->removeMarker(name);
    setSelectMarker(nullptr);
}

void SequencerTool::eventRemoveAllMarker()
{
    if (mpResource == nullptr) {
        return;
    }
    mpSelectMarker = nullptr;
    mpResource->removeAllMarker();
    if (mMarkerTrackSelected) {
        setSelectMarker(nullptr);
    }
}

void SequencerTool::eventResetMarkerCount()
{
    if (mpSequencer != nullptr) {
        mpSequencer->resetMarkerCount();
    }
}

// ---------------------------------------------------------------------------
// Tracks

void SequencerTool::eventAddTrack()
{
    if (mpResource == nullptr) {
        return;
    }
    UISystem::getInstance()->addWindow(
        new UIObjectDialog("Select Object", this, &SequencerTool::notifySelectObject, getRootTypeInfo(), this));
}

void SequencerTool::notifySelectObject(UIDialog* dialog)
{
    if (dialog->getReturnValue() != UIDialog::eReturnValue_Ok || mpResource == nullptr) {
        return;
    }
    TypeInfo const* type = static_cast<UIObjectDialog const*>(dialog)->getSelectedTypeInfo();
    if (type == nullptr) {
        return;
    }
    AutoString const name = getNewTrackName();
    mpResource->addTrack(type, name);
    if (SequencerTrack* track = mpResource->findTrack(name)) {
        mpTrackForm->addTrack(track);
    }
}

void SequencerTool::eventAddSequencerTrack()
{
    if (mpResource == nullptr) {
        return;
    }
    AutoString const name = getNewTrackName();
    mpResource->addTrack(getSequencerTypeInfo(), name);
    if (SequencerTrack* track = mpResource->findTrack(name)) {
        mpTrackForm->addTrack(track);
    }
}

void SequencerTool::eventRemoveTrack()
{
    if (mpResource == nullptr || mpSelectTrack == nullptr) {
        return;
    }
    AutoString const name = mpSelectTrack->mTrackName;
    mpResource->removeTrack(name);
    resetTrack();
}

void SequencerTool::resetTrack()
{
    mNewTrackNumber = 0;
    mNewMarkerNumber = 0;
    mpSelectMarker = nullptr;
    mpSelectTrack = nullptr;
    mpSelectLane = nullptr;
    mpSelectKey = nullptr;
    mMarkerTrackSelected = false;
    mpTrackForm->reset();
    mpControlForm->clear();
    if (mpResource == nullptr) {
        return;
    }
    ObjectList const& tracks = mpResource->getTrackList();
    for (ObjectList::Iterator it = tracks.begin(); it != tracks.end(); ++it) {
        SequencerTrack* track = static_cast<SequencerTrack*>(*it);
        mpTrackForm->addTrack(track);
        for (ObjectList::Iterator l = track->mLaneList.begin(); l != track->mLaneList.end(); ++l) {
            mpTrackForm->addLane(track, static_cast<SequencerLane*>(*l));
        }
    }
}

ObjectBase* SequencerTool::getTrackObject(SequencerTrack const* track) const
{
    if (mpResource == nullptr || mpSequencer == nullptr || track == nullptr) {
        return nullptr;
    }
    u32 const index = mpResource->getTrackIndex(track);
    if (index >= mpSequencer->getTrackNum()) {
        return nullptr;
    }
    return mpSequencer->getTrackArray()[index].mpObject;
}

// ---------------------------------------------------------------------------
// Lanes

void SequencerTool::eventAddLane()
{
    ObjectBase* object = getTrackObject(mpSelectTrack);
    if (object == nullptr) {
        return;
    }
    UISystem::getInstance()->addWindow(
        new UIControlDialog("Select Control", this, &SequencerTool::notifySelectControl, object));
}

bool SequencerTool::addLaneOfControl(SequencerTrack* track, AutoString const& name, unsigned int type)
{
    ObjectBase* object = getTrackObject(track);
    if (object == nullptr) {
        return false;
    }
    u32 const hash = Utils::hash(name.c_str());
    bool added = false;
    List<ControlBase> controls;
    object->makeControlList(controls);
    for (List<ControlBase>::Iterator it = controls.begin(); it != controls.end(); ++it) {
        ControlBase* control = *it;
        if (added || control->getNameHash() != hash || control->getType() != type) {
            continue;
        }
        if (type == eControlType_Property && static_cast<PropertyControl*>(control)->getProperty()->getCount() != 0) {
            DEV_TRACE("Causion : Array property not support.\n");
        }
        if (track->findLane(name) == nullptr) {
            mpResource->addLane(track->mTrackName, control);
            if (SequencerLane* lane = track->findLane(name)) {
                mpTrackForm->addLane(track, lane);
                added = true;
            }
        }
    }
    for (List<ControlBase>::Iterator it = controls.begin(); it != controls.end(); ++it) {
        delete *it;
    }
    return added;
}

void SequencerTool::notifySelectControl(UIDialog* dialog)
{
    if (dialog->getReturnValue() != UIDialog::eReturnValue_Ok || mpSelectTrack == nullptr) {
        return;
    }
    UIControlDialog const* controls = static_cast<UIControlDialog const*>(dialog);
    addLaneOfControl(mpSelectTrack, controls->getSelectedControlName(), controls->getSelectedControlType());
}

void SequencerTool::eventAddAllLane()
{
    ObjectBase* object = getTrackObject(mpSelectTrack);
    if (object == nullptr) {
        return;
    }
    List<ControlBase> controls;
    object->makeControlList(controls);
    for (List<ControlBase>::Iterator it = controls.begin(); it != controls.end(); ++it) {
        addLaneOfControl(mpSelectTrack, AutoString((*it)->getName()), (*it)->getType());
        delete *it;
    }
}

void SequencerTool::eventRemoveLane()
{
    if (mpResource == nullptr || mpSelectTrack == nullptr || mpSelectLane == nullptr) {
        return;
    }
    AutoString const track = mpSelectTrack->mTrackName;
    AutoString const lane = mpSelectLane->mControlName;
    mpResource->removeLane(track, lane);
    resetTrack();
}

void SequencerTool::eventRemoveAllLane()
{
    if (mpResource == nullptr || mpSelectTrack == nullptr) {
        return;
    }
    AutoString const track = mpSelectTrack->mTrackName;
    mpResource->removeAllLane(track);
    resetTrack();
}

// ---------------------------------------------------------------------------
// Keys

void SequencerTool::addKeyAt(SequencerTrack* track, SequencerLane* lane, bool select)
{
    u32 const frame = getCurrentFrame();
    if (lane->findKey(frame) != nullptr) {
        return;
    }
    bool const trigger = lane->mControlType != eControlType_Property || lane->mKeyType == ePropertyType_Resource;
    mpResource->addKey(track->mTrackName, lane->mControlName, frame,
                       trigger ? SequencerResource::eInterpolateType_Trigger
                               : SequencerResource::eInterpolateType_Linear);
    SequencerKey* key = lane->findKey(frame);
    if (key == nullptr) {
        return;
    }
    initializeKeyParameter(track, lane, key);
    if (select) {
        setSelectKey(key);
    }
}

void SequencerTool::eventAddKey()
{
    if (mpResource == nullptr || mpSelectTrack == nullptr || mpSelectLane == nullptr) {
        return;
    }
    addKeyAt(mpSelectTrack, mpSelectLane, true);
}

void SequencerTool::eventAddKeyAllLane()
{
    if (mpResource == nullptr || mpSelectTrack == nullptr) {
        return;
    }
    for (ObjectList::Iterator it = mpSelectTrack->mLaneList.begin(); it != mpSelectTrack->mLaneList.end(); ++it) {
        addKeyAt(mpSelectTrack, static_cast<SequencerLane*>(*it), false);
    }
}

void SequencerTool::eventRemoveKey()
{
    if (mpResource == nullptr || mpSelectTrack == nullptr || mpSelectLane == nullptr || mpSelectKey == nullptr) {
        return;
    }
    u32 const frame = mpSelectKey->getFrame();
    mpSelectKey = nullptr;
    mpResource->removeKey(mpSelectTrack->mTrackName, mpSelectLane->mControlName, frame);
    setSelectKey(nullptr);
}

void SequencerTool::eventRemoveAllKey()
{
    if (mpResource == nullptr || mpSelectTrack == nullptr || mpSelectLane == nullptr) {
        return;
    }
    mpSelectKey = nullptr;
    mpResource->removeAllKey(mpSelectTrack->mTrackName, mpSelectLane->mControlName);
    setSelectKey(nullptr);
}

namespace {

// The property's value into the key, for the value types keys hold.
void takePropertyValue(PropertyBase* property, SequencerKey* key)
{
    switch (property->getType()) {
#define HARBOR_TAKE_VALUE(T, code)                                           \
    case ePropertyType_##code: {                                             \
        T const value = property->getByType<T>(PropertyBase::CurrentIndex); \
        key->setParameter(&value);                                           \
        break;                                                               \
    }
        HARBOR_TAKE_VALUE(bool, Bool)
        HARBOR_TAKE_VALUE(s8, S8)
        HARBOR_TAKE_VALUE(s16, S16)
        HARBOR_TAKE_VALUE(s32, S32)
        HARBOR_TAKE_VALUE(s64, S64)
        HARBOR_TAKE_VALUE(u8, U8)
        HARBOR_TAKE_VALUE(u16, U16)
        HARBOR_TAKE_VALUE(u32, U32)
        HARBOR_TAKE_VALUE(u64, U64)
        HARBOR_TAKE_VALUE(float, F32)
        HARBOR_TAKE_VALUE(double, F64)
        HARBOR_TAKE_VALUE(sSize, Size)
        HARBOR_TAKE_VALUE(sPoint, Point)
        HARBOR_TAKE_VALUE(sRect, Rect)
        HARBOR_TAKE_VALUE(sColor, Color)
        HARBOR_TAKE_VALUE(sColorF, ColorF)
        HARBOR_TAKE_VALUE(sTexcoord, Texcoord)
        HARBOR_TAKE_VALUE(sFixed, Fixed)
        HARBOR_TAKE_VALUE(sVector, Vector)
#undef HARBOR_TAKE_VALUE
    default:
        break;
    }
}

} // namespace

void SequencerTool::initializeKeyParameter(SequencerTrack* track, SequencerLane* lane, SequencerKey* key)
{
    if (mpResource == nullptr || mpSequencer == nullptr || track == nullptr || lane == nullptr || key == nullptr) {
        return;
    }
    u32 const index = mpResource->getTrackIndex(track);
    if (index >= mpSequencer->getTrackNum()) {
        return;
    }
    Sequencer::sTrackData const& data = mpSequencer->getTrackArray()[index];
    u32 const hash = Utils::hash(lane->mControlName.c_str());
    Sequencer::sLaneData const* laneData = nullptr;
    for (u32 i = 0; i < data.mLaneNum; ++i) {
        ControlBase const* control = data.mpLaneArray[i].mpControl;
        if (control != nullptr && control->getNameHash() == hash) {
            laneData = &data.mpLaneArray[i];
            break;
        }
    }
    u8* native = mpResource->findNativeKey(track->mTrackName, lane->mControlName, key->getFrame());
    if (laneData == nullptr || native == nullptr) {
        return;
    }
    if (lane->mControlType != eControlType_Property) {
        key->setTriggerOnly(1);
        u8 const zero[16] = {};
        key->setParameter(zero);
        if (native != nullptr && lane->mKeyStride > 2) {
            memset(native + 2, 0, lane->mKeyStride - 2);
        }
        return;
    }
    PropertyBase* property = laneData->mpProperty;
    if (property == nullptr) {
        return;
    }
    if (property->getType() == ePropertyType_Resource) {
        SequencerUniqueKey<ResourceBase>* resourceKey = static_cast<SequencerUniqueKey<ResourceBase>*>(key);
        TypeInfo const* type = static_cast<PropertyControl const*>(laneData->mpControl)->getObjectTypeInfo();
        resourceKey->setResource(property->getByType<ResourceBase*>(PropertyBase::CurrentIndex));
        resourceKey->setResourceTypeID(type != nullptr ? type->getID() : 0xFFFFFFFFu);
    } else {
        takePropertyValue(property, key);
    }
    SequencerResourceIntermediate::copyKeyParameter(native, key, lane->mKeyType);
}

// ---------------------------------------------------------------------------
// Editing through the control form

void SequencerTool::releaseSnapshot()
{
    if (mSnapshot.mpResource != nullptr) {
        mSnapshot.mpResource->release();
        mSnapshot.mpResource = nullptr;
    }
    mSnapshot.mpKey = nullptr;
    mSnapshot.mpMarker = nullptr;
}

void SequencerTool::eventBeginEdit()
{
    releaseSnapshot();
    if (mpResource == nullptr) {
        return;
    }
    if (mpSelectKey != nullptr && mpSelectLane != nullptr && mpSelectTrack != nullptr) {
        mSnapshot.mpKey = mpSelectKey;
        mSnapshot.mFrame = mpSelectKey->getFrame();
        mSnapshot.mInterpolateType = mpSelectKey->getInterpolateType();
        memset(mSnapshot.mParameter, 0, sizeof(mSnapshot.mParameter));
        if (mpSelectLane->mKeyType == ePropertyType_Resource) {
            mSnapshot.mpResource = static_cast<SequencerUniqueKey<ResourceBase>*>(mpSelectKey)->getResource();
            if (mSnapshot.mpResource != nullptr) {
                mSnapshot.mpResource->addRef();
            }
        } else if (mpSelectKey->getParameterSize() <= sizeof(mSnapshot.mParameter)) {
            mpSelectKey->copyParameter(mSnapshot.mParameter);
        }
    }
    if (mMarkerTrackSelected && mpSelectMarker != nullptr) {
        mSnapshot.mpMarker = mpSelectMarker;
        mSnapshot.mMarkerType = mpSelectMarker->mMarkerType;
        mSnapshot.mCount = mpSelectMarker->mInitialCount;
        mSnapshot.mFrame = mpSelectMarker->mFrame;
        mSnapshot.mTargetFrame = mpSelectMarker->mTargetFrame;
        mSnapshot.mReset = mpSelectMarker->mReset;
        mSnapshot.mName = mpSelectMarker->mMarkerName;
        mSnapshot.mTargetName = mpSelectMarker->mTargetMarkerName;
    }
}

void SequencerTool::eventEndEdit()
{
    if (mpResource != nullptr) {
        if (mpSelectKey != nullptr && mSnapshot.mpKey == mpSelectKey) {
            endKeyEdit();
        } else if (mpSelectMarker != nullptr && mSnapshot.mpMarker == mpSelectMarker) {
            endMarkerEdit();
        }
    }
    releaseSnapshot();
}

void SequencerTool::endKeyEdit()
{
    SequencerKey* key = mpSelectKey;
    u16 const frame = key->getFrame();
    if (frame != mSnapshot.mFrame) {
        key->setFrame(mSnapshot.mFrame);
        moveSelectKey(frame);
    }
    if (key->getInterpolateType() != mSnapshot.mInterpolateType) {
        copySelectKeyInterpolateTypeToNative();
    }
    bool changed;
    if (mpSelectLane->mKeyType == ePropertyType_Resource) {
        changed = static_cast<SequencerUniqueKey<ResourceBase>*>(key)->getResource() != mSnapshot.mpResource;
    } else {
        unsigned int const size = key->getParameterSize();
        changed = size <= sizeof(mSnapshot.mParameter) && key->getParameter() != nullptr &&
                  memcmp(mSnapshot.mParameter, key->getParameter(), size) != 0;
    }
    if (changed) {
        copySelectKeyParameterToNative();
    }
}

void SequencerTool::endMarkerEdit()
{
    SequencerMarker* marker = mpSelectMarker;
    // The operations find the marker by name: the old name goes back first.
    AutoString const name = marker->mMarkerName;
    marker->mMarkerName = mSnapshot.mName;
    if (name != mSnapshot.mName) {
        setSelectMarkerName(name);
    }
    if (marker->mMarkerType != mSnapshot.mMarkerType) {
        setSelectMarkerType(marker->mMarkerType);
    }
    if (marker->mInitialCount != mSnapshot.mCount) {
        setSelectMarkerCount(marker->mInitialCount);
    }
    if (marker->mFrame != mSnapshot.mFrame) {
        u32 const frame = marker->mFrame;
        marker->mFrame = mSnapshot.mFrame;
        setSelectMarkerFrame(frame);
    }
    if (marker->mTargetFrame != mSnapshot.mTargetFrame) {
        setSelectMarkerTargetFrame(marker->mTargetFrame);
    }
    if (marker->mReset != mSnapshot.mReset) {
        setSelectMarkerReset(marker->mReset);
    }
    if (marker->mTargetMarkerName != mSnapshot.mTargetName) {
        setSelectMarkerTargetName(marker->mTargetMarkerName);
    }
}

// A frame that another key of the lane holds is refused: one key a frame.
void SequencerTool::moveSelectKey(u32 frame)
{
    if (mpResource == nullptr || mpSelectKey == nullptr || mpSelectLane == nullptr || mpSelectTrack == nullptr) {
        return;
    }
    frame = frame > kMaxFrame ? kMaxFrame : frame;
    if (frame == mpSelectKey->getFrame() || mpSelectLane->findKey(frame) != nullptr) {
        return;
    }
    mpResource->moveKey(mpSelectTrack->mTrackName, mpSelectLane->mControlName, mpSelectKey->getFrame(), frame);
}

void SequencerTool::copySelectKeyInterpolateTypeToNative()
{
    if (mpResource == nullptr || mpSelectKey == nullptr || mpSelectLane == nullptr || mpSelectTrack == nullptr) {
        return;
    }
    if (u8* native = mpResource->findNativeKey(mpSelectTrack->mTrackName, mpSelectLane->mControlName,
                                               mpSelectKey->getFrame())) {
        SequencerResourceIntermediate::makeKey(native, mpSelectKey);
        mpResource->setModify();
    }
}

void SequencerTool::copySelectKeyParameterToNative()
{
    if (mpResource == nullptr || mpSelectKey == nullptr || mpSelectLane == nullptr || mpSelectTrack == nullptr) {
        return;
    }
    if (u8* native = mpResource->findNativeKey(mpSelectTrack->mTrackName, mpSelectLane->mControlName,
                                               mpSelectKey->getFrame())) {
        SequencerResourceIntermediate::copyKeyParameter(native, mpSelectKey, mpSelectLane->mKeyType);
        mpResource->setModify();
    }
}

void SequencerTool::setSelectMarkerName(AutoString const& name)
{
    if (mpResource != nullptr && mpSelectMarker != nullptr) {
        mpResource->setMarkerName(mpSelectMarker->mMarkerName, name);
    }
}

void SequencerTool::setSelectMarkerType(u8 type)
{
    if (mpResource != nullptr && mpSelectMarker != nullptr && type < SequencerResource::eMarkerType_Num) {
        mpResource->setMarkerType(mpSelectMarker->mMarkerName, static_cast<SequencerResource::eMarkerType>(type));
    }
}

void SequencerTool::setSelectMarkerCount(u8 count)
{
    if (mpResource != nullptr && mpSelectMarker != nullptr) {
        mpResource->setMarkerCount(mpSelectMarker->mMarkerName, count);
    }
}

void SequencerTool::setSelectMarkerFrame(u32 frame)
{
    if (mpResource != nullptr && mpSelectMarker != nullptr) {
        mpResource->moveMarker(mpSelectMarker->mMarkerName, frame > kMaxFrame ? kMaxFrame : frame);
    }
}

void SequencerTool::setSelectMarkerTargetFrame(u32 frame)
{
    if (mpResource != nullptr && mpSelectMarker != nullptr) {
        mpResource->setMarkerTargetFrame(mpSelectMarker->mMarkerName, frame > kMaxFrame ? kMaxFrame : frame);
    }
}

void SequencerTool::setSelectMarkerReset(bool reset)
{
    if (mpResource != nullptr && mpSelectMarker != nullptr) {
        mpResource->setMarkerReset(mpSelectMarker->mMarkerName, reset);
    }
}

void SequencerTool::setSelectMarkerTargetName(AutoString const& name)
{
    if (mpResource != nullptr && mpSelectMarker != nullptr) {
        mpResource->setMarkerTargetName(mpSelectMarker->mMarkerName, name);
    }
}

// ---------------------------------------------------------------------------
// The control form

void SequencerTool::setupControlList(u32 trackIndex, SequencerKey* key)
{
    mpControlForm->clear();
    List<UIBase> widgets;
    if (mpSelectTrack != nullptr) {
        UITextControl* name = new UITextControl(
            new ReferenceProperty<AutoString>("TrackName", &mpSelectTrack->mTrackName), true, UIControl::NoIndex,
            UIControl::eMode_Decimal);
        name->setSize(sSize(96, 16));
        widgets.addLast(name);
    }
    mpControlForm->fill(mpControlForm->getTrackGroup(), widgets);
    mpControlForm->setControlList(trackIndex);
    if (key != nullptr) {
        key->makeUIList(widgets);
        mpControlForm->fill(mpControlForm->getKeyGroup(), widgets);
    }
}

void SequencerTool::setupControlList(SequencerMarker* marker)
{
    mpControlForm->clear();
    if (marker == nullptr) {
        return;
    }
    List<UIBase> widgets;
    marker->makeUIList(widgets);
    mpControlForm->fill(mpControlForm->getMarkerGroup(), widgets);
}

// ---------------------------------------------------------------------------
// Transport

void SequencerTool::togglePlay()
{
    if (mpSequencer == nullptr) {
        return;
    }
    if (mpSequencer->isPlaying()) {
        mpSequencer->stop();
    } else {
        mpSequencer->play();
    }
}

void SequencerTool::seekStart()
{
    if (mpSequencer == nullptr || mpResource == nullptr) {
        return;
    }
    mpSequencer->stop();
    mpSequencer->seek(mpResource->getStartFrame());
}

void SequencerTool::seekEnd()
{
    if (mpSequencer == nullptr || mpResource == nullptr) {
        return;
    }
    mpSequencer->stop();
    mpSequencer->seek(mpResource->getEndFrame());
}

void SequencerTool::seekNextTargetMarker()
{
    if (mpResource == nullptr || mpSequencer == nullptr) {
        return;
    }
    u32 const current = getCurrentFrame();
    SequencerMarker* found = nullptr;
    List<SequencerMarker> const& markers = mpResource->getMarkerList();
    for (LinkIterator<SequencerMarker> it = markers.begin(); it != markers.end(); ++it) {
        if (it->mFrame > current && it->mMarkerType == SequencerResource::eMarkerType_Target) {
            found = *it;
            break;
        }
    }
    if (found != nullptr) {
        mpSequencer->stop();
        mpSequencer->seek(found->mFrame);
        setSelectMarker(found);
    }
}

void SequencerTool::seekPreviousTargetMarker()
{
    if (mpResource == nullptr || mpSequencer == nullptr) {
        return;
    }
    u32 const current = getCurrentFrame();
    SequencerMarker* found = nullptr;
    List<SequencerMarker> const& markers = mpResource->getMarkerList();
    for (LinkIterator<SequencerMarker> it = markers.begin(); it != markers.end() && it->mFrame < current; ++it) {
        if (it->mMarkerType == SequencerResource::eMarkerType_Target) {
            found = *it;
        }
    }
    if (found != nullptr) {
        mpSequencer->stop();
        mpSequencer->seek(found->mFrame);
        setSelectMarker(found);
    }
}
