#include "fuzz/sparse_disk.h"

#include <algorithm>
#include <utility>

#include "platform/framework/byte_order.h"
#include "platform/framework/error_report.h"
#include "platform/framework/file_exception.h"

using namespace zebx;

namespace {

constexpr std::string_view kInstruction = "GAP!";

class SparseHandle final : public FileHandle {
 public:
  explicit SparseHandle(std::shared_ptr<const SparseBytes> file) : m_file(std::move(file)) {}

  std::size_t ReadAt(ULONGLONG offset, std::span<BYTE> into) override {
    std::size_t done = 0;
    while (done < into.size() && offset < m_file->Length()) {
      const std::size_t count = ReadPiece(offset, into.subspan(done));
      if (count == 0) break;
      done += count;
      offset += count;
    }
    return done;
  }
  void WriteAt(ULONGLONG /*offset*/, std::span<const std::span<const BYTE>> /*pieces*/) override {
    throw CFileException(CFileException::Cause::kAccessDenied, 0, "");
  }
  void Resize(ULONGLONG /*length*/) override { WriteAt(0, {}); }
  ULONGLONG Length() override { return m_file->Length(); }
  void Close() override {}

 private:
  // Reads up to the next end of the gap.
  std::size_t ReadPiece(ULONGLONG offset, std::span<BYTE> into) {
    const ULONGLONG gap_end = m_file->m_gap_at + m_file->m_gap_bytes;
    if (offset >= m_file->m_gap_at && offset < gap_end) {
      const ULONGLONG count = std::min({ULONGLONG{into.size()}, gap_end - offset, m_zero_bytes});
      m_zero_bytes -= count;
      std::fill_n(into.begin(), count, BYTE{0});
      return static_cast<std::size_t>(count);
    }
    const bool is_behind = offset >= gap_end;
    const auto from = static_cast<std::size_t>(is_behind ? offset - m_file->m_gap_bytes : offset);
    const std::size_t end = is_behind ? m_file->m_bytes.size() : m_file->m_gap_at;
    const std::size_t count = std::min(into.size(), end - from);
    std::copy_n(m_file->m_bytes.data() + from, count, into.begin());
    return count;
  }

  std::shared_ptr<const SparseBytes> m_file;
  ULONGLONG m_zero_bytes = SparseDisk::kMaxZeroBytes;
};

}  // namespace

SparseBytes SparseBytes::Of(std::span<const BYTE> input, ULONGLONG max_gap_bytes) {
  SparseBytes file{{input.begin(), input.end()}};
  const std::size_t size = input.size();
  if (size < kGapInstructionBytes || !std::string_view{file.m_bytes}
                                          .substr(size - kGapInstructionBytes)
                                          .starts_with(kInstruction)) {
    return file;
  }
  file.m_bytes.resize(size - kGapInstructionBytes);
  ByteReader reader(input.last(kGapInstructionBytes - kInstruction.size()));
  file.m_gap_at = reader.Get<DWORD>() % (file.m_bytes.size() + 1);
  const auto low = reader.Get<DWORD>();
  file.m_gap_bytes = (ULONGLONG{reader.Get<DWORD>()} << 32 | low) % max_gap_bytes;
  return file;
}

SparseBytes SparseBytes::Behind(std::string_view beginning) const {
  return {std::string(beginning) + m_bytes, m_gap_at + beginning.size(), m_gap_bytes};
}

std::string GapInstruction(std::size_t gap_at, ULONGLONG gap_bytes) {
  std::string text(kGapInstructionBytes, '\0');
  ByteWriter writer({reinterpret_cast<BYTE*>(text.data()), text.size()});
  writer.PutText(kInstruction);
  writer.Put(static_cast<DWORD>(gap_at));
  writer.Put(static_cast<DWORD>(gap_bytes & 0xFFFFFFFF));
  writer.Put(static_cast<DWORD>(gap_bytes >> 32));
  return text;
}

SparseDisk::SparseDisk() {
  SetErrorSink([](const std::exception&) {});
}

void SparseDisk::PutSparse(const std::string& path, SparseBytes bytes) {
  m_sparse.reset();
  if (bytes.m_gap_bytes == 0) return Put(path, bytes.m_bytes);
  m_path = path;
  m_sparse = std::make_shared<const SparseBytes>(std::move(bytes));
}

std::unique_ptr<FileHandle> SparseDisk::Open(const CString& path, const FileOpenMode& mode) {
  if (m_sparse == nullptr || path != m_path) return MemoryFileSystem::Open(path, mode);
  if (mode.m_write) throw CFileException(CFileException::Cause::kAccessDenied, 0, path);
  return std::make_unique<SparseHandle>(m_sparse);
}

std::optional<FileStatus> SparseDisk::Status(const CString& path) {
  if (m_sparse == nullptr || path != m_path) return MemoryFileSystem::Status(path);
  FileStatus status;
  status.m_is_read_only = true;
  status.m_length = m_sparse->Length();
  return status;
}
