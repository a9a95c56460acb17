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
  EXPECT_TRUE(Contains(json, "\"working\": true")) << json;
  EXPECT_TRUE(Contains(json, "\"recycle\": true")) << json;
  EXPECT_TRUE(Contains(json, "\"alarm_sound\": \"d:\\\\bell.wav\"")) << json;
  EXPECT_EQ(JsonNumber(json, "reserved_mb"), 7);
  EXPECT_EQ(JsonNumber(json, "alarm_mb"), 57);
}

TEST_F(ZebtoolStore, FilesAtTheRootOfTheDriveSurviveInit) {
  std::filesystem::create_directories(Drive('d') / "database");
  Init();
  EXPECT_TRUE(std::filesystem::exists(Drive('d') / "database"));
  EXPECT_TRUE(std::filesystem::exists(Drive('d') / "dvr"));
}

TEST_F(ZebtoolStore, FirstDiskMayBeWhereADefaultDiskWouldBe) {
  for (const std::string path : {"D:\\Database\\", "e:\\database\\sub"}) {
    std::filesystem::remove(Database());
    std::filesystem::create_directories(Drive('e') / "database");
    const ToolRun run = Run({"store", "init", path});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(Contains(Run({"store", "space"}).out, "MB free")) << path;
  }
}

TEST_F(ZebtoolStore, DefaultDiskLiesBelowTheDataDirectory) {
  ASSERT_EQ(Run({"store", "init", "--data", "d:"}).status, 0);
  EXPECT_TRUE(Contains(Run({"store", "disks"}).out, "directory  d:\\database\\"));
  EXPECT_EQ(Run({"store", "init", "--data", "d:"}).status, 1);  // it is there already
}

TEST_F(ZebtoolStore, FailedInitLeavesNoDatabase) {
  WriteWholeFile((Drive('d') / "dvr").string(), "a file in the directory's place");
  EXPECT_EQ(Run({"store", "init", "d:\\dvr"}).status, 1);
  EXPECT_FALSE(std::filesystem::exists(Database()));
  EXPECT_FALSE(std::filesystem::exists(Drive('d') / "database"));
  EXPECT_TRUE(Contains(Run({"store", "init", "x:\\dvr"}).err, "no drive is mounted"));
  EXPECT_EQ(Run({"store", "init", m_dir.File("dvr")}).status, 2);
  EXPECT_EQ(Run({"store", "init"}).status, 2);
  EXPECT_FALSE(std::filesystem::exists(Database()));
}

TEST_F(ZebtoolStore, DisksComeAndGoByPathAndByIndex) {
  Init({"--recycle"}, true);
  EXPECT_EQ(Run({"store", "add", "E:\\other"}).status, 1);  // the drive has a disk
  EXPECT_EQ(Run({"store", "remove", "7"}).status, 1);
  EXPECT_EQ(Run({"store", "remove", "e:\\"}).status, 0);
  EXPECT_FALSE(Contains(Run({"store", "disks"}).out, "(e:\\)"));
  EXPECT_TRUE(std::filesystem::exists(Drive('e') / "dvr"));
  ASSERT_EQ(Run({"store", "add", "e:\\dvr"}).status, 0);
  const ToolRun run = Run({"store", "remove", "0"});
  EXPECT_EQ(run.status, 0);
  EXPECT_TRUE(Contains(run.out, "there is no working disk")) << run.out;
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
  const struct {
    ULONGLONG quota_mb;
    int result;
    int status;
    const char* words;
  } kCases[] = {{80, 0, 0, "enough space"},
                {20, 2, 0, "below its alarm space"},
                {1, 1, 1, "below its reserved space"}};
  for (const auto& [quota_mb, result, status, words] : kCases) {
    Mount('d', quota_mb * kMegabyte);
    const ToolRun run = Run({"store", "check", "--json"});
    EXPECT_EQ(JsonNumber(run.out, "result"), result) << quota_mb;
    EXPECT_EQ(run.status, status) << quota_mb;
    EXPECT_TRUE(Contains(Run({"store", "check"}).out, words)) << quota_mb;
  }
  Mount('d', 80 * kMegabyte);
  EXPECT_EQ(JsonNumber(Run({"store", "space", "--json"}).out, "total_mb"), 80);
}

TEST_F(ZebtoolStore, RecyclingDoesWhatTheDryRunSaid) {
  Init({"--recycle", "--reserved", "1"}, true);
  Mount('d', 3 * kMegabyte);
  Mount('e', 3 * kMegabyte);
  MakeFile('d', "d20240503", 10);
  MakeFile('d', "d20240504", 10);
  MakeFile('e', "d20240502", 1000);
  MakeFile('e', "d20240505", 10);
  const std::vector<std::string> recycle = {"store", "recycle", "--now", "2024-05-05 10:00:00"};
  std::vector<std::string> dry_run = recycle;
  dry_run.push_back("--dry-run");

  ToolRun run = Run(dry_run);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out,
            "would delete 2024-05-02 of ZebDatabase(e:\\), 1,000 bytes\n"
            "working disk ZebDatabase(e:\\)\n");
  EXPECT_TRUE(HasDay('e', "d20240502"));
  EXPECT_EQ(Run(recycle).out, "deleted 2024-05-02\nworking disk ZebDatabase(e:\\)\n");
  EXPECT_FALSE(HasDay('e', "d20240502"));

  for (const std::string day : {"2024-05-03", "2024-05-04"}) {
    run = Run(dry_run);
    EXPECT_EQ(run.out, "would delete " + day + " of ZebDatabase(d:\\), 10 bytes\n" +
                           "working disk ZebDatabase(d:\\)\n");
    EXPECT_EQ(Run(recycle).out, "deleted " + day + "\nworking disk ZebDatabase(d:\\)\n");
  }
  for (const auto& arguments : {dry_run, recycle}) {  // what is left is of today
    run = Run(arguments);
    EXPECT_EQ(run.out, "nothing can be recycled: no working disk\n");
    EXPECT_EQ(run.status, 1);
  }
  EXPECT_TRUE(HasDay('e', "d20240505"));
}

TEST_F(ZebtoolStore, RecyclingSparesDisksThatDoNotRecycleAndDaysWhenThereIsRoom) {
  Init({"--reserved", "1"});
  MakeFile('d', "d20040503", 10);
  Mount('d', 3 * kMegabyte);
  EXPECT_EQ(Run({"store", "recycle", "--dry-run"}).status, 1);
  EXPECT_EQ(Run({"store", "recycle"}).status, 1);
  Mount('d', 80 * kMegabyte);
  EXPECT_EQ(Run({"store", "recycle", "--dry-run"}).out, "working disk ZebDatabase(d:\\)\n");
  EXPECT_EQ(Run({"store", "recycle"}).status, 0);
  EXPECT_TRUE(HasDay('d', "d20040503"));
}

TEST_F(ZebtoolStore, WrongUsageSaysSo) {
  EXPECT_EQ(RunTool({"store"}).status, 2);
  EXPECT_EQ(RunTool({"store", "disks"}).status, 2);  // no --db
  EXPECT_EQ(Run({"store", "mend"}).status, 2);
  EXPECT_EQ(Run({"store", "disks"}).status, 1);  // no such file
  EXPECT_EQ(Run({"store", "disks", "--drive", "d"}).status, 2);
  EXPECT_EQ(Run({"store", "recycle", "--now", "tomorrow"}).status, 2);
  EXPECT_TRUE(Contains(RunTool({"store", "--help"}).out, "--reserved MB"));
}

}  // namespace
