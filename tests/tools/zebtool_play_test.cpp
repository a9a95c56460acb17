// Recordings that are played, at the pace of the machine's clock: which pictures are shown, in what
// order, what is heard, and what keys do. Nothing here depends on how fast the machine is.
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <deque>
#include <nlohmann/json.hpp>
#include <thread>

#include "platform/noxdisplay/software/display_control.h"
#include "tests/tools/sound_fixture.h"
#include "tests/tools/tool_fixture.h"
#include "tools/zebtool/console/keys.h"
#include "tools/zebtool/media/png_file.h"
#include "tools/zebtool/play/sound_recorder.h"
#include "tools/zebtool/screen/contact_sheet.h"

using namespace zebx;

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;
using zebtool::Key;

class Play : public testing::Test {
 protected:
  // Groups of 2 and encoder type 2: a block of 18 frames, then blocks of 20.
  std::string Import(const std::string& name, int frames, const std::string& second,
                     std::vector<std::string> options = {}) const {
    std::string path = m_dir.File(name);
    options.insert(options.begin(),
                   {"import", "-", path, "--frame-size", "128", "--gop", "2", "--encoder-type", "2",
                    "--begin", "2024-05-01 08:30:" + second});
    const ToolRun run = RunTool(options, MakeY4m(16, 16, frames));
    EXPECT_EQ(run.status, 0) << run.err;
    return path;
  }
  static Json PlayJson(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "play");
    arguments.emplace_back("--json");
    const ToolRun run = RunTool(arguments);
    EXPECT_EQ(run.status, 0) << run.err;
    return Json::parse(run.out, nullptr, false);
  }

  TempDir m_dir;
};

TEST_F(Play, StepsForwardsAndBackwardsShowTheFramesThatInfoLists) {
  const std::string path = Import("steps.zebz", 24, "00");
  std::vector<std::string> listed;
  const Json info = Json::parse(RunTool({"info", path, "--frames", "--json"}).out);
  for (const Json& part : info["chain"]) {
    if (part.contains("frame")) listed.push_back(part["frame"]);
  }
  ASSERT_EQ(listed.size(), 24U);
  // Where each step leads in the list, from the first picture on.
  const struct {
    std::vector<std::string> arguments;
    std::vector<std::size_t> shown;
  } cases[] = {
      {{"--from", "0:15", "--steps", "n n n n n p p p"}, {15, 16, 17, 18, 19, 20, 19, 18}},
      {{"--from", "1:2", "--steps", "p p n"}, {20, 19, 18, 19}},
      // Back over a block's beginning the last two of the block before are passed by.
      {{"--from", "1:1", "--steps", "p p p n"}, {19, 18, 15, 14, 15}},
      {{"--steps", "p n n p p p"}, {0, 0, 1, 2, 1, 0, 0}},
  };
  for (const auto& test : cases) {
    std::vector<std::string> line = {path, "--no-captions"};
    line.insert(line.end(), test.arguments.begin(), test.arguments.end());
    const Json report = PlayJson(line);
    std::vector<std::size_t> shown;
    for (const Json& step : report["steps"]) {
      const auto at = std::find(listed.begin(), listed.end(), step["frame"]);
      shown.push_back(static_cast<std::size_t>(at - listed.begin()));
    }
    shown.resize(test.shown.size());
    EXPECT_EQ(shown, test.shown) << report;
  }
}

