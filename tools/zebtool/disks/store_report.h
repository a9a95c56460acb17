// What a database's disks are and have, as text or as JSON.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "storage/hdd_obj.h"
#include "tools/zebtool/console/json_text.h"

namespace zebtool {

struct DiskReport {
  const std::vector<CHddObj*>& disks;
  std::string working_disk;  // its name; empty without one

  // Everything about every disk, its days included.
  void PrintDisks(std::ostream& out) const;
  void PutDisks(Json& json) const;
  // The room on every disk.
  void PrintSpace(std::ostream& out) const;
  void PutSpace(Json& json) const;
};

}  // namespace zebtool
