// What recording, opening and reading cost next to a bare loop of system calls that moves the same
// bytes.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <linux/fiemap.h>
#include <linux/fs.h>
#include <malloc.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "bench/compare.h"
#include "record/block_format.h"
#include "record/zeb_file.h"
#include "record/zeb_frame_data.h"

using namespace zebx;

namespace {

constexpr int kFramesPerGroup = 25;

CZebFrameData MakeFrame(DWORD frame_bytes) {
  CZebFrameData frame;
  Require(frame.SetVideoLength(frame_bytes - DWORD{kFrameHeaderBytes}) == 1, "frame too large");
  std::fill_n(frame.GetVideoBuf(), frame.GetVideoLength(), BYTE{0x5A});
  return frame;
}

void Create(CZebFile& file, const std::string& path) {
  CZebFileInfo info;
  info.SetFileName(path);
  Require(file.Open(&info, kZebFileWrite) == 1, "cannot create the recording");
}

void Append(CZebFile& file, CZebFrameData& frame, int number) {
  frame.SetFrameType(static_cast<WORD>(number % kFramesPerGroup == 0 ? 0 : 1));
  frame.SetTimeStamp(static_cast<DWORD>(number) * 40);
  Require(file.WriteOneFrame(&frame) == kFrameWritten, "cannot append a frame");
}

void Record(const std::string& path, DWORD frame_bytes, int frames) {
  CZebFrameData frame = MakeFrame(frame_bytes);
  CZebFile file;
  Create(file, path);
  for (int i = 0; i < frames; ++i) Append(file, frame, i);
  file.Close();
}

// The bytes of the same recording without its chain: what stands before the frames, so that they
// lie across the disk's pages as they do there, and then one write a frame.
void WriteBare(const std::string& path, DWORD frame_bytes, int frames) {
  const std::vector<BYTE> bytes(frame_bytes, 0x5A);
  const std::size_t before_frames = CZebFileInfo().GetSize() + kBlockHeaderBytes;
  const int descriptor = open(path.c_str(), O_CREAT | O_TRUNC | O_RDWR | O_CLOEXEC, 0666);
  Require(write(descriptor, bytes.data(), before_frames) > 0, "cannot write");
  for (int i = 0; i < frames; ++i) {
    Require(write(descriptor, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()),
            "cannot write");
  }
  close(descriptor);
}

// The files are removed untimed, as what they cost then lies with the disk alone.
void AppendFrames(benchmark::State& state) {
  const auto frame_bytes = static_cast<DWORD>(state.range(0));
  const auto frames = static_cast<int>(state.range(1));
  const std::string path = BenchPath("append");
  Compare(
      state, frames, [&] { std::filesystem::remove(path); },
      [&] { Record(path, frame_bytes, frames); }, [&] { WriteBare(path, frame_bytes, frames); });
  std::filesystem::remove(path);
}
BENCHMARK(AppendFrames)
    ->Args({18 * 1024, 5000})
    ->Args({1024, 25000})
    ->UseManualTime()
    ->Iterations(40)
    ->Unit(benchmark::kMillisecond);

// Pieces in which a file lies on the disk.
double Extents(const std::string& path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  fiemap map;
  std::memset(&map, 0, sizeof(map));
  map.fm_length = FIEMAP_MAX_OFFSET;
  map.fm_flags = FIEMAP_FLAG_SYNC;
  Require(ioctl(descriptor, FS_IOC_FIEMAP, &map) == 0, "the disk does not tell extents");
  close(descriptor);
  return map.fm_mapped_extents;
}

// Lets the disk write down what it has been given of a file, as it does by itself after a while.
void WriteBack(const std::string& path) {
  const int descriptor = open(path.c_str(), O_WRONLY | O_CLOEXEC);
  Require(fdatasync(descriptor) == 0, "cannot write back");
  close(descriptor);
}

// Sixteen recordings of 100 MB, frame by frame in turn, next to sixteen bare loops. The argument:
// after how many frames each the disk writes them down; 0 leaves that to the disk.
void WriteInTurn(benchmark::State& state) {
  constexpr std::size_t kFiles = 16;
  constexpr int kFrames = 100 * 1024 / 18;
  const auto write_back_frames = static_cast<int>(state.range(0));
  CZebFrameData frame = MakeFrame(18 * 1024);
  std::array<std::string, kFiles> paths;
  for (std::size_t i = 0; i < kFiles; ++i) paths[i] = BenchPath("turn" + std::to_string(i));
  const auto write = [&](auto&& append) {
    for (int number = 0; number < kFrames; ++number) {
      for (std::size_t i = 0; i < kFiles; ++i) append(i, number);
      if (write_back_frames == 0 || number % write_back_frames != 0) continue;
      for (const auto& path : paths) WriteBack(path);
    }
  };
  const auto count_and_remove = [&] {
    double extents = 0;
    for (const auto& path : paths) {
      extents += Extents(path);
      std::filesystem::remove(path);
    }
    return extents;
  };
  for ([[maybe_unused]] auto _ : state) {
    std::array<CZebFile, kFiles> recordings;
    for (std::size_t i = 0; i < kFiles; ++i) Create(recordings[i], paths[i]);
    write([&](std::size_t i, int number) { Append(recordings[i], frame, number); });
    for (CZebFile& recording : recordings) recording.Close();
    state.counters["extents"] = count_and_remove();

    std::array<std::ofstream, kFiles> bare;
    const std::vector<char> bytes(18 * 1024, 0x5A);
    for (std::size_t i = 0; i < kFiles; ++i) {
      bare[i].rdbuf()->pubsetbuf(nullptr, 0);
      bare[i].open(paths[i], std::ios::binary);
    }
    write([&](std::size_t i, int) { bare[i].write(bytes.data(), std::ssize(bytes)); });
    for (auto& file : bare) file.close();
    state.counters["bare_extents"] = count_and_remove();
    state.counters["ratio"] = state.counters["extents"] / state.counters["bare_extents"];
  }
}
BENCHMARK(WriteInTurn)->Arg(0)->Arg(28)->Iterations(1)->Unit(benchmark::kSecond);

void ReadFrames(benchmark::State& state) {
  const auto frame_bytes = static_cast<DWORD>(state.range(0));
  const auto frames = static_cast<int>(state.range(1));
  const std::string path = BenchPath("read");
  Record(path, frame_bytes, frames);
  CZebFileInfo info;
  info.SetFileName(path);
  CZebFrameData frame;
  Compare(
      state, frames,
      [&] {
        CZebFile file;
        Require(file.Open(&info, kZebFileRead) == 1, "cannot open the recording");
        int read = 0;
        while (file.ReadOneFrame(&frame, -1, 0) == 1) ++read;
        Require(read == frames, "frames are missing");
      },
      [&] {
        std::array<BYTE, kFrameHeaderBytes> header;
        std::vector<BYTE> body(frame_bytes - kFrameHeaderBytes);
        const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
        for (int i = 0; i < frames; ++i) {
          Require(read(descriptor, header.data(), header.size()) > 0, "cannot read");
          Require(read(descriptor, body.data(), body.size()) > 0, "cannot read");
        }
        close(descriptor);
      });
  std::filesystem::remove(path);
}
BENCHMARK(ReadFrames)
    ->Args({20 * 1024, 5000})
    ->Args({1024, 50000})
    ->UseManualTime()
    ->Iterations(40)
    ->Unit(benchmark::kMillisecond);

// A recording of `blocks` blocks, each `block_bytes` long, as a file of holes between the block
// headers: what opening it reads is all there.
void MakeChain(const std::string& path, DWORD blocks, DWORD block_bytes) {
  CZebFileInfo info;
  info.SetFileName(path);
  CZebFile file;
  Require(file.Open(&info, kZebFileWrite) == 1, "cannot create the recording");
  CZebFrameData frame = MakeFrame(1024);
  Require(file.WriteOneFrame(&frame) == kFrameWritten, "cannot append a frame");
  file.Close();

  const DWORD first = info.GetSize();
  std::fstream chain(path, std::ios::in | std::ios::out | std::ios::binary);
  for (DWORD block = 0; block < blocks; ++block) {
    const DWORD offset = first + block * block_bytes;
    BlockHeader header;
    header.m_previous = block == 0 ? kNoBlock : offset - block_bytes;
    header.m_next = block + 1 == blocks ? kNoBlock : offset + block_bytes;
    header.m_frames = 101;
    const auto bytes = header.Format();
    chain.seekp(offset);
    chain.write(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  }
  chain.close();
  std::filesystem::resize_file(path, first + std::uintmax_t{blocks} * block_bytes);
}

void OpenRecording(benchmark::State& state) {
  const auto blocks = static_cast<DWORD>(state.range(0));
  const auto block_bytes = static_cast<DWORD>(state.range(1));
  const std::string path = BenchPath("open");
  MakeChain(path, blocks, block_bytes);
  CZebFileInfo info;
  info.SetFileName(path);
  const DWORD first = info.GetSize();
  Compare(
      state, 1,
      [&] {
        CZebFile file;
        Require(file.Open(&info, kZebFileRead) == 1, "cannot open the recording");
        benchmark::DoNotOptimize(file.GetTotalFrame());
      },
      [&] {
        std::array<BYTE, kBlockHeaderBytes> bytes;
        const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
        DWORD offset = first;
        while (offset != kNoBlock) {
          Require(pread(descriptor, bytes.data(), bytes.size(), offset) > 0, "cannot read");
          offset = BlockHeader::Parse(bytes).m_next;
        }
        close(descriptor);
      });
  std::filesystem::remove(path);
}
BENCHMARK(OpenRecording)
    ->Args({1000, 1024 * 1024})
    ->UseManualTime()
    ->Iterations(300)
    ->Unit(benchmark::kMicrosecond);

// Heap bytes that an open recording holds: 12 a block and a constant.
void MemoryOfOpenRecording(benchmark::State& state) {
  const auto blocks = static_cast<DWORD>(state.range(0));
  const std::string path = BenchPath("memory");
  MakeChain(path, blocks, 8192);
  CZebFileInfo info;
  info.SetFileName(path);
  for (auto _ : state) {
    const auto before = mallinfo2();
    CZebFile file;
    Require(file.Open(&info, kZebFileRead) == 1, "cannot open the recording");
    const auto after = mallinfo2();
    const auto heap = [](const struct mallinfo2& info2) { return info2.uordblks + info2.hblkhd; };
    state.counters["heap_bytes"] = static_cast<double>(heap(after) - heap(before));
    state.counters["heap_bytes_per_block"] =
        static_cast<double>(heap(after) - heap(before)) / static_cast<double>(blocks);
  }
  std::filesystem::remove(path);
}
BENCHMARK(MemoryOfOpenRecording)->Arg(1000)->Arg(10000)->Arg(100000)->Iterations(1);

}  // namespace

BENCHMARK_MAIN();
