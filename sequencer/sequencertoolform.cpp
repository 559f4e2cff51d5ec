// The sequencer tool's widgets: the timeline (names, rows of frames, the
// ruler, scrubbing and rubber-band selection) and the control form.
#include <cstdio>
#include <cstring>
#include <initializer_list>

#include "foundation/utils.h"
#include "reflection/control.h"
#include "reflection/property.h"
#include "sequencer/sequencer.h"
#include "sequencer/sequencerresource.h"
#include "sequencer/sequencertool.h"
#include "ui/uicontrol.h"
#include "ui/uimessage.h"
#include "ui/uipainter.h"
#include "ui/uiscrollbar.h"
#include "ui/uisystem.h"

namespace {

unsigned int const kPrimary = 1;
// Auto-aligned rows that follow the form's size.
unsigned int const kRowFormAttribute = UIForm::eFormAttribute_AutoAlign | UIForm::eFormAttribute_FollowSize;
int const kFoldBoxRight = 9;
int const kFoldBoxTop = 15;
int const kLaneNameLeft = 12;
int const kLaneNameTop = 8;
sColor const kBandColor(0, 0, 0, 64);

typedef SequencerTool::TrackForm TrackForm;

// A row widget: keys, wheel and edits go on to the forms.
class RowWidget : public UIBase {
public:
    explicit RowWidget(TrackForm* form) : UIBase(eAttribute_RowItem), mpForm(form) {}

    void eventKeyDown(unsigned int, unsigned int) override { delegate(); }
    void eventKeyUp(unsigned int, unsigned int) override { delegate(); }
    void eventMouseWheel(sPoint const&) override { delegate(); }

protected:
    SequencerTool* tool() const { return mpForm->getTool(); }
    void paintFrame(UIPainter* painter, bool selected)
    {
        painter->drawFrame(sRect(getSize()), selected ? sColor::Red : sColor::Black);
    }

    TrackForm* mpForm;
};

// The timeline part of a row: marks at frames, and a rectangle dragged with
// the first button that selects the first mark within its span.
class SequenceRow : public RowWidget {
public:
    explicit SequenceRow(TrackForm* form) : RowWidget(form), mBand(false), mBandBegin(0, 0), mBandEnd(0, 0) {}

    void eventMouseDown(sPoint const& position, unsigned int button) override
    {
        if (button != kPrimary) {
            delegate();
            return;
        }
        select();
        mBand = true;
        mBandBegin = mBandEnd = position;
    }
    void eventMouseMove(sPoint const& position) override
    {
        if (!mBand || !isDragging() || getDragButton() != kPrimary) {
            return;
        }
        mBandEnd = position;
        int const scroll = mpForm->getScrollPosition();
        int const from = (mBandBegin.x < mBandEnd.x ? mBandBegin.x : mBandEnd.x) + scroll;
        int const to = (mBandBegin.x < mBandEnd.x ? mBandEnd.x : mBandBegin.x) + scroll;
        selectSpan(from < 0 ? 0 : from, to);
    }
    void eventMouseUp(sPoint const&, unsigned int button) override
    {
        if (button == kPrimary) {
            mBand = false;
        }
    }
    void eventPaint(UIPainter* painter) override
    {
        paintMarks(painter);
        paintFrame(painter, isSelected());
        if (mBand && isDragging()) {
            sRect band(mBandBegin.x < mBandEnd.x ? mBandBegin.x : mBandEnd.x,
                       mBandBegin.y < mBandEnd.y ? mBandBegin.y : mBandEnd.y,
                       mBandBegin.x < mBandEnd.x ? mBandEnd.x : mBandBegin.x,
                       mBandBegin.y < mBandEnd.y ? mBandEnd.y : mBandBegin.y);
            painter->setBlendMode(eBlendMode_Alpha);
            painter->drawRect(band, kBandColor);
            painter->drawFrame(band, sColor::Black);
        }
    }

protected:
    // The press: the row's selection without its key or marker.
    virtual void select() = 0;
    virtual void selectSpan(int from, int to) { (void)from, (void)to; }
    virtual bool isSelected() const = 0;
    virtual void paintMarks(UIPainter*) {}

