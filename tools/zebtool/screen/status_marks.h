// The little pictures beside a picture's captions.
#pragma once

namespace zebtool {

// Gives the display marks for recording (a red disc), for an alarm (a warning triangle) and for
// sound (a loudspeaker). They stay to the end of the process.
void RegisterStatusMarks();

}  // namespace zebtool
