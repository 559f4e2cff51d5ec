#include "ui/uicontrolcomposite.h"

#include <cstring>

#include "foundation/debug.h"
#include "foundation/utils.h"
#include "reflection/objectbase.h"
#include "render/renderobject.h"
#include "resource/resourcesystem.h"
#include "resource/textureresource.h"
#include "tool/toolbase.h"
#include "tool/toolsystem.h"
#include "tool/viewerwindow.h"
#include "ui/uidialog.h"
#include "ui/uimenu.h"
#include "ui/uimessage.h"
#include "ui/uipainter.h"
#include "ui/uisystem.h"

namespace {

int const kRowHeight = 16;

// The texture stretched into area with its proportions kept, over black.
void drawPreview(UIPainter* painter, Texture* texture, sRect const& area)
{
    painter->drawRect(area, sColor::Black);
    if (texture == nullptr || texture->getWidth() == 0 || texture->getHeight() == 0) {
        return;
    }
    int const areaWidth = static_cast<int>(area.getWidth());
    int const areaHeight = static_cast<int>(area.getHeight());
    int const textureWidth = static_cast<int>(texture->getWidth());
    int const textureHeight = static_cast<int>(texture->getHeight());
    int width = areaWidth;
    int height = textureHeight * areaWidth / textureWidth;
    if (height > areaHeight) {
        height = areaHeight;
        width = textureWidth * areaHeight / textureHeight;
    }
    eBlendMode const blend = painter->getBlendMode();
    painter->setBlendMode(eBlendMode_Alpha);
    painter->setTextureFiltering(eTextureFiltering_Linear);
    painter->setTexture(texture);
    painter->drawRect(sRect(area.left, area.top, area.left + width, area.top + height), sColor::White,
                      UIPainter::sTexel(0, 0),
                      UIPainter::sTexel(static_cast<unsigned short>(textureWidth), static_cast<unsigned short>(textureHeight)));
    painter->setTexture(nullptr);
    painter->setBlendMode(blend);
}

void drawField(UIPainter* painter, sRect const& field, char const* text)
{
    UISystem const* system = UISystem::getInstance();
    painter->drawRect(field, system->mClientRegionColor);
    painter->drawString(sRect(field.left + 2, field.top, field.right, field.bottom), text, system->mClientFontColor,
                        eAlignment_LeftMiddle);
    painter->drawConcaveRect(field);
}

void drawNameRow(UIPainter* painter, AutoString const& name, unsigned int width)
{
    if (!name.empty()) {
        painter->drawString(sRect(0, 0, static_cast<int>(width), UIControl::kNameHeight), name,
                            UISystem::getInstance()->mFontColor, eAlignment_LeftMiddle);
    }
}

} // namespace

// ---------------------------------------------------------------------------
// UICompositeControl

UICompositeControl::UICompositeControl(PropertyBase* property, bool readOnly, unsigned int index)
    : UIControl(property, readOnly, index, 0), mFieldCount(0)
{
    for (unsigned int i = 0; i < kFieldMax; ++i) {
        mpFields[i] = nullptr;
        mpLabels[i] = nullptr;
    }
}

void UICompositeControl::checkType(unsigned int type) const
{
    if (mpProperty->getType() != type) {
        dev_assert("Invalid property type.", __FILE__, __LINE__);
    }
}

void UICompositeControl::addField(PropertyBase* property, char const* label, bool readOnly)
{
    UINumericControl* field = new UINumericControl(property, readOnly, NoIndex, eMode_Decimal);
    mpFields[mFieldCount] = field;
    mpLabels[mFieldCount] = label;
    ++mFieldCount;
    add(field);
}

// 80 wide; the fields' rows, with the name row and 12 pixels more for two
// fields and 16 for four.
void UICompositeControl::setFieldMinimumSize(unsigned int count)
{
    unsigned int const extra = (count > 2) ? 32 : 28;
    setMinimumSize(sSize(80, count * kRowHeight + extra));
}

