// Process entry: the host on the stack, set up, run until the window closes.
#include "host/harborapp.h"

int main()
{
    return runHost<HarborApp>("Harbor Application");
}
