// A disk in memory whose file says that it is far longer than the bytes that were given for it.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/framework/types.h"
#include "tests/support/memory_file_system.h"

inline constexpr int kMaxGapBits = 40;
inline constexpr ULONGLONG kMaxGapBytes = 1ULL << kMaxGapBits;
inline constexpr ULONGLONG kSmallGapBytes = 1 << 22;

// The bytes of a file with a gap somewhere in them, which takes no memory.
struct SparseBytes {
  std::string m_bytes;
  std::size_t m_gap_at = 0;
  ULONGLONG m_gap_bytes = 0;

  // What a fuzzer's input stands for. The last bytes of an input may be an instruction, as
  // GapInstruction writes it, that puts a gap into those before it. What holds a picture or a frame
  // of any size rightly takes as much memory as the file is long: there, gaps stay small.
  static SparseBytes Of(std::span<const BYTE> input, ULONGLONG max_gap_bytes = kMaxGapBytes);
  // The same with a beginning in front.
  SparseBytes Behind(std::string_view beginning) const;
  ULONGLONG Length() const { return m_bytes.size() + m_gap_bytes; }
};

// The instruction for a gap at an offset.
std::string GapInstruction(std::size_t gap_at, ULONGLONG gap_bytes);
inline constexpr std::size_t kGapInstructionBytes = 16;

// In force like the disk that it is made of. One of its files may be sparse. Nothing is reported
// from the first of these disks on, since a damaged file has much to report.
class SparseDisk final : public MemoryFileSystem {
 public:
  SparseDisk();

  // Puts a file, in the place of the sparse one if there is any. With a gap it can only be read.
  void PutSparse(const std::string& path, SparseBytes bytes);

  std::unique_ptr<zebx::FileHandle> Open(const CString& path,
                                         const zebx::FileOpenMode& mode) override;
  std::optional<zebx::FileStatus> Status(const CString& path) override;

  // The gap reads as zeros, of which a handle gives so many; then a read comes back short, as at
  // the end of a file that was cut meanwhile. Whoever reads on does not make the fuzzer wait.
  static constexpr ULONGLONG kMaxZeroBytes = 1 << 12;

 private:
  std::string m_path;
  std::shared_ptr<const SparseBytes> m_sparse;
};
