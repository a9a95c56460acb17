#include "tools/zebtool/disks/database_use.h"

#include "platform/framework/file_system.h"
#include "tools/zebtool/console/console.h"

using namespace zebx;

namespace zebtool {

DatabaseUse::DatabaseUse(const std::string& path) {
  if (!CurrentFileSystem().Status(path)) return;
  CFile alone;
  if (alone.Open(path, CFile::kModeRead | CFile::kShareExclusive) == 0) {
    throw JobError("the database '" + path +
                   "' cannot be opened: another recorder uses it, or it may not be read; end the "
                   "other one or give another database");
  }
  alone.Close();
  m_file.Open(path, CFile::kModeRead | CFile::kShareDenyNone);
}

}  // namespace zebtool