TEST_F(Play, SavesEveryPictureOnceOrAFewOnASheet) {
  const std::string path = Import("pictures.zebz", 24, "00");
  const std::string folder = m_dir.File("pictures");
  const Json frames = PlayJson({path, "--frames-dir", folder, "--from", "0:16", "--until", "1:3"});
  EXPECT_EQ(frames["pictures"], 6) << frames;
  EXPECT_EQ(frames["ended"], "until");
  for (const char* name : {"000-016", "000-017", "001-000", "001-001", "001-002", "001-003"}) {
    EXPECT_GT(fs::file_size(folder + '/' + name + ".png"), 0U) << name;
  }
  ExpectFailure(RunTool({"play", path, "--frames-dir", folder}), "is not empty");

  const std::string sheet = m_dir.File("sheet.png");
  const ToolRun run = RunTool(
      {"play", path, "--sheet", sheet, "--pictures", "4", "--pause-at", "0:2", "--speed", "2"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_TRUE(Contains(run.out, "sheet.png: 4 pictures\n")) << run.out;
  EXPECT_TRUE(Contains(run.out, "0:0  2024-05-01 08:30:00\n")) << run.out;
  EXPECT_EQ(zebtool::ReadPng(sheet).GetImageWidth(), 1600U);  // in one row
}

// What was played against what was recorded; silence where the machine was too slow is left out.
double SignalToNoise(const std::vector<std::int16_t>& source,
                     const std::vector<std::int16_t>& played, std::size_t offset) {
  double signal = 0;
  double noise = 1;
  for (std::size_t at = 0; at < played.size() && at + offset < source.size(); ++at) {
    signal += std::pow(source[at + offset], 2);
    noise += std::pow(source[at + offset] - played[at], 2);
  }
  return 10 * std::log10(signal / noise);
}

TEST_F(Play, SoundIsThatOfTheSourceWithoutAGap) {
  constexpr std::size_t kPacket = 320;  // samples of a frame
  constexpr std::size_t kSamples = 100 * kPacket / 2;
  std::vector<std::int16_t> chirp(kSamples);
  for (std::size_t at = 0; at < chirp.size(); ++at) {
    const double seconds = static_cast<double>(at) / 8000;
    chirp[at] = static_cast<std::int16_t>(8000 * std::sin(6.283 * (200 + 150 * seconds) * seconds));
  }
  std::vector<std::vector<std::int16_t>> sources = {chirp};
  if (const char* const media = std::getenv("ZEBX_MEDIA_DIR")) {
    sources.push_back(ReadSound(std::string(media) + "/speech_8khz_mono.wav"));
    sources.back().resize(std::min(sources.back().size(), kSamples));
  }
  const std::string sound = m_dir.File("sound.wav");
  const std::string heard = m_dir.File("heard.wav");
  for (const auto& source : sources) {
    WriteSound(sound, source);
    const std::string path = Import("sound.zebz", 50, "00", {"--audio", sound, "--force"});
    const Json report = PlayJson({path, "--sound", heard, "--force"});
    auto played = ReadSound(heard);
    ASSERT_EQ(report["sound"]["samples"], played.size()) << report;
    for (auto gap = report["sound"]["gaps"].rbegin(); gap != report["sound"]["gaps"].rend();
         ++gap) {
      const auto begin = played.begin() + (*gap)["at_sample"].get<std::ptrdiff_t>();
      const auto end = begin + (*gap)["samples"].get<std::ptrdiff_t>();
      EXPECT_EQ(std::count(begin, end, 0), end - begin);
      played.erase(begin, end);
    }
    // It begins when the first picture was shown, and is cut off with the last one.
    ASSERT_GT(played.size(), kSamples * 3 / 4);
    double best = 0;
    for (std::size_t offset = 0; offset < 10 * kPacket; offset += kPacket) {
      best = std::max(best, SignalToNoise(source, played, offset));
    }
    EXPECT_GT(best, 15);
  }
}

TEST_F(Play, SoundThatCameTooLateIsSilenceOfThatLength) {
  const std::string path = m_dir.File("late.wav");
  zebtool::SoundRecorder recorder(path, zebtool::Existing::kRefuse);
  os::sound::Sink& sink = recorder;
  const std::vector<std::int16_t> sound(80, 1000);  // 10 ms
  const auto play = [&](ULONGLONG begin_ms) {
    os::sound::Piece piece;
    piece.m_begin_ms = begin_ms;
    piece.m_bytes = {reinterpret_cast<const BYTE*>(sound.data()), 2 * sound.size()};
    sink.Play(piece);
  };
  for (const ULONGLONG begin_ms : {5U, 15U, 40U}) play(begin_ms);
  sink.Close(nullptr);
  play(2000);  // of another device
  const auto recorded = recorder.Finish();
  EXPECT_EQ(recorded.samples, 440U);
  ASSERT_EQ(recorded.gaps.size(), 1U);
  std::vector<std::int16_t> wanted(440, 1000);
  std::fill(wanted.begin() + 160, wanted.begin() + 280, std::int16_t{0});
  EXPECT_EQ(ReadSound(path), wanted);
}

TEST_F(Play, PanesOfDifferentBeginningsStayWithinASecond) {
  // The second one has begun long before, the last one begins when the first one is on its way.
  const std::vector<std::string> files = {Import("0", 75, "10"), Import("1", 125, "08"),
                                          Import("2", 75, "11"), Import("3", 50, "12")};
  for (const std::string speed : {"0", "1", "2", "-1"}) {
    std::vector<std::string> line = files;
    line.insert(line.end(), {"--speed", speed, "--from", "08:30:11"});
    if (speed == "-1") line.insert(line.end(), {"--until", "1s"});
    const Json report = PlayJson(line);
    EXPECT_EQ(report["ended"], speed == "-1" ? "until" : "end");
    for (std::size_t pane = 1; pane < files.size(); ++pane) {
      const Json& file = report["files"][pane];
      if (pane == 3 && speed != "0") continue;  // not for long, if at all
      ASSERT_GT(file["frames_shown"], 0) << report;
      EXPECT_GE(2 * file["frames_together"].get<int>(), file["frames_shown"].get<int>()) << report;
    }
  }
}

TEST_F(Play, RecordingThatGrowsPlaysUpToWhatIsThere) {
  const std::string path = m_dir.File("growing.zebz");
  const std::vector<TestFrame> frames = MakeFrames(60, 1);
  CZebFileInfo info = MakeInfo(path);
  CZebFile file;
  ASSERT_NE(file.Open(&info, kZebFileWrite), 0);
  CZebFrameData data;
  const auto write = [&](std::size_t from, std::size_t to) {
    for (std::size_t at = from; at < to; ++at) {
      Fill(data, frames[at]);
      ASSERT_EQ(file.WriteOneFrame(&data), kFrameWritten);
    }
  };
  write(0, 25);  // blocks of 9 and 10 are finished
  std::jthread writer([&] { write(25, 60); });
  const Json report = PlayJson({path, "--speed", "3"});
  EXPECT_GE(report["files"][0]["frames_shown"], 19) << report;
  EXPECT_EQ(report["ended"], "end");
}

TEST_F(Play, LinesThatCannotBeginSayWhatToDo) {
  const std::string path = Import("made.zebz", 4, "00");
  const std::string text = m_dir.File("text");
  WriteWholeFile(text, "no recording");
  const struct {
    std::vector<std::string> arguments;
    int status;
    const char* text;
  } cases[] = {
      {{path, path, path, path, path}, 2, "at most 4 files"},
      {{path, "--speed", "17"}, 2, "--speed takes -16 to 16"},
      {{path, "--steps", "n x"}, 2, "--steps takes n and p"},
      {{path, "--until", "5m"}, 2, "--until takes end"},
      {{path, "--steps", "n", "--sound", text}, 2, "steps have no sound"},
      {{path, path, "--sound", text}, 2, "several files play without sound"},
      {{path, "--speed", "1", "--sound", text}, 2, "at speed 0 only"},
      {{path, "--sheet", text, "--frames-dir", text}, 2, "not both"},
      {{path, "--steps", "n", "--until", "0:1"}, 2, "--steps ends by itself"},
      {{path, "--pictures", "3"}, 2, "--pictures is for --sheet"},
      {{path, "--sheet", text}, 1, "it is there already"},
      {{path, "--sound", text}, 1, "it is there already"},
      {{path, "--sound", m_dir.File("no/out.wav")}, 1, "cannot write"},
      {{path, "--sheet", path, "--force"}, 1, "is the input"},
      {{text}, 1, "no readable header"},
      {{path, m_dir.File("none")}, 1, "cannot open"},
      {{path, "--from", "0:4"}, 1, "there is no frame 4"},
      {{path, "--from", "+9"}, 1, "playing cannot begin there"},
  };
  for (const auto& test : cases) {
    std::vector<std::string> line = {"play"};
    line.insert(line.end(), test.arguments.begin(), test.arguments.end());
    ExpectFailure(RunTool(line), test.text, test.status);
  }
  for (const DWORD nth : {1U, 2U}) {
    noxdisplay::FailCall(noxdisplay::Function::kCreateStream, nth);
  }
  ExpectFailure(RunTool({"play", path}), "made.zebz' cannot be played");
  EXPECT_EQ(ReadWholeFile(text), "no recording");
}

// A terminal whose other end is the keyboard.
struct Terminal {
  Terminal() = default;
  ~Terminal() {
    close(terminal);
    close(keyboard);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  void Press(const std::string& bytes) const {
    EXPECT_EQ(write(keyboard, bytes.data(), bytes.size()), std::ssize(bytes));
  }
  tcflag_t Mode() const {
    termios mode{};
    EXPECT_EQ(tcgetattr(terminal, &mode), 0);
    return mode.c_lflag;
  }

  static int OtherEnd(int keyboard) {
    grantpt(keyboard);
    unlockpt(keyboard);
    return open(ptsname(keyboard), O_RDWR | O_NOCTTY);
  }

  int keyboard = posix_openpt(O_RDWR | O_NOCTTY);
  int terminal = OtherEnd(keyboard);
};

// Presses the next key whenever something was shown.
class Hand : public std::stringbuf {
 public:
  Hand(const Terminal& terminal, std::deque<std::string> keys)
      : m_terminal(terminal), m_keys(std::move(keys)) {}
  int sync() override {
    if (m_keys.empty()) return 0;
    m_terminal.Press(m_keys.front());
    m_keys.pop_front();
    return 0;
  }

 private:
  const Terminal& m_terminal;
  std::deque<std::string> m_keys;
};

TEST_F(Play, KeysSteerItAndTheTerminalIsAsBeforeAfterwards) {
  const Terminal terminal;
  if (terminal.terminal < 0) GTEST_SKIP() << "this machine has no pseudo-terminals";
  const tcflag_t before = terminal.Mode();
  {
    zebtool::Keys keys(terminal.terminal);
    EXPECT_EQ(terminal.Mode() & (ICANON | ECHO), 0U);
    const auto expect = [&](const std::string& bytes, const std::vector<Key>& wanted) {
      terminal.Press(bytes);
      EXPECT_EQ(keys.Read(), wanted) << bytes;
    };
    expect("x \033[A\033OB", {Key::kSpace, Key::kUp, Key::kDown});
    expect("\033", {});
    expect("[", {});
    expect("C\033[D\033[Zq", {Key::kRight, Key::kLeft, Key::kQuit});
  }
  EXPECT_EQ(terminal.Mode(), before);

  // Faster, and then back from wherever it is; the last key ends it long before the end.
  const std::string path = Import("keys.zebz", 400, "00");
  std::istringstream in;
  std::ostringstream out;
  Hand hand(terminal, {"\033[A", "\033[D", "\033[C", " ", "\033[B", " ", "q"});
  std::ostream err(&hand);
  zebtool::Console console{in, out, err, true, terminal.terminal};
  EXPECT_EQ(zebtool::RunZebtool(std::vector<std::string>{"play", path}, console), 0);
  EXPECT_EQ(terminal.Mode(), before);
  EXPECT_TRUE(Contains(hand.str(), "space pauses")) << hand.str();
  EXPECT_TRUE(Contains(hand.str(), "paused")) << hand.str();
  EXPECT_LT(std::stoi(out.str().substr(out.str().find(": ") + 2)), 300) << out.str();
}

TEST(PictureSample, SpreadsEvenlyOverARowOfAnyLength) {
  for (const int length : {1, 3, 6, 7, 12, 13, 100, 1000}) {
    zebtool::PictureSample sample(6);
    for (int at = 0; at < length; ++at) {
      if (!sample.TakesNext()) continue;
      CImage picture;  // as wide as its place in the row
      picture.CreateImage(new BYTE[1], static_cast<DWORD>(at), 1);
      sample.Add(picture);
    }
    const auto pictures = sample.Pictures();
    ASSERT_EQ(pictures.size(), static_cast<std::size_t>(std::min(length, 6)));
    for (std::size_t at = 0; at < pictures.size(); ++at) {
      const double even = static_cast<double>(at) * length / static_cast<double>(pictures.size());
      EXPECT_NEAR(pictures[at].GetImageWidth(), even, length / 6.0 + 1) << length;
    }
  }
}

}  // namespace
