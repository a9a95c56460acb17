#include "record/file_stub.h"

#include <exception>

#include "platform/framework/file.h"
#include "platform/framework/file_system.h"

namespace zebx {

void DeleteIfNew(CFile& file) {
  const bool is_new = file.IsNew();
  try {
    if (file.IsOpen()) file.Close();
  } catch (const std::exception&) {
    // The failure that made the file worthless is the one to tell of.
  }
  if (is_new) CurrentFileSystem().DeleteFile(file.GetFilePath(), nullptr);
}

}  // namespace zebx
