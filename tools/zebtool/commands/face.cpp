// zebtool face: what a face file holds, and its pictures.
#include <algorithm>
#include <limits>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "platform/framework/time.h"
#include "record/mox_file.h"
#include "tools/zebtool/commands/commands.h"
#include "tools/zebtool/console/command_line.h"
#include "tools/zebtool/console/json_text.h"
#include "tools/zebtool/console/text.h"
#include "tools/zebtool/files/host_paths.h"
#include "tools/zebtool/recordings/snapshot_file.h"

namespace zebtool {
namespace {

// Rows of snapshots have no padding, so that only such widths make pictures for every viewer, and
// only such sizes can be loaded again with their trailer.
constexpr std::size_t kSizeStep = 4;
constexpr std::size_t kImagePixelBytes = 3;
constexpr std::size_t kNumberDigits = 4;
// Opening leaves the name as it was when it could not read a header.
constexpr char kNotRead[] = "\1";
constexpr Bounds kIndex = {0, std::numeric_limits<int>::max()};

struct Settings {
  std::string input;
  std::string action;
  std::string directory;
  std::optional<DWORD> index;
  bool force = false;
  bool json = false;
};

struct Face {
  DWORD time = 0;
  std::vector<BYTE> luminance;  // rows from the bottom up
};

void OpenFaces(CMoxFile& faces, const std::string& path) {
  faces.SetHostName(kNotRead);
  if (faces.Open(path.c_str(), 0) == 0) throw JobError("cannot open '" + path + "'");
  if (faces.GetHostName() == kNotRead) throw JobError("'" + path + "' is no face file");
}

// False for a face that the file does not hold whole.
bool ReadFace(CMoxFile& faces, DWORD index, Face& face) {
  if (index >= faces.GetTotalFaceNum()) return false;  // the picture's size may be anything then
  const CSize size = faces.GetImageSize();
  face.luminance.resize(static_cast<std::size_t>(size.cx) * static_cast<std::size_t>(size.cy));
  return faces.Read(std::span(face.luminance), &face.time, static_cast<int>(index)) != 0;
}

int ReportUnreadable(DWORD count, Console& console) {
  if (count == 0) return kExitGood;
  console.err << "zebtool: " << Plural(count, "face") << " could not be read\n";
  return kExitBad;
}

std::string NumberOf(DWORD index) {
  std::string digits = std::to_string(index);
  if (digits.size() < kNumberDigits) digits.insert(0, kNumberDigits - digits.size(), '0');
  return digits;
}

void PrintFile(const CMoxFile& faces, const std::string& path, std::ostream& out) {
  const CSize size = faces.GetImageSize();
  out << path << ": " << Plural(faces.GetTotalFaceNum(), "face") << " of " << size.cx << " x "
      << size.cy << '\n'
      << "  camera     board " << int{faces.GetBoardIndex()} << " \"" << faces.GetBoardName()
      << "\", camera " << int{faces.GetCameraIndex()} << " \"" << faces.GetCameraName()
      << "\", host \"" << faces.GetHostName() << "\"\n"
      << "  seen       " << FormatTime(CTime(faces.GetStartTime())) << " to "
      << FormatTime(CTime(faces.GetEndTime())) << ", gmt " << faces.GetGmt() << '\n';
}

Json JsonOf(const CMoxFile& faces, const std::string& path) {
  const CSize size = faces.GetImageSize();
  return {{"file", path},
          {"width", size.cx},
          {"height", size.cy},
          {"board", faces.GetBoardIndex()},
          {"camera", faces.GetCameraIndex()},
          {"board_name", faces.GetBoardName()},
          {"camera_name", faces.GetCameraName()},
          {"host_name", faces.GetHostName()},
          {"begin_seconds", faces.GetStartTime()},
          {"end_seconds", faces.GetEndTime()},
          {"gmt", faces.GetGmt()},
          {"faces", Json::array()}};
}

int List(CMoxFile& faces, const Settings& settings, Console& console) {
  Face face;
  DWORD unreadable = 0;
  Json report;
  if (settings.json) {
    report = JsonOf(faces, settings.input);
  } else {
    PrintFile(faces, settings.input, console.out);
  }
  for (DWORD index = 0; index < faces.GetTotalFaceNum(); ++index) {
    if (!ReadFace(faces, index, face)) {
      ++unreadable;
      continue;
    }
    const std::string time = FormatTime(CTime(face.time));
    if (settings.json) {
      report["faces"].push_back({{"index", index}, {"time_seconds", face.time}, {"time", time}});
    } else {
      console.out << "  " << NumberOf(index) << "       " << time << '\n';
    }
  }
  if (settings.json) console.out << JsonText(std::move(report)) << '\n';
  return ReportUnreadable(unreadable, console);
}

// Grey, and black beyond the face where the sizes had to grow.
void Fill(CImage& image, const Face& face, CSize size) {
  const auto grown = [](LONG length) {
    return (static_cast<std::size_t>(length) + kSizeStep - 1) / kSizeStep * kSizeStep;
  };
  const auto width = static_cast<std::size_t>(size.cx);
  const std::size_t grown_width = grown(size.cx);
  std::vector<BYTE> pixels(grown_width * grown(size.cy) * kImagePixelBytes);
  for (std::size_t at = 0; at < face.luminance.size(); ++at) {
    const std::size_t pixel = at / width * grown_width + at % width;
    std::fill_n(pixels.begin() + static_cast<std::ptrdiff_t>(pixel * kImagePixelBytes),
                kImagePixelBytes, face.luminance[at]);
  }
  image.FillRawImage(pixels.data(), static_cast<DWORD>(grown_width),
                     static_cast<DWORD>(grown(size.cy)),
                     static_cast<int>(grown_width * kImagePixelBytes), kImagePixelBytes, 0);
}

std::string PicturePath(const std::string& directory, DWORD index) {
  // A library path has a drive letter.
  const char separator = directory.find(':') == 1 ? '\\' : '/';
  return directory + separator + "face" + NumberOf(index) + ".bmp";
}

void SaveFace(const CMoxFile& faces, const Face& face, const std::string& path, Existing existing) {
  CImage image;
  Fill(image, face, faces.GetImageSize());
  image.SetBoardName(faces.GetBoardName());
  image.SetCameraName(faces.GetCameraName());
  image.SetHostName(faces.GetHostName());
  image.SetGmt(faces.GetGmt());
  image.SetTimeStamp(face.time);
  SaveSnapshot(image, path, existing);
}

int Extract(CMoxFile& faces, const Settings& settings, Console& console) {
  const DWORD total = faces.GetTotalFaceNum();
  if (settings.index && *settings.index >= total) {
    throw JobError("there is no face " + std::to_string(*settings.index) + ": the file has " +
                   Plural(total, "face"));
  }
  const DWORD begin = settings.index.value_or(0);
  const DWORD end = settings.index ? begin + 1 : total;
  const Existing existing{settings.force};
  MakeDirectories(settings.directory);
  // All of them or none: half of the faces would look like all.
  for (DWORD index = begin; index < end; ++index) {
    CheckOutput(PicturePath(settings.directory, index), existing);
  }
  DWORD unreadable = 0;
  Face face;
  for (DWORD index = begin; index < end; ++index) {
    if (!ReadFace(faces, index, face)) {
      ++unreadable;
      continue;
    }
    const std::string path = PicturePath(settings.directory, index);
    SaveFace(faces, face, path, existing);
    console.out << path << ": " << FormatTime(CTime(face.time)) << '\n';
  }
  return ReportUnreadable(unreadable, console);
}

int Faces(const Settings& settings, Console& console) {
  const bool extracts = settings.action == "extract";
  if (!extracts && settings.action != "list") {
    throw UsageError("there is no action '" + settings.action + "'; list or extract");
  }
  if (extracts == settings.directory.empty()) {
    throw UsageError(extracts ? "extract needs a directory" : "list takes no directory");
  }
  if (extracts ? settings.json : settings.index || settings.force) {
    throw UsageError("--json is for list, --index and --force for extract");
  }
  CMoxFile faces;
  OpenFaces(faces, settings.input);
  return extracts ? Extract(faces, settings, console) : List(faces, settings, console);
}

}  // namespace

void AddFace(const Command& root) {
  const auto settings = std::make_shared<Settings>();
  const Command command = root.Sub("face", "list and extract the pictures of a face file");
  command.Usage({"FILE list [--json]", "FILE extract DIR [--index N] [--force]"});
  command.Describe("Reads a face file: the grey face pictures of one camera, each with its time.");
  command.Argument("FILE", settings->input);
  command.Argument("ACTION", settings->action,
                   "list: where and when the faces were seen\n"
                   "extract: the pictures, as snapshots face0000.bmp, face0001.bmp ...");
  command.OptionalArgument("DIR", settings->directory,
                           "where extract puts them; it is made when it is missing");
  command.Option("--index", "N", settings->index, kIndex, "only this one, counted from 0");
  command.Flag("--json", settings->json, "the list as JSON");
  AddForceOption(command, settings->force);
  command.Explain(
      "Exit status: 1 also when a face cannot be read; the others are listed or extracted.");
  command.Does([settings](Console& console) { return Faces(*settings, console); });
}

}  // namespace zebtool
