#include "platform/os/sound/wave_out.h"