void UICompositeControl::align()
{
    sSize const size = getSize();
    unsigned int const width = size.width > 32 ? size.width - 32 : 0;
    for (unsigned int i = 0; i < mFieldCount; ++i) {
        mpFields[i]->setPosition(sPoint(kFieldLeft, kFieldTop + static_cast<int>(i) * kFieldStep));
        mpFields[i]->setSize(sSize(width, kFieldHeight));
    }
}

void UICompositeControl::eventPaint(UIPainter* painter)
{
    drawNameRow(painter, getName(), getSize().width);
    sColor const color = UISystem::getInstance()->mFontColor;
    for (unsigned int i = 0; i < mFieldCount; ++i) {
        sPoint const at = mpFields[i]->getPosition();
        painter->drawString(sRect(kLabelLeft, at.y, at.x, at.y + kFieldHeight), mpLabels[i], color,
                            eAlignment_LeftMiddle);
    }
}

// ---------------------------------------------------------------------------
// Size, point, rect, texture coordinates, vector

UISizeControl::UISizeControl(PropertyBase* property, bool readOnly, unsigned int index)
    : UICompositeControl(property, readOnly, index)
{
    checkType(ePropertyType_Size);
    addField(new IndirectProperty<u32>("Width", this, &UISizeControl::getWidth, &UISizeControl::setWidth), "W:",
             readOnly);
    addField(new IndirectProperty<u32>("Height", this, &UISizeControl::getHeight, &UISizeControl::setHeight), "H:",
             readOnly);
    setFieldMinimumSize(2);
}

u32 UISizeControl::getWidth() const
{
    return mpProperty->getByType<sSize>(mIndex).width;
}

void UISizeControl::setWidth(u32 value)
{
    sSize size = mpProperty->getByType<sSize>(mIndex);
    size.width = value;
    mpProperty->setByType<sSize>(size, mIndex);
}

u32 UISizeControl::getHeight() const
{
    return mpProperty->getByType<sSize>(mIndex).height;
}

void UISizeControl::setHeight(u32 value)
{
    sSize size = mpProperty->getByType<sSize>(mIndex);
    size.height = value;
    mpProperty->setByType<sSize>(size, mIndex);
}

UIPointControl::UIPointControl(PropertyBase* property, bool readOnly, unsigned int index)
    : UICompositeControl(property, readOnly, index)
{
    checkType(ePropertyType_Point);
    addField(new IndirectProperty<s32>("X", this, &UIPointControl::getX, &UIPointControl::setX), "X:", readOnly);
    addField(new IndirectProperty<s32>("Y", this, &UIPointControl::getY, &UIPointControl::setY), "Y:", readOnly);
    setFieldMinimumSize(2);
}

s32 UIPointControl::getX() const
{
    return mpProperty->getByType<sPoint>(mIndex).x;
}

void UIPointControl::setX(s32 value)
{
    sPoint point = mpProperty->getByType<sPoint>(mIndex);
    point.x = value;
    mpProperty->setByType<sPoint>(point, mIndex);
}

s32 UIPointControl::getY() const
{
    return mpProperty->getByType<sPoint>(mIndex).y;
}

void UIPointControl::setY(s32 value)
{
    sPoint point = mpProperty->getByType<sPoint>(mIndex);
    point.y = value;
    mpProperty->setByType<sPoint>(point, mIndex);
}

UIRectControl::UIRectControl(PropertyBase* property, bool readOnly, unsigned int index)
    : UICompositeControl(property, readOnly, index)
{
    checkType(ePropertyType_Rect);
    addField(new IndirectProperty<s32>("Left", this, &UIRectControl::getLeft, &UIRectControl::setLeft), "L:",
             readOnly);
    addField(new IndirectProperty<s32>("Top", this, &UIRectControl::getTop, &UIRectControl::setTop), "T:", readOnly);
    addField(new IndirectProperty<s32>("Right", this, &UIRectControl::getRight, &UIRectControl::setRight), "R:",
             readOnly);
    addField(new IndirectProperty<s32>("Bottom", this, &UIRectControl::getBottom, &UIRectControl::setBottom), "B:",
             readOnly);
    setFieldMinimumSize(4);
}

s32 UIRectControl::getEdge(int edge) const
{
    return mpProperty->getByType<sRect>(mIndex)[edge];
}

