// The disks of a database by command line: making the list, showing it, judging and recycling.
#include "tests/tools/store_fixture.h"

namespace {

using ZebtoolStore = StoreFixture;

TEST_F(ZebtoolStore, FirstDiskStandsWhereItWasAskedForAndLeavesNothingElse) {
  const ToolRun run = Run({"store", "init", "d:\\dvr", "--reserved", "7", "--recycle", "--name",
                           "Front", "--alarm", "--alarm-sound", "d:\\bell.wav"});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_FALSE(std::filesystem::exists(Drive('d') / "database"));
  const std::string json = Run({"store", "disks", "--json"}).out;
  EXPECT_TRUE(Contains(json, "\"directory\": \"d:\\\\dvr\\\\\"")) << json;
  EXPECT_TRUE(Contains(json, "\"alarm_sound\": \"d:\\\\bell.wav\"")) << json;
  EXPECT_EQ(JsonNumber(json, "reserved_mb"), 7);
}

TEST_F(ZebtoolStore, DefaultDiskLiesBelowTheDataDirectory) {
  EXPECT_EQ(Run({"store", "init", "--data", "d:"}).status, 0);
  EXPECT_TRUE(Contains(Run({"store", "disks"}).out, "directory  d:\\database\\"));
  EXPECT_EQ(Run({"store", "init", "--data", "d:"}).status, 1);  // it is there already
}

TEST_F(ZebtoolStore, FailedInitLeavesNoDatabase) {
  std::filesystem::create_directories(Drive('d') / "database");  // somebody else's
  WriteWholeFile((Drive('d') / "dvr").string(), "a file in the directory's place");
  EXPECT_EQ(Run({"store", "init", "d:\\dvr"}).status, 1);
  EXPECT_FALSE(std::filesystem::exists(Database()));
  EXPECT_TRUE(std::filesystem::exists(Drive('d') / "database"));
  EXPECT_TRUE(Contains(Run({"store", "init", "x:\\dvr"}).err, "no drive is mounted"));
  EXPECT_EQ(Run({"store", "init", m_dir.File("dvr")}).status, 2);
}

TEST_F(ZebtoolStore, DisksComeAndGoByPathAndByIndex) {
  Init(true);
  EXPECT_EQ(Run({"store", "remove", "e:\\"}).status, 0);
  EXPECT_FALSE(Contains(Run({"store", "disks"}).out, "(e:\\)"));
  ASSERT_EQ(Run({"store", "add", "e:\\dvr"}).status, 0);
  EXPECT_TRUE(Contains(Run({"store", "remove", "0"}).out, "there is no working disk"));
  EXPECT_EQ(Run({"store", "remove", "0"}).status, 1);  // the only one
  EXPECT_TRUE(Contains(Run({"store", "disks"}).out, "(e:\\)"));
}

// Opening would drop the disk, and closing would write the list without it.
TEST_F(ZebtoolStore, DiskThatIsNotThereIsNotLostFromTheList) {
  Init(true);
  const std::string before = ReadWholeFile(Database());
  os::UnmountDrive('e');
  for (const std::string& nowhere : {std::string(), "e=" + m_dir.File("nowhere")}) {
    const ToolRun run =
        Run({"store", "disks", "--drive", "d=" + Drive('d').string() + ';' + nowhere});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(Contains(run.err, "--drive")) << run.err;
    EXPECT_EQ(ReadWholeFile(Database()), before);
  }
  EXPECT_EQ(Run({"store", "space", "--drive", "e=" + Drive('e').string()}).status, 0);
}

TEST_F(ZebtoolStore, DatabaseFileThatIsNoneIsRefusedAndKept) {
  Init(true);
  const std::string whole = ReadWholeFile(Database());
  for (const std::string& bytes : {whole.substr(0, 30), std::string(100, '\x41')}) {
    WriteWholeFile(Database(), bytes);
    const ToolRun run = Run({"store", "disks"});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(Contains(run.err, "is no database file")) << run.err;
    EXPECT_EQ(ReadWholeFile(Database()), bytes);
  }
}

TEST_F(ZebtoolStore, RecyclingDoesWhatTheDryRunSaid) {
  Init();
  EXPECT_EQ(Run({"store", "check"}).status, 0);
  Mount('d', 1 * kMegabyte);
  EXPECT_EQ(Run({"store", "check"}).status, 1);
  Mount('d', 3 * kMegabyte);
  MakeFile('d', "d20240505", 10);
  MakeFile('d', "d20240502", 1000);
  const auto recycle = [&](std::vector<std::string> options) {
    options.insert(options.begin(), {"store", "recycle", "--now", "2024-05-05 10:00:00"});
    return Run(options).out;
  };
  EXPECT_TRUE(
      Contains(recycle({"--dry-run"}), "would delete 2024-05-02 of ZebDatabase(d:\\), 1,000"));
  EXPECT_TRUE(HasDay('d', "d20240502"));
  EXPECT_TRUE(Contains(recycle({}), "deleted 2024-05-02\n"));
  EXPECT_FALSE(HasDay('d', "d20240502"));
  EXPECT_EQ(recycle({"--dry-run"}), "nothing can be recycled: no working disk\n");
  EXPECT_EQ(recycle({}), "nothing can be recycled: no working disk\n");
  EXPECT_TRUE(HasDay('d', "d20240505"));
}

TEST_F(ZebtoolStore, RepairFinishesWhatACrashLeft) {
  Init();
  const auto frames = MakeFrames(30);
  const std::string path = MakeFile('d', "d20240505", 0).string() + ".zebz";
  WriteWholeFile(path, MakeRecording(frames, false));
  WriteWholeFile(path + ".zebz", "damaged");
  EXPECT_EQ(Run({"store", "repair", "--date", "2024-05-04"}).status, 1);
  const ToolRun run = Run({"store", "repair", "--date", "2024-05-05", "--json"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(JsonNumber(run.out, "finished"), 1) << run.out;
  EXPECT_EQ(JsonNumber(run.out, "damaged"), 1) << run.out;
  EXPECT_EQ(ReadFrames(path), frames);
  EXPECT_TRUE(Contains(Run({"store", "repair"}).out, "0 finished, 1 whole already"));
}

}  // namespace
