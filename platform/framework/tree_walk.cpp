#include "platform/framework/tree_walk.h"

#include <utility>
#include <vector>

#include "platform/framework/directory_listing.h"

namespace zebx {
namespace {

// A directory on the way down.
struct Level {
  std::vector<DirectoryEntry> m_entries;
  std::size_t m_next = 0;
  std::size_t m_path_bytes = 0;  // how much of the walk's path is the directory's own
};

class TreeWalk {
 public:
  TreeWalk(FileSystem& file_system, CString root, TreeVisitor& visitor)
      : m_file_system(file_system), m_path(std::move(root)), m_visitor(visitor) {}

  bool Run() {
    if (!Enter()) return false;
    while (!m_levels.empty()) {
      m_path.resize(m_levels.back().m_path_bytes);
      if (m_levels.back().m_next == m_levels.back().m_entries.size()) {
        if (!m_visitor.Leave(m_path)) return false;
        m_levels.pop_back();
      } else if (!TakeNextEntry()) {
        return false;
      }
    }
    return true;
  }

 private:
  bool TakeNextEntry() {
    Level& level = m_levels.back();
    const DirectoryEntry entry = std::move(level.m_entries[level.m_next++]);
    if (IsDotName(entry.m_name)) return true;
    if (m_path.back() != '/') m_path += '/';
    m_path += entry.m_name;
    return entry.m_is_directory ? Enter() : m_visitor.VisitFile(m_path);
  }

  bool Enter() {
    if (!m_visitor.Enter(m_path)) return true;
    auto entries = ListByName(m_file_system, m_path);
    if (!entries) return m_visitor.PassOverUnreadable(m_path);
    m_levels.push_back({std::move(*entries), 0, m_path.size()});
    return true;
  }

  FileSystem& m_file_system;
  CString m_path;
  TreeVisitor& m_visitor;
  std::vector<Level> m_levels;
};

}  // namespace

bool TreeVisitor::Enter(const CString&) {
  return true;
}

bool TreeVisitor::Leave(const CString&) {
  return true;
}

bool TreeVisitor::PassOverUnreadable(const CString&) {
  return false;
}

bool WalkTree(FileSystem& file_system, const CString& root, TreeVisitor& visitor) {
  return !root.empty() && TreeWalk(file_system, root, visitor).Run();
}

}  // namespace zebx
