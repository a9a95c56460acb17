// The host's own picture, where the library has a header of the same name.
#pragma once

struct FrameHeader {};
