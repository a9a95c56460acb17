// The disks of a database by command line: keeping the list, recording onto them, searching them,
// judging and recycling.
#include <algorithm>
#include <random>
#include <set>

#include "tests/support/scoped_time_zone.h"
#include "tests/tools/sound_fixture.h"
#include "tests/tools/store_fixture.h"

namespace {

namespace fs = std::filesystem;

class ZebtoolStore : public StoreFixture {
 protected:
  // What is to be recorded: `frames` pictures at a rate of pictures per seconds.
  void MakeVideo(int frames, const std::string& rate) const {
    WriteWholeFile(m_video, MakeY4m(176, 144, frames, rate));
  }
  ToolRun Record(const std::string& begin, std::vector<std::string> more = {}) const {
    more.insert(more.begin(), {"record", m_video, "--begin", begin});
    return Run(more);
  }
  // Below the directory of the disk, by name.
  std::vector<fs::path> Recordings() const {
    std::vector<fs::path> found;
    for (const auto& entry : fs::recursive_directory_iterator(Day(""))) {
      if (entry.path().extension() == ".zebz") found.push_back(entry.path());
    }
    std::sort(found.begin(), found.end());
    return found;
  }
  // The names of the files that a search finds, without extension, in the order of the answer.
  std::string Found(std::vector<std::string> options) const {
    options.insert(options.begin(), "search");
    const ToolRun run = Run(options);
    EXPECT_TRUE(run.err.empty()) << run.err;
    std::string names;
    std::istringstream lines(run.out);
    for (std::string line; std::getline(lines, line);) {
      const std::size_t slash = line.rfind('\\');
      if (slash == std::string::npos) continue;
      names += line.substr(slash + 1, line.rfind('.') - slash - 1) + ' ';
    }
    EXPECT_EQ(run.status, names.empty() ? 1 : 0);
    return names;
  }

