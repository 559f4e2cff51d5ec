// Process entry: the host on the stack, set up, run until the window closes.
#include "host/harborapp.h"

int main()
{
    Application::sInitializer initializer;
    initializer.mpTitle = "Harbor Application";
    initializer.mWindowWidth = 1024;
    initializer.mWindowHeight = 768;
    initializer.mFrameRate = 60;
    initializer.mMinFrameRate = 20;
    initializer.mMaxFrameRate = 240;

    u32 result = 0;
    {
        HarborApp application(&initializer);
        application.setup();
        result = application.execute();
    }
    return static_cast<int>(result);
}
