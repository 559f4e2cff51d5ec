// Index
//   [SECTION] Host
//   [SECTION] Both views
//   [SECTION] TextureView
//   [SECTION] TextureForm
//   [SECTION] AnimationView: input
//   [SECTION] AnimationView: painting
//   [SECTION] AnimationForm
#include "animation/animtoolview.h"

#include <cmath>

#include "animation/animation.h"
#include "animation/animresource.h"
#include "animation/animsequencer.h"
#include "reflection/property.h"
#include "render/renderobject.h"
#include "resource/textureresource.h"
#include "sequencer/sequencerresource.h"
#include "ui/uicontrol.h"
#include "ui/uicontrolcomposite.h"
#include "ui/uimenu.h"
#include "ui/uipainter.h"
#include "ui/uiscrollbar.h"

namespace {

unsigned int const kPrimary = 1;
unsigned int const kShift = 1;
// The direction line's degrees to radians use this pi, as the painter's arcs do.
float const kPi = 3.1415925f;

char const* const kBackgroundNames[] = {"BGBlack", "BGRed", "BGGreen", "BGBlue", "BGWhite"};
sColor const kBackgroundColors[] = {sColor::Black, sColor::Red, sColor::Green, sColor::Blue, sColor::White};
static_assert(sizeof(kBackgroundNames) / sizeof(kBackgroundNames[0]) == AnimationView::eBackground_Num,
              "one menu row per background");
static_assert(sizeof(kBackgroundColors) / sizeof(kBackgroundColors[0]) == AnimationView::eBackground_Num,
              "one colour per background");

bool isExactly(ObjectBase const* object, TypeInfo const* type)
{
    return object != nullptr && object->getTypeInfo() == type;
}

bool isCell(ObjectBase const* object)
{
    return isExactly(object, AnimCell::getStaticTypeInfo());
}

bool isCollision(ObjectBase const* object)
{
    return isExactly(object, AnimCollision::getStaticTypeInfo());
}

bool isGenerator(ObjectBase const* object)
{
    return isExactly(object, AnimGenerator::getStaticTypeInfo());
}

bool isSequencer(ObjectBase const* object)
{
    return isExactly(object, AnimSequencer::getStaticTypeInfo());
}

// Cells, collisions and generators: the objects with a position and a size.
bool isPrimitive(ObjectBase const* object)
{
    return isCell(object) || isCollision(object) || isGenerator(object);
}

int clampPosition(int value)
{
    return (value < AnimationView::kPositionMin) ? AnimationView::kPositionMin
                                                 : (value > AnimationView::kPositionMax) ? AnimationView::kPositionMax
                                                                                         : value;
}

int absolute(int value)
{
    return (value < 0) ? -value : value;
}

// Halves towards minus infinity.
int floorHalf(int value)
{
    return (value >= 0) ? value / 2 : -((-value + 1) / 2);
}

// The scroll position that keeps the middle of the shown part on the same
// canvas point when the canvas grows from oldZoom to newZoom.
int keepCentre(int position, int range, int oldZoom, int newZoom)
{
    return (position + range / 2) * newZoom / oldZoom - range / 2;
}

void setScroll(UIForm* form, sPoint const& position, sSize const& canvas)
{
    // The form renews the bars' limits from the canvas at its next update;
    // until then a position past the old canvas would be cut short.
    if (UIScrollBar* bar = form->getHorizontalScrollBar()) {
        bar->setMaximum(static_cast<int>(canvas.width));
    }
    if (UIScrollBar* bar = form->getVerticalScrollBar()) {
        bar->setMaximum(static_cast<int>(canvas.height));
    }
    form->setScrollBarPosition(position);
}

void scrollByZoom(UIForm* form, sSize const& canvas, int oldZoom, int newZoom)
{
    if (form == nullptr) {
        return;
    }
    sPoint const position = form->getScrollBarPosition();
    sSize const range = form->getScrollBarRange();
    setScroll(form,
              sPoint(keepCentre(position.x, static_cast<int>(range.width), oldZoom, newZoom),
                     keepCentre(position.y, static_cast<int>(range.height), oldZoom, newZoom)),
              canvas);
}

sVector toVector(sPoint const& point)
{
    return sVector(sFixed(point.x, 16), sFixed(point.y, 16));
}

sPoint toPoint(sVector const& vector)
{
    return sPoint(static_cast<int>(vector.x), static_cast<int>(vector.y));
}

// The primitives' blend modes in the renderer's numbering; 3 keeps the last.
void selectBlend(UIPainter* painter, u32 mode)
{
    if (mode <= 2) {
        painter->setBlendMode(static_cast<eBlendMode>(mode + 1));
    }
}

// A quad in strip order as the two triangles the painter draws.
void drawQuad(UIPainter* painter, sVector const (&corner)[4], sColor color, sTexcoord const (&texel)[4])
{
    sPoint const p[4] = {toPoint(corner[0]), toPoint(corner[1]), toPoint(corner[2]), toPoint(corner[3])};
    sTexcoord const first[3] = {texel[0], texel[1], texel[2]};
    sTexcoord const second[3] = {texel[1], texel[3], texel[2]};
    painter->drawTriangle(p[0], p[1], p[2], color, first);
    painter->drawTriangle(p[1], p[3], p[2], color, second);
}

void drawCross(UIPainter* painter, sPoint const& at, int half, sColor color)
{
    painter->drawLine(sPoint(at.x - half, at.y), sPoint(at.x + half + 1, at.y), color);
    painter->drawLine(sPoint(at.x, at.y - half), sPoint(at.x, at.y + half + 1), color);
}

// The value of a key of a "Position" lane; false for a key of another type.
bool keyPosition(ObjectBase* object, sPoint& position)
{
    SequencerKey* key = static_cast<SequencerKey*>(object);
    if (key == nullptr || key->getParameterSize() != sizeof(sPoint)) {
        return false;
    }
    key->copyParameter(&position);
    return true;
}

} // namespace

