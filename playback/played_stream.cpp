#include "playback/played_stream.h"
