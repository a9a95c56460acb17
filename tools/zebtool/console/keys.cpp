#include "tools/zebtool/console/keys.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <string_view>

namespace zebtool {
namespace {

struct KeyBytes {
  std::string_view bytes;
  Key key;
};
// Arrows come in either form, as the terminal's mode is.
constexpr KeyBytes kKeys[] = {
    {" ", Key::kSpace},     {"q", Key::kQuit},       {"Q", Key::kQuit},
    {"\033[A", Key::kUp},   {"\033OA", Key::kUp},    {"\033[B", Key::kDown},
    {"\033OB", Key::kDown}, {"\033[C", Key::kRight}, {"\033OC", Key::kRight},
    {"\033[D", Key::kLeft}, {"\033OD", Key::kLeft},
};

}  // namespace

Keys::Keys(std::optional<int> terminal) {
  if (!terminal || tcgetattr(*terminal, &m_before) != 0) return;
  termios mode = m_before;
  mode.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
  mode.c_cc[VMIN] = 0;
  mode.c_cc[VTIME] = 0;
  if (tcsetattr(*terminal, TCSANOW, &mode) == 0) m_terminal = terminal;
}

Keys::~Keys() {
  if (m_terminal) tcsetattr(*m_terminal, TCSANOW, &m_before);
}

std::vector<Key> Keys::Read() {
  std::vector<Key> keys;
  if (!m_terminal) return keys;
  pollfd terminal = {*m_terminal, POLLIN, 0};
  if (poll(&terminal, 1, 0) <= 0) return keys;
  std::array<char, 64> bytes{};
  const ssize_t count = read(*m_terminal, bytes.data(), bytes.size());
  // Something was there to read, and it was the end.
  if (count <= 0) return {Key::kQuit};
  m_pending.append(bytes.data(), static_cast<std::size_t>(count));
  TakeAll(keys);
  return keys;
}

void Keys::TakeAll(std::vector<Key>& keys) {
  while (!m_pending.empty()) {
    std::size_t taken = 1;  // a byte that begins no key
    for (const KeyBytes& known : kKeys) {
      if (m_pending.starts_with(known.bytes)) {
        keys.push_back(known.key);
        taken = known.bytes.size();
        break;
      }
      if (known.bytes.starts_with(m_pending)) return;
    }
    m_pending.erase(0, taken);
  }
}

}  // namespace zebtool
