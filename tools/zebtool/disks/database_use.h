// Keeping two recorders from recording with one database.
#pragma once

#include <string>

#include "platform/framework/file.h"

namespace zebtool {

// Marks a database file as a recorder's for as long as it lives. Others may read it meanwhile.
class DatabaseUse {
 public:
  // Throws JobError when it is in use. A file that is not there is left to whoever opens it.
  explicit DatabaseUse(const std::string& path);

 private:
  CFile m_file;
};

}  // namespace zebtool
