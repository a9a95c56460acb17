// A disk in memory: a test double that makes thousands of small files cheap.
#pragma once

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/framework/file_exception.h"
#include "platform/framework/file_system.h"

// In force from its construction to its end, when the one before it is again. No file opened
// through it may outlive it. Paths are plain names, without directories.
class MemoryFileSystem final : public zebx::FileSystem {
 public:
  MemoryFileSystem() { zebx::SetFileSystem(this); }
  ~MemoryFileSystem() override { zebx::SetFileSystem(&m_before); }
  MemoryFileSystem(const MemoryFileSystem&) = delete;
  MemoryFileSystem& operator=(const MemoryFileSystem&) = delete;

  void Put(const std::string& path, std::string_view bytes) {
    m_files[path] = std::make_shared<Bytes>(bytes.begin(), bytes.end());
  }
  std::string Get(const std::string& path) const {
    const auto found = m_files.find(path);
    if (found == m_files.end()) return {};
    return {found->second->begin(), found->second->end()};
  }
  bool Has(const std::string& path) const { return m_files.contains(path); }

  std::unique_ptr<zebx::FileHandle> Open(const CString& path,
                                         const zebx::FileOpenMode& mode) override {
    auto found = m_files.find(path);
    if (found == m_files.end()) {
      if (!mode.m_create) throw CFileException(CFileException::Cause::kFileNotFound, 0, path);
      found = m_files.emplace(path, std::make_shared<Bytes>()).first;
    }
    if (mode.m_truncate) found->second->clear();
    return std::make_unique<Handle>(found->second);
  }
  CString FullPath(const CString& path) override { return path; }
  // There are no directories.
  bool List(const CString&, const zebx::DirectoryVisitor&) override { return false; }
  std::optional<zebx::FileStatus> Status(const CString& path) override {
    const auto found = m_files.find(path);
    if (found == m_files.end()) return std::nullopt;
    zebx::FileStatus status;
    status.m_length = found->second->size();
    return status;
  }
  bool IsSameFile(const CString& path, const CString& other) override {
    return path == other && Has(path);
  }

 private:
  using Bytes = std::vector<BYTE>;

  class Handle final : public zebx::FileHandle {
   public:
    explicit Handle(std::shared_ptr<Bytes> bytes) : m_bytes(std::move(bytes)) {}

    std::size_t ReadAt(ULONGLONG offset, std::span<BYTE> into) override {
      if (offset >= m_bytes->size()) return 0;
      const auto rest = std::span(*m_bytes).subspan(static_cast<std::size_t>(offset));
      const std::size_t count = std::min(into.size(), rest.size());
      std::copy_n(rest.begin(), count, into.begin());
      return count;
    }
    void WriteAt(ULONGLONG offset, std::span<const std::span<const BYTE>> pieces) override {
      for (const auto& piece : pieces) {
        if (offset + piece.size() > m_bytes->size()) Resize(offset + piece.size());
        std::copy(piece.begin(), piece.end(),
                  m_bytes->begin() + static_cast<std::ptrdiff_t>(offset));
        offset += piece.size();
      }
    }
    ULONGLONG Length() override { return m_bytes->size(); }
    void Resize(ULONGLONG length) override { m_bytes->resize(static_cast<std::size_t>(length)); }
    void Close() override {}

   private:
    std::shared_ptr<Bytes> m_bytes;
  };

  zebx::FileSystem& m_before = zebx::CurrentFileSystem();
  std::map<std::string, std::shared_ptr<Bytes>> m_files;
};
