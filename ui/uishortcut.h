// Keyboard shortcuts: a key code and combination bits bound to an action.
// Tables are static arrays of UIShortcut<T>, one per class, searched in order
// by that class's findShortcut; UISystem fires the one it finds on the
// widget, window or desktop that answered.
#pragma once

#include "foundation/types.h"

class UIShortcutBase {
public:
    UIShortcutBase(unsigned int keyCode, unsigned int combinationKey)
        : mKeyCode(keyCode), mCombinationKey(combinationKey)
    {
    }
    virtual ~UIShortcutBase() {}

    bool identify(unsigned int keyCode, unsigned int combinationKey) const
    {
        return mKeyCode == keyCode && mCombinationKey == combinationKey;
    }
    unsigned int getKeyCode() const { return mKeyCode; }
    unsigned int getCombinationKey() const { return mCombinationKey; }

    // target is the object that answered findShortcut.
    virtual void shortcut(void* target) const = 0;

private:
    u32 mKeyCode;
    u32 mCombinationKey;
};

template <typename T>
class UIShortcut : public UIShortcutBase {
public:
    typedef void (T::*Action)();

    UIShortcut(unsigned int keyCode, unsigned int combinationKey, Action action)
        : UIShortcutBase(keyCode, combinationKey), mAction(action)
    {
    }
    void shortcut(void* target) const override { (static_cast<T*>(target)->*mAction)(); }

    // The first entry of table that matches, else null.
    template <unsigned int N>
    static UIShortcutBase const* find(UIShortcut const (&table)[N], unsigned int keyCode, unsigned int combinationKey)
    {
        for (UIShortcut const& entry : table) {
            if (entry.identify(keyCode, combinationKey)) {
                return &entry;
            }
        }
        return nullptr;
    }

private:
    Action mAction;
};