void UIRectControl::setEdge(int edge, s32 value)
{
    sRect rect = mpProperty->getByType<sRect>(mIndex);
    rect[edge] = value;
    mpProperty->setByType<sRect>(rect, mIndex);
}

UITexcoordControl::UITexcoordControl(PropertyBase* property, bool readOnly, unsigned int index)
    : UICompositeControl(property, readOnly, index)
{
    checkType(ePropertyType_Texcoord);
    addField(new IndirectProperty<u16>("U", this, &UITexcoordControl::getU, &UITexcoordControl::setU), "U:",
             readOnly);
    addField(new IndirectProperty<u16>("V", this, &UITexcoordControl::getV, &UITexcoordControl::setV), "V:",
             readOnly);
    setFieldMinimumSize(2);
}

u16 UITexcoordControl::getU() const
{
    return mpProperty->getByType<sTexcoord>(mIndex).x;
}

void UITexcoordControl::setU(u16 value)
{
    sTexcoord texcoord = mpProperty->getByType<sTexcoord>(mIndex);
    texcoord.x = value;
    mpProperty->setByType<sTexcoord>(texcoord, mIndex);
}

u16 UITexcoordControl::getV() const
{
    return mpProperty->getByType<sTexcoord>(mIndex).y;
}

void UITexcoordControl::setV(u16 value)
{
    sTexcoord texcoord = mpProperty->getByType<sTexcoord>(mIndex);
    texcoord.y = value;
    mpProperty->setByType<sTexcoord>(texcoord, mIndex);
}

UIVectorControl::UIVectorControl(PropertyBase* property, bool readOnly, unsigned int index)
    : UICompositeControl(property, readOnly, index)
{
    checkType(ePropertyType_Vector);
    addField(new IndirectProperty<sFixed>("X", this, &UIVectorControl::getX, &UIVectorControl::setX), "X:",
             readOnly);
    addField(new IndirectProperty<sFixed>("Y", this, &UIVectorControl::getY, &UIVectorControl::setY), "Y:",
             readOnly);
    setFieldMinimumSize(2);
}

sFixed UIVectorControl::getX() const
{
    return mpProperty->getByType<sVector>(mIndex).x;
}

void UIVectorControl::setX(sFixed value)
{
    sVector vector = mpProperty->getByType<sVector>(mIndex);
    vector.x = value;
    mpProperty->setByType<sVector>(vector, mIndex);
}

sFixed UIVectorControl::getY() const
{
    return mpProperty->getByType<sVector>(mIndex).y;
}

void UIVectorControl::setY(sFixed value)
{
    sVector vector = mpProperty->getByType<sVector>(mIndex);
    vector.y = value;
    mpProperty->setByType<sVector>(vector, mIndex);
}

// ---------------------------------------------------------------------------
// UIColorControl

namespace {

char const* const kChannelLabels[UIColorControl::eChannel_Num] = {"R:", "G:", "B:", "A:"};

// A float channel as a byte, 0 to 255.
u8 toByte(float value)
{
    float const scaled = value * 255.0f;
    if (!(scaled > 0.0f)) {
        return 0;
    }
    return (scaled >= 255.0f) ? 255 : static_cast<u8>(scaled);
}

} // namespace

