// zebtool demo: the whole tour of the tool on a generated street with generated sound.
#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <memory>
#include <numbers>
#include <vector>

#include "platform/framework/file.h"
#include "platform/os/files/drives.h"
#include "platform/zebdev/software/street_scene.h"
#include "tools/zebtool/commands/commands.h"
#include "tools/zebtool/console/command_line.h"
#include "tools/zebtool/console/progress.h"
#include "tools/zebtool/files/host_paths.h"
#include "tools/zebtool/files/input_stream.h"
#include "tools/zebtool/media/png_file.h"
#include "tools/zebtool/media/sound_file.h"
#include "tools/zebtool/media/y4m.h"
#include "tools/zebtool/recordings/recording_file.h"
#include "tools/zebtool/screen/contact_sheet.h"

using namespace zebx;

namespace zebtool {
namespace {

constexpr int kWidth = 352;
constexpr int kHeight = 288;
constexpr DWORD kSeconds = 10;
constexpr DWORD kLiveSeconds = 4;
constexpr DWORD kPaneSeconds = 6;
constexpr DWORD kRate = zebdev::StreetScene::kFramesPerSecond;

void WriteVideo(const std::string& path, DWORD seed, DWORD seconds, Console& console) {
  OutputStream output(path, Existing::kRefuse, console);
  Y4mWriter writer(output, {kWidth, kHeight, {kRate, 1}, 1, 1});
  const zebdev::StreetScene scene(kWidth, kHeight, seed);
  noxcodec::Picture picture(kWidth, kHeight);
  std::vector<BYTE> bytes;
  Progress progress(console, "generate");
  for (DWORD frame = 0; frame < seconds * kRate; ++frame) {
    scene.Render(frame, picture);
    bytes.clear();
    for (int index = 0; index < noxcodec::kPlaneCount; ++index) {
      const noxcodec::PlaneView plane = picture.View().planes[static_cast<std::size_t>(index)];
      for (int y = 0; y < plane.height; ++y) {
        bytes.insert(bytes.end(), plane.Row(y), plane.Row(y) + plane.width);
      }
    }
    writer.WritePicture(bytes);
    progress.Show(frame + 1);
  }
  output.Finish();
}

// A voice-like hum: a few harmonics that rise and fall like syllables, with a pause now and then.
std::int16_t HumAt(DWORD sample) {
  constexpr std::array<double, 4> kHarmonics = {5000, 3000, 1800, 900};
  constexpr double kPitchHz = 140;
  constexpr double kSyllablesPerSecond = 3;
  constexpr DWORD kPhraseSeconds = 4;
  const double seconds = static_cast<double>(sample) / kSpeechRate;
  if (sample / kSpeechRate % kPhraseSeconds == kPhraseSeconds - 1) return 0;
  const double turn = 2 * std::numbers::pi * seconds;
  const double pitch = turn * kPitchHz + 2 * std::sin(turn * kSyllablesPerSecond / 2);
  const double loudness = 0.5 - 0.5 * std::cos(turn * kSyllablesPerSecond);
  double sum = 0;
  for (std::size_t harmonic = 0; harmonic < kHarmonics.size(); ++harmonic) {
    sum += kHarmonics[harmonic] * std::sin(pitch * static_cast<double>(harmonic + 1));
  }
  return static_cast<std::int16_t>(std::lround(loudness * sum));
}

void WriteSound(const std::string& path) {
  SpeechWriter writer(path, Existing::kRefuse);
  std::vector<std::int16_t> samples(kSeconds * kSpeechRate);
  for (DWORD sample = 0; sample < samples.size(); ++sample) samples[sample] = HumAt(sample);
  writer.Write(samples);
  writer.Finish();
}

// The first half of a recording, as a dead writer leaves it: the header as it was when the last
// block was closed.
void CutInTheMiddle(const std::string& input, const std::string& output, Console& console) {
  CFile file;
  OpenRecording(file, input);
  std::vector<BYTE> bytes(static_cast<std::size_t>(file.GetLength() / 2));
  bytes.resize(file.Read(bytes));
  OutputStream half(output, Existing::kRefuse, console);
  half.Write(bytes);
  half.Finish();
}

class Demo {
 public:
  Demo(std::string folder, Console& console) : m_folder(std::move(folder)), m_console(console) {}