// ---------------------------------------------------------------------------
// [SECTION] Host

ObjectBase* AnimViewHost::getSelectObject() const
{
    AnimSequencer* sequencer = getViewSequencer();
    AnimResource* resource = getViewResource();
    SequencerTrack* track = getViewSelectTrack();
    if (sequencer == nullptr || resource == nullptr || track == nullptr) {
        return nullptr;
    }
    u32 const index = resource->getTrackIndex(track);
    if (index >= sequencer->getTrackNum()) {
        return nullptr;
    }
    return sequencer->getTrackArray()[index].mpObject;
}

// ---------------------------------------------------------------------------
// [SECTION] Both views

AnimViewBase::AnimViewBase(AnimViewHost* host, UIForm* form, u32 dragModeMask, u32 spaceBit, u32 gridBit,
                           u32 zoomShift, u32 flags)
    : mpHost(host), mpForm(form), mBackground(sColor::Black), mRemember(0, 0), mFlags(flags),
      mDragModeMask(dragModeMask), mSpaceBit(spaceBit), mGridBit(gridBit), mZoomShift(zoomShift)
{
    UIMenu* menu = new UIMenu();
    menu->addItem("Grid", this, &AnimViewBase::evGrid, UIMenu::eItemAttribute_Check, true, true);
    setMenu(menu);
}

void AnimViewBase::setZoom(int zoom)
{
    zoom = (zoom < 1) ? 1 : (zoom > kMaxZoom) ? kMaxZoom : zoom;
    int const old = getZoom();
    if (zoom == old) {
        return;
    }
    mFlags = (mFlags & ~(kZoomBits << mZoomShift)) | (static_cast<u32>(zoom) << mZoomShift);
    resizeCanvas();
    scrollByZoom(mpForm, getSize(), old, zoom);
}

void AnimViewBase::evGrid()
{
    mFlags ^= mGridBit;
    getMenu()->setItemCheck("Grid", isGrid());
}

bool AnimViewBase::keyView(unsigned int key)
{
    switch (key) {
    case eAnimViewKey_Space:
        mFlags |= mSpaceBit;
        return true;
    case eAnimViewKey_ZoomIn:
        setZoom(getZoom() + 1);
        return true;
    case eAnimViewKey_ZoomOut:
        setZoom(getZoom() - 1);
        return true;
    default:
        return false;
    }
}

bool AnimViewBase::beginScroll(u32 scrollMode)
{
    if ((mFlags & mSpaceBit) == 0) {
        return false;
    }
    if (mpForm != nullptr) {
        mRemember = mpForm->getScrollBarPosition();
        setDragMode(scrollMode);
    }
    return true;
}

void AnimViewBase::scrollByDrag()
{
    mpForm->setScrollBarPosition(mRemember - getDragAmount());
}

void AnimViewBase::eventMouseUp(sPoint const&, unsigned int)
{
    setDragMode(0);
}

void AnimViewBase::eventKeyUp(unsigned int key, unsigned int)
{
    if (key == eAnimViewKey_Space) {
        mFlags &= ~mSpaceBit;
        return;
    }
    delegate();
}

// ---------------------------------------------------------------------------
// [SECTION] TextureView

TextureView::TextureView(AnimViewHost* host, UIForm* form)
    : AnimViewBase(host, form, kDragModeMask, kSpaceBit, kGridBit, kZoomShift, kGridBit | (1u << kZoomShift)),
      mpTexture(nullptr)
{
}

TextureView::~TextureView()
{
    if (mpTexture != nullptr) {
        mpTexture->release();
    }
}

void TextureView::takeTexture()
{
    AnimResource* resource = (mpHost != nullptr) ? mpHost->getViewResource() : nullptr;
    TextureResource* texture = (resource != nullptr) ? resource->getTexture() : nullptr;
    if (texture == mpTexture) {
        return;
    }
    if (texture != nullptr) {
        texture->addRef();
    }
    if (mpTexture != nullptr) {
        mpTexture->release();
    }
    mpTexture = texture;
}

void TextureView::resizeCanvas()
{
    Texture* texture = (mpTexture != nullptr) ? mpTexture->getTexture() : nullptr;
    if (texture == nullptr) {
        setSize(sSize(0, 0));
        return;
    }
    unsigned int const zoom = static_cast<unsigned int>(getZoom());
    setSize(sSize(texture->getWidth() * zoom, texture->getHeight() * zoom));
}

void TextureView::update(float deltaTime)
{
    takeTexture();
    resizeCanvas();
    UIBase::update(deltaTime);
}

ObjectBase* TextureView::getPickObject() const
{
    ObjectBase* object = (mpHost != nullptr) ? mpHost->getSelectObject() : nullptr;
    return (isCell(object) || isGenerator(object)) ? object : nullptr;
}

void TextureView::eventMouseDown(sPoint const& position, unsigned int button)
{
    setDragMode(eDragMode_None);
    if (button != kPrimary || mpHost == nullptr || mpTexture == nullptr || mpHost->getViewSequencer() == nullptr) {
        return;
    }
    if (beginScroll(eDragMode_Scroll)) {
        return;
    }
    if (getPickObject() != nullptr) {
        mRemember = position;
        setDragMode(eDragMode_Pick);
    }
}