    // One vertical line over the row's height at a frame in view.
    void paintMark(UIPainter* painter, int frame, bool selected, int height)
    {
        int const x = frame - mpForm->getScrollPosition();
        if (x >= 0 && x < static_cast<int>(getSize().width)) {
            painter->drawLine(sPoint(x, 0), sPoint(x, height), selected ? sColor::Green : sColor::Black);
        }
    }

private:
    bool mBand;
    sPoint mBandBegin;
    sPoint mBandEnd;
};

// ---------------------------------------------------------------------------
// Markers

class MarkerInfo : public RowWidget {
public:
    explicit MarkerInfo(TrackForm* form) : RowWidget(form) { setSize(sSize(0, SequencerTool::UITrack::kHeight)); }

    void eventMouseDown(sPoint const&, unsigned int button) override
    {
        if (button == kPrimary) {
            tool()->selectMarkerTrack();
        }
    }
    void eventPaint(UIPainter* painter) override
    {
        painter->drawString(sPoint(kLaneNameLeft, kLaneNameTop - 2), "Marker", sColor::Black);
        paintFrame(painter, tool()->isMarkerTrackSelected());
    }
};

class MarkerSequence : public SequenceRow {
public:
    explicit MarkerSequence(TrackForm* form) : SequenceRow(form) { setSize(sSize(0, SequencerTool::UITrack::kHeight)); }

protected:
    void select() override { tool()->setSelectMarker(nullptr); }
    void selectSpan(int from, int to) override
    {
        SequencerResourceIntermediate const* resource = tool()->getResource();
        if (resource == nullptr) {
            return;
        }
        List<SequencerMarker> const& markers = resource->getMarkerList();
        for (LinkIterator<SequencerMarker> it = markers.begin(); it != markers.end(); ++it) {
            if (it->mFrame >= from && it->mFrame <= to) {
                tool()->setSelectMarker(*it);
                return;
            }
        }
        tool()->setSelectMarker(nullptr);
    }
    bool isSelected() const override { return tool()->isMarkerTrackSelected(); }
    void paintMarks(UIPainter* painter) override
    {
        SequencerResourceIntermediate const* resource = tool()->getResource();
        if (resource == nullptr) {
            return;
        }
        int const height = static_cast<int>(getSize().height);
        List<SequencerMarker> const& markers = resource->getMarkerList();
        for (LinkIterator<SequencerMarker> it = markers.begin(); it != markers.end(); ++it) {
            paintMark(painter, it->mFrame, *it == tool()->getSelectMarker(), height);
        }
    }
};

// ---------------------------------------------------------------------------
// Lanes

class LaneInfo : public RowWidget {
public:
    LaneInfo(TrackForm* form, SequencerLane* lane) : RowWidget(form), mpLane(lane)
    {
        setAttribute(0);
        setSize(sSize(0, SequencerTool::UILane::kHeight));
    }

