#include "playback/decode_thread.h"
