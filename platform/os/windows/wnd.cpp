#include "platform/os/windows/wnd.h"
