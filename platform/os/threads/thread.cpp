#include "platform/os/threads/thread.h"
