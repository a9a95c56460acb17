#include "playback/decode_wnd.h"