  const std::string m_video = m_dir.File("video.y4m");
};

TEST_F(ZebtoolStore, FirstDiskStandsWhereItWasAskedForAndLeavesNothingElse) {
  ASSERT_EQ(Run({"store", "init", "d:\\dvr", "--reserved", "7", "--recycle", "--name", "Front",
                 "--alarm", "--alarm-sound", "d:\\bell.wav"})
                .status,
            0);
  EXPECT_FALSE(fs::exists(Drive('d') / "database"));
  const std::string json = Run({"store", "disks", "--json"}).out;
  EXPECT_TRUE(Contains(json, "\"directory\": \"d:\\\\dvr\\\\\"")) << json;
  EXPECT_TRUE(Contains(json, "\"alarm_sound\": \"d:\\\\bell.wav\"")) << json;
  EXPECT_EQ(JsonNumber(json, "reserved_mb"), 7);
}

TEST_F(ZebtoolStore, FailedInitLeavesNoDatabaseAndNoneTakesThePlaceOfOne) {
  fs::create_directories(Drive('d') / "database");  // somebody else's
  WriteWholeFile((Drive('d') / "dvr").string(), "a file in the directory's place");
  EXPECT_EQ(Run({"store", "init", "d:\\dvr"}).status, 1);
  EXPECT_TRUE(fs::exists(Drive('d') / "database"));
  ExpectFailure(Run({"store", "init", "x:\\dvr"}), "no drive is mounted");
  EXPECT_EQ(Run({"store", "init", m_dir.File("dvr")}).status, 2);
  EXPECT_FALSE(fs::exists(m_database));
  EXPECT_EQ(Run({"store", "init", "--data", "d:"}).status, 0);
  EXPECT_TRUE(Contains(Run({"store", "disks"}).out, "directory  d:\\database\\"));
  ExpectFailure(Run({"store", "init", "--data", "d:"}), "is there already");
}

TEST_F(ZebtoolStore, DisksComeAndGoByPathAndByIndex) {
  Init(true);
  EXPECT_FALSE(Contains(Run({"store", "remove", "e:\\"}).out, "(e:\\)"));
  ASSERT_EQ(Run({"store", "add", "e:\\dvr"}).status, 0);
  EXPECT_TRUE(Contains(Run({"store", "remove", "0"}).out, "there is no working disk"));
  EXPECT_EQ(Run({"store", "remove", "0"}).status, 1);  // the only one
  EXPECT_TRUE(Contains(Run({"store", "disks"}).out, "(e:\\)"));
}

// Opening would drop the disk, and closing would write the list without it.
TEST_F(ZebtoolStore, ListOfADiskThatIsNotThereOrOfNoneIsKept) {
  Init(true);
  const std::string whole = ReadWholeFile(m_database);
  os::UnmountDrive('e');
  for (const std::string& nowhere : {std::string(), "e=" + m_dir.File("nowhere")}) {
    ExpectFailure(Run({"store", "disks", "--drive", "d=" + Drive('d').string() + ';' + nowhere}),
                  "--drive");
    EXPECT_EQ(ReadWholeFile(m_database), whole);
  }
  EXPECT_EQ(Run({"store", "space", "--drive", "e=" + Drive('e').string()}).status, 0);
  for (const std::string& bytes : {whole.substr(0, 30), std::string(100, '\x41')}) {
    WriteWholeFile(m_database, bytes);
    ExpectFailure(Run({"store", "disks"}), "is no database file");
    EXPECT_EQ(ReadWholeFile(m_database), bytes);
  }
}

TEST_F(ZebtoolStore, RecyclingDoesWhatTheDryRunSaid) {
  Init();
  EXPECT_EQ(Run({"store", "check"}).status, 0);
  Mount('d', 1 * kMegabyte);
  EXPECT_EQ(Run({"store", "check"}).status, 1);
  Mount('d', 3 * kMegabyte);
  MakeFile("d20240505", 10);
  MakeFile("d20240502", 1000);
  const auto recycle = [&](std::vector<std::string> options) {
    options.insert(options.begin(), {"store", "recycle", "--now", "2024-05-05 10:00:00"});
    return Run(options).out;
  };
  EXPECT_TRUE(
      Contains(recycle({"--dry-run"}), "would delete 2024-05-02 of ZebDatabase(d:\\), 1,000"));
  EXPECT_TRUE(fs::exists(Day("d20240502")));
  EXPECT_TRUE(Contains(recycle({}), "deleted 2024-05-02\n"));
  EXPECT_FALSE(fs::exists(Day("d20240502")));
  EXPECT_EQ(recycle({"--dry-run"}), "nothing can be recycled: no working disk\n");
  EXPECT_EQ(recycle({}), "nothing can be recycled: no working disk\n");
  EXPECT_TRUE(fs::exists(Day("d20240505")));
}

TEST_F(ZebtoolStore, RepairFinishesWhatACrashLeft) {
  Init();
  const auto frames = MakeFrames(30);
  const std::string path = MakeFile("d20240505", 0) + ".zebz";
  WriteWholeFile(path, MakeRecording(frames, false));
  WriteWholeFile(path + ".zebz", "damaged");
  EXPECT_EQ(Run({"store", "repair", "--date", "2024-05-04"}).status, 1);
  const ToolRun run = Run({"store", "repair", "--date", "2024-05-05", "--json"});
  ExpectFailure(run, "");
  EXPECT_EQ(JsonNumber(run.out, "finished"), 1) << run.out;
  EXPECT_EQ(JsonNumber(run.out, "damaged"), 1) << run.out;
  EXPECT_EQ(ReadFrames(path), frames);
  EXPECT_TRUE(Contains(Run({"store", "repair"}).out, "0 finished, 1 whole already"));
}

using ZebtoolRecord = ZebtoolStore;

TEST_F(ZebtoolRecord, FilesEndWithTheirMinutesAndDaysPassAsRecorded) {
  Init();
  // 2 pictures a minute, the first of them with sound, and 4 loops across midnight.
  MakeVideo(2, "1:30");
  const std::string sound = m_dir.File("sound.wav");
  WriteSound(sound, MakeTone(8000 * 2, 300));
  const ToolRun run =
      Record("2024-05-01 23:58:00", {"--audio", sound, "--loops", "4", "--minutes", "1", "--json"});
  ASSERT_EQ(run.status, 0) << run.err;
  std::string found;
  for (const fs::path& path : Recordings()) {
    found += fs::relative(path, Day("")).begin()->string() + ' ' + path.filename().string() + '\n';
  }
  EXPECT_EQ(found,
            "d20240501 c0000240501235800.zebz\nd20240501 c0000240501235900.zebz\n"
            "d20240502 c0000240502000000.zebz\nd20240502 c0000240502000100.zebz\n");
  EXPECT_EQ(JsonNumber(run.out, "i_frames"), 4);
  EXPECT_EQ(JsonNumber(run.out, "voiced_frames"), 4);
  // What is there already is not written over.
  const std::string before = ReadWholeFile(Recordings().at(0).string());
  ExpectFailure(Record("2024-05-01 23:58:00"), "is there already");
  EXPECT_EQ(ReadWholeFile(Recordings().at(0).string()), before);
}

// The room left is just above the reserve; the recording itself brings the disk below its reserve.
TEST_F(ZebtoolRecord, ShortageWhileRecordingEndsTheFileFirst) {
  Init();
  MakeFile("d20240429", 900 << 10);
  Mount('d', 2 * kMegabyte);
  MakeVideo(30, "1:2");
  const ToolRun run =
      Record("2024-05-01 00:00:00", {"--quantiser", "1,1", "--gop", "1", "--loops", "4", "--json"});
  EXPECT_TRUE(Contains(run.out, "\"deleted_days\": [\n    \"2024-04-29\"")) << run.out << run.err;
  EXPECT_FALSE(fs::exists(Day("d20240429")));
  for (const fs::path& path : Recordings()) {
    EXPECT_EQ(RunTool({"verify", path.string()}).status, 0) << path;
  }
  EXPECT_GE(Recordings().size(), 2U);

  Mount('d', 1 * kMegabyte);
  ExpectFailure(Record("2024-05-01 10:00:00"), "no disk has room");  // what is left is of today
}

TEST_F(ZebtoolRecord, FillsTwoDisksThenTheOldestDayOfEitherGoesAndSearchFindsTheRest) {
  Init(true);
  Mount('d', 2 * kMegabyte);
  Mount('e', 61 * kMegabyte);  // a smaller one would not be taken for one with room
  std::mt19937 noise(1);       // NOLINT(cert-msc32-c,cert-msc51-cpp)
  std::string video = "YUV4MPEG2 W176 H144 F1:6 C420jpeg\n";
  for (int frame = 0; frame < 8; ++frame) {
    video += "FRAME\n";
    std::generate_n(std::back_inserter(video), 176 * 144 * 3 / 2,
                    [&] { return static_cast<char>(noise()); });
  }
  WriteWholeFile(m_video, video);
  // As d20240501d, the oldest first.
  const auto days = [this] {
    std::set<std::string> names;
    for (const char letter : {'d', 'e'}) {
      for (const auto& day : fs::directory_iterator(Drive(letter) / "dvr")) {
        names.insert(day.path().filename().string() + letter);
      }
    }
    return names;
  };
  std::string gone;  // from which disks
  std::set<std::string> left;
  for (int day = 1; day < 31 && !Contains(gone, "e"); ++day) {
    std::set<std::string> kept = days();
    const ToolRun run =
        Record(CTime(2024, 5, day, 8, 0, 0).Format("%F %T"), {"--quantiser", "1,1"});
    ASSERT_EQ(run.status, 0) << run.err;
    left = days();
    for (; !kept.empty() && !left.contains(*kept.begin()); kept.erase(kept.begin())) {
      gone += kept.begin()->back();
    }
    EXPECT_TRUE(std::ranges::includes(left, kept)) << "another day than the oldest went";
    const bool uses_both = std::ranges::any_of(left, [](auto& name) { return name.back() == 'e'; });
    EXPECT_TRUE(uses_both || gone.empty()) << "a day went although a disk had room";
    if (uses_both) Mount('e', 2 * kMegabyte);
  }
  EXPECT_TRUE(gone.starts_with("d") && gone.ends_with("e")) << gone;
  const std::string found = Found({"--from", "2024-05-01 00:00:00"});
  EXPECT_EQ(std::ranges::count(found, ' '), std::ssize(left)) << found;
}

using ZebtoolSearch = ZebtoolStore;

TEST_F(ZebtoolSearch, FindsByEveryCriterion) {
  // Two cameras on the evening of May the 1st, and one on the day after; then an alarm and a log.
  Init();
  MakeVideo(60, "1:1");
  const auto record = [&](const char* begin, const char* camera, const char* name) {
    return Record(begin, {"--camera", camera, "--camera-name", name, "--board-name", "b0"}).status;
  };
  ASSERT_EQ(record("2024-05-01 21:00:00", "1", "gate"), 0);
  ASSERT_EQ(record("2024-05-01 22:00:00", "2", "yard"), 0);
  ASSERT_EQ(Record("2024-05-02 11:00:00", {"--camera", "1", "--alarm"}).status, 0);
  fs::create_directories(Day("d20240502/recorder/log"));
  WriteWholeFile(Day("d20240502/recorder/log/userlog.ulg").string(), "log");
  const std::string evening_1 = "c0001240501210000 ";
  const std::string evening_2 = "c0002240501220000 ";
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"--date", "2024-05-01"}, evening_1 + evening_2},
      {{"--date", "2024-05-01", "--camera", "0,2"}, evening_2},
      {{"--date", "2024-05-01", "--camera-name", "gate", "--board-name", "b0"}, evening_1},
      {{"--date", "2024-05-01", "--frame-size", "129"}, ""},
      {{"--from", "2024-05-01 20:00:00", "--to", "2024-05-01 21:59:59"}, evening_1},
      {{"--at", "2024-05-01 21:00:30"}, evening_1 + evening_2},
      {{"--at", "2024-05-01 21:00:30", "--camera", "0,1"}, evening_1},
      {{"--date", "2024-05-02", "--kind", "alarm"}, "ca0001240502110000 "},
      {{"--date", "2024-05-02", "--kind", "log", "--camera-name", "none"}, "userlog "},
  };
  for (const auto& [options, found] : cases) {
    EXPECT_EQ(Found(options), found) << options[1] << ' ' << options.back();
  }
  ExpectFailure(Run({"search", "--date", "2024-05-01", "--disk", "d"}), "there is no disk 'd'");
}