    void eventMouseDown(sPoint const&, unsigned int button) override
    {
        if (button == kPrimary) {
            tool()->setSelectLane(mpLane);
        }
    }
    void eventPaint(UIPainter* painter) override
    {
        painter->drawString(sPoint(kLaneNameLeft, kLaneNameTop), mpLane->mControlName, sColor::Black);
        paintFrame(painter, tool()->getSelectLane() == mpLane);
    }

private:
    SequencerLane* mpLane;
};

class LaneSequence : public SequenceRow {
public:
    LaneSequence(TrackForm* form, SequencerLane* lane) : SequenceRow(form), mpLane(lane)
    {
        setAttribute(0);
        setSize(sSize(0, SequencerTool::UILane::kHeight));
    }

protected:
    void select() override
    {
        tool()->setSelectLane(mpLane);
        tool()->setSelectKey(nullptr);
    }
    void selectSpan(int from, int to) override
    {
        for (ObjectList::Iterator it = mpLane->mKeyList.begin(); it != mpLane->mKeyList.end(); ++it) {
            SequencerKey* key = static_cast<SequencerKey*>(*it);
            if (key->getFrame() >= from && key->getFrame() <= to) {
                tool()->setSelectKey(key);
                return;
            }
        }
        tool()->setSelectKey(nullptr);
    }
    bool isSelected() const override { return tool()->getSelectLane() == mpLane; }
    void paintMarks(UIPainter* painter) override
    {
        int const height = static_cast<int>(getSize().height);
        SequencerKey const* selected = tool()->getSelectKey();
        for (ObjectList::Iterator it = mpLane->mKeyList.begin(); it != mpLane->mKeyList.end(); ++it) {
            SequencerKey const* key = static_cast<SequencerKey const*>(*it);
            paintMark(painter, key->getFrame(), key == selected, height);
        }
    }

private:
    SequencerLane* mpLane;
};

// ---------------------------------------------------------------------------
// Tracks

class TrackInfo : public RowWidget {
public:
    TrackInfo(TrackForm* form, SequencerTool::UITrack* row) : RowWidget(form), mpRow(row)
    {
        setSize(sSize(0, SequencerTool::UITrack::kHeight));
        UITextControl* name = new UITextControl(
            new IndirectProperty<AutoString>("TrackName", this, &TrackInfo::getTrackName, &TrackInfo::setTrackName),
            false, UIControl::NoIndex, UIControl::eMode_Decimal);
        name->setPosition(sPoint(12, 2));
        name->setSize(sSize(64, 16));
        add(name);
    }

    AutoString getTrackName() const { return mpRow->mpTrack->mTrackName; }
    // A name that another track has, or none, is refused.
    void setTrackName(AutoString name)
    {
        SequencerResourceIntermediate* resource = tool()->getResource();
        if (resource == nullptr || name.empty() || resource->findTrack(name) != nullptr) {
            return;
        }
        mpRow->mpTrack->mTrackName = name;
        resource->setModify();
    }

    void eventMouseDown(sPoint const& position, unsigned int button) override
    {
        if (button != kPrimary) {
            return;
        }
        if (position.x >= 0 && position.x <= kFoldBoxRight && position.y >= kFoldBoxTop &&
            position.y <= SequencerTool::UITrack::kHeight) {
            mpRow->mExtractedLane = !mpRow->mExtractedLane;
            return;
        }
        tool()->setSelectTrack(mpRow->mpTrack);
    }
    void eventPaint(UIPainter* painter) override
    {
        sRect const box(0, kFoldBoxTop, kFoldBoxRight, SequencerTool::UITrack::kHeight);
        painter->drawFrame(box, sColor::Black);
        int const middle = (box.top + box.bottom) / 2;
        painter->drawLine(sPoint(2, middle), sPoint(kFoldBoxRight - 1, middle), sColor::Black);
        if (!mpRow->mExtractedLane) {
            painter->drawLine(sPoint(4, box.top + 2), sPoint(4, box.bottom - 1), sColor::Black);
        }
        paintFrame(painter, tool()->getSelectTrack() == mpRow->mpTrack && tool()->getSelectLane() == nullptr);
    }

private:
    SequencerTool::UITrack* mpRow;
};

class TrackSequence : public SequenceRow {
public:
    TrackSequence(TrackForm* form, SequencerTool::UITrack* row) : SequenceRow(form), mpRow(row)
    {
        setSize(sSize(0, SequencerTool::UITrack::kHeight));
    }

protected:
    void select() override { tool()->setSelectTrack(mpRow->mpTrack); }
    bool isSelected() const override
    {
        return tool()->getSelectTrack() == mpRow->mpTrack && tool()->getSelectLane() == nullptr;
    }

private:
    SequencerTool::UITrack* mpRow;
};

// A group of the control form: edits pass through it to the form.
class ControlGroup : public UIGroup {
public:
    explicit ControlGroup(char const* caption) : UIGroup(caption) { setAttribute(eAttribute_RowItem); }
    void eventBeginEdit() override { delegate(); }
    void eventEndEdit() override { delegate(); }
};

void placeLanes(SequencerTool::UITrack* row, bool sequence, unsigned int width)
{
    for (u32 i = 0; i < row->mLanes.size(); ++i) {
        UIBase* widget = sequence ? row->mLanes[i]->mpSequence : row->mLanes[i]->mpInfo;
        widget->setPosition(sPoint(0, SequencerTool::UITrack::kHeight + 1 +
                                          static_cast<int>(i) * SequencerTool::UILane::kHeight));
        widget->setSize(sSize(width, SequencerTool::UILane::kHeight));
        if (row->mExtractedLane) {
            widget->show();
        } else {
            widget->hide();
        }
    }
}

} // namespace

