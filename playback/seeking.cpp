#include "playback/seeking.h"
