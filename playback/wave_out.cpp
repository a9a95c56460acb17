#include "playback/wave_out.h"
