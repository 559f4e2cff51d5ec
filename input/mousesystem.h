// MouseSystem: the mouse sampled once per frame from what Application gathered
// out of window events: cursor, button level and edges, and the wheel's change.
// Buttons pressed and released between two frames collapse, since Application
// keeps only the current state. Written in the update phase on the main
// thread; read afterwards, also from jobs.
#pragma once

#include "app/system.h"

class HIDSystem;
class UIBase;

class MouseSystem : public System {
public:
    static MouseSystem* create(HIDSystem* hidSystem);
    static MouseSystem* getInstance() { return mpInstance; }
    void destroy() override;
    void update() override;

    // Cursor in window content coordinates; a drag may leave the window.
    sPoint getPosition() const { return mPosition; }
    // Bit 0 primary, bit 1 secondary, bit 2 tertiary, as Application keeps them.
    u32 getButtonOn() const { return mButtonOn; }
    // The complement of getButtonOn(), bits of no button included.
    u32 getButtonOff() const { return mButtonOff; }
    u32 getButtonTrgOn() const { return mButtonTrgOn; }
    u32 getButtonTrgOff() const { return mButtonTrgOff; }
    // The wheel's change in this frame, x then y, in notches.
    sPoint getWheelAmount() const { return sPoint(mWheel.x - mWheelPrevious.x, mWheel.y - mWheelPrevious.y); }

    // The state's editors ("Position", "ButtonOn", "ButtonTrgOn", and
    // "WheelAmount" showing the accumulated wheel) belong here once the
    // widget toolkit exists; until then it adds nothing.
    void makeUIList(List<UIBase>& list);

    TypeInfo const* getTypeInfo() const override { return &mUniqueTypeInfo; }
    static TypeInfo const* getStaticTypeInfo() { return &mUniqueTypeInfo; }
    static TypeInfo mUniqueTypeInfo;

protected:
    explicit MouseSystem(HIDSystem* hidSystem);
    ~MouseSystem() override;

private:
    sPoint mPosition;
    u32 mButtonOn;
    u32 mButtonOff;
    u32 mButtonTrgOn;       // went down in this frame
    u32 mButtonTrgOff;      // went up in this frame
    u32 mButtonPrevious;    // bits of the last frame
    sPoint mWheelPrevious;  // accumulated wheel amount of the last frame
    sPoint mWheel;          // accumulated wheel amount now

    static MouseSystem* mpInstance;
};
