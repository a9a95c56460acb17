// A file system that fails on request: a test double in front of the one in force.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "platform/framework/error_report.h"
#include "platform/framework/file_exception.h"
#include "platform/framework/file_system.h"

// Counts the calls that go through it and lets them through until told to fail. It puts itself in
// force when constructed and the file system before it when destroyed, to which it passes the calls
// on; no file opened through it may outlive it. Plans may be changed while files are open. As long
// as it lives errors are reported to nobody, unless a test sets a sink behind it.
class FaultyFileSystem final : public zebx::FileSystem {
 public:
  // Kinds of calls, to be ORed where a plan takes several: those of CFile, and those on directories
  // and whole files.
  enum Call : unsigned {
    kOpen = 1,
    kRead = 2,
    kWrite = 4,
    kLength = 8,
    kResize = 16,
    kClose = 32,
    kList = 64,
    kStatus = 128,
    kRealPath = 256,
    kMakeDirectory = 512,
    kRemoveDirectory = 1024,
    kDelete = 2048,
    kReplace = 4096,
    kSpace = 8192
  };
  static constexpr unsigned kAnyCall = 63;  // of CFile
  static constexpr unsigned kEveryCall = 16383;
  static constexpr unsigned kChanges =
      kOpen | kWrite | kResize | kMakeDirectory | kRemoveDirectory | kDelete | kReplace;

  FaultyFileSystem() {
    zebx::SetFileSystem(this);
    zebx::SetErrorSink([](const std::exception&) {});
  }
  ~FaultyFileSystem() override {
    zebx::SetFileSystem(&m_disk);
    zebx::SetErrorSink(nullptr);
  }
  FaultyFileSystem(const FaultyFileSystem&) = delete;
  FaultyFileSystem& operator=(const FaultyFileSystem&) = delete;

  // From now on the n-th call (counted from 1) of the given kinds throws, and so do the next ones
  // of `calls` in all. A write that does so puts at most `prefix_bytes` of its bytes on disk first.
  void FailCall(unsigned kinds, std::uint64_t n, std::size_t prefix_bytes = 0,
                std::uint64_t calls = 1) {
    m_plan = {kinds, n, prefix_bytes, calls};
  }
  // After the first call that this plan fails, so many writes and resizes more reach the disk, and
  // nothing behind them: the power is cut.
  void CutPowerAfter(std::uint64_t changes) { m_plan.m_changes_to_cut = changes; }
  // The disk takes `bytes` more and is full then: the write that does not fit puts down what fits
  // and throws, as every later one does.
  void FillDiskAfter(std::uint64_t bytes) {
    m_plan = {};
    m_free_bytes = bytes;
  }
  // Of writes of so many bytes and more the disk takes the length alone.
  void SkipWritesFrom(std::uint64_t bytes) { m_skipped_bytes = bytes; }
  // No room is reserved ahead.
  void RefuseReserves() { m_refuses_reserves = true; }
  // Every length told is `bytes` too much, as when somebody cuts the file right behind the
  // question.
  void OverstateLengths(std::uint64_t bytes) { m_overstated_bytes = bytes; }
  // Everything works again.
  void Heal() {
    FillDiskAfter(kNoLimit);
    m_is_dead = false;
  }

  // Calls of every kind made so far, failed ones included, and how many were made to fail.
  std::uint64_t Calls() const { return m_calls; }
  std::uint64_t Failures() const { return m_failures; }
  std::uint64_t Reserves() const { return m_reserves; }

  std::unique_ptr<zebx::FileHandle> Open(const CString& path,
                                         const zebx::FileOpenMode& mode) override {
    PassOrFail(kOpen);
    return std::make_unique<Handle>(*this, m_disk.Open(path, mode));
  }
  CString FullPath(const CString& path) override { return m_disk.FullPath(path); }
  std::optional<CString> RealPath(const CString& path) override {
    return Passes(kRealPath) ? m_disk.RealPath(path) : std::nullopt;
  }
  // A listing that fails has shown everything but its end.
  bool List(const CString& path, const zebx::DirectoryVisitor& visit) override {
    const bool is_whole = Passes(kList);
    return m_disk.List(path, visit) && is_whole;
  }
  std::optional<zebx::FileStatus> Status(const CString& path) override {
    return Passes(kStatus) ? m_disk.Status(path) : std::nullopt;
  }
  std::optional<zebx::FileStatus> LinkStatus(const CString& path) override {
    return Passes(kStatus) ? m_disk.LinkStatus(path) : std::nullopt;
  }
  bool IsSameFile(const CString& path, const CString& other) override {
    return Passes(kStatus) && m_disk.IsSameFile(path, other);
  }
  bool MakeDirectory(const CString& path) override {
    return Passes(kMakeDirectory) && m_disk.MakeDirectory(path);
  }
  bool RemoveDirectory(const CString& path) override {
    return Passes(kRemoveDirectory) && m_disk.RemoveDirectory(path);
  }
  bool DeleteFile(const CString& path, ULONGLONG* length_bytes) override {
    return Passes(kDelete) && m_disk.DeleteFile(path, length_bytes);
  }
  void Replace(const CString& path, const CString& replacement) override {
    PassOrFail(kReplace);
    m_disk.Replace(path, replacement);
  }
  std::optional<zebx::DiskSpace> Space(const CString& path) override {
    return Passes(kSpace) ? m_disk.Space(path) : std::nullopt;
  }

