#include "platform/os/files/reachable_path.h"

#include <fcntl.h>
#include <unistd.h>

#include <climits>
#include <utility>

namespace zebx {

ReachablePath::ReachablePath(CString host_path)
    : m_path(std::move(host_path)), m_directory(AT_FDCWD) {
  constexpr std::size_t kMaxBytes = PATH_MAX - 1;
  while (m_path.size() - m_name_at > kMaxBytes) {
    const std::size_t cut = m_path.rfind('/', m_name_at + kMaxBytes);
    if (cut == CString::npos || cut <= m_name_at) return;
    const CString piece = m_path.substr(m_name_at, cut - m_name_at);
    const int next = openat(m_directory, piece.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (next < 0) return;
    if (m_directory != AT_FDCWD) close(m_directory);
    m_directory = next;
    m_name_at = cut + 1;
  }
}

ReachablePath::~ReachablePath() {
  if (m_directory != AT_FDCWD) close(m_directory);
}

}  // namespace zebx
