// A directory of a test's own, under the system's place for temporary files.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

// Made empty with a name nobody else uses, and removed with everything in it at the end.
class TempDir {
 public:
  TempDir() {
    std::string name = (std::filesystem::temp_directory_path() / "zebx_test.XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make " + name);
    m_path = name;
  }
  ~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::filesystem::path& Path() const { return m_path; }
  // The path of `name` inside the directory; nothing is made.
  std::string File(std::string_view name) const { return (m_path / name).string(); }

 private:
  std::filesystem::path m_path;
};

// Makes or replaces a file.
inline void WriteWholeFile(const std::string& path, std::string_view bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!file.flush()) throw std::runtime_error("cannot write " + path);
}

// All bytes of a file.
inline std::string ReadWholeFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}
