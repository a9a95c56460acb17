#include "playback/display_info.h"