// ---------------------------------------------------------------------------
// Rows

SequencerTool::UITrack::~UITrack()
{
    for (UILane* lane : mLanes) {
        delete lane;
    }
}

unsigned int SequencerTool::UITrack::getHeight() const
{
    if (!mExtractedLane || mLanes.empty()) {
        return kHeight;
    }
    return kHeight + 1 + mLanes.size() * UILane::kHeight;
}

// ---------------------------------------------------------------------------
// HeaderForm and SequenceForm

SequencerTool::HeaderForm::HeaderForm(TrackForm* form) : UIForm(kRowFormAttribute), mpTrackForm(form)
{
    setBorderStyle(eBorderStyle_Concave);
}

void SequencerTool::HeaderForm::update(float deltaTime)
{
    setClientRegion(sRect(0, TrackForm::kRulerHeight, static_cast<int>(getSize().width),
                          static_cast<int>(getSize().height)));
    int const top = mpTrackForm->getVerticalScrollBar()->getBarPosition();
    setClientPosition(sPoint(0, -top));
    UIForm::update(deltaTime);
}

void SequencerTool::HeaderForm::eventPaint(UIPainter* painter)
{
    drawBorder(painter);
}

void SequencerTool::HeaderForm::eventMouseWheel(sPoint const& amount)
{
    mpTrackForm->sendMessage(UIMouseWheelMessage(amount));
}

SequencerTool::SequenceForm::SequenceForm(TrackForm* form) : HeaderForm(form), mPointer(0, 0), mScrubbing(false) {}

void SequencerTool::SequenceForm::update(float deltaTime)
{
    SequencerTool* tool = mpTrackForm->getTool();
    if (mScrubbing && isDragging()) {
        int const x = mPointer.x;
        int const width = static_cast<int>(getSize().width);
        int const current = static_cast<int>(tool->getCurrentFrame());
        int const last = static_cast<int>(kMaxFrame);
        int frame;
        if (x < 0) {
            frame = current - (x < -32 ? 5 : 1);
            frame = frame < 0 ? 0 : frame;
            mpTrackForm->setScrollPosition(frame);
        } else if (x >= width) {
            frame = current + (x >= width + 32 ? 5 : 1);
            frame = frame > last ? last : frame;
            mpTrackForm->setScrollPosition(frame - width + 1);
        } else {
            frame = mpTrackForm->getScrollPosition() + x;
        }
        tool->setCurrentFrame(static_cast<u32>(frame));
    } else {
        mScrubbing = false;
    }
    HeaderForm::update(deltaTime);
}

void SequencerTool::SequenceForm::eventPaint(UIPainter* painter)
{
    SequencerTool const* tool = mpTrackForm->getTool();
    int const f = UIPainter::kFontHeight;
    int const width = static_cast<int>(getSize().width);
    int const scroll = mpTrackForm->getScrollPosition();
    painter->drawRect(sRect(getSize()), UISystem::getInstance()->mWindowColor);
    char text[16];
    for (int frame = 0; frame < scroll + width; frame += 60) {
        if (frame < scroll) {
            continue;
        }
        snprintf(text, sizeof(text), "%d", frame);
        int const half = static_cast<int>(strlen(text)) * UIPainter::kFontWidth / 2;
        painter->drawString(sPoint(frame - scroll - half, f + 8), text, sColor::Black);
    }
    int const start = static_cast<int>(tool->getStartFrame()) - scroll;
    int const end = static_cast<int>(tool->getEndFrame()) - scroll;
    int const current = static_cast<int>(tool->getCurrentFrame()) - scroll;
    if (tool->getResource() != nullptr) {
        if (start >= 0 && start < width) {
            painter->drawString(sPoint(start, 0), "S", sColor::Black);
        }
        if (end >= 0 && end < width) {
            painter->drawString(sPoint(end, 0), "E", sColor::Black);
        }
    }
    painter->drawLine(sPoint(0, f), sPoint(width, f), sColor::Black);
    for (int frame = (scroll + 9) / 10 * 10; frame < scroll + width; frame += 10) {
        int const x = frame - scroll;
        painter->drawLine(sPoint(x, f + (frame % 60 == 0 ? 8 : 4)), sPoint(x, f), sColor::Black);
    }
    for (int x : {start, end, current}) {
        if (x >= 0 && x < width) {
            painter->drawLine(sPoint(x, TrackForm::kRulerHeight), sPoint(x, f), sColor::Black);
        }
    }
    drawBorder(painter);
}