UIColorControl::UIColorControl(PropertyBase* property, bool readOnly, unsigned int index)
    : UICompositeControl(property, readOnly, index)
{
    unsigned int const type = property->getType();
    if (type != ePropertyType_Color && type != ePropertyType_ColorF) {
        dev_assert("Invalid property type.", __FILE__, __LINE__);
    }
    if (type == ePropertyType_Color) {
        addField(new IndirectProperty<u8>("Red", this, &UIColorControl::getRed, &UIColorControl::setRed), "R:",
                 readOnly);
        addField(new IndirectProperty<u8>("Green", this, &UIColorControl::getGreen, &UIColorControl::setGreen), "G:",
                 readOnly);
        addField(new IndirectProperty<u8>("Blue", this, &UIColorControl::getBlue, &UIColorControl::setBlue), "B:",
                 readOnly);
        addField(new IndirectProperty<u8>("Alpha", this, &UIColorControl::getAlpha, &UIColorControl::setAlpha), "A:",
                 readOnly);
    } else {
        addField(new IndirectProperty<float>("Red", this, &UIColorControl::getRedF, &UIColorControl::setRedF), "R:",
                 readOnly);
        addField(new IndirectProperty<float>("Green", this, &UIColorControl::getGreenF, &UIColorControl::setGreenF),
                 "G:", readOnly);
        addField(new IndirectProperty<float>("Blue", this, &UIColorControl::getBlueF, &UIColorControl::setBlueF),
                 "B:", readOnly);
        addField(new IndirectProperty<float>("Alpha", this, &UIColorControl::getAlphaF, &UIColorControl::setAlphaF),
                 "A:", readOnly);
    }
    for (unsigned int channel = 0; channel < eChannel_Num; ++channel) {
        mpSliders[channel] = new UIColorSliderControl(property, channel, readOnly, index);
        add(mpSliders[channel]);
    }
    setMinimumSize(sSize(UIColorSliderControl::kWidth + 80, 4 * kRowHeight + 32));
}

u8 UIColorControl::getChannel(int channel) const
{
    return mpProperty->getByType<sColor>(mIndex)[channel];
}

void UIColorControl::setChannel(int channel, u8 value)
{
    sColor color = mpProperty->getByType<sColor>(mIndex);
    color[channel] = value;
    mpProperty->setByType<sColor>(color, mIndex);
}

float UIColorControl::getChannelF(int channel) const
{
    return mpProperty->getByType<sColorF>(mIndex)[channel];
}

void UIColorControl::setChannelF(int channel, float value)
{
    sColorF color = mpProperty->getByType<sColorF>(mIndex);
    color[channel] = value;
    mpProperty->setByType<sColorF>(color, mIndex);
}

void UIColorControl::align()
{
    for (unsigned int channel = 0; channel < eChannel_Num; ++channel) {
        int const row = static_cast<int>(channel) * kFieldStep;
        mpSliders[channel]->setPosition(sPoint(kSliderLeft, kSliderTop + row));
        mpSliders[channel]->setSize(sSize(UIColorSliderControl::kWidth, UIColorSliderControl::kHeight));
        mpFields[channel]->setPosition(sPoint(UIColorSliderControl::kWidth + kFieldLeft, kFieldTop + row));
        mpFields[channel]->setSize(sSize(kFieldWidth, kFieldHeight));
    }
}

void UIColorControl::eventPaint(UIPainter* painter)
{
    drawNameRow(painter, getName(), getSize().width);
    sColor const color = UISystem::getInstance()->mFontColor;
    for (unsigned int channel = 0; channel < eChannel_Num; ++channel) {
        int const top = kFieldTop + static_cast<int>(channel) * kFieldStep;
        painter->drawString(sRect(kLabelLeft, top, kSliderLeft, top + kFieldHeight), kChannelLabels[channel], color,
                            eAlignment_LeftMiddle);
    }
}

UIColorControl::UIColorSliderControl::UIColorSliderControl(PropertyBase* property, unsigned int channel,
                                                           bool readOnly, unsigned int index)
    : UIControl(property, readOnly, index, 0), mChannel(channel)
{
    setBorderStyle(eBorderStyle_Concave);
    setMinimumSize(sSize(kWidth, kHeight));
    setSize(getMinimumSize());
}

u8 UIColorControl::UIColorSliderControl::getValue() const
{
    if (mpProperty->getType() == ePropertyType_Color) {
        return mpProperty->getByType<sColor>(mIndex)[static_cast<int>(mChannel)];
    }
    return toByte(mpProperty->getByType<sColorF>(mIndex)[static_cast<int>(mChannel)]);
}

// Reads the whole colour by its type, changes the channel, writes it back.
void UIColorControl::UIColorSliderControl::setValue(u8 value)
{
    if (mpProperty->getType() == ePropertyType_Color) {
        sColor color = mpProperty->getByType<sColor>(mIndex);
        color[static_cast<int>(mChannel)] = value;
        mpProperty->setByType<sColor>(color, mIndex);
    } else {
        sColorF color = mpProperty->getByType<sColorF>(mIndex);
        color[static_cast<int>(mChannel)] = value / 255.0f;
        mpProperty->setByType<sColorF>(color, mIndex);
    }
}

