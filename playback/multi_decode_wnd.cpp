#include "playback/multi_decode_wnd.h"
