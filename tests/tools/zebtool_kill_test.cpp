// A recording process that is killed at random moments: every frame whose bytes were written comes
// back.
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <new>
#include <random>

#include "tests/tools/test_recording.h"
#include "tests/tools/tool_run.h"

namespace {

constexpr unsigned kKills = 200;
constexpr DWORD kFramesAtMost = 1200;
constexpr int kGop = 5;

// What the recording process tells the one that kills it.
struct Progress {
  std::atomic<DWORD> frames_written = 0;
};

class SharedProgress {
 public:
  SharedProgress()
      : m_memory(mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS,
                      -1, 0)) {
    if (m_memory == MAP_FAILED) throw std::bad_alloc();
    m_progress = new (m_memory) Progress;
  }
  ~SharedProgress() { munmap(m_memory, sizeof(Progress)); }
  Progress& operator*() { return *m_progress; }
  Progress* operator->() { return m_progress; }

 private:
  void* m_memory;
  Progress* m_progress;
};

// Records until it is killed.
[[noreturn]] void Record(const std::string& path, const std::vector<TestFrame>& frames,
                         Progress& progress) {
  CZebFileInfo info = TestHeader(path);
  CZebFile file;
  if (file.Open(&info, kZebFileWrite) == 0) _exit(1);
  CZebFrameData data;
  for (const TestFrame& frame : frames) {
    Fill(data, frame);
    if (file.WriteOneFrame(&data) != kFrameWritten) _exit(2);
    progress.frames_written.fetch_add(1);
  }
  while (true) pause();  // too fast for the other one: nothing is left to record
}

TEST(KilledRecorder, LosesNoFrameThatWasWritten) {
  const TempDir dir;
  const std::string path = dir.File("killed.zebz");
  const std::string saved = dir.File("saved.zebz");
  auto frames = MakeFrames(kFramesAtMost, kGop, 30);
  // Half of the recordings have ordinary encoders' blocks, of 101 frames and more.
  auto ordinary = frames;
  for (TestFrame& frame : ordinary) frame.flags &= static_cast<WORD>(~kFrameEncoderTypeMask);

  std::mt19937 random(20240501);
  for (unsigned kill_number = 0; kill_number < kKills; ++kill_number) {
    const auto& wanted = kill_number % 2 == 0 ? frames : ordinary;
    for (const std::string& old : {path, saved}) std::filesystem::remove(old);
    SharedProgress progress;
    const auto kill_after =
        static_cast<DWORD>(random() % (kFramesAtMost / (1U + kill_number % 8U)));
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) Record(path, wanted, *progress);
    while (progress->frames_written.load() < kill_after) {
      if (waitpid(child, nullptr, WNOHANG) == child) FAIL() << "the recorder ended by itself";
      sched_yield();
    }
    ASSERT_EQ(kill(child, SIGKILL), 0);
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    const DWORD written = progress->frames_written.load();
    SCOPED_TRACE("killed after " + std::to_string(written) + " frames");

    const ToolRun info = RunTool({"info", path, "--json"});
    EXPECT_TRUE(Contains(info.out, "\"state\": \"unfinished\"") ||
                Contains(info.out, "\"state\": \"whole\""))
        << info.out;
    // Every block that was complete is there for the library, before anything is repaired.
    const auto finished = static_cast<std::size_t>(JsonNumber(info.out, "finished_frames"));
    const auto readable = ReadFrames(path);
    ASSERT_EQ(readable.size(), finished);
    ASSERT_TRUE(std::equal(readable.begin(), readable.end(), wanted.begin()));
    EXPECT_GE(finished + 120, written);

    const ToolRun salvaged = RunTool({"salvage", path, saved});
    if (written == 0 && salvaged.status != 0) continue;
    ASSERT_EQ(salvaged.status, 0) << salvaged.err;
    const auto all = ReadFrames(saved);
    ASSERT_GE(all.size(), written);
    ASSERT_LE(all.size(), written + 1);
    ASSERT_TRUE(std::equal(all.begin(), all.end(), wanted.begin()));
    EXPECT_EQ(RunTool({"verify", saved}).status, 0) << RunTool({"verify", saved}).out;
  }
}

}  // namespace