void UIColorControl::UIColorSliderControl::setFromPosition(sPoint const& position)
{
    if (!isEnabled()) {
        return;
    }
    int x = position.x;
    x = (x < 0) ? 0 : (x > kScale ? kScale : x);
    setValue(static_cast<u8>(x * 255 / kScale));
}

void UIColorControl::UIColorSliderControl::eventPaint(UIPainter* painter)
{
    sSize const size = getSize();
    sColor left;
    sColor right;
    if (mChannel == eChannel_Alpha) {
        left = sColor::Black;
        right = sColor::White;
    } else {
        sColor color = (mpProperty->getType() == ePropertyType_Color)
                           ? mpProperty->getByType<sColor>(mIndex)
                           : static_cast<sColor>(mpProperty->getByType<sColorF>(mIndex));
        color.a = 255;
        left = color;
        right = color;
        left[static_cast<int>(mChannel)] = 0;
        right[static_cast<int>(mChannel)] = 255;
    }
    sColor const colors[4] = {left, right, left, right};
    painter->drawRect(sRect(size), colors);
    drawBorder(painter);
    int const x = getValue() * kScale / 255;
    int const bottom = static_cast<int>(size.height);
    painter->drawLine(sPoint(x - 1, 1), sPoint(x - 1, bottom), sColor::Black);
    painter->drawLine(sPoint(x, 1), sPoint(x, bottom), sColor::White);
    painter->drawLine(sPoint(x + 1, 1), sPoint(x + 1, bottom), sColor::Black);
}

void UIColorControl::UIColorSliderControl::eventMouseDown(sPoint const& position, unsigned int button)
{
    if ((button & 1) != 0 && isEnabled()) {
        sendMessage(UIBeginEditMessage());
        setFromPosition(position);
    }
}

void UIColorControl::UIColorSliderControl::eventMouseMove(sPoint const& position)
{
    if (isDragging() && (getDragButton() & 1) != 0) {
        setFromPosition(position);
    }
}

void UIColorControl::UIColorSliderControl::eventMouseUp(sPoint const&, unsigned int button)
{
    if ((button & 1) != 0 && isEnabled()) {
        sendMessage(UIEndEditMessage());
    }
}

// ---------------------------------------------------------------------------
// UIObjectControl

UIObjectControl::UIObjectControl(PropertyBase* property, bool readOnly, unsigned int index)
    : UIControl(property, readOnly, index, 0)
{
    if (property->getType() != ePropertyType_Object) {
        dev_assert("Invalid property type.", __FILE__, __LINE__);
    }
    setMinimumSize(getName().empty() ? sSize(144, 16) : sSize(80, 32));
    if (!readOnly) {
        UIMenu* menu = new UIMenu();
        menu->addItem("Empty", this, &UIObjectControl::setEmpty);
        setMenu(menu);
    }
}

void UIObjectControl::setEmpty()
{
    mpProperty->setByType<ObjectBase*>(nullptr, mIndex);
    sendMessage(UIEndEditMessage());
}

sRect UIObjectControl::getFieldRect() const
{
    int const top = getName().empty() ? 0 : kNameHeight;
    return sRect(0, top, static_cast<int>(getSize().width), top + kRowHeight);
}

void UIObjectControl::eventPaint(UIPainter* painter)
{
    drawNameRow(painter, getName(), getSize().width);
    ObjectBase* object = mpProperty->getByType<ObjectBase*>(mIndex);
    drawField(painter, getFieldRect(), (object != nullptr) ? object->getTypeInfo()->getName() : "null");
}

// ---------------------------------------------------------------------------
// UIResourceControl