// The mouse is taken as a texel as it is, with no division by the zoom: a
// pick at zoom 2 gives twice the texel values. Deliberate; only zoom 1 picks
// true to the texture.
void TextureView::eventMouseMove(sPoint const& position)
{
    switch (getDragMode()) {
    case eDragMode_Scroll:
        scrollByDrag();
        break;
    case eDragMode_Pick: {
        ObjectBase* object = getPickObject();
        if (object == nullptr) {
            break;
        }
        int const left = (mRemember.x < position.x) ? mRemember.x : position.x;
        int const top = (mRemember.y < position.y) ? mRemember.y : position.y;
        sTexcoord const uv(static_cast<u16>(left < 0 ? 0 : left), static_cast<u16>(top < 0 ? 0 : top));
        sSize const size(static_cast<unsigned int>(absolute(position.x - mRemember.x)),
                         static_cast<unsigned int>(absolute(position.y - mRemember.y)));
        if (isCell(object)) {
            static_cast<AnimCell*>(object)->setUV(uv);
        } else {
            static_cast<AnimGenerator*>(object)->mUV = uv;
        }
        static_cast<AnimPrimitive*>(object)->setSize(size);
        break;
    }
    default:
        break;
    }
}

// Arrow keys nudge the rectangle of a cell or generator: its corner, or its
// size with Shift. Neither goes below 0.
void TextureView::eventKeyDown(unsigned int key, unsigned int combination)
{
    if (keyView(key)) {
        return;
    }
    ObjectBase* object = getPickObject();
    // With Option or Command the arrows are the tool's (seeking to markers).
    if (object == nullptr || (combination & ~kShift) != 0) {
        delegate();
        return;
    }
    AnimPrimitive* primitive = static_cast<AnimPrimitive*>(object);
    sTexcoord uv = isCell(object) ? static_cast<AnimCell*>(object)->getUV() : static_cast<AnimGenerator*>(object)->mUV;
    sSize size = primitive->getSize();
    bool const shift = (combination & kShift) != 0;
    int const zoom = getZoom();
    switch (key) {
    case eAnimViewKey_Left:
    case eAnimViewKey_Right: {
        int const step = (key == eAnimViewKey_Left) ? -1 : 1;
        if (shift) {
            size.width = (step < 0 && size.width == 0) ? 0 : size.width + step;
        } else {
            uv.x = static_cast<u16>((step < 0 && uv.x == 0) ? 0 : uv.x + step);
        }
        break;
    }
    case eAnimViewKey_Up:
    case eAnimViewKey_Down: {
        int const step = (key == eAnimViewKey_Up) ? -1 : 1;
        if (shift) {
            size.height = (step < 0 && size.height == 0) ? 0 : size.height + step;
        } else {
            uv.y = static_cast<u16>((step < 0 && uv.y == 0) ? 0 : uv.y + step);
        }
        break;
    }
    case eAnimViewKey_Focus:
        if (mpForm != nullptr) {
            sSize const range = mpForm->getScrollBarRange();
            mpForm->setScrollBarPosition(
                sPoint((uv.x + static_cast<int>(size.width) / 2) * zoom - static_cast<int>(range.width) / 2,
                       (uv.y + static_cast<int>(size.height) / 2) * zoom - static_cast<int>(range.height) / 2));
        }
        return;
    default:
        delegate();
        return;
    }
    if (isCell(object)) {
        static_cast<AnimCell*>(object)->setUV(uv);
    } else {
        static_cast<AnimGenerator*>(object)->mUV = uv;
    }
    primitive->setSize(size);
}

// The texture at its own size; grid and frames at the zoom.
void TextureView::eventPaint(UIPainter* painter)
{
    sSize const size = getSize();
    painter->drawRect(sRect(size), mBackground);
    Texture* texture = (mpTexture != nullptr) ? mpTexture->getTexture() : nullptr;
    if (mpHost == nullptr || texture == nullptr || mpHost->getViewResource() == nullptr) {
        return;
    }
    eBlendMode const previous = painter->getBlendMode();
    painter->setBlendMode(eBlendMode_Alpha);
    painter->setTextureFiltering(eTextureFiltering_Nearest);
    painter->setTexture(texture);
    u16 const width = static_cast<u16>(texture->getWidth());
    u16 const height = static_cast<u16>(texture->getHeight());
    painter->drawRect(sRect(0, 0, width, height), sColor::White, UIPainter::sTexel(0, 0),
                      UIPainter::sTexel(width, height));
    painter->setTexture(nullptr);
    painter->setBlendMode(previous);

    int const zoom = getZoom();
    int const w = static_cast<int>(size.width);
    int const h = static_cast<int>(size.height);
    if (isGrid()) {
        int const step = kGridStep * zoom;
        for (int x = step; x < w; x += step) {
            painter->drawLine(sPoint(x, 0), sPoint(x, h), sColor::DarkGray);
        }
        for (int y = step; y < h; y += step) {
            painter->drawLine(sPoint(0, y), sPoint(w, y), sColor::DarkGray);
        }
    }
    AnimSequencer* sequencer = mpHost->getViewSequencer();
    if (sequencer == nullptr) {
        return;
    }
    Sequencer::sTrackData const* tracks = sequencer->getTrackArray();
    for (u32 t = 0; t < sequencer->getTrackNum(); ++t) {
        ObjectBase const* object = tracks[t].mpObject;
        sTexcoord uv;
        if (isCell(object)) {
            uv = static_cast<AnimCell const*>(object)->getUV();
        } else if (isGenerator(object)) {
            uv = static_cast<AnimGenerator const*>(object)->mUV;
        } else {
            continue;
        }
        sSize const extent = static_cast<AnimPrimitive const*>(object)->getSize();
        painter->drawFrame(sRect(sPoint(uv.x * zoom, uv.y * zoom),
                                 sSize(extent.width * static_cast<unsigned int>(zoom),
                                       extent.height * static_cast<unsigned int>(zoom))),
                           sColor::Red);
    }
}

