#include "platform/os/threads/event.h"
