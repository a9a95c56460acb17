// Recording onto the disks of a database: where files go, when they end, and what a shortage does.
#include <algorithm>

#include "tests/tools/sound_fixture.h"
#include "tests/tools/store_fixture.h"

namespace {

namespace fs = std::filesystem;

class ZebtoolRecord : public StoreFixture {
 protected:
  // `frames` pictures at a rate of pictures per seconds.
  std::string Video(int frames = 3, const std::string& rate = "1:1") const {
    std::string path = m_dir.File("video.y4m");
    WriteWholeFile(path, MakeY4m(176, 144, frames, rate));
    return path;
  }

  // The recordings below a directory of a drive, by name.
  std::vector<fs::path> Recordings(char letter) const {
    std::vector<fs::path> found;
    for (const auto& entry : fs::recursive_directory_iterator(Drive(letter))) {
      if (entry.path().extension() == ".zebz") found.push_back(entry.path());
    }
    std::sort(found.begin(), found.end());
    return found;
  }
};

TEST_F(ZebtoolRecord, FilesEndWithTheirMinutesAndDaysPassAsRecorded) {
  Init();
  // 2 pictures a minute, the first of them with sound, and 4 loops across midnight.
  const std::string sound = m_dir.File("sound.wav");
  WriteSound(sound, MakeTone(8000 * 2, 300));
  const ToolRun run = Run({"record", Video(2, "1:30"), "--audio", sound, "--begin",
                           "2024-05-01 23:58:00", "--loops", "4", "--minutes", "1", "--json"});
  ASSERT_EQ(run.status, 0) << run.err;
  const auto found = Recordings('d');
  ASSERT_EQ(found.size(), 4U);
  const char* const kNames[] = {"c0000240501235800.zebz", "c0000240501235900.zebz",
                                "c0000240502000000.zebz", "c0000240502000100.zebz"};
  for (std::size_t i = 0; i < found.size(); ++i) {
    EXPECT_EQ(found[i].filename(), kNames[i]);
    EXPECT_TRUE(Contains(found[i].string(), i < 2 ? "d20240501" : "d20240502"));
  }
  EXPECT_EQ(JsonNumber(run.out, "i_frames"), 4);
  EXPECT_EQ(JsonNumber(run.out, "voiced_frames"), 4);
}

TEST_F(ZebtoolRecord, RecordingThatIsThereAlreadyIsNotWrittenOver) {
  Init();
  const std::vector<std::string> record = {"record", Video(), "--begin", "2024-05-01 08:30:00"};
  ASSERT_EQ(Run(record).status, 0);
  const std::string path = Recordings('d').at(0).string();
  const std::string before = ReadWholeFile(path);
  WriteWholeFile(m_dir.File("video.y4m"), MakeY4m(176, 144, 1));
  const ToolRun again = Run(record);
  EXPECT_EQ(again.status, 1);
  EXPECT_TRUE(Contains(again.err, "is there already")) << again.err;
  EXPECT_EQ(ReadWholeFile(path), before);
}

// The room left is just above the reserve; the recording itself brings the disk below its reserve.
TEST_F(ZebtoolRecord, ShortageWhileRecordingEndsTheFileFirst) {
  Init();
  MakeFile('d', "d20240429", 900 << 10);
  Mount('d', 2 * kMegabyte);
  const ToolRun run = Run({"record", Video(30, "1:2"), "--quantiser", "1,1", "--gop", "1",
                           "--begin", "2024-05-01 00:00:00", "--loops", "4", "--json"});
  EXPECT_TRUE(Contains(run.out, "\"deleted_days\": [\n    \"2024-04-29\"")) << run.out << run.err;
  EXPECT_FALSE(HasDay('d', "d20240429"));
  for (const fs::path& path : Recordings('d')) {
    EXPECT_EQ(RunTool({"verify", path.string()}).status, 0) << path;
  }
  EXPECT_GE(Recordings('d').size(), 2U);

  Mount('d', 1 * kMegabyte);
  const ToolRun full = Run({"record", Video(), "--begin", "2024-05-01 10:00:00"});
  EXPECT_EQ(full.status, 1);
  EXPECT_TRUE(Contains(full.err, "no disk has room")) << full.err;  // what is left is of today
}

}  // namespace