UIResourceControl::UIResourceControl(PropertyBase* property, bool readOnly, unsigned int index)
    : UIControl(property, readOnly, index, 0), mpOpenButton(nullptr)
{
    if (property->getType() != ePropertyType_Resource) {
        dev_assert("Invalid property type.", __FILE__, __LINE__);
    }
    mpFilters[0] = nullptr;
    setMinimumSize(getName().empty() ? sSize(160, 16) : sSize(96, 32));
    if (!readOnly) {
        mpOpenButton = new UIButton(this, &UIResourceControl::notifyOpenButton, "..");
        add(mpOpenButton);
        UIMenu* menu = new UIMenu();
        menu->addItem("Empty", this, &UIResourceControl::setEmpty);
        setMenu(menu);
    }
}

ResourceBase* UIResourceControl::getResource() const
{
    return mpProperty->getByType<ResourceBase*>(mIndex);
}

void UIResourceControl::setEmpty()
{
    mpProperty->setByType<ResourceBase*>(nullptr, mIndex);
    sendMessage(UIEndEditMessage());
}

void UIResourceControl::notifyOpenButton(UIButton*)
{
    openFile();
}

namespace {

// A throw-away instance of a resource class, for its class-wide answers.
ResourceBase* makeTemporary(TypeInfo const* type)
{
    ObjectBase* object = (type != nullptr) ? type->newInstance() : nullptr;
    ResourceBase* resource = typeCast<ResourceBase>(object);
    if (resource == nullptr) {
        delete object;
        dev_assert("Invalid TypoInfo.", __FILE__, __LINE__);
    }
    return resource;
}

} // namespace

// The class's own filter, then for a native class those of its intermediate
// classes; each from a temporary instance.
void UIResourceControl::openFile()
{
    TypeInfo const* type = static_cast<ResourcePropertyIntermediate*>(mpProperty)->getTypeInfo();
    ResourceBase* resource = makeTemporary(type);
    unsigned int count = 0;
    mpFilters[count++] = resource->getFilter();
    if (resource->checkAttribute(ResourceBase::eAttribute_Native)) {
        TypeInfo const* intermediate = resource->getIntermediateType();
        for (unsigned int n = 0; intermediate != nullptr && count < kFilterMax; ++n) {
            ResourceBase* other = makeTemporary(intermediate);
            mpFilters[count++] = other->getFilter();
            other->release();
            intermediate = resource->getExtraIntermediateType(n);
        }
    }
    resource->release();
    mpFilters[count] = nullptr;
    // The dialog belongs to the window that holds this control, if any.
    UIBase* root = this;
    while (root->getParent() != nullptr) {
        root = root->getParent();
    }
    UISystem::getInstance()->addWindow(new UIFileDialog("Resource open", this, &UIResourceControl::notifySelectFile,
                                                        "All", mpFilters, false, typeCast<UIWindow>(root)));
}

// As the desktop takes its wallpaper: the extension names the class.
void UIResourceControl::notifySelectFile(UIDialog* dialog)
{
    UIFileDialog* files = static_cast<UIFileDialog*>(dialog);
    ResourceSystem* system = ResourceSystem::getInstance();
    if (files->getReturnValue() != 0 || system == nullptr) {
        return;
    }
    AutoString const extension = files->getExtension();
    if (extension.size() == 0) {
        return;
    }
    TypeInfo const* type = system->getTypeInfoByExtension(extension.c_str());
    if (type == nullptr) {
        return;
    }
    AutoString const path = files->getResourcePath();
    ResourceBase* resource = system->createResource(path.c_str(), type);
    if (resource == nullptr) {
        return;
    }
    mpProperty->setByType<ResourceBase*>(resource, mIndex);
    resource->release();
    sendMessage(UIEndEditMessage());
}

void UIResourceControl::eventMouseDoubleClick(sPoint const&, unsigned int button)
{
    ResourceBase* resource = getResource();
    ToolSystem* tools = ToolSystem::getInstance();
    if ((button & 1) == 0 || resource == nullptr || tools == nullptr) {
        return;
    }
    ToolBase* tool = tools->createTool(resource->getTypeInfo());
    if (tool != nullptr) {
        tool->setManagedResource(resource);
        UISystem::getInstance()->addWindow(tool);
    }
}