// ---------------------------------------------------------------------------
// [SECTION] TextureForm

TextureForm::TextureForm(AnimViewHost* host)
    : mpHost(host), mpTextureControl(nullptr), mpWidthControl(nullptr), mpHeightControl(nullptr), mpViewForm(nullptr),
      mpView(nullptr)
{
    PropertyBase* texture = new IndirectResourceProperty("Texture", TextureResource::getStaticTypeInfo(), this,
                                                         &TextureForm::getTexture, &TextureForm::setTexture);
    mpTextureControl = new UIResourceControl(texture, false, UIControl::NoIndex);
    mpTextureControl->setDefaultSize();
    mpTextureControl->setSize(sSize(kResourceWidth, kFieldHeight));
    addClient(mpTextureControl);

    uNumeric minimum, maximum;
    minimum.mU64 = 0;
    maximum.mU64 = 0;
    maximum.mU32 = 0xFFFFFFFFu;
    PropertyBase* width =
        new IndirectProperty<u32>("Width", this, &TextureForm::getTextureWidth, &TextureForm::setTextureSize);
    mpWidthControl = new UIParameterControl(width, minimum, maximum, true, UIControl::NoIndex, UIControl::eMode_Decimal);
    mpWidthControl->setDefaultSize();
    mpWidthControl->setSize(sSize(kSizeWidth, kFieldHeight));
    addClient(mpWidthControl);
    PropertyBase* height =
        new IndirectProperty<u32>("Height", this, &TextureForm::getTextureHeight, &TextureForm::setTextureSize);
    mpHeightControl =
        new UIParameterControl(height, minimum, maximum, true, UIControl::NoIndex, UIControl::eMode_Decimal);
    mpHeightControl->setDefaultSize();
    mpHeightControl->setSize(sSize(kSizeWidth, kFieldHeight));
    addClient(mpHeightControl);

    mpViewForm = new UIForm(UIForm::eFormAttribute_ScrollBar);
    mpView = new TextureView(host, mpViewForm);
    mpViewForm->addClient(mpView);
    addClient(mpViewForm);
}

TextureResource* TextureForm::getTexture() const
{
    AnimResource* resource = (mpHost != nullptr) ? mpHost->getViewResource() : nullptr;
    return (resource != nullptr) ? resource->getTexture() : nullptr;
}

void TextureForm::setTexture(TextureResource* texture)
{
    AnimResource* resource = (mpHost != nullptr) ? mpHost->getViewResource() : nullptr;
    if (resource != nullptr && resource->getTexture() != texture) {
        resource->setTexture(texture);
    }
}

u32 TextureForm::getTextureWidth() const
{
    TextureResource* resource = getTexture();
    Texture* texture = (resource != nullptr) ? resource->getTexture() : nullptr;
    return (texture != nullptr) ? texture->getWidth() : 0;
}

u32 TextureForm::getTextureHeight() const
{
    TextureResource* resource = getTexture();
    Texture* texture = (resource != nullptr) ? resource->getTexture() : nullptr;
    return (texture != nullptr) ? texture->getHeight() : 0;
}

void TextureForm::update(float deltaTime)
{
    sSize const size = getSize();
    setClientRegion(sRect(size));
    int const gap = kRowGap;
    mpTextureControl->setPosition(sPoint(0, 0));
    mpWidthControl->setPosition(sPoint(kResourceWidth + gap, 0));
    mpHeightControl->setPosition(sPoint(kResourceWidth + kSizeWidth + 2 * gap, 0));
    int const top = kFieldHeight + gap;
    int const rest = static_cast<int>(size.height) - top;
    mpViewForm->setPosition(sPoint(0, top));
    mpViewForm->setSize(sSize(size.width, static_cast<unsigned int>(rest < 0 ? 0 : rest)));
    mpViewForm->setClientRegion(sRect(mpViewForm->getSize()));
    UIForm::update(deltaTime);
}

// ---------------------------------------------------------------------------
// [SECTION] AnimationView: input

AnimationView::AnimationView(AnimViewHost* host, UIForm* form)
    : AnimViewBase(host, form, kDragModeMask, kSpaceBit, kGridBit, kZoomShift,
                   kGridBit | kCurveBit | (1u << kZoomShift))
{
    UIMenu* menu = getMenu();
    menu->addItem("Curve", this, &AnimationView::evCurve, UIMenu::eItemAttribute_Check, true, true);
    menu->addSeparator();
    menu->addItem("BGBlack", this, &AnimationView::evBGBlack, UIMenu::eItemAttribute_Radio, true, true);
    menu->addItem("BGRed", this, &AnimationView::evBGRed, UIMenu::eItemAttribute_Radio);
    menu->addItem("BGGreen", this, &AnimationView::evBGGreen, UIMenu::eItemAttribute_Radio);
    menu->addItem("BGBlue", this, &AnimationView::evBGBlue, UIMenu::eItemAttribute_Radio);
    menu->addItem("BGWhite", this, &AnimationView::evBGWhite, UIMenu::eItemAttribute_Radio);
    resizeCanvas();
}

sPoint AnimationView::getCenter() const
{
    return sPoint(static_cast<int>(getSize().width) / 2, static_cast<int>(getSize().height) / 2);
}

void AnimationView::evCurve()
{
    mFlags ^= kCurveBit;
    getMenu()->setItemCheck("Curve", isCurve());
}

