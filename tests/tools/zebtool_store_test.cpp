// The disks of a database by command line: making the list, showing it, judging and recycling.
#include "platform/os/clock.h"
#include "tests/tools/store_fixture.h"

namespace {

using ZebtoolStore = StoreFixture;

TEST_F(ZebtoolStore, FirstDiskStandsWhereItWasAskedForAndLeavesNothingElse) {
  const ToolRun run = Run({"store", "init", "d:\\dvr", "--reserved", "7", "--recycle", "--name",
                           "Front", "--alarm", "--alarm-sound", "d:\\bell.wav"});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_FALSE(std::filesystem::exists(Drive('d') / "database"));
  const std::string json = Run({"store", "disks", "--json"}).out;
  EXPECT_TRUE(Contains(json, "\"name\": \"Front(d:\\\\)\"")) << json;
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
  Init({"--recycle"}, true);
  EXPECT_EQ(Run({"store", "remove", "e:\\"}).status, 0);
  EXPECT_FALSE(Contains(Run({"store", "disks"}).out, "(e:\\)"));
  ASSERT_EQ(Run({"store", "add", "e:\\dvr"}).status, 0);
  EXPECT_TRUE(Contains(Run({"store", "remove", "0"}).out, "there is no working disk"));
  EXPECT_EQ(Run({"store", "remove", "0"}).status, 1);  // the only one
  EXPECT_TRUE(Contains(Run({"store", "disks"}).out, "(e:\\)"));
}

// Opening would drop the disk, and closing would write the list without it.
TEST_F(ZebtoolStore, DiskThatIsNotThereIsNotLostFromTheList) {
  Init({"--recycle"}, true);
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
  Init({"--recycle"}, true);
  const std::string whole = ReadWholeFile(Database());
  for (const std::string& bytes : {whole.substr(0, 30), std::string(100, '\x41')}) {
    WriteWholeFile(Database(), bytes);
    const ToolRun run = Run({"store", "disks"});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(Contains(run.err, "is no database file")) << run.err;
    EXPECT_EQ(ReadWholeFile(Database()), bytes);
  }
}

TEST_F(ZebtoolStore, CheckJudgesTheWorkingDisk) {
  Init();
  for (const auto& [quota_mb, status] : {std::pair(80U, 0), {20U, 0}, {1U, 1}}) {
    Mount('d', quota_mb * kMegabyte);
    EXPECT_EQ(Run({"store", "check"}).status, status) << quota_mb;
  }
}

TEST_F(ZebtoolStore, RecyclingDoesWhatTheDryRunSaid) {
  Init({"--recycle", "--reserved", "1"}, true);
  Mount('d', 3 * kMegabyte);
  Mount('e', 3 * kMegabyte);
  MakeFile('d', "d20240505", 10);
  MakeFile('e', "d20240502", 1000);
  const std::vector<std::string> recycle = {"store", "recycle", "--now", "2024-05-05 10:00:00"};
  std::vector<std::string> dry_run = recycle;
  dry_run.emplace_back("--dry-run");

  EXPECT_EQ(Run(dry_run).out,
            "would delete 2024-05-02 of ZebDatabase(e:\\), 1,000 bytes\n"
            "working disk ZebDatabase(e:\\)\n");
  EXPECT_TRUE(HasDay('e', "d20240502"));
  EXPECT_EQ(Run(recycle).out, "deleted 2024-05-02\nworking disk ZebDatabase(e:\\)\n");
  EXPECT_FALSE(HasDay('e', "d20240502"));
  for (const auto& arguments : {dry_run, recycle}) {  // what is left is of today
    const ToolRun run = Run(arguments);
    EXPECT_EQ(run.out, "nothing can be recycled: no working disk\n");
    EXPECT_EQ(run.status, 1);
  }
  EXPECT_TRUE(HasDay('d', "d20240505"));
}

TEST_F(ZebtoolStore, RepairFinishesWhatACrashLeft) {
  Init();
  const auto frames = MakeFrames(30);
  const std::string path = MakeFile('d', "d20240505", 0).string() + ".zebz";
  WriteWholeFile(path, MakeRecording(frames, false));
  EXPECT_EQ(Run({"store", "repair", "--date", "2024-05-04"}).status, 1);
  const std::string json = Run({"store", "repair", "--date", "2024-05-05", "--json"}).out;
  EXPECT_EQ(JsonNumber(json, "finished"), 1) << json;
  EXPECT_EQ(ReadFrames(path), frames);
  EXPECT_TRUE(Contains(Run({"store", "repair"}).out, "0 finished, 1 whole already"));
}

}  // namespace
