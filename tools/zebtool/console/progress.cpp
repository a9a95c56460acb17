#include "tools/zebtool/console/progress.h"

#include <utility>

namespace zebtool {

using namespace std::chrono_literals;

Progress::Progress(Console& console, std::string label)
    : m_console(console), m_label(std::move(label)) {}

Progress::~Progress() {
  if (m_shown) m_console.err << "\r\033[K" << std::flush;
}

void Progress::Show(std::uint64_t count, std::string_view noun) {
  ShowText(std::to_string(count) + ' ' + std::string(noun));
}

void Progress::ShowPart(std::uint64_t done, std::uint64_t total) {
  if (total > 0) ShowText(std::to_string(done * 100 / total) + " %");
}

void Progress::ShowText(const std::string& text) {
  if (!m_console.show_progress) return;
  const auto now = SteadyClock::now();
  if (now < m_next) return;
  m_next = now + 200ms;
  m_console.err << '\r' << m_label << ' ' << text << "\033[K" << std::flush;
  m_shown = true;
}

}  // namespace zebtool
