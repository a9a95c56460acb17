// A recording process that is killed at random moments: every frame whose bytes were written comes
// back.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <random>

#include "tests/tools/tool_fixture.h"

using namespace zebx;

namespace {

constexpr unsigned kKills = 200;
constexpr int kFramesAtMost = 600;
constexpr unsigned kFramesBeforeTheKill = 250;

// Records until it is killed, and sends a byte for every frame written.
[[noreturn]] void Record(const std::string& path, const std::vector<TestFrame>& frames, int pipe) {
  CZebFileInfo info = MakeInfo(path);
  CZebFile file;
  if (file.Open(&info, kZebFileWrite) == 0) _exit(1);
  CZebFrameData data(64, 64, 64);
  for (const TestFrame& frame : frames) {
    Fill(data, frame);
    if (file.WriteOneFrame(&data) != kFrameWritten || write(pipe, "", 1) != 1) _exit(1);
  }
  while (true) pause();  // too fast for the other one: nothing is left to record
}

// Kills a recording process some time after its frame `wait_for`, and returns how many frames it
// had written for certain.
std::size_t RecordAndKill(const std::string& path, const std::vector<TestFrame>& frames,
                          std::size_t wait_for) {
  std::array<int, 2> ends{};
  EXPECT_EQ(pipe(ends.data()), 0);
  const pid_t child = fork();
  if (child == 0) Record(path, frames, ends[1]);
  close(ends[1]);
  std::array<char, kFramesAtMost> bytes;
  std::size_t written = 0;
  ssize_t got = 1;
  for (bool killed = false; got > 0; written += static_cast<std::size_t>(got)) {
    if (!killed && written >= wait_for) killed = kill(child, SIGKILL) == 0;
    got = read(ends[0], bytes.data(), killed ? bytes.size() : wait_for - written);
  }
  EXPECT_EQ(got, 0);
  close(ends[0]);
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFSIGNALED(status)) << "the recorder ended by itself";
  return written;
}

TEST(KilledRecorder, LosesNoFrameThatWasWritten) {
  const TempDir dir;
  const std::string path = dir.File("killed.zebz");
  const std::string saved = dir.File("saved.zebz");
  const auto frames = MakeFrames(kFramesAtMost, 5, 30);
  // Half of the recordings have ordinary encoders' blocks, of 101 frames and more.
  auto ordinary = frames;
  for (TestFrame& frame : ordinary) frame.flags &= static_cast<WORD>(~kFrameEncoderTypeMask);

  // The same kills in every run.
  // NOLINTNEXTLINE(cert-msc32-c,cert-msc51-cpp)
  std::mt19937 random(20240501);
  for (unsigned kill_number = 0; kill_number < kKills; ++kill_number) {
    const auto& wanted = kill_number % 2 == 0 ? frames : ordinary;
    const auto is_start = [&](const std::vector<TestFrame>& some) {
      return std::equal(some.begin(), some.end(), wanted.begin());
    };
    for (const std::string& old : {path, saved}) std::filesystem::remove(old);
    const std::size_t written = RecordAndKill(path, wanted, random() % kFramesBeforeTheKill);
    SCOPED_TRACE("killed after " + std::to_string(written) + " frames");

    // Every block that was complete is there for the library, before anything is repaired.
    const auto readable = ReadFrames(path);
    ASSERT_TRUE(is_start(readable));
    EXPECT_GE(readable.size() + 120, written);

    const ToolRun salvaged = RunTool({"salvage", path, saved});
    if (written == 0 && salvaged.status != 0) continue;
    ASSERT_EQ(salvaged.status, 0) << salvaged.err;
    const auto all = ReadFrames(saved);
    ASSERT_GE(all.size(), written);
    ASSERT_LE(all.size(), written + 1);
    ASSERT_TRUE(is_start(all));
    EXPECT_EQ(RunTool({"verify", saved}).status, 0);
  }
}

}  // namespace