void SequencerTool::SequenceForm::eventMouseDown(sPoint const& position, unsigned int button)
{
    if (button != kPrimary || position.y >= TrackForm::kRulerHeight) {
        return;
    }
    mPointer = position;
    mScrubbing = true;
    int const frame = mpTrackForm->getScrollPosition() + position.x;
    mpTrackForm->getTool()->setCurrentFrame(static_cast<u32>(frame < 0 ? 0 : frame));
}

void SequencerTool::SequenceForm::eventMouseMove(sPoint const& position)
{
    mPointer = position;
}

void SequencerTool::SequenceForm::eventMouseUp(sPoint const&, unsigned int button)
{
    if (button == kPrimary) {
        mScrubbing = false;
    }
}

// ---------------------------------------------------------------------------
// TrackForm

SequencerTool::TrackForm::TrackForm(SequencerTool* tool)
    : mpTool(tool), mpHeaderForm(nullptr), mpSequenceForm(nullptr), mpSplitter(nullptr),
      mpHorizontalScrollBar(nullptr), mpVerticalScrollBar(nullptr), mpMarker(nullptr)
{
    mpHeaderForm = new HeaderForm(this);
    mpSequenceForm = new SequenceForm(this);
    mpSplitter = new UISplitter(mpHeaderForm, mpSequenceForm, UISplitter::eSplitDirection_LeftRight, kHeaderWidth,
                                UISplitter::eSplitBase_First);
    add(mpSplitter);
    mpHorizontalScrollBar = new UIScrollBar(eBarDirection_Horizontal);
    mpHorizontalScrollBar->setMinimum(0);
    mpHorizontalScrollBar->setMaximum(static_cast<int>(kMaxFrame));
    add(mpHorizontalScrollBar);
    mpVerticalScrollBar = new UIScrollBar(eBarDirection_Vertical);
    mpVerticalScrollBar->setMinimum(0);
    mpVerticalScrollBar->setMaximum(0);
    add(mpVerticalScrollBar);
    reset();
}

SequencerTool::TrackForm::~TrackForm()
{
    clearRows();
}

void SequencerTool::TrackForm::clearRows()
{
    mpHeaderForm->removeClient();
    mpSequenceForm->removeClient();
    for (UITrack* track : mTracks) {
        delete track;
    }
    mTracks.clear();
    delete mpMarker;
    mpMarker = nullptr;
}

void SequencerTool::TrackForm::reset()
{
    clearRows();
    mpMarker = new UIMarker();
    mpMarker->mpInfo = new MarkerInfo(this);
    mpMarker->mpSequence = new MarkerSequence(this);
    mpHeaderForm->addClient(mpMarker->mpInfo);
    mpSequenceForm->addClient(mpMarker->mpSequence);
}

SequencerTool::UITrack* SequencerTool::TrackForm::addTrack(SequencerTrack* track)
{
    UITrack* row = new UITrack();
    row->mpTrack = track;
    row->mExtractedLane = true;
    row->mpInfo = new TrackInfo(this, row);
    row->mpSequence = new TrackSequence(this, row);
    mpHeaderForm->addClient(row->mpInfo);
    mpSequenceForm->addClient(row->mpSequence);
    mTracks.addLast(row);
    return row;
}