void UIResourceControl::convert()
{
    ResourceBase* resource = getResource();
    ResourceSystem* system = ResourceSystem::getInstance();
    if (resource == nullptr || system == nullptr) {
        return;
    }
    TypeInfo const* type = resource->checkAttribute(ResourceBase::eAttribute_Intermediate)
                               ? resource->getNativeType()
                               : resource->getIntermediateType();
    if (type == nullptr) {
        return;
    }
    AutoString const path = Utils::getResourcePath(resource->getPath().c_str());
    ResourceBase* converted = system->createResource(path.c_str(), type);
    if (converted == nullptr) {
        return;
    }
    mpProperty->setByType<ResourceBase*>(converted, mIndex);
    converted->release();
    sendMessage(UIEndEditMessage());
}

sRect UIResourceControl::getFieldRect() const
{
    int const top = getName().empty() ? 0 : kNameHeight;
    int const right = static_cast<int>(getSize().width) - (mpOpenButton != nullptr ? kButtonWidth : 0);
    return sRect(0, top, right, top + kRowHeight);
}

void UIResourceControl::align()
{
    if (mpOpenButton != nullptr) {
        sRect const field = getFieldRect();
        mpOpenButton->setPosition(sPoint(field.right, field.top));
        mpOpenButton->setSize(sSize(kButtonWidth, kRowHeight));
    }
}

void UIResourceControl::eventPaint(UIPainter* painter)
{
    drawNameRow(painter, getName(), getSize().width);
    ResourceBase* resource = getResource();
    char const* text = "null";
    if (resource != nullptr && resource->getPath().c_str() != nullptr) {
        text = Utils::getFileName(resource->getPath().c_str());
    }
    drawField(painter, getFieldRect(), text);
}

// ---------------------------------------------------------------------------
// UITextureResourceControl, UITextureControl

UITextureResourceControl::UITextureResourceControl(PropertyBase* property, bool readOnly, unsigned int index)
    : UIResourceControl(property, readOnly, index)
{
    TypeInfo const* type = static_cast<ResourcePropertyIntermediate*>(property)->getTypeInfo();
    if (type == nullptr || !type->isDerivedFrom(TextureResource::getStaticTypeInfo())) {
        dev_assert("Not TextureResource.", __FILE__, __LINE__);
    }
    sSize const minimum = getMinimumSize();
    setMinimumSize(sSize(minimum.width, minimum.height + kPreviewSize + 2));
}

void UITextureResourceControl::eventPaint(UIPainter* painter)
{
    UIResourceControl::eventPaint(painter);
    TextureResource* resource = typeCast<TextureResource>(getResource());
    int const top = getFieldRect().bottom + 2;
    drawPreview(painter, (resource != nullptr) ? resource->getTexture() : nullptr,
                sRect(0, top, kPreviewSize, top + kPreviewSize));
}

UITextureControl::UITextureControl(PropertyBase* property, unsigned int index)
    : UIControl(property, true, index, 0)
{
    if (property->getType() != ePropertyType_Object) {
        dev_assert("Not Texture.", __FILE__, __LINE__);
    }
    ObjectBase* object = property->getByType<ObjectBase*>(index);
    if (object != nullptr && typeCast<Texture>(object) == nullptr) {
        dev_assert("Not Texture.", __FILE__, __LINE__);
    }
    setMinimumSize(sSize(64, 80));
}

void UITextureControl::eventMouseDoubleClick(sPoint const&, unsigned int button)
{
    Texture* texture = typeCast<Texture>(mpProperty->getByType<ObjectBase*>(mIndex));
    if ((button & 1) == 0 || texture == nullptr) {
        return;
    }
    TextureViewerWindow* viewer = new TextureViewerWindow();
    viewer->setTexture(texture);
    UISystem::getInstance()->addWindow(viewer);
}

void UITextureControl::eventPaint(UIPainter* painter)
{
    sSize const size = getSize();
    drawNameRow(painter, getName(), size.width);
    Texture* texture = typeCast<Texture>(mpProperty->getByType<ObjectBase*>(mIndex));
    drawPreview(painter, texture, sRect(0, kNameHeight, static_cast<int>(size.width), static_cast<int>(size.height)));
}
