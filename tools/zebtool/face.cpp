// zebtool face: what a face file holds, and its pictures.
#include <algorithm>
#include <filesystem>
#include <limits>
#include <span>
#include <vector>

#include "platform/framework/time.h"
#include "record/mox_file.h"
#include "tools/zebtool/byte_streams.h"
#include "tools/zebtool/json_writer.h"
#include "tools/zebtool/options.h"
#include "tools/zebtool/snapshot_file.h"
#include "tools/zebtool/subcommands.h"
#include "tools/zebtool/text.h"

namespace zebtool {
namespace {

constexpr std::string_view kHelp =
    "usage: zebtool face FILE list [--json]\n"
    "       zebtool face FILE extract DIR [--index N]\n"
    "\n"
    "Reads a face file: the grey face pictures of one camera, each with its time.\n"
    "\n"
    "  list       where and when the faces were seen\n"
    "  extract    the pictures, as snapshots face0000.bmp, face0001.bmp ... in DIR, which is made\n"
    "             when it is missing\n"
    "  --index N  only this one, counted from 0\n"
    "\n"
    "Exit status: 1 also when a face cannot be read; the others are listed or extracted.\n";

// Rows of snapshots have no padding, so that only such widths make pictures for every viewer, and
// only such sizes can be loaded again with their trailer.
constexpr std::size_t kSizeStep = 4;
constexpr std::size_t kImagePixelBytes = 3;
constexpr std::size_t kNumberDigits = 4;
// Opening leaves the name as it was when it could not read a header.
constexpr char kNotRead[] = "\1";
constexpr int kWholeList = -1;

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

void PutFile(const CMoxFile& faces, const std::string& path, JsonWriter& json) {
  const CSize size = faces.GetImageSize();
  json.Value("file", path);
  json.Value("width", size.cx);
  json.Value("height", size.cy);
  json.Value("board", faces.GetBoardIndex());
  json.Value("camera", faces.GetCameraIndex());
  json.Value("board_name", faces.GetBoardName());
  json.Value("camera_name", faces.GetCameraName());
  json.Value("host_name", faces.GetHostName());
  json.Value("begin_seconds", faces.GetStartTime());
  json.Value("end_seconds", faces.GetEndTime());
  json.Value("gmt", faces.GetGmt());
}

int List(CMoxFile& faces, const std::string& path, bool as_json, Console& console) {
  Face face;
  DWORD unreadable = 0;
  JsonWriter json(console.out);
  if (as_json) {
    json.BeginObject();
    PutFile(faces, path, json);
    json.BeginArray("faces");
  } else {
    PrintFile(faces, path, console.out);
  }
  for (DWORD index = 0; index < faces.GetTotalFaceNum(); ++index) {
    if (!ReadFace(faces, index, face)) {
      ++unreadable;
    } else if (as_json) {
      json.BeginObject();
      json.Value("index", index);
      json.Value("time_seconds", face.time);
      json.Value("time", FormatTime(CTime(face.time)));
      json.EndObject();
    } else {
      console.out << "  " << NumberOf(index) << "       " << FormatTime(CTime(face.time)) << '\n';
    }
  }
  if (as_json) {
    json.EndArray();
    json.EndObject();
  }
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

void MakeDirectory(const std::string& directory) {
  std::error_code error;
  std::filesystem::create_directories(ToHostPath(directory), error);
  if (error) throw JobError("cannot make the directory '" + directory + "': " + error.message());
}

int Extract(CMoxFile& faces, const std::string& directory, int only, Console& console) {
  const DWORD total = faces.GetTotalFaceNum();
  if (only >= 0 && static_cast<DWORD>(only) >= total) {
    throw JobError("there is no face " + std::to_string(only) + ": the file has " +
                   Plural(total, "face"));
  }
  const DWORD begin = only == kWholeList ? 0 : static_cast<DWORD>(only);
  const DWORD end = only == kWholeList ? total : begin + 1;
  MakeDirectory(directory);
  // A library path has a drive letter.
  const char separator = directory.find(':') == 1 ? '\\' : '/';
  DWORD unreadable = 0;
  Face face;
  for (DWORD index = begin; index < end; ++index) {
    if (!ReadFace(faces, index, face)) {
      ++unreadable;
      continue;
    }
    CImage image;
    Fill(image, face, faces.GetImageSize());
    image.SetBoardName(faces.GetBoardName());
    image.SetCameraName(faces.GetCameraName());
    image.SetHostName(faces.GetHostName());
    image.SetGmt(faces.GetGmt());
    image.SetTimeStamp(face.time);
    const std::string path = directory + separator + "face" + NumberOf(index) + ".bmp";
    SaveSnapshot(image, path, console);
    console.out << path << ": " << FormatTime(CTime(face.time)) << '\n';
  }
  return ReportUnreadable(unreadable, console);
}

int RunFace(Arguments arguments, Console& console) {
  const Options options({"face",
                         {{"--json", OptionSpec::Kind::kFlag}, {"--index"}},
                         {"FILE", "list|extract", "DIR"},
                         2},
                        arguments);
  const std::string& path = options.Positionals()[0];
  const std::string& action = options.Positionals()[1];
  const bool extracts = action == "extract";
  if (!extracts && action != "list") {
    options.Fail("there is no action '" + action + "'; list or extract");
  }
  if (extracts != (options.Positionals().size() == 3)) {
    options.Fail(extracts ? "extract needs a directory" : "list takes no directory");
  }
  if (options.Has(extracts ? "--json" : "--index")) {
    options.Fail("--json is for list, --index for extract");
  }
  CMoxFile faces;
  OpenFaces(faces, path);
  if (!extracts) return List(faces, path, options.Has("--json"), console);
  const auto only = options.Number("--index", 0, std::numeric_limits<int>::max());
  return Extract(faces, options.Positionals()[2], only ? static_cast<int>(*only) : kWholeList,
                 console);
}

}  // namespace

const Subcommand kFaceCommand = {"face", "list and extract the pictures of a face file", kHelp,
                                 RunFace};

}  // namespace zebtool
