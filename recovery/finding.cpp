#include "recovery/finding.h"

#include <array>

namespace zebx {

const char* NameOf(Finding::Severity severity) {
  switch (severity) {
    case Finding::Severity::kNote:
      return "note";
    case Finding::Severity::kUnfinished:
      return "unfinished";
    case Finding::Severity::kDamage:
      break;
  }
  return "damage";
}

const char* NameOf(Finding::Kind kind) {
  // In the order of the enumeration.
  static constexpr std::array kNames = {"empty-file",       "no-magic",
                                        "header-cut",       "name-too-long",
                                        "version",          "header-size",
                                        "unknown-flags",    "reserved-field",
                                        "frame-size",       "gmt",
                                        "end-before-begin", "begin-time-stamp",
                                        "end-time",         "no-block-header",
                                        "previous-link",    "next-link",
                                        "empty-block",      "cut-block",
                                        "bytes-left-over",  "no-block-behind",
                                        "no-frame-yet",     "open-block",
                                        "missing-frame",    "frame-too-long",
                                        "stamp-goes-back",  "no-i-frame",
                                        "block-stamp"};
  static_assert(kNames.size() == static_cast<std::size_t>(Finding::Kind::kBlockStamp) + 1);
  return kNames[static_cast<std::size_t>(kind)];
}

}  // namespace zebx
