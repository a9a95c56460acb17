// Decoders and streams in the place of the software ones, for targets that are about who uses them:
// they check what they are given, touch the ends of every buffer, and work on no pixels between.
#pragma once

// As long as it is set, streams have lost their surfaces and cannot restore them.
void LoseLightSurfaces(bool is_lost);
