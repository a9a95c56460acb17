// Checking recordings: every damage is found, named and placed, and what the library makes is none.
// Finishing them after a crash: never at the price of the one that is there.
#include "recovery/repair.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "recovery/recording_check.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/made_recording.h"
#include "tests/support/test_drive.h"

namespace {

using Kind = zebx::Finding::Kind;
using Severity = zebx::Finding::Severity;
using Outcome = zebx::RepairedRecording::Outcome;

class Repair : public testing::Test {
 protected:
  const std::vector<TestFrame> m_frames = MakeFrames(44);  // blocks of 18, 20 and 6
  const std::string m_whole = MakeRecording(m_frames);
  const std::string m_unfinished = MakeRecording(m_frames, false);
};

class RecordingCheck : public Repair {
 protected:
  zebx::RecordingCheck Check(const std::string& bytes) {
    m_disk.Put("r", bytes);
    return zebx::CheckRecording("r");
  }

  MemoryFileSystem m_disk;
  const std::vector<std::size_t> m_blocks = BlockOffsets(m_whole);
  const std::vector<std::size_t> m_ends = FrameEnds(m_whole, m_frames);
};

TEST_F(RecordingCheck, NamesTheDamagedFieldAndItsOffset) {
  const std::tuple<std::size_t, std::size_t, Kind> cases[] = {
      {1, 0, Kind::kNoMagic},
      {4, 4, Kind::kVersion},
      {8, 8, Kind::kHeaderSize},
      {15, 12, Kind::kUnknownFlags},
      {22, 22, Kind::kFrameSize},
      {27, 28, Kind::kEndBeforeBegin},
      {35, 32, Kind::kBeginTimeStamp},
      {37, 36, Kind::kGmt},
      {42, 40, Kind::kNameTooLong},
      {m_blocks[0] + 7, m_whole.size(), Kind::kCutBlock},
      {m_blocks[1], m_blocks[1], Kind::kPreviousLink},
      {m_blocks[1] + 10, m_blocks[1] + 10, Kind::kReservedField},
      {m_blocks[1] + 12, m_blocks[1], Kind::kBlockStamp},
      {m_blocks[2] + 16, m_blocks[2] + 16, Kind::kNoIFrame},
      {m_ends[2] + 10, m_ends[2], Kind::kFrameTooLong},
      {m_ends[2] + 7, m_ends[2], Kind::kStampGoesBack},
  };
  for (const auto& [at, reported_at, kind] : cases) {
    SCOPED_TRACE(NameOf(kind));
    std::string broken = m_whole;
    broken[at] = static_cast<char>(broken[at] ^ 0xFF);
    const zebx::RecordingCheck check = Check(broken);
    EXPECT_GT(check.summary.damages, 0U);
    EXPECT_TRUE(
        std::ranges::any_of(check.findings, [offset = reported_at, of = kind](const auto& finding) {
          return finding.kind == of && finding.offset == offset;
        }));
  }
}

TEST_F(RecordingCheck, ChainThatLoopsOrPointsBackEnds) {
  for (const std::size_t target : {m_blocks[1], m_blocks[0], std::size_t{0}, m_blocks[1] + 8}) {
    std::string broken = m_whole;
    broken.replace(m_blocks[1] + 4, 4, Little(target));
    const zebx::RecordingCheck check = Check(broken);
    ASSERT_EQ(check.findings.size(), 1U) << target;
    EXPECT_EQ(check.findings[0].kind, Kind::kNextLink);
    EXPECT_EQ(check.findings[0].block, 1);
  }
}

TEST_F(RecordingCheck, LibrarysOwnOdditiesAreNotes) {
  // The stamp of the creation in the first block, as prepared blocks leave it.
  std::string odd = m_whole;
  odd.replace(m_blocks[0] + 12, 4, Little(1));
  const zebx::RecordingCheck prepared = Check(odd);
  EXPECT_TRUE(prepared.summary.IsWhole());
  ASSERT_EQ(prepared.findings.size(), 1U);
  EXPECT_EQ(prepared.findings[0].severity, Severity::kNote);
  // A clip of it takes that stamp for its begin, and ends in the source's empty block.
  CZebFileInfo info = MakeInfo("r");
  CZebFile file;
  ASSERT_EQ(file.Open(&info, kZebFileRead), 1);
  ASSERT_EQ(file.ClipFile("clip", 0, 99, 0), 1);
  EXPECT_TRUE(zebx::CheckRecording("clip").summary.IsWhole());

  // A clock that was set while recording: begin and end time and the stamps do not agree.
  odd = m_whole;
  odd.replace(24, 8, Little(kTestBeginSeconds - 3600) + Little(kTestBeginSeconds - 3600 + 3));
  EXPECT_TRUE(Check(odd).summary.IsWhole());
}

// What a dead writer leaves is unfinished; bytes that it cannot have left are damage.
TEST_F(RecordingCheck, UnfinishedIsToldFromDamaged) {
  const std::pair<std::string, ULONGLONG> cases[] = {
      {m_unfinished, 0},
      {m_unfinished.substr(0, m_unfinished.size() - 1), 0},
      {m_unfinished + std::string(5000, '\0'), 0},
      {m_unfinished + std::string(5000, '\xFF'), 1},
      {m_whole.substr(0, m_whole.size() - 1), 0},
      {m_whole + std::string(20, 'x'), 1},
  };
  for (const auto& [bytes, damages] : cases) {
    const zebx::CheckSummary summary = Check(bytes).summary;
    EXPECT_TRUE(summary.unfinished || damages > 0);
    EXPECT_EQ(summary.damages, damages) << bytes.size();
    EXPECT_EQ(summary.frames, bytes.size() == m_unfinished.size() - 1 ? 43U : 44U);
  }
}

TEST_F(Repair, FinishesWhatIsUnfinishedAndLeavesTheRestAlone) {
  const TestDrive drive;
  std::string damaged = m_unfinished;
  damaged[20] = '\x7F';
  damaged[12] = '\x7F';
  const std::map<std::string, std::string> files = {
      {"day/video/open.zebz", m_unfinished},
      {"day/video/cut.ZEBZ", m_unfinished.substr(0, m_unfinished.size() - 3)},
      {"day/video/whole.zebz", m_whole},
      {"day/alarm/damaged.zebz", damaged},
      {"day/alarm/empty.zebz", MakeRecording({}, false)},
      {"day/alarm/protected.zebz", m_unfinished},
      {"day/video/used.zebz", m_unfinished},
      {"day/video/old.zebz.recovery1", "x"},
      {"day/video/userlog.ulg", "x"}};
  drive.MakeDirectory("day/alarm");
  drive.MakeDirectory("day/video");
  for (const auto& [name, bytes] : files) drive.MakeFile(name, bytes);
  chmod(drive.File("day/alarm/protected.zebz").c_str(), 0400);
  std::filesystem::create_symlink(drive.File("day/video/open.zebz"),
                                  drive.File("day/alarm/link.zebz"));
  ASSERT_EQ(mkfifo(drive.File("day/alarm/pipe.zebz").c_str(), 0600), 0);
  // Room that a writer had reserved.
  const std::string empty = drive.File("day/alarm/empty.zebz");
  const int descriptor = open(empty.c_str(), O_RDWR);
  const bool is_reserved = fallocate(descriptor, FALLOC_FL_KEEP_SIZE, 0, 1 << 20) == 0;
  close(descriptor);
  CFile used;
  ASSERT_EQ(used.Open("d:\\day\\video\\used.zebz", CFile::kModeRead | CFile::kShareDenyNone), 1);

  const zebx::RepairReport report = zebx::FinishRecordings("d:\\");
  std::string outcomes;
  for (const auto& recording : report.recordings) {
    outcomes += std::filesystem::path(recording.path).filename().string() + ' ' +
                NameOf(recording.outcome) + ' ' + std::to_string(recording.frames) + ' ' +
                std::to_string(recording.frames_gained) + ' ' +
                std::to_string(recording.dropped_bytes) + '\n';
  }
  EXPECT_EQ(outcomes,
            "damaged.zebz damaged 0 0 0\nempty.zebz empty 0 0 0\nlink.zebz protected 0 0 0\n"
            "pipe.zebz failed 0 0 0\nprotected.zebz protected 0 0 0\n"
            "cut.ZEBZ finished 43 5 15\nold.zebz.recovery1 left-over 0 0 0\n"
            "open.zebz finished 44 6 0\nused.zebz in-use 0 0 0\n");
  EXPECT_EQ(report.Count(Outcome::kWhole), 1U);
  struct stat status {};
  EXPECT_EQ(stat(empty.c_str(), &status), 0);
  EXPECT_TRUE(!is_reserved || status.st_blocks * 512 < 1 << 20);
  for (const auto& [name, bytes] : files) {
    const bool is_finished = name.ends_with("open.zebz") || name.ends_with("cut.ZEBZ");
    EXPECT_EQ(ReadWholeFile(drive.File(name)) == bytes, !is_finished) << name;
  }
  EXPECT_EQ(ReadFrames("d:\\day\\video\\open.zebz"), m_frames);
  EXPECT_EQ(zebx::FinishRecordings("d:\\").Count(Outcome::kFinished), 0U);
}

TEST_F(Repair, AnyCallMayFailOrBeTheLastAndARecordingIsThere) {
  for (const bool is_power_cut : {false, true}) {
    for (const std::size_t prefix : {0U, 7U}) {
      std::uint64_t faults = 0;
      for (bool is_done = false; !is_done; ++faults) {
        SCOPED_TRACE(std::to_string(faults) + (is_power_cut ? " power cut" : " failure"));
        MemoryFileSystem disk;
        disk.Put("r.zebz", m_unfinished);
        disk.Put("r.zebz.recovery1", "foreign");
        FaultyFileSystem faulty;
        faulty.FailCall(FaultyFileSystem::kEveryCall, faults + 1, prefix);
        if (is_power_cut) faulty.CutPowerAfter(0);
        const auto repaired = zebx::FinishRecording("r.zebz");
        is_done = faulty.Failures() == 0;
        faulty.Heal();
        const bool is_repaired = disk.Get("r.zebz") != m_unfinished;
        if (is_repaired) {
          EXPECT_EQ(ReadFrames("r.zebz"), m_frames);
          EXPECT_TRUE(zebx::CheckRecording("r.zebz").summary.IsWhole());
        } else {
          EXPECT_NE(repaired->outcome, Outcome::kFinished);
        }
        EXPECT_EQ(disk.Get("r.zebz.recovery1"), "foreign");
        EXPECT_LE(disk.Everything().size(), is_power_cut ? 3U : 2U);
        // The next start does it, whatever the last one left.
        EXPECT_EQ(zebx::FinishRecording("r.zebz")->outcome,
                  is_repaired ? Outcome::kWhole : Outcome::kFinished);
        EXPECT_EQ(ReadFrames("r.zebz"), m_frames);
      }
      EXPECT_GT(faults, 20U);
    }
  }
}

// Between any two of the writes that start and close a block, too.
TEST_F(Repair, FinishesWhatAWriterLeavesThatDiesAtAnyWrite) {
  for (const std::size_t prefix : {0U, 15U, 16U}) {
    for (std::uint64_t write = 3;; ++write) {  // the first two make the file
      SCOPED_TRACE(std::to_string(write) + " with " + std::to_string(prefix));
      const MemoryFileSystem disk;
      std::size_t written = 0;
      {
        FaultyFileSystem faulty;
        faulty.FailCall(FaultyFileSystem::kWrite, write, prefix);
        faulty.CutPowerAfter(0);
        CZebFileInfo info = MakeInfo("r.zebz");
        CZebFile file;
        file.Open(&info, kZebFileWrite);
        CZebFrameData data;
        for (const TestFrame& frame : m_frames) {
          Fill(data, frame);
          written += file.WriteOneFrame(&data) == zebx::kFrameWritten ? 1 : 0;
        }
        try {
          file.Close();
        } catch (const CFileException&) {  // the power is gone
        }
        if (faulty.Failures() == 0) break;
      }
      const auto outcome = zebx::FinishRecording("r.zebz")->outcome;
      if (written == 0) continue;
      EXPECT_TRUE(outcome == Outcome::kFinished || outcome == Outcome::kWhole) << NameOf(outcome);
      const std::vector<TestFrame> frames = ReadFrames("r.zebz");
      EXPECT_GE(frames.size(), written);
      EXPECT_TRUE(std::equal(frames.begin(), frames.end(), m_frames.begin()));
    }
  }
}

TEST_F(Repair, CallbackEndsItAndNothingIsLeftBehind) {
  MemoryFileSystem disk;
  disk.Put("r.zebz", m_unfinished);
  for (int calls = 0;; ++calls) {
    int left = calls;
    const auto repaired = zebx::FinishRecording(
        "r.zebz", [&](const CString&, ULONGLONG, ULONGLONG) { return left-- > 0; });
    if (repaired) {
      EXPECT_EQ(repaired->outcome, Outcome::kFinished);
      EXPECT_GT(calls, 2);
      break;
    }
    EXPECT_EQ(disk.Everything().size(), 1U);
    EXPECT_EQ(disk.Get("r.zebz"), m_unfinished);
  }
}

}  // namespace