void AnimationView::setBackground(unsigned int background)
{
    if (background >= eBackground_Num) {
        return;
    }
    mBackground = kBackgroundColors[background];
    getMenu()->setItemCheck(kBackgroundNames[background], true);
}

void AnimationView::resizeCanvas()
{
    unsigned int const side = static_cast<unsigned int>(kCanvasSide * getZoom());
    setSize(sSize(side, side));
}

void AnimationView::scrollTo(sPoint const& canvasPoint)
{
    if (mpForm == nullptr) {
        return;
    }
    sSize const range = mpForm->getScrollBarRange();
    mpForm->setScrollBarPosition(sPoint(canvasPoint.x - static_cast<int>(range.width) / 2,
                                        canvasPoint.y - static_cast<int>(range.height) / 2));
}

void AnimationView::update(float deltaTime)
{
    resizeCanvas();
    UIBase::update(deltaTime);
}

void AnimationView::eventMouseDown(sPoint const& position, unsigned int button)
{
    setDragMode(eDragMode_None);
    if (button != kPrimary || mpHost == nullptr || mpHost->getViewSequencer() == nullptr) {
        return;
    }
    if (beginScroll(eDragMode_Scroll)) {
        return;
    }
    ObjectBase* object = mpHost->getSelectObject();
    if (object == nullptr) {
        return;
    }
    int const zoom = getZoom();
    sPoint const m = getCenter();
    if (isCell(object)) {
        AnimCell const* cell = static_cast<AnimCell const*>(object);
        sPoint const p = cell->getPosition();
        int const hw = static_cast<int>(cell->getSize().width) / 2;
        int const hh = static_cast<int>(cell->getSize().height) / 2;
        sRect const rect(m.x + (p.x - hw) * zoom, m.y + (p.y - hh) * zoom, m.x + (p.x + hw) * zoom,
                         m.y + (p.y + hh) * zoom);
        if (rect.intersect(position)) {
            mRemember = p;
            setDragMode(eDragMode_Cell);
        }
    } else if (isCollision(object)) {
        mRemember = sPoint((position.x - m.x) / zoom, (position.y - m.y) / zoom);
        setDragMode(eDragMode_Collision);
    } else if (isGenerator(object) || isSequencer(object)) {
        sPoint const p = isGenerator(object) ? static_cast<AnimGenerator const*>(object)->getPosition()
                                             : static_cast<AnimSequencer const*>(object)->getPosition();
        sPoint const at(m.x + p.x * zoom, m.y + p.y * zoom);
        sRect const rect(at.x - kHandleHalf, at.y - kHandleHalf, at.x + kHandleHalf, at.y + kHandleHalf);
        if (rect.intersect(position)) {
            mRemember = p;
            setDragMode(isGenerator(object) ? eDragMode_Generator : eDragMode_Sequencer);
        }
    }
}

void AnimationView::eventMouseMove(sPoint const&)
{
    u32 const mode = getDragMode();
    if (!isDragging() || getDragButton() != kPrimary || mode == eDragMode_None) {
        return;
    }
    if (mode == eDragMode_Scroll) {
        scrollByDrag();
        return;
    }
    if (mpHost == nullptr || mpHost->getViewSelectTrack() == nullptr) {
        return;
    }
    ObjectBase* object = mpHost->getSelectObject();
    if (object == nullptr) {
        return;
    }
    int const zoom = getZoom();
    sPoint const amount = getDragAmount();
    sPoint const p(clampPosition(mRemember.x + amount.x / zoom), clampPosition(mRemember.y + amount.y / zoom));
    switch (mode) {
    case eDragMode_Cell:
    case eDragMode_Generator:
        if (isCell(object) || isGenerator(object)) {
            static_cast<AnimPrimitive*>(object)->setPosition(p);
        }
        break;
    case eDragMode_Sequencer:
        if (isSequencer(object)) {
            static_cast<AnimSequencer*>(object)->setPosition(p);
        }
        break;
    case eDragMode_Collision:
        if (isCollision(object)) {
            AnimCollision* box = static_cast<AnimCollision*>(object);
            box->setSize(sSize(static_cast<unsigned int>(absolute(p.x - mRemember.x)),
                               static_cast<unsigned int>(absolute(p.y - mRemember.y))));
            box->setPosition(sPoint(floorHalf(mRemember.x + p.x), floorHalf(mRemember.y + p.y)));
        }
        break;
    default:
        break;
    }
}

// Arrow keys move the selected primitive by one pixel, past the limits that
// hold a drag. With Shift a collision box changes its width or height
// instead, by its right or bottom edge: the position follows so that the
// left or top edge, position - size / 2, stays.
void AnimationView::eventKeyDown(unsigned int key, unsigned int combination)
{
    if (keyView(key)) {
        return;
    }
    if (key == eAnimViewKey_Home) {
        if (getDragMode() == eDragMode_None) {
            int const middle = kCanvasSide / 2 * getZoom();
            scrollTo(sPoint(middle, middle));
        }
        return;
    }
    ObjectBase* object = (mpHost != nullptr) ? mpHost->getSelectObject() : nullptr;
    // With Option or Command the arrows are the tool's (seeking to markers).
    if (!isPrimitive(object) || (combination & ~kShift) != 0) {
        delegate();
        return;
    }
    AnimPrimitive* primitive = static_cast<AnimPrimitive*>(object);
    sPoint position = primitive->getPosition();
    sSize size = primitive->getSize();
    bool const resize = isCollision(object) && (combination & kShift) != 0;
    int dx = 0;
    int dy = 0;
    switch (key) {
    case eAnimViewKey_Left:
        dx = -1;
        break;
    case eAnimViewKey_Up:
        dy = -1;
        break;
    case eAnimViewKey_Right:
        dx = 1;
        break;
    case eAnimViewKey_Down:
        dy = 1;
        break;
    case eAnimViewKey_Focus: {
        int const zoom = getZoom();
        scrollTo(sPoint((position.x + kCanvasSide / 2) * zoom, (position.y + kCanvasSide / 2) * zoom));
        return;
    }
    default:
        delegate();
        return;
    }
    if (!resize) {
        primitive->setPosition(sPoint(position.x + dx, position.y + dy));
        return;
    }
    int const width = static_cast<int>(size.width) + dx;
    int const height = static_cast<int>(size.height) + dy;
    if (width < 0 || height < 0) {
        return;
    }
    int const left = position.x - static_cast<int>(size.width) / 2;
    int const top = position.y - static_cast<int>(size.height) / 2;
    primitive->setSize(sSize(static_cast<unsigned int>(width), static_cast<unsigned int>(height)));
    primitive->setPosition(sPoint(left + width / 2, top + height / 2));
}

