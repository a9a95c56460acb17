// A disk in memory: a test double that makes thousands of small files cheap.
#pragma once

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/framework/file_exception.h"
#include "platform/framework/file_system.h"
#include "platform/framework/letter_case.h"
#include "platform/framework/mem_file.h"
#include "platform/os/files/drives.h"

// In force from its construction to its end, when the one before it is again. No file opened
// through it may outlive it. Used by any number of threads at once. On the drives that are mounted
// there are directories, in lower case; any other path is a plain name.
class MemoryFileSystem : public zebx::FileSystem {
 public:
  MemoryFileSystem() { zebx::SetFileSystem(this); }
  ~MemoryFileSystem() override { zebx::SetFileSystem(&m_before); }
  MemoryFileSystem(const MemoryFileSystem&) = delete;
  MemoryFileSystem& operator=(const MemoryFileSystem&) = delete;

  // Directories on the way are made.
  void Put(const std::string& path, std::string_view bytes) {
    const std::lock_guard lock(m_lock);
    const std::string key = *KeyOf(path);
    for (std::string at = ParentOf(key); at.size() > kRootBytes; at = ParentOf(at)) {
      m_directories.insert(at);
    }
    m_files[key] = std::make_shared<CMemFile>();
    m_files[key]->Write({reinterpret_cast<const BYTE*>(bytes.data()), bytes.size()});
  }
  std::string Get(const std::string& path) const {
    const std::lock_guard lock(m_lock);
    const auto found = m_files.find(*KeyOf(path));
    return found == m_files.end() ? std::string() : TextOf(*found->second);
  }
  bool Has(const std::string& path) const {
    const std::lock_guard lock(m_lock);
    return m_files.contains(*KeyOf(path));
  }
  void SetFreeBytes(ULONGLONG bytes) { m_free_bytes = bytes; }
  // From now on nothing can be made, deleted or renamed, although files can be written.
  void ForbidChangesOfDirectories() { m_are_directories_fixed = true; }
  // Every path and the bytes behind it; directories have none.
  std::map<std::string, std::string> Everything() const {
    const std::lock_guard lock(m_lock);
    std::map<std::string, std::string> all;
    for (const std::string& directory : m_directories) all[directory] = {};
    for (const auto& [path, bytes] : m_files) all[path] = TextOf(*bytes);
    return all;
  }

  std::unique_ptr<zebx::FileHandle> Open(const CString& path,
                                         const zebx::FileOpenMode& mode) override {
    const std::lock_guard lock(m_lock);
    using Cause = CFileException::Cause;
    const auto key = KeyOf(path);
    if (!key || IsDirectory(*key)) throw CFileException(Cause::kAccessDenied, 0, path);
    auto found = m_files.find(*key);
    if (found == m_files.end()) {
      if (!mode.m_create) throw CFileException(Cause::kFileNotFound, 0, path);
      if (!IsDirectory(ParentOf(*key))) throw CFileException(Cause::kBadPath, 0, path);
      if (m_are_directories_fixed) throw CFileException(Cause::kAccessDenied, 0, path);
      found = m_files.emplace(*key, std::make_shared<CMemFile>()).first;
    } else if (mode.m_new) {
      throw CFileException(Cause::kGeneric, 0, path);
    } else if (mode.m_exclusive && found->second.use_count() > 1) {
      throw CFileException(Cause::kSharingViolation, 0, path);
    }
    if (mode.m_truncate) found->second->SetLength(0);
    return std::make_unique<Handle>(found->second, mode.m_exclusive, m_lock);
  }
  CString FullPath(const CString& path) override { return path; }
  std::optional<CString> RealPath(const CString& path) override { return KeyOf(path); }
  bool List(const CString& path, const zebx::DirectoryVisitor& visit) override {
    const auto key = KeyOf(path);
    std::vector<std::pair<std::string, bool>> entries{{".", true}, {"..", true}};
    {
      const std::lock_guard lock(m_lock);
      if (!key || key->empty() || !IsDirectory(*key)) return false;
      const auto name = [&](const std::string& entry) { return entry.substr(key->size() + 1); };
      for (const std::string& directory : m_directories) {
        if (ParentOf(directory) == *key) entries.emplace_back(name(directory), true);
      }
      for (const auto& [file, bytes] : m_files) {
        if (ParentOf(file) == *key) entries.emplace_back(name(file), false);
      }
    }
    for (const auto& [entry, is_directory] : entries) visit(entry, is_directory);
    return true;
  }
  std::optional<zebx::FileStatus> Status(const CString& path) override {
    const std::lock_guard lock(m_lock);
    const auto key = KeyOf(path);
    if (!key) return std::nullopt;
    zebx::FileStatus status;
    const auto found = m_files.find(*key);
    if (found != m_files.end()) {
      status.m_length = found->second->GetLength();
      return status;
    }
    status.m_is_directory = true;
    return !key->empty() && IsDirectory(*key) ? std::optional(status) : std::nullopt;
  }
  std::optional<zebx::FileStatus> LinkStatus(const CString& path) override { return Status(path); }
  bool IsSameFile(const CString& path, const CString& other) override {
    return path == other && Has(path);
  }
  bool MakeDirectory(const CString& path) override {
    const std::lock_guard lock(m_lock);
    const auto key = KeyOf(path);
    return key && !m_are_directories_fixed && !m_files.contains(*key) && !IsDirectory(*key) &&
           IsDirectory(ParentOf(*key)) && m_directories.insert(*key).second;
  }
  bool RemoveDirectory(const CString& path) override {
    const std::lock_guard lock(m_lock);
    const auto key = KeyOf(path);
    const auto is_inside = [&](const auto& entry) { return ParentOf(entry) == *key; };
    return key && !m_are_directories_fixed &&
           std::none_of(m_directories.begin(), m_directories.end(), is_inside) &&
           std::none_of(m_files.begin(), m_files.end(),
                        [&](const auto& file) { return is_inside(file.first); }) &&
           m_directories.erase(*key) != 0;
  }
  bool DeleteFile(const CString& path, ULONGLONG* length_bytes) override {
    const std::lock_guard lock(m_lock);
    const auto key = KeyOf(path);
    const auto found = key ? m_files.find(*key) : m_files.end();
    const bool is_open = found != m_files.end() && found->second.use_count() > 1;
    if (found == m_files.end() || is_open || m_are_directories_fixed) return false;
    if (length_bytes != nullptr) *length_bytes = found->second->GetLength();
    m_files.erase(found);
    return true;
  }
  void Replace(const CString& path, const CString& replacement) override {
    const std::lock_guard lock(m_lock);
    const auto key = KeyOf(path);
    const auto found = m_files.find(KeyOf(replacement).value_or(""));
    if (!key || IsDirectory(*key) || found == m_files.end() || m_are_directories_fixed) {
      throw CFileException(CFileException::Cause::kAccessDenied, 0, path);
    }
    m_files[*key] = found->second;
    m_files.erase(found);
  }
  std::optional<zebx::DiskSpace> Space(const CString& path) override {
    constexpr ULONGLONG kTotalBytes = ULONGLONG{1} << 40;
    if (!Status(path)) return std::nullopt;
    return zebx::DiskSpace{m_free_bytes, kTotalBytes, m_free_bytes};
  }

