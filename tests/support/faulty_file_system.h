// A file system that fails on request: a test double in front of the native one.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "platform/framework/file_exception.h"
#include "platform/framework/file_system.h"

// Counts the calls that CFile makes and lets them through until told to fail. It puts itself in
// force when constructed and the native file system when destroyed; one at a time, and no file
// opened through it may outlive it. Plans may be changed while files are open.
class FaultyFileSystem final : public FileSystem {
 public:
  // Kinds of calls, to be ORed where a plan takes several.
  enum Call : unsigned { kOpen = 1, kRead = 2, kWrite = 4, kLength = 8, kResize = 16, kClose = 32 };
  static constexpr unsigned kAnyCall = 63;
  static constexpr std::uint64_t kForever = std::numeric_limits<std::uint64_t>::max();

  FaultyFileSystem() { SetFileSystem(this); }
  ~FaultyFileSystem() override { SetFileSystem(nullptr); }
  FaultyFileSystem(const FaultyFileSystem&) = delete;
  FaultyFileSystem& operator=(const FaultyFileSystem&) = delete;

  // From now on the n-th call (counted from 1) of the given kinds throws, and so do the `times` - 1
  // after it.
  void FailCall(unsigned kinds, std::uint64_t n, std::uint64_t times = 1,
                CFileException::Cause cause = CFileException::Cause::kHardIo) {
    m_plan = {kinds, n, times, cause, 0};
  }
  // Every write that fails as planned first puts at most `bytes` of its bytes on disk.
  void WriteShortBeforeFailing(std::size_t bytes) { m_prefix_bytes = bytes; }
  // The disk takes `bytes` more and is full then: the write that does not fit puts down what fits
  // and throws, as every later one does.
  void FillDiskAfter(std::uint64_t bytes) {
    Heal();
    m_free_bytes = bytes;
  }
  // Everything works again.
  void Heal() {
    m_plan = {};
    m_prefix_bytes = 0;
    m_free_bytes = kForever;
  }

  // Calls made so far, of the given kinds; failed ones are counted too.
  std::uint64_t Calls(unsigned kinds = kAnyCall) const {
    std::uint64_t calls = 0;
    for (unsigned bit = 0; bit < kKinds; ++bit) {
      if ((kinds & (1U << bit)) != 0) calls += m_calls[bit];
    }
    return calls;
  }
  void ResetCounts() {
    for (auto& calls : m_calls) calls = 0;
  }
  // Calls that were made to throw.
  std::uint64_t Failures() const { return m_failures; }

  std::unique_ptr<FileHandle> Open(const CString& path, const FileOpenMode& mode) override {
    if (ShallFail(kOpen)) Fail(path);
    return std::make_unique<Handle>(*this, NativeFileSystem().Open(path, mode), path);
  }
  CString FullPath(const CString& path) override { return NativeFileSystem().FullPath(path); }
  std::optional<std::vector<DirectoryEntry>> List(const CString& path) override {
    return NativeFileSystem().List(path);
  }
  std::optional<FileStatus> Status(const CString& path) override {
    return NativeFileSystem().Status(path);
  }
  bool IsSameFile(const CString& path, const CString& other) override {
    return NativeFileSystem().IsSameFile(path, other);
  }

 private:
  static constexpr unsigned kKinds = 6;
  using Pieces = std::span<const std::span<const BYTE>>;

  struct Plan {
    unsigned m_kinds = 0;
    std::uint64_t m_n = 0;
    std::uint64_t m_times = 0;
    CFileException::Cause m_cause = CFileException::Cause::kHardIo;
    std::uint64_t m_seen = 0;
  };

  class Handle final : public FileHandle {
   public:
    Handle(FaultyFileSystem& owner, std::unique_ptr<FileHandle> native, CString path)
        : m_owner(owner), m_native(std::move(native)), m_path(std::move(path)) {}

    std::size_t ReadAt(ULONGLONG offset, std::span<BYTE> into) override {
      if (m_owner.ShallFail(kRead)) m_owner.Fail(m_path);
      return m_native->ReadAt(offset, into);
    }
    void WriteAt(ULONGLONG offset, Pieces pieces) override {
      if (m_owner.ShallFail(kWrite)) {
        WritePrefix(offset, pieces, m_owner.m_prefix_bytes);
        m_owner.Fail(m_path);
      }
      std::uint64_t bytes = 0;
      for (const auto& piece : pieces) bytes += piece.size();
      if (bytes > m_owner.m_free_bytes) {
        WritePrefix(offset, pieces, std::exchange(m_owner.m_free_bytes, 0));
        ++m_owner.m_failures;
        throw CFileException(CFileException::Cause::kDiskFull, 0, m_path);
      }
      if (m_owner.m_free_bytes != kForever) m_owner.m_free_bytes -= bytes;
      m_native->WriteAt(offset, pieces);
    }
    ULONGLONG Length() override {
      if (m_owner.ShallFail(kLength)) m_owner.Fail(m_path);
      return m_native->Length();
    }
    void Resize(ULONGLONG length) override {
      if (m_owner.ShallFail(kResize)) m_owner.Fail(m_path);
      m_native->Resize(length);
    }
    void Close() override {
      const bool fails = m_owner.ShallFail(kClose);
      m_native->Close();
      if (fails) m_owner.Fail(m_path);
    }

   private:
    void WritePrefix(ULONGLONG offset, Pieces pieces, std::uint64_t limit) {
      for (const auto& piece : pieces) {
        const auto part =
            piece.first(static_cast<std::size_t>(std::min<std::uint64_t>(piece.size(), limit)));
        if (part.empty()) continue;
        m_native->WriteAt(offset, {&part, 1});
        offset += part.size();
        limit -= part.size();
      }
    }

    FaultyFileSystem& m_owner;
    std::unique_ptr<FileHandle> m_native;
    CString m_path;
  };

  // Counts the call and decides whether the plan lets it through.
  bool ShallFail(Call kind) {
    for (unsigned bit = 0; bit < kKinds; ++bit) {
      if (kind == (1U << bit)) ++m_calls[bit];
    }
    if ((m_plan.m_kinds & kind) == 0) return false;
    ++m_plan.m_seen;
    return m_plan.m_seen >= m_plan.m_n && m_plan.m_seen - m_plan.m_n < m_plan.m_times;
  }

  [[noreturn]] void Fail(const CString& path) {
    ++m_failures;
    throw CFileException(m_plan.m_cause, 0, path);
  }

  Plan m_plan;
  std::size_t m_prefix_bytes = 0;
  std::uint64_t m_free_bytes = kForever;
  std::uint64_t m_calls[kKinds] = {};
  std::uint64_t m_failures = 0;
};
