#include "ui/uitexture.h"

#include "render/renderobject.h"
#include "ui/uimenu.h"
#include "ui/uipainter.h"

namespace {

char const* const kFilteringNames[] = {"Point", "Linear"};
char const* const kColorModeNames[] = {"RGBA", "RGB", "Red", "Green", "Blue"};

} // namespace

UITexture::UITexture()
    : mColor(sColor::White), mFilteringMode(eFilteringMode_Linear), mColorMode(eColorMode_RGBA), mZoom(0),
      mpTexture(nullptr)
{
    setMinimumSize(sSize(16, 16));
    UIMenu* filtering = new UIMenu();
    filtering->addItem("Point", this, &UITexture::evPoint, UIMenu::eItemAttribute_Radio);
    filtering->addItem("Linear", this, &UITexture::evLinear, UIMenu::eItemAttribute_Radio);
    UIMenu* colorMode = new UIMenu();
    colorMode->addItem("RGBA", this, &UITexture::evRGBA, UIMenu::eItemAttribute_Radio);
    colorMode->addItem("RGB", this, &UITexture::evRGB, UIMenu::eItemAttribute_Radio);
    colorMode->addItem("Red", this, &UITexture::evRed, UIMenu::eItemAttribute_Radio);
    colorMode->addItem("Green", this, &UITexture::evGreen, UIMenu::eItemAttribute_Radio);
    colorMode->addItem("Blue", this, &UITexture::evBlue, UIMenu::eItemAttribute_Radio);
    UIMenu* menu = new UIMenu();
    menu->addItem("Filtering", nullptr, filtering);
    menu->addItem("ColorMode", nullptr, colorMode);
    setMenu(menu);
    filtering->setItemCheck(kFilteringNames[mFilteringMode], true);
    colorMode->setItemCheck(kColorModeNames[mColorMode], true);
}

UITexture::~UITexture()
{
    if (mpTexture != nullptr) {
        mpTexture->release();
    }
}

void UITexture::setTexture(Texture* texture)
{
    if (texture != nullptr) {
        texture->addRef();
    }
    if (mpTexture != nullptr) {
        mpTexture->release();
    }
    mpTexture = texture;
    mZoom = 0;
    updateSize();
}

void UITexture::setFilteringMode(unsigned int mode)
{
    if (mode > eFilteringMode_Linear) {
        return;
    }
    mFilteringMode = mode;
    if (UIMenu* menu = getMenu()->findSubMenu("Filtering")) {
        menu->setItemCheck(kFilteringNames[mode], true);
    }
}

void UITexture::setColorMode(unsigned int mode)
{
    if (mode > eColorMode_Blue) {
        return;
    }
    mColorMode = mode;
    if (UIMenu* menu = getMenu()->findSubMenu("ColorMode")) {
        menu->setItemCheck(kColorModeNames[mode], true);
    }
}

void UITexture::updateSize()
{
    if (mpTexture == nullptr) {
        setSize(sSize(0, 0));
        return;
    }
    unsigned int width = mpTexture->getWidth();
    unsigned int height = mpTexture->getHeight();
    if (mZoom < 0) {
        width /= static_cast<unsigned int>(-mZoom);
        height /= static_cast<unsigned int>(-mZoom);
    } else {
        width *= static_cast<unsigned int>(mZoom + 1);
        height *= static_cast<unsigned int>(mZoom + 1);
    }
    setSize(sSize(width, height));
}

// One step a wheel turn. A step that would shrink a side below the minimum
// size, or grow one past 4096 pixels, is undone. -1 shrinks by 1, the same
// size as 0: a step that shows no change, kept as the zoom's meaning has it.
void UITexture::eventMouseWheel(sPoint const& amount)
{
    if (mpTexture == nullptr || amount.y == 0) {
        return;
    }
    unsigned int const width = mpTexture->getWidth();
    unsigned int const height = mpTexture->getHeight();
    sSize const minimum = getMinimumSize();
    if (amount.y < 0) {
        --mZoom;
        if (mZoom < 0) {
            unsigned int const divisor = static_cast<unsigned int>(-mZoom);
            if (width / divisor < minimum.width || height / divisor < minimum.height) {
                ++mZoom;
            }
        }
    } else {
        ++mZoom;
        if (mZoom >= 0) {
            unsigned int const factor = static_cast<unsigned int>(mZoom + 1);
            if (width * factor > kMaxZoomedSide || height * factor > kMaxZoomedSide) {
                --mZoom;
            }
        }
    }
    updateSize();
}

void UITexture::eventPaint(UIPainter* painter)
{
    painter->drawRect(sRect(getSize()), sColor::Black);
    if (mpTexture == nullptr) {
        return;
    }
    sColor color = mColor;
    if (mColorMode >= eColorMode_Red) {
        color = sColor(mColorMode == eColorMode_Red ? mColor.r : 0, mColorMode == eColorMode_Green ? mColor.g : 0,
                       mColorMode == eColorMode_Blue ? mColor.b : 0, 255);
    }
    eBlendMode const previous = painter->getBlendMode();
    painter->setBlendMode(mColorMode == eColorMode_RGBA ? eBlendMode_Alpha : eBlendMode_Opaque);
    painter->setTextureFiltering(mFilteringMode == eFilteringMode_Point ? eTextureFiltering_Nearest
                                                                        : eTextureFiltering_Linear);
    painter->setTexture(mpTexture);
    painter->drawRect(sRect(getSize()), color, UIPainter::sTexel(0, 0),
                      UIPainter::sTexel(static_cast<unsigned short>(mpTexture->getWidth()),
                                        static_cast<unsigned short>(mpTexture->getHeight())));
    painter->setTexture(nullptr);
    painter->setBlendMode(previous);
}
