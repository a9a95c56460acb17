// The little pictures beside a live picture's captions.
#pragma once

namespace zebtool {

// Gives the display marks for recording (a red disc) and for an alarm (a warning triangle). They
// stay to the end of the process.
void RegisterStatusMarks();

}  // namespace zebtool