  int Run() {
    MakeDirectories(m_folder);
    if (!std::filesystem::is_empty(ToHostPath(m_folder))) {
      throw JobError("'" + m_folder + "' is not empty; give the demo a directory of its own");
    }
    Say("# generate " + std::to_string(kSeconds) + " s of video and sound: " + Path("street.y4m") +
        ", " + Path("street.wav"));
    WriteVideo(Path("street.y4m"), 0, kSeconds, m_console);
    WriteSound(Path("street.wav"));
    Record();
    Cut();
    Repair();
    KeepOnDisk();
    Watch();
    Play();
    SavePictures("street-back.y4m", "street", {0, 125, 249});
    SavePictures("clip.y4m", "clip", {0});
    SavePictures("saved.y4m", "saved", {0});
    ShowAll();
    Say("\nThe results lie in " + m_folder +
        ": recordings (.zebz), video (.y4m), sound (.wav) and\n"
        "pictures (.png, and .bmp with where and when they were taken). All windows, live and\n"
        "played, are on " +
        Path("demo.png") + '.');
    return kExitGood;
  }

 private:
  void Record() {
    Step({"import", Path("street.y4m"), Path("street.zebz"), "--audio", Path("street.wav"),
          "--begin", "2024-05-01 08:30:00", "--host", "recorder-1", "--board-name", "front",
          "--camera-name", "street", "--camera", "3"});
    Step({"info", Path("street.zebz"), "--blocks"});
    Step({"verify", Path("street.zebz")});
    Step(
        {"export", Path("street.zebz"), Path("street-back.y4m"), "--wav", Path("street-back.wav")});
  }

  void Cut() {
    Step(
        {"clip", Path("street.zebz"), Path("clip.zebz"), "--from", "08:30:06", "--to", "08:30:09"});
    Step({"verify", Path("clip.zebz")});
    Step({"export", Path("clip.zebz"), Path("clip.y4m"), "--wav", Path("clip.wav")});
  }

  void Repair() {
    Say("\n# a copy that is cut off in the middle: " + Path("cut.zebz"));
    CutInTheMiddle(Path("street.zebz"), Path("cut.zebz"), m_console);
    Step({"verify", Path("cut.zebz")}, kExitBad);
    Step({"salvage", Path("cut.zebz"), Path("saved.zebz")});
    Step({"verify", Path("saved.zebz")});
    Step({"export", Path("saved.zebz"), Path("saved.y4m")});
  }

  // Mounts a directory of the demo's own; `quota` is ":4M" or nothing.
  void Mount(char letter, const std::string& name, const std::string& quota) {
    const std::string disk = std::filesystem::absolute(ToHostPath(Path(name))).string();
    std::filesystem::create_directories(disk);
    const std::string drive = letter + ('=' + disk) + quota;
    Say("\n$ export ZEBX_DRIVES=\"" + drive + '"');
    if (os::MountDrives(drive) == 0) throw JobError("cannot mount '" + disk + "'");
  }

  // Days on a disk with room for two of them.
  void KeepOnDisk() {
    const std::string database = Path("disks.db");
    Mount('d', "demo-disk", ":4M");
    Step({"store", "init", "d:\\dvr", "--db", database, "--recycle", "--reserved", "1"});
    for (const std::string day : {"2024-05-01", "2024-05-02", "2024-05-03"}) {
      Step({"record", Path("street.y4m"), "--db", database, "--audio", Path("street.wav"),
            "--begin", day + " 08:30:00", "--camera", "3", "--camera-name", "street", "--loops",
            "4"});
    }
    Step({"store", "check", "--db", database});
    Step({"store", "recycle", "--db", database, "--dry-run"});
    Step({"search", "--db", database, "--from", "2024-05-01 00:00:00", "--camera", "0,3"});
    Step({"snapshot", R"(d:\dvr\d20240503\recorder\video\c0003240503083000.zebz)",
          Path("street.bmp"), "--at", "08:30:05"});
  }

