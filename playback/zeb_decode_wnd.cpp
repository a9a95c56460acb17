#include "playback/zeb_decode_wnd.h"