SequencerTool::UILane* SequencerTool::TrackForm::addLane(SequencerTrack* track, SequencerLane* lane)
{
    UITrack* row = findTrack(track);
    if (row == nullptr || lane == nullptr) {
        return nullptr;
    }
    UILane* laneRow = new UILane();
    laneRow->mpLane = lane;
    laneRow->mpInfo = new LaneInfo(this, lane);
    laneRow->mpSequence = new LaneSequence(this, lane);
    row->mpInfo->add(laneRow->mpInfo);
    row->mpSequence->add(laneRow->mpSequence);
    row->mLanes.addLast(laneRow);
    return laneRow;
}

SequencerTool::UITrack* SequencerTool::TrackForm::findTrack(SequencerTrack const* track) const
{
    for (UITrack* row : mTracks) {
        if (row->mpTrack == track) {
            return row;
        }
    }
    return nullptr;
}

unsigned int SequencerTool::TrackForm::getRowsHeight() const
{
    unsigned int height = UITrack::kHeight;
    for (UITrack const* row : mTracks) {
        height += row->getHeight();
    }
    return height;
}

int SequencerTool::TrackForm::getScrollPosition() const
{
    return mpHorizontalScrollBar->getBarPosition();
}

void SequencerTool::TrackForm::setScrollPosition(int frame)
{
    mpHorizontalScrollBar->setBarPosition(frame < 0 ? 0 : frame);
}

void SequencerTool::TrackForm::update(float deltaTime)
{
    int const width = static_cast<int>(getSize().width);
    int const height = static_cast<int>(getSize().height);
    int const inner = width - UIForm::kBarRoom;
    int const rows = height - UIForm::kBarRoom;
    mpSplitter->setPosition(sPoint(0, 0));
    mpSplitter->setSize(sSize(inner < 0 ? 0 : inner, rows < 0 ? 0 : rows));
    int const sequenceLeft = static_cast<int>(mpSplitter->getSplitSize());
    int const barWidth = inner - sequenceLeft;
    mpHorizontalScrollBar->setPosition(sPoint(sequenceLeft, height - UIForm::kBarThickness));
    mpHorizontalScrollBar->setSize(sSize(barWidth < 0 ? 0 : barWidth, UIForm::kBarThickness));
    mpHorizontalScrollBar->setBarRange(barWidth < 1 ? 1u : static_cast<unsigned int>(barWidth));
    mpVerticalScrollBar->setPosition(sPoint(width - UIForm::kBarThickness, kRulerHeight));
    int const visible = rows - kRulerHeight;
    mpVerticalScrollBar->setSize(sSize(UIForm::kBarThickness, visible < 0 ? 0 : visible));
    int const content = static_cast<int>(getRowsHeight());
    mpVerticalScrollBar->setMaximum(content > visible ? content - (visible < 0 ? 0 : visible) : 0);
    mpVerticalScrollBar->setBarRange(1);
    for (UITrack* row : mTracks) {
        unsigned int const rowHeight = row->getHeight();
        row->mpInfo->setSize(sSize(row->mpInfo->getSize().width, rowHeight));
        row->mpSequence->setSize(sSize(row->mpSequence->getSize().width, rowHeight));
        placeLanes(row, false, row->mpInfo->getSize().width);
        placeLanes(row, true, row->mpSequence->getSize().width);
    }
    UIBase::update(deltaTime);
}

void SequencerTool::TrackForm::eventMouseWheel(sPoint const& amount)
{
    setScrollPosition(getScrollPosition() - amount.x);
    int const top = mpVerticalScrollBar->getBarPosition() - amount.y;
    mpVerticalScrollBar->setBarPosition(top < 0 ? 0 : top);
}

