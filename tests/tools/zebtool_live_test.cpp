// Live cameras from the command line to the files on disk, on virtual devices that keep real time.
#include <png.h>

#include <csignal>
#include <nlohmann/json.hpp>
#include <thread>

#include "tests/support/recording_fixture.h"
#include "tests/tools/store_fixture.h"
#include "tools/zebtool/disks/database_use.h"
#include "tools/zebtool/live/live_table.h"

using namespace zebx;

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr auto kLongestWait = 180s;  // of a busy machine

// Two seconds of grey, and then a bright square that jumps about in the lower half, for longer than
// a test takes. Frames that a busy machine leaves out change nothing about that.
std::string MakeFilm() {
  constexpr int kSide = 32;
  constexpr int kStillFrames = 50;
  constexpr int kFrames = 5000;
  std::string film = "YUV4MPEG2 W32 H32 F25:1 Ip A1:1 C420jpeg\n";
  for (int number = 0; number < kFrames; ++number) {
    std::string planes(std::size_t{kSide * kSide}, '\x60');
    for (int y = 18; number >= kStillFrames && y < 30; ++y) {
      planes.replace(static_cast<std::size_t>(y * kSide + number * 7 % 23), 9, 9, '\xE0');
    }
    film += "FRAME\n" + planes + std::string(std::size_t{kSide * kSide / 2}, '\x80');
  }
  return film;
}

class ZebtoolLive : public StoreFixture {
 protected:
  std::vector<fs::path> Files(const std::string& kind) const {
    std::vector<fs::path> found;
    for (const auto& entry : fs::recursive_directory_iterator(Drive('d'))) {
      if (entry.path().parent_path().filename() == kind) found.push_back(entry.path());
    }
    std::sort(found.begin(), found.end());
    return found;
  }

  // Runs the line and sends the signal once `is_enough`, which is asked meanwhile.
  ToolRun RunUntil(const std::vector<std::string>& arguments, int signal,
                   const std::function<bool()>& is_enough) const {
    std::jthread watcher([&](const std::stop_token& stop) {
      const auto end = std::chrono::steady_clock::now() + kLongestWait;
      while (!stop.stop_requested()) {
        if (is_enough() || std::chrono::steady_clock::now() > end) {
          kill(getpid(), signal);
          return;
        }
        std::this_thread::sleep_for(5ms);
      }
    });
    return Run(arguments);
  }
};

// A sheet of one large and two small windows, none of them dark.
void ExpectPicturesOn(const std::string& path) {
  png_image png{};
  png.version = PNG_IMAGE_VERSION;
  ASSERT_NE(png_image_begin_read_from_file(&png, path.c_str()), 0) << png.message;
  png.format = PNG_FORMAT_GRAY;
  EXPECT_EQ(png.width, 1600U);
  EXPECT_EQ(png.height, 900U);
  std::vector<BYTE> pixels(PNG_IMAGE_SIZE(png));
  ASSERT_NE(png_image_finish_read(&png, nullptr, pixels.data(), 0, nullptr), 0) << png.message;
  for (const std::size_t middle : {450U * 1600 + 600, 150U * 1600 + 1400, 450U * 1600 + 1400}) {
    EXPECT_GT(*std::max_element(&pixels[middle - 100], &pixels[middle + 100]), 0x40) << middle;
  }
}

TEST_F(ZebtoolLive, AlarmFileBeginsBeforeTheMotionAndEveryFileIsWholeAndFound) {
  Init();
  WriteWholeFile(m_dir.File("camera0.y4m"), MakeFilm());
  const std::string sheet = m_dir.File("sheet.png");
  const ToolRun run =
      RunUntil({"live", "--devices", "6:1,11:2@" + m_dir.Path().string(), "--record",
                "--alarm-on-motion", "--mask", "1:0,50,100,100", "--mask", "2:0,0,10,10", "--mask",
                "3:0,0,10,10", "--name", "2=Tür 3 – Empfang", "--sheet", sheet, "--json"},
               SIGINT, [&] {
                 const auto alarms = Files("alarm");
                 return !alarms.empty() && fs::file_size(alarms[0]) > 4000;
               });
  ASSERT_EQ(run.status, 0) << run.err;

  const auto report = nlohmann::json::parse(run.out);
  ASSERT_EQ(report["cameras"].size(), 3U);
  EXPECT_EQ(report["cameras"][1]["name"], "Tür 3 – Empfang");
  EXPECT_EQ(report["cameras"][0]["alarms"], 1);
  for (const auto& camera : report["cameras"]) {
    EXPECT_EQ(camera["frames_not_recorded"], 0) << camera;
    for (const auto& file : camera["files"]) {
      const ToolRun verify = RunTool({"verify", file["path"]});
      EXPECT_EQ(verify.status, 0) << verify.out;
      EXPECT_TRUE(file["kind"] == "alarm" || file["frames"] == camera["frames"]) << camera;
    }
  }

  // Each frame of the alarm file stands in the recording, too, none left out.
  const auto alarms = Files("alarm");
  const auto videos = Files("video");
  ASSERT_EQ(alarms.size(), 1U);
  ASSERT_EQ(videos.size(), 3U);
  auto alarm = ReadFrames(alarms[0].string());
  const auto video = ReadFrames(videos[0].string());
  ASSERT_FALSE(alarm.empty());
  // Frames of the pre-alarm buffer are not marked as live.
  for (TestFrame& frame : alarm) frame.flags |= kFrameRT;
  const auto at = std::find(video.begin(), video.end(), alarm.front());
  ASSERT_GE(static_cast<std::size_t>(video.end() - at), alarm.size());
  EXPECT_TRUE(std::equal(alarm.begin(), alarm.end(), at));
  const auto first_alarm = std::find_if(alarm.begin(), alarm.end(), [](const TestFrame& frame) {
    return (frame.flags & kFrameVideoAlarm) != 0;
  });
  ASSERT_NE(first_alarm, alarm.end());
  EXPECT_GE(first_alarm->time_stamp - alarm.front().time_stamp, 500U);

  for (const auto& [kind, found] : {std::pair("video", 3), {"alarm", 1}}) {
    const ToolRun search =
        Run({"search", "--from", "2000-01-01 00:00:00", "--kind", kind, "--json"});
    EXPECT_EQ(JsonNumber(search.out, "found"), found) << search.out;
  }
  ExpectPicturesOn(sheet);
}