// ---------------------------------------------------------------------------
// [SECTION] AnimationView: painting

void AnimationView::eventPaint(UIPainter* painter)
{
    painter->drawRect(sRect(getSize()), mBackground);
    AnimSequencer* sequencer = (mpHost != nullptr) ? mpHost->getViewSequencer() : nullptr;
    if (sequencer == nullptr) {
        if (isGrid()) {
            drawGrid(painter);
        }
        return;
    }
    int const zoom = getZoom();
    sPoint const m = getCenter();
    sMatrix const matrix(sVector(sFixed(zoom, 16), sFixed(zoom, 16)), sFixed::Zero, toVector(m));
    eBlendMode const previous = painter->getBlendMode();
    // The root shows the texture the resource names now: a texture chosen in
    // the texture form shows before the player takes the animation again.
    AnimResource const* edited = mpHost->getViewResource();
    drawAnimation(painter, sequencer, (edited != nullptr) ? edited->getTexture() : nullptr, matrix, sColorF::White);
    painter->setTexture(nullptr);
    painter->setBlendMode(previous);
    if (isGrid()) {
        drawGrid(painter);
    }

    SequencerTrack const* selectTrack = mpHost->getViewSelectTrack();
    ObjectBase const* selectObject = mpHost->getSelectObject();
    AnimResource* resource = mpHost->getViewResource();
    if (isCurve() && selectTrack != nullptr && resource != nullptr &&
        resource->getTrackIndex(selectTrack) < sequencer->getTrackNum()) {
        drawCurve(painter, selectTrack);
    }
    u32 const mode = getDragMode();
    bool const dragging = mode != eDragMode_None && mode != eDragMode_Scroll;
    Sequencer::sTrackData const* tracks = sequencer->getTrackArray();
    for (u32 t = 0; t < sequencer->getTrackNum(); ++t) {
        ObjectBase const* object = tracks[t].mpObject;
        bool const selected = object != nullptr && object == selectObject;
        sColor const color = selected ? (dragging ? sColor::White : sColor::Red) : sColor::Yellow;
        drawFrame(painter, object, color);
    }
}

// Cells as textured quads and generators as one quad per live particle,
// placed as the game places them but for the division of a generator's axes
// by its box's extent, which is left out here.
void AnimationView::drawAnimation(UIPainter* painter, AnimSequencer const* sequencer,
                                  TextureResource const* resource, sMatrix const& matrix, sColorF const& parent) const
{
    if (resource == nullptr) {
        resource = sequencer->getTexture();
    }
    Texture* texture = (resource != nullptr) ? resource->getTexture() : nullptr;
    sColorF const color = sColorF(sequencer->getColor()) * parent;
    sVector const unitX(sFixed::One, sFixed::Zero);
    sVector const unitY(sFixed::Zero, sFixed::One);
    painter->setTextureFiltering(eTextureFiltering_Linear);
    Sequencer::sTrackData const* tracks = sequencer->getTrackArray();
    for (u32 t = 0; t < sequencer->getTrackNum(); ++t) {
        ObjectBase const* object = tracks[t].mpObject;
        if (isSequencer(object)) {
            AnimSequencer const* nested = static_cast<AnimSequencer const*>(object);
            sMatrix const local(sVector::One, nested->getOrientation(), toVector(nested->getPosition()));
            drawAnimation(painter, nested, nullptr, matrix * local, color);
            continue;
        }
        if (texture == nullptr) {
            continue;
        }
        painter->setTexture(texture);
        if (isCell(object)) {
            AnimCell const* cell = static_cast<AnimCell const*>(object);
            if ((cell->getAttribute() & AnimCell::eAttribute_Visible) == 0) {
                continue;
            }
            selectBlend(painter, cell->getBlendMode());
            bool const flip = (cell->getAttribute() & AnimCell::eAttribute_HFlip) != 0;
            sVector const center = matrix.transform(toVector(cell->getPosition()));
            sVector const ex = matrix.transformNormal(flip ? -unitX : unitX) *
                               sFixed(static_cast<int>(cell->getSize().width / 2), 16);
            sVector const ey = matrix.transformNormal(unitY) * sFixed(static_cast<int>(cell->getSize().height / 2), 16);
            sTexcoord const uv = cell->getUV();
            u16 const u1 = static_cast<u16>(uv.x + cell->getSize().width);
            u16 const v1 = static_cast<u16>(uv.y + cell->getSize().height);
            sVector const corner[4] = {center - ex - ey, center + ex - ey, center - ex + ey, center + ex + ey};
            sTexcoord const texel[4] = {sTexcoord(uv.x, uv.y), sTexcoord(u1, uv.y), sTexcoord(uv.x, v1),
                                        sTexcoord(u1, v1)};
            drawQuad(painter, corner, sColorF(cell->getColor()) * color, texel);
        } else if (isGenerator(object)) {
            AnimGenerator const* generator = static_cast<AnimGenerator const*>(object);
            selectBlend(painter, generator->getBlendMode());
            // The generator's box is zero: its centre is the matrix's origin,
            // and the centre offset (minus the position) is not zoomed.
            sVector const origin = matrix.transform(generator->getBoundingBox().getCenter()) -
                                   generator->getCenterOffset();
            sVector const axisX = matrix.transformNormal(unitX);
            sVector const axisY = matrix.transformNormal(unitY);
            sColorF const base = sColorF(generator->getColor()) * color;
            sColor const rgb = base;
            f32 const alpha = base.a * 255.0f;
            for (u32 i = 0; i < generator->getMaxParticleNum(); ++i) {
                AnimGenerator::sParticle const& particle = generator->getParticle(i);
                if (!particle.isAlive() || particle.getPhase() == 0) {
                    continue;
                }
                sFixed left, top, right, bottom;
                particle.getQuad(left, top, right, bottom);
                u16 const u0 = particle.mUV.x;
                u16 const v0 = particle.mUV.y;
                u16 const u1 = static_cast<u16>(u0 + particle.mSize.width);
                u16 const v1 = static_cast<u16>(v0 + particle.mSize.height);
                sVector const corner[4] = {origin + axisX * left + axisY * top, origin + axisX * right + axisY * top,
                                           origin + axisX * left + axisY * bottom,
                                           origin + axisX * right + axisY * bottom};
                sTexcoord const texel[4] = {sTexcoord(u0, v0), sTexcoord(u1, v0), sTexcoord(u0, v1), sTexcoord(u1, v1)};
                drawQuad(painter, corner, sColor(rgb.r, rgb.g, rgb.b, static_cast<u8>(particle.mOpacity * alpha)),
                         texel);
            }
        }
    }
}