  // Four live cameras, one of them on the street's film.
  void Watch() {
    const std::string database = Path("live.db");
    Mount('e', "live-disk", "");
    for (const std::string type : {".y4m", ".wav"}) {
      std::filesystem::create_symlink("street" + type, ToHostPath(Path("camera0" + type)));
    }
    Step({"store", "init", "e:\\dvr", "--db", database, "--reserved", "1"});
    Step({"live", "--device-dir", m_folder, "--seconds", std::to_string(kLiveSeconds), "--record",
          "--alarm-on-motion", "--db", database, "--mask", "1:0,55,100,100", "--name",
          "3=Tür 3 – Empfang", "--sheet", Path("live.png")});
    Step({"search", "--db", database, "--from", "2000-01-01 00:00:00"});
  }

  // One recording with sound, steps over the end of a block, and four cameras together, each of
  // which begins a second after the one before.
  void Play() {
    Step({"play", Path("street.zebz"), "--from", "1:25", "--sound", Path("played.wav"), "--sheet",
          Path("played.png"), "--pictures", "4"});
    Step({"play", Path("street.zebz"), "--from", "0:123", "--steps", "n n p"});
    std::vector<std::string> line = {"play", Path("street.zebz")};
    for (const std::string name : {"lane", "gate", "park"}) {
      const std::string number = std::to_string(line.size() - 1);
      const std::string video = Path(name + ".y4m");
      Say("\n# generate " + std::to_string(kPaneSeconds) + " s of another street: " + video);
      WriteVideo(video, static_cast<DWORD>(line.size()), kPaneSeconds, m_console);
      line.push_back(Path(name + ".zebz"));
      Step({"import", video, line.back(), "--begin", "2024-05-01 08:30:0" + number, "--camera-name",
            name, "--camera", number});
      std::filesystem::remove(ToHostPath(video));  // large, and not needed any more
    }
    line.insert(line.end(), {"--until", "+6", "--sheet", Path("panes.png"), "--pictures", "3"});
    Step(line);
  }

  // The windows of live cameras and those of players on one sheet.
  void ShowAll() {
    std::vector<CImage> sheets;
    for (const char* const name : {"live.png", "played.png", "panes.png"}) {
      sheets.push_back(ReadPng(Path(name)));
    }
    WritePng(Path("demo.png"), Existing::kRefuse, MakeContactSheet(sheets, 1));
  }

  std::string Path(const std::string& name) const { return m_folder + '/' + name; }

  void Say(const std::string& line) { m_console.out << line << '\n' << std::flush; }

  // Runs one command line of the tool and shows it as a person would type it.
  void Step(const std::vector<std::string>& arguments, int expected = kExitGood) {
    std::string line = "\n$ zebtool";
    for (const std::string& argument : arguments) {
      const bool quoted = argument.find_first_of(" \\") != std::string::npos;
      line += ' ' + (quoted ? '\'' + argument + '\'' : argument);
    }
    Say(line);
    const int status = RunZebtool(arguments, m_console);
    if (status != expected) {
      throw JobError("this step ended with " + std::to_string(status) + " and not with " +
                     std::to_string(expected));
    }
  }

  void SavePictures(const std::string& video, const std::string& name,
                    const std::vector<DWORD>& numbers) {
    InputStream input(Path(video), m_console);
    Y4mReader reader(input);
    noxcodec::Picture picture(reader.Header().width, reader.Header().height);
    for (DWORD number = 0; reader.ReadPicture(picture); ++number) {
      if (std::find(numbers.begin(), numbers.end(), number) == numbers.end()) continue;
      WritePng(Path(name + '-' + std::to_string(number) + ".png"), Existing::kRefuse,
               picture.View());
    }
  }

  std::string m_folder;
  Console& m_console;
};

}  // namespace

void AddDemo(const Command& root) {
  const auto folder = std::make_shared<std::string>("demo");
  const Command command = root.Sub("demo", "all of it, on a generated street");
  command.Usage({"[DIR]"});
  command.Describe(
      "Generates 10 seconds of a street with sound and shows on it what the tool does: import, "
      "info, verify, clip, export of both, salvage of a recording that was cut off in the middle, "
      "a small disk that records for days, deletes the oldest and is searched, a few seconds of "
      "live cameras that are recorded with their alarms, and playing: with sound, step by step, "
      "and four cameras together.");
  command.OptionalArgument("DIR", *folder,
                           "where the files and the disk are left, default ./demo; an empty "
                           "directory or none yet; about 110 MB are needed");
  command.Does([folder](Console& console) { return Demo(*folder, console).Run(); });
}

}  // namespace zebtool