 private:
  // A drive's root is such as "//d", and so is everything on it a path of its own.
  static constexpr std::size_t kRootBytes = 3;

  static std::string TextOf(const CMemFile& file) {
    return {file.GetBytes().begin(), file.GetBytes().end()};
  }
  static std::optional<std::string> KeyOf(const CString& path) {
    if (path.find('\0') != CString::npos) return std::nullopt;
    if (path.size() < 2 || path[1] != ':') return path;
    if (os::GetDriveType(path) == os::DriveKind::kNoRoot) return std::nullopt;
    std::string key = "/";
    for (const char letter : os::FullPath(path)) {
      if (letter != ':') key += letter == '\\' ? '/' : zebx::LowerCase(letter);
    }
    key.insert(0, "/");
    if (key.back() == '/') key.pop_back();
    return key;
  }
  // Empty for a plain name.
  static std::string ParentOf(const std::string& key) {
    return key.starts_with("//") ? key.substr(0, key.rfind('/')) : std::string();
  }
  bool IsDirectory(const std::string& key) const {
    const bool is_root = key.size() == kRootBytes && key.starts_with("//");
    return key.empty() || is_root || m_directories.contains(key);
  }

  class Handle final : public zebx::FileHandle {
   public:
    Handle(std::shared_ptr<CMemFile> bytes, bool is_alone, std::recursive_mutex& lock)
        : m_bytes(std::move(bytes)), m_is_alone(is_alone), m_lock(lock) {}
    ~Handle() override {
      const std::lock_guard lock(m_lock);
      m_bytes.reset();
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    std::size_t ReadAt(ULONGLONG offset, std::span<BYTE> into) override {
      const std::lock_guard lock(m_lock);
      m_bytes->Seek(offset);
      return m_bytes->Read(into);
    }
    void WriteAt(ULONGLONG offset, std::span<const std::span<const BYTE>> pieces) override {
      const std::lock_guard lock(m_lock);
      m_bytes->Seek(offset);
      for (const auto& piece : pieces) m_bytes->Write(piece);
    }
    bool IsAlone() override { return m_is_alone; }
    ULONGLONG Length() override {
      const std::lock_guard lock(m_lock);
      return m_bytes->GetLength();
    }
    void Resize(ULONGLONG length) override {
      const std::lock_guard lock(m_lock);
      m_bytes->SetLength(length);
    }
    void Close() override {}

   private:
    std::shared_ptr<CMemFile> m_bytes;
    bool m_is_alone;
    std::recursive_mutex& m_lock;
  };

  zebx::FileSystem& m_before = zebx::CurrentFileSystem();
  mutable std::recursive_mutex m_lock;  // of all below, and of the bytes of every file
  std::map<std::string, std::shared_ptr<CMemFile>> m_files;
  std::set<std::string> m_directories;
  ULONGLONG m_free_bytes = ULONGLONG{1} << 40;
  bool m_are_directories_fixed = false;
};