void SequencerTool::TrackForm::eventKeyDown(unsigned int keyCode, unsigned int combinationKey)
{
    bool const previous = keyCode == 160;
    if (combinationKey != 0 || (keyCode != 160 && keyCode != 162)) {
        delegate();
        return;
    }
    SequencerTool* tool = mpTool;
    SequencerResourceIntermediate const* resource = tool->getResource();
    if (resource == nullptr) {
        return;
    }
    if (tool->isMarkerTrackSelected()) {
        SequencerMarker* marker = tool->getSelectMarker();
        if (marker == nullptr) {
            return;
        }
        List<SequencerMarker> const& markers = resource->getMarkerList();
        SequencerMarker* before = nullptr;
        for (LinkIterator<SequencerMarker> it = markers.begin(); it != markers.end(); ++it) {
            if (*it == marker) {
                ++it;
                SequencerMarker* next = previous ? before : (it != markers.end() ? *it : nullptr);
                if (next != nullptr) {
                    tool->setSelectMarker(next);
                }
                return;
            }
            before = *it;
        }
        return;
    }
    SequencerLane* lane = tool->getSelectLane();
    if (lane == nullptr || lane->mKeyList.empty()) {
        return;
    }
    SequencerKey* key = tool->getSelectKey();
    ObjectList const& keys = lane->mKeyList;
    if (key == nullptr) {
        tool->setSelectKey(static_cast<SequencerKey*>(previous ? *keys.begin() : keys[keys.size() - 1]));
        return;
    }
    SequencerKey* before = nullptr;
    for (ObjectList::Iterator it = keys.begin(); it != keys.end(); ++it) {
        if (*it == key) {
            ++it;
            SequencerKey* next = previous ? before : (it != keys.end() ? static_cast<SequencerKey*>(*it) : nullptr);
            if (next != nullptr) {
                tool->setSelectKey(next);
            }
            return;
        }
        before = static_cast<SequencerKey*>(*it);
    }
}

// ---------------------------------------------------------------------------
// ControlForm

SequencerTool::ControlForm::ControlForm(SequencerTool* tool)
    : UIForm(eFormAttribute_ScrollBar | eFormAttribute_AutoAlign), mpTool(tool),
      mpTrackGroup(new ControlGroup("Track")), mpControlGroup(new ControlGroup("Control")),
      mpKeyGroup(new ControlGroup("Key")), mpMarkerGroup(new ControlGroup("Marker"))
{
    setBorderStyle(eBorderStyle_Concave);
}

SequencerTool::ControlForm::~ControlForm()
{
    for (UIGroup* group : {mpTrackGroup, mpControlGroup, mpKeyGroup, mpMarkerGroup}) {
        if (group->getParent() == nullptr) {
            delete group;
        }
    }
}

void SequencerTool::ControlForm::clear()
{
    for (UIGroup* group : {mpTrackGroup, mpControlGroup, mpKeyGroup, mpMarkerGroup}) {
        group->removeChildren();
        group->remove();
    }
}

void SequencerTool::ControlForm::fill(UIGroup* group, List<UIBase>& widgets)
{
    for (List<UIBase>::Iterator it = widgets.begin(); it != widgets.end(); ++it) {
        group->add(*it);
    }
    widgets.clear();
    if (group->getParent() == nullptr) {
        addClient(group);
    }
}

void SequencerTool::ControlForm::setControlList(u32 trackIndex)
{
    Sequencer const* sequencer = mpTool->getSequencer();
    List<UIBase> widgets;
    if (sequencer != nullptr && trackIndex < sequencer->getTrackNum()) {
        Sequencer::sTrackData const& track = sequencer->getTrackArray()[trackIndex];
        for (u32 i = 0; i < track.mLaneNum; ++i) {
            if (UIBase* widget = Utils::makeUIFromControl(track.mpLaneArray[i].mpControl)) {
                widgets.addLast(widget);
            }
        }
    }
    fill(mpControlGroup, widgets);
}

void SequencerTool::ControlForm::update(float deltaTime)
{
    setClientRegion(sRect(getSize()));
    UIForm::update(deltaTime);
}

void SequencerTool::ControlForm::eventPaint(UIPainter* painter)
{
    UIForm::eventPaint(painter);
    drawBorder(painter);
}

void SequencerTool::ControlForm::eventBeginEdit()
{
    mpTool->eventBeginEdit();
}

void SequencerTool::ControlForm::eventEndEdit()
{
    mpTool->eventEndEdit();
}