// A day of 25 hours in October and one of 23 in March; midnight is an hour, too.
TEST_F(ZebtoolSearch, TimeSpanIsSearchedCalendarDayByCalendarDay) {
  const ScopedTimeZone zone("CET-1CEST,M3.5.0,M10.5.0/3");
  Init();
  MakeVideo(3, "1:30");
  // The last one ends on the day after.
  for (const char* begin :
       {"2024-03-30 00:00:00", "2024-03-31 00:00:00", "2024-04-01 00:00:00", "2024-10-26 00:00:00",
        "2024-10-27 00:00:00", "2024-10-28 00:00:00", "2024-10-28 23:59:30"}) {
    ASSERT_EQ(Record(begin).status, 0);
  }
  const std::string spring = "c0000240330000000 c0000240331000000 c0000240401000000 ";
  const std::string autumn = "c0000241026000000 c0000241027000000 c0000241028000000 ";
  const std::string late = "c0000241028235930 ";
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"--from", "2024-03-30 00:00:00", "--to", "2024-04-01 00:00:00"}, spring},
      {{"--from", "2024-10-26 00:00:00", "--to", "2024-10-28 00:00:00"}, autumn},
      {{"--from", "1970-01-02 00:00:00"}, spring + autumn + late},
      {{"--from", "2024-10-29 00:00:10"}, late},
      {{"--from", "2024-10-29 00:01:00"}, ""},
  };
  for (const auto& [options, found] : cases) EXPECT_EQ(Found(options), found) << options[1];
}

}  // namespace
