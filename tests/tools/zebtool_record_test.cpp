// Recording onto the disks of a database: where files go, when they end, and what a shortage does.
#include <algorithm>

#include "record/zeb_file_info.h"
#include "tests/tools/store_fixture.h"

namespace {

namespace fs = std::filesystem;

class ZebtoolRecord : public StoreFixture {
 protected:
  // `frames` pictures at a rate of pictures per seconds.
  std::string Video(int frames = 3, const std::string& rate = "1:1") const {
    const std::string path = m_dir.File("video.y4m");
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

TEST_F(ZebtoolRecord, RecordingLiesInItsDayUnderItsCameraAndTime) {
  Init();
  const std::string video = Video();
  for (const bool alarm : {false, true}) {
    std::vector<std::string> arguments = {
        "record", video,      "--begin", "2024-05-01 08:30:00", "--host", "gate", "--board",
        "1",      "--camera", "7",       "--camera-name",       "yard"};
    if (alarm) arguments.push_back("--alarm");
    const ToolRun run = Run(arguments);
    ASSERT_EQ(run.status, 0) << run.err;
  }
  const auto found = Recordings('d');
  ASSERT_EQ(found.size(), 2U);
  const fs::path day = Drive('d') / "dvr" / "d20240501";
  for (const fs::path& path : found) EXPECT_TRUE(path.string().starts_with(day.string())) << path;
  EXPECT_NE(found[0].parent_path(), found[1].parent_path());
  std::vector<std::string> names = {found[0].filename(), found[1].filename()};
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (std::vector<std::string>{"c0107240501083000.zebz", "ca0107240501083000.zebz"}));
  CZebFileInfo header;
  ASSERT_EQ(header.Create(found[0].string()), 1);
  EXPECT_EQ(header.GetHostName(), "gate");
  EXPECT_EQ(header.GetCameraName(), "yard");
  EXPECT_EQ(header.GetBeginTime(), CTime(2024, 5, 1, 8, 30, 0));
}

TEST_F(ZebtoolRecord, FilesEndWithTheirMinutesAndDaysPassAsRecorded) {
  Init();
  // 2 pictures a minute, 8 of them in 4 loops, across midnight.
  const ToolRun run = Run({"record", Video(2, "1:30"), "--begin", "2024-05-01 23:58:00", "--loops",
                           "4", "--minutes", "1", "--json"});
  ASSERT_EQ(run.status, 0) << run.err;
  const auto found = Recordings('d');
  ASSERT_EQ(found.size(), 4U);
  const char* const kNames[] = {"c0000240501235800.zebz", "c0000240501235900.zebz",
                                "c0000240502000000.zebz", "c0000240502000100.zebz"};
  for (std::size_t i = 0; i < found.size(); ++i) {
    EXPECT_EQ(found[i].filename(), kNames[i]);
    EXPECT_TRUE(Contains(found[i].string(), i < 2 ? "d20240501" : "d20240502"));
    EXPECT_EQ(RunTool({"verify", found[i].string()}).status, 0);
  }
  EXPECT_EQ(JsonNumber(run.out, "i_frames"), 4);
}

TEST_F(ZebtoolRecord, ShortageDeletesTheOldestDayAndRecordingGoesOn) {
  Init();
  Mount('d', 3 * kMegabyte);
  MakeFile('d', "d20240428", 1 << 20);
  MakeFile('d', "d20240429", 1 << 20);
  const std::string video = Video();
  const ToolRun run = Run({"record", video, "--begin", "2024-05-01 00:00:00"});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_TRUE(run.out.starts_with("deleted 2024-04-28\n")) << run.out;
  EXPECT_FALSE(HasDay('d', "d20240428"));
  EXPECT_TRUE(HasDay('d', "d20240429"));
  EXPECT_TRUE(HasDay('d', "d20240501"));
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
}

TEST_F(ZebtoolRecord, ShortageGoesToAnotherDiskThatHasRoomBeforeAnythingIsDeleted) {
  Init({"--recycle", "--reserved", "1"}, true);
  Mount('d', 1 * kMegabyte);
  Mount('e', 80 * kMegabyte);
  MakeFile('d', "d20240428", 1000);
  const ToolRun run = Run({"record", Video(), "--begin", "2024-05-01 00:00:00"});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_TRUE(HasDay('d', "d20240428"));
  EXPECT_EQ(Recordings('e').size(), 1U);
  EXPECT_TRUE(Contains(Run({"store", "check"}).out, "(e:\\)"));  // kept for the next run
}

TEST_F(ZebtoolRecord, NoRoomAndNothingToRecycleEndsTheRecording) {
  Init({"--reserved", "1"});
  Mount('d', 1 * kMegabyte);
  MakeFile('d', "d20240428", 1000);
  const ToolRun run = Run({"record", Video(), "--begin", "2024-05-01 00:00:00"});
  EXPECT_EQ(run.status, 1);
  EXPECT_TRUE(Contains(run.err, "no disk has room")) << run.err;
  EXPECT_TRUE(HasDay('d', "d20240428"));
  EXPECT_TRUE(Recordings('d').empty());
}

TEST_F(ZebtoolRecord, EveryLoopBringsItsSound) {
  Init();
  const std::string sound = m_dir.File("sound.wav");
  WriteWholeFile(sound, MakeWav(MakeTone(8000 * 2, 300)));  // the third second is silent
  const ToolRun run = Run({"record", Video(), "--audio", sound, "--loops", "2", "--json"});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(JsonNumber(run.out, "frames"), 6);
  EXPECT_EQ(JsonNumber(run.out, "voiced_frames"), 4);
}

TEST_F(ZebtoolRecord, WrongUsageSaysSo) {
  const std::string video = Video();
  EXPECT_EQ(RunTool({"record", video}).status, 2);
  EXPECT_EQ(Run({"record", video}).status, 1);  // no database yet
  Init();
  EXPECT_EQ(Run({"record", "-", "--loops", "2"}).status, 2);
  EXPECT_EQ(Run({"record", video, "--minutes", "0"}).status, 2);
  EXPECT_EQ(Run({"record", m_dir.File("none.y4m")}).status, 1);
}

}  // namespace