// Only the lines inside the painted part: the canvas reaches 8,192 pixels a
// side at zoom 8, and the clip leaves most of them unseen.
void AnimationView::drawGrid(UIPainter* painter) const
{
    int const step = kGridStep * getZoom();
    int const w = static_cast<int>(getSize().width);
    int const h = static_cast<int>(getSize().height);
    sPoint const m = getCenter();
    sRect const& draw = getDrawRegion();
    sPoint const origin = getAbsPosition();
    int const left = draw.left - origin.x;
    int const right = draw.right - origin.x;
    int const top = draw.top - origin.y;
    int const bottom = draw.bottom - origin.y;
    bool const clipped = right > left && bottom > top;
    for (int x = 0; x < w; x += step) {
        if (clipped && (x < left || x > right)) {
            continue;
        }
        painter->drawLine(sPoint(x, clipped ? top : 0), sPoint(x, clipped ? bottom : h),
                          (x == m.x) ? sColor::White : sColor::DarkGray);
    }
    for (int y = 0; y < h; y += step) {
        if (clipped && (y < top || y > bottom)) {
            continue;
        }
        painter->drawLine(sPoint(clipped ? left : 0, y), sPoint(clipped ? right : w, y),
                          (y == m.y) ? sColor::White : sColor::DarkGray);
    }
}

void AnimationView::drawCurve(UIPainter* painter, SequencerTrack const* track) const
{
    SequencerLane const* lane = track->findLane(AutoString("Position"));
    if (lane == nullptr) {
        return;
    }
    int const zoom = getZoom();
    sPoint const m = getCenter();
    SequencerKey const* selectKey = mpHost->getViewSelectKey();
    u32 const num = lane->mKeyList.size();
    for (u32 i = 0; i < num; ++i) {
        sPoint p;
        if (!keyPosition(lane->mKeyList[i], p)) {
            return;
        }
        SequencerKey const* key = static_cast<SequencerKey const*>(lane->mKeyList[i]);
        drawCross(painter, sPoint(m.x + p.x * zoom, m.y + p.y * zoom), kKeyCrossHalf,
                  (key == selectKey) ? sColor::Red : sColor::Blue);
        if (i + 1 == num) {
            break;
        }
        sPoint q;
        if (!keyPosition(lane->mKeyList[i + 1], q)) {
            return;
        }
        switch (key->getInterpolateType()) {
        case SequencerResource::eInterpolateType_Linear:
            painter->drawLine(sPoint(m.x + p.x * zoom, m.y + p.y * zoom), sPoint(m.x + q.x * zoom, m.y + q.y * zoom),
                              sColor::Blue);
            break;
        case SequencerResource::eInterpolateType_Hermite:
            drawHermiteCurve(painter, lane, i, sColor::Blue);
            break;
        default:
            break;
        }
    }
}

