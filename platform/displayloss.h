// Ends the program when its X display goes away. Xlib's own answer to a lost
// connection is exit(), which runs the heaps' end checks over everything
// still in use; here the program ends at once with one line and status 1.
#pragma once

namespace platform {

// Only where the video driver is X11; once the driver has started.
void watchDisplayLoss();

} // namespace platform