// The disk is below its reserve from the first moment on: first a day can be deleted, then none.
TEST_F(ZebtoolLive, RecyclesWhileItRecordsAndSaysWhenNothingIsLeft) {
  Init();
  MakeFile("d20240429", 1500 << 10);
  Mount('d', 2 * kMegabyte);
  const ToolRun recycled = RunUntil({"live", "--devices", "6:2", "--record"}, SIGTERM, [&] {
    const auto files = Files("video");
    return files.size() == 2 && fs::file_size(files[0]) > 2000 && fs::file_size(files[1]) > 2000;
  });
  EXPECT_EQ(recycled.status, 0) << recycled.err;
  EXPECT_TRUE(Contains(recycled.out, "deleted 2024-04-29\n")) << recycled.out;
  EXPECT_FALSE(fs::exists(Day("d20240429")));
  for (const fs::path& path : Files("video")) {
    EXPECT_TRUE(Contains(recycled.out, path.filename().string() + ": ")) << recycled.out;
  }
  EXPECT_EQ(Files("video").size(), 2U);

  Mount('d', 1 * kMegabyte);
  const ToolRun full = Run({"live", "--devices", "6:2", "--record", "--seconds", "1"});
  EXPECT_EQ(full.status, 1);
  EXPECT_TRUE(Contains(full.err, "no disk has room")) << full.err;
  EXPECT_EQ(Files("video").size(), 2U);
}

TEST_F(ZebtoolLive, DatabaseThatAnotherRecorderUsesIsLeftToIt) {
  Init();
  const zebtool::DatabaseUse other(m_database);
  ExpectFailure(Run({"live", "--record"}), "another recorder");
  EXPECT_EQ(Run({"store", "disks"}).status, 0);
}

TEST(LiveTable, IsDrawnAnewInPlaceOnATerminalAndIsLinesElsewhere) {
  zebtool::CameraStatus status;
  status.who = {{0, 2}, 3, "Tür 3 – Empfang, linker Flügel", 6};
  status.figures.frame_rate = "25.00f/s";
  status.figures.frames = 1234;
  status.figures.is_in_alarm = true;
  status.recorder.alarm_file = R"(d:\dvr\d20240501\recorder\alarm\ca0002240501083000.zebz)";
  status.recorder.lost = 2;
  for (const bool is_terminal : {true, false}) {
    std::istringstream in;
    std::ostringstream out;
    std::ostringstream err;
    zebtool::Console console{in, out, err, is_terminal};
    zebtool::LiveTable table(console);
    for (const auto at : {0ms, 100ms, 1000ms, 1100ms}) table.Show(at, {status});
    EXPECT_EQ(out.str(),
              is_terminal ? "" : "1 s: 1 camera, 1234.0 frames/s, 0 kbit/s, alarm in 3\n");
    table.Wipe();
    if (is_terminal) {
      EXPECT_TRUE(Contains(err.str(), "\033[2A\r")) << err.str();
      EXPECT_TRUE(err.str().ends_with("\033[2A\r\033[J"));
      EXPECT_TRUE(Contains(err.str(), "\r  3  Tür 3 – Empfang, l  25.00f/s"));
      EXPECT_TRUE(
          Contains(err.str(), "alarm         1,234  ca0002240501083000.zebz, 2 lost\033[K"));
    } else {
      EXPECT_EQ(err.str(), "");
    }
  }
}

}  // namespace
