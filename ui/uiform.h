// Layout containers. UIForm: a rectangle with a client area that may scroll
// (the base of UIWindow); its UIClientHolder really holds the client widgets,
// offset by the scroll position, and passes keys up to the form. UIGroup: a
// titled band over rows of widgets. UISplitter: two widgets beside or above
// each other with a draggable 4-pixel gap.
#pragma once

#include "ui/uibase.h"

class UIScrollBar;

class UIForm : public UIBase {
public:
    enum {
        eFormAttribute_ScrollBar = 1,
        eFormAttribute_AutoAlign = 2,
        eFormAttribute_PaintClient = 4,
        eFormAttribute_FollowSize = 8,
    };
    enum {
        eFormStatus_HorizontalBar = 1,
        eFormStatus_VerticalBar = 2,
    };
    // Bars are 12 pixels thick and keep 2 pixels of room.
    static constexpr int kBarThickness = 12;
    static constexpr int kBarRoom = 14;
    static constexpr int kRowGap = 2;

    class UIClientHolder : public UIBase {
    public:
        explicit UIClientHolder(UIForm* form) : mpForm(form), mClientPosition(0, 0) {}

        sPoint const& getClientPosition() const { return mClientPosition; }
        void setClientPosition(sPoint const& position) { mClientPosition = position; }

        void updateRegion(sRect const& parentRegion, sRect const& parentDrawRegion) override;
        void eventMouseWheel(sPoint const& amount) override;
        void eventKeyDown(unsigned int, unsigned int) override { delegate(); }
        void eventKeyUp(unsigned int, unsigned int) override { delegate(); }
        void eventBeginEdit() override { delegate(); }
        void eventEndEdit() override { delegate(); }
        void eventCustom(UIMessage const&) override { delegate(); }

    private:
        UIForm* mpForm;
        sPoint mClientPosition;
    };

    explicit UIForm(unsigned int formAttribute = 0);

    void addClient(UIBase* widget);
    // Deletes every client widget.
    void removeClient();
    void setClientRegion(sRect const& region) { mClientRegion = region; }
    sRect const& getClientRegion() const { return mClientRegion; }
    // The union of the client widgets, moved by the holder's position.
    sRect getClientExistRegion() const;
    void setClientPosition(sPoint const& position) { mpClientHolder->setClientPosition(position); }
    sPoint const& getClientPosition() const { return mpClientHolder->getClientPosition(); }
    void setScrollBarPosition(sPoint const& position);
    sPoint getScrollBarPosition() const;
    sSize getScrollBarRange() const;
    unsigned int getFormAttribute() const { return mFormAttribute; }
    unsigned int getFormStatus() const { return mFormStatus; }
    UIClientHolder* getClientHolder() const { return mpClientHolder; }
    UIScrollBar* getHorizontalScrollBar() const { return mpHorizontalScrollBar; }
    UIScrollBar* getVerticalScrollBar() const { return mpVerticalScrollBar; }

    void update(float deltaTime) override;
    void eventSize() override;
    void eventPaint(UIPainter* painter) override;

private:
    // Rows of client widgets within width; the size of their union.
    sSize alignClient(unsigned int width);
    void updateClientRegion();

    UIClientHolder* mpClientHolder;
    sRect mClientRegion;
    sSize mOldSize;
    u32 mFormAttribute;
    u32 mFormStatus;
    UIScrollBar* mpHorizontalScrollBar;
    UIScrollBar* mpVerticalScrollBar;
};

class UIGroup : public UIBase {
public:
    static constexpr int kCaptionHeight = 16;

    // Not copied: the text must outlive the group.
    explicit UIGroup(char const* caption);

    void align(unsigned int width);

    void update(float deltaTime) override;
    void eventCreate() override;
    void eventSize() override;
    void eventPaint(UIPainter* painter) override;
    void eventKeyDown(unsigned int, unsigned int) override { delegate(); }
    void eventKeyUp(unsigned int, unsigned int) override { delegate(); }
    void eventCustom(UIMessage const&) override { delegate(); }

private:
    char const* mpCaption;
};

class UISplitter : public UIBase {
public:
    enum eSplitDirection {
        eSplitDirection_TopBottom,
        eSplitDirection_LeftRight,
    };
    enum eSplitBase {
        eSplitBase_First,
        eSplitBase_Second,
    };
    static constexpr int kGap = 4;
    static constexpr unsigned int kMinimumSplitSize = 8;

    UISplitter(UIBase* first, UIBase* second, eSplitDirection direction, unsigned int splitSize, eSplitBase base);

    unsigned int getSplitSize() const { return mSplitSize; }

    void update(float deltaTime) override;
    void eventMouseMove(sPoint const& position) override;
    void eventKeyDown(unsigned int, unsigned int) override { delegate(); }
    void eventKeyUp(unsigned int, unsigned int) override { delegate(); }
    void eventCustom(UIMessage const&) override { delegate(); }

private:
    int getTotal() const;

    u32 mDirection : 1;
    u32 mBase : 1;
    u32 mSplitSize;
    UIBase* mpFirst;
    UIBase* mpSecond;
};
