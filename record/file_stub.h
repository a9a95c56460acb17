// What is left of a file that could not be made.
#pragma once

class CFile;

namespace zebx {

// Closes `file` and deletes it from the disk when its opening made it: what was there before stays.
void DeleteIfNew(CFile& file);

}  // namespace zebx
