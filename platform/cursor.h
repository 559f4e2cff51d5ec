// The mouse cursor's shape over the application window, from the system's
// cursor set. Main thread only; nothing happens without a display.
#pragma once

namespace platform {

enum eThemeCursor {
    eThemeCursor_Arrow,
    eThemeCursor_ResizeUpDown,
    eThemeCursor_ResizeLeftRight,
    eThemeCursor_PointingHand,
    eThemeCursor_OpenHand,
    eThemeCursor_ClosedHand,
    eThemeCursor_Num
};

void setThemeCursor(eThemeCursor cursor);
// The shape last set, for tests.
eThemeCursor getThemeCursor();

} // namespace platform