void AnimationView::makeHermitePoints(SequencerLane const* lane, u32 index, sPoint const& center, int zoom,
                                      sPoint (&points)[kHermiteSteps + 1])
{
    u32 const num = lane->mKeyList.size();
    sPoint p0, p1;
    if (index + 1 >= num || !keyPosition(lane->mKeyList[index], p0) || !keyPosition(lane->mKeyList[index + 1], p1)) {
        for (sPoint& point : points) {
            point = center;
        }
        return;
    }
    SequencerKey const* k1 = static_cast<SequencerKey const*>(lane->mKeyList[index + 1]);
    sPoint before = p0;
    u32 beforeMode = SequencerResource::eInterpolateType_Constant;
    bool const hasBefore = index > 0 && keyPosition(lane->mKeyList[index - 1], before);
    if (hasBefore) {
        beforeMode = static_cast<SequencerKey const*>(lane->mKeyList[index - 1])->getInterpolateType();
    }
    sPoint after = p1;
    bool const hasAfter = index + 2 < num && keyPosition(lane->mKeyList[index + 2], after);
    for (int axis = 0; axis < 2; ++axis) {
        float const a0 = static_cast<float>(p0[axis]);
        float const a1 = static_cast<float>(p1[axis]);
        float const d = a1 - a0;
        float t0 = 0.0f;
        if (hasBefore) {
            if (beforeMode == SequencerResource::eInterpolateType_Linear) {
                t0 = a0 - static_cast<float>(before[axis]);
            } else if (beforeMode == SequencerResource::eInterpolateType_Hermite) {
                t0 = 0.5f * (a1 - static_cast<float>(before[axis]));
            }
        }
        float t1 = 0.0f;
        if (hasAfter) {
            if (k1->getInterpolateType() == SequencerResource::eInterpolateType_Linear) {
                t1 = static_cast<float>(after[axis]) - a1;
            } else if (k1->getInterpolateType() == SequencerResource::eInterpolateType_Hermite) {
                t1 = 0.5f * (static_cast<float>(after[axis]) - a0);
            }
        }
        float const a = -2.0f * d + t0 + t1;
        float const b = 3.0f * d - 2.0f * t0 - t1;
        int const c = center[axis];
        points[0][axis] = c + zoom * p0[axis];
        float t = 0.0f;
        for (int i = 1; i <= kHermiteSteps; ++i) {
            t += 0.1f;
            int const offset = static_cast<int>(a * t * t * t + b * t * t + t0 * t);
            points[i][axis] = c + zoom * (offset + p0[axis]);
        }
    }
}

void AnimationView::drawHermiteCurve(UIPainter* painter, SequencerLane const* lane, u32 index, sColor color) const
{
    sPoint points[kHermiteSteps + 1];
    makeHermitePoints(lane, index, getCenter(), getZoom(), points);
    for (int i = 0; i < kHermiteSteps; ++i) {
        painter->drawLine(points[i], points[i + 1], color);
    }
}

void AnimationView::drawFrame(UIPainter* painter, ObjectBase const* object, sColor color) const
{
    int const zoom = getZoom();
    sPoint const m = getCenter();
    if (isCell(object) || isCollision(object)) {
        AnimPrimitive const* primitive = static_cast<AnimPrimitive const*>(object);
        sPoint const p = primitive->getPosition();
        int const w = static_cast<int>(primitive->getSize().width) * zoom;
        int const h = static_cast<int>(primitive->getSize().height) * zoom;
        sPoint const at(m.x + p.x * zoom, m.y + p.y * zoom);
        painter->drawFrame(sRect(sPoint(at.x - w / 2, at.y - h / 2), sSize(static_cast<unsigned int>(w),
                                                                            static_cast<unsigned int>(h))),
                           color);
        drawCross(painter, at, kKeyCrossHalf, color);
        return;
    }
    if (!isGenerator(object) && !isSequencer(object)) {
        return;
    }
    sPoint const p = isGenerator(object) ? static_cast<AnimGenerator const*>(object)->getPosition()
                                         : static_cast<AnimSequencer const*>(object)->getPosition();
    sPoint const at(m.x + p.x * zoom, m.y + p.y * zoom);
    painter->drawFrame(sRect(at.x - kHandleHalf, at.y - kHandleHalf, at.x + kHandleHalf, at.y + kHandleHalf), color);
    drawCross(painter, at, kKeyCrossHalf, color);
    if (!isGenerator(object)) {
        return;
    }
    AnimGenerator const* generator = static_cast<AnimGenerator const*>(object);
    if (generator->mInnerRadius != 0) {
        painter->drawCircle(at, static_cast<int>(generator->mInnerRadius) * zoom, color, kCircleSegments);
    }
    if (generator->mOuterRadius != 0) {
        painter->drawCircle(at, static_cast<int>(generator->mOuterRadius) * zoom, color, kCircleSegments);
    }
    if (generator->getVelocityMode() == AnimGenerator::eVelocityMode_Directional) {
        float const direction = generator->mDirection;
        float const range = generator->mDirectionRange;
        painter->drawArc(at, kArcRadius * zoom, direction - range, direction + range, color, kCircleSegments);
        float const radians = direction * kPi / 180.0f;
        float const length = static_cast<float>(kDirectionLength * zoom);
        painter->drawLine(at, sPoint(at.x + static_cast<int>(std::cos(radians) * length),
                                     at.y + static_cast<int>(std::sin(radians) * length)),
                          color);
    }
}

// ---------------------------------------------------------------------------
// [SECTION] AnimationForm

AnimationForm::AnimationForm(AnimViewHost* host)
    : UIForm(UIForm::eFormAttribute_ScrollBar), mpView(nullptr), mCentred(false)
{
    mpView = new AnimationView(host, this);
    addClient(mpView);
}

void AnimationForm::update(float deltaTime)
{
    setClientRegion(sRect(getSize()));
    UIForm::update(deltaTime);
    // A form not yet sized has bars of no room, whose range wraps below 0.
    sSize const range = getScrollBarRange();
    if (!mCentred && static_cast<int>(range.width) > 0 && static_cast<int>(range.height) > 0) {
        mCentred = true;
        sPoint const middle = mpView->getCenter();
        setScrollBarPosition(sPoint(middle.x - static_cast<int>(range.width) / 2,
                                    middle.y - static_cast<int>(range.height) / 2));
    }
}
