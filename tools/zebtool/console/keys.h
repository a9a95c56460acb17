// Keys of a terminal, read as they are pressed.
#pragma once

#include <termios.h>

#include <optional>
#include <string>
#include <vector>

namespace zebtool {

enum class Key { kSpace, kLeft, kRight, kUp, kDown, kQuit };

// While it lives, the terminal gives every key at once and shows none of them; Ctrl-C goes on to
// interrupt. The destructor puts the terminal back as it was.
class Keys {
 public:
  // A descriptor of a terminal, borrowed; without one no key ever comes.
  explicit Keys(std::optional<int> terminal);
  ~Keys();
  Keys(const Keys&) = delete;
  Keys& operator=(const Keys&) = delete;

  bool AreThere() const { return m_terminal.has_value(); }
  // What was pressed since the last call. Keys that mean nothing are left out; a terminal that is
  // gone counts as kQuit.
  std::vector<Key> Read();

 private:
  void TakeAll(std::vector<Key>& keys);

  std::optional<int> m_terminal;
  termios m_before = {};
  std::string m_pending;  // the beginning of a key whose other bytes are still to come
};

}  // namespace zebtool