 private:
  static constexpr std::uint64_t kNoLimit = std::numeric_limits<std::uint64_t>::max();
  using Pieces = std::span<const std::span<const BYTE>>;

  struct Plan {
    unsigned m_kinds = 0;
    std::uint64_t m_calls_to_go = 0;
    std::size_t m_prefix_bytes = 0;
    std::uint64_t m_calls_to_fail = 1;
    std::uint64_t m_changes_to_cut = kNoLimit;  // behind the first failure
    bool m_has_failed = false;
  };

  class Handle final : public zebx::FileHandle {
   public:
    Handle(FaultyFileSystem& owner, std::unique_ptr<zebx::FileHandle> native)
        : m_owner(owner), m_native(std::move(native)) {}

    std::size_t ReadAt(ULONGLONG offset, std::span<BYTE> into) override {
      m_owner.PassOrFail(kRead);
      return m_native->ReadAt(offset, into);
    }
    void WriteAt(ULONGLONG offset, Pieces pieces) override {
      if (m_owner.ShallFail(kWrite)) {
        WritePrefix(offset, pieces, m_owner.m_plan.m_prefix_bytes);
        if (m_owner.m_is_dead) m_owner.m_plan.m_prefix_bytes = 0;
        m_owner.Fail(CFileException::Cause::kHardIo);
      }
      std::uint64_t bytes = 0;
      for (const auto& piece : pieces) bytes += piece.size();
      if (bytes > m_owner.m_free_bytes) {
        WritePrefix(offset, pieces, std::exchange(m_owner.m_free_bytes, 0));
        m_owner.Fail(CFileException::Cause::kDiskFull);
      }
      if (m_owner.m_free_bytes != kNoLimit) m_owner.m_free_bytes -= bytes;
      if (bytes >= m_owner.m_skipped_bytes) return m_native->Resize(offset + bytes);
      m_native->WriteAt(offset, pieces);
    }
    bool IsAlone() override { return m_native->IsAlone(); }
    ULONGLONG Length() override {
      m_owner.PassOrFail(kLength);
      return m_native->Length() + m_owner.m_overstated_bytes;
    }
    void Resize(ULONGLONG length) override {
      m_owner.PassOrFail(kResize);
      m_native->Resize(length);
    }
    bool IsNew() override { return m_native->IsNew(); }
    bool Reserve(ULONGLONG offset, ULONGLONG bytes) override {
      ++m_owner.m_reserves;
      return !m_owner.m_refuses_reserves && m_native->Reserve(offset, bytes);
    }
    void Close() override {
      m_native->Close();
      m_owner.PassOrFail(kClose);
    }

   private:
    void WritePrefix(ULONGLONG offset, Pieces pieces, std::uint64_t limit) {
      for (auto piece : pieces) {
        piece = piece.first(std::min<std::size_t>(piece.size(), limit));
        if (!piece.empty()) m_native->WriteAt(offset, {&piece, 1});
        offset += piece.size();
        limit -= piece.size();
      }
    }

    FaultyFileSystem& m_owner;
    std::unique_ptr<zebx::FileHandle> m_native;
  };

  bool ShallFail(Call kind) {
    ++m_calls;
    if (m_is_dead) return true;
    if (m_plan.m_has_failed && (kind & kChanges) != 0 && m_plan.m_changes_to_cut-- == 0) {
      return m_is_dead = true;
    }
    if ((m_plan.m_kinds & kind) == 0 || m_plan.m_calls_to_fail == 0) return false;
    if (m_plan.m_calls_to_go > 1) {
      --m_plan.m_calls_to_go;
      return false;
    }
    --m_plan.m_calls_to_fail;
    m_plan.m_has_failed = true;
    m_is_dead = m_plan.m_changes_to_cut == 0;
    return true;
  }
  [[noreturn]] void Fail(CFileException::Cause cause) {
    ++m_failures;
    throw CFileException(cause, 0, "");
  }
  void PassOrFail(Call kind) {
    if (ShallFail(kind)) Fail(CFileException::Cause::kHardIo);
  }
  bool Passes(Call kind) {
    if (!ShallFail(kind)) return true;
    ++m_failures;
    return false;
  }

  zebx::FileSystem& m_disk = zebx::CurrentFileSystem();
  Plan m_plan;
  bool m_is_dead = false;
  std::uint64_t m_free_bytes = kNoLimit;
  std::uint64_t m_skipped_bytes = kNoLimit;
  std::uint64_t m_overstated_bytes = 0;
  std::uint64_t m_calls = 0;
  std::uint64_t m_failures = 0;
  std::uint64_t m_reserves = 0;
  bool m_refuses_reserves = false;
};
