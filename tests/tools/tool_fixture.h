// Running command lines of zebtool, and what to feed them: recordings of invented frames, small
// enough to try damage at every byte, and small videos and sounds.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "platform/os/clock.h"
#include "record/mox_file.h"
#include "tests/support/made_recording.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/temp_dir.h"
#include "tools/zebtool/commands/commands.h"

struct ToolRun {
  int status;
  std::string out;
  std::string err;
};

inline ToolRun RunTool(const std::vector<std::string>& arguments, const std::string& input = {}) {
  std::istringstream in(input);
  std::ostringstream out;
  std::ostringstream err;
  zebtool::Console console{in, out, err};
  const int status = zebtool::RunZebtool(arguments, console);
  return {status, out.str(), err.str()};
}

inline bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

// Expects a run to have ended with `status` and to have said `text` of what went wrong.
inline void ExpectFailure(const ToolRun& run, const std::string& text, int status = 1) {
  EXPECT_EQ(run.status, status) << text;
  EXPECT_TRUE(Contains(run.err, text)) << text << " in " << run.err;
}

// The number behind "key": in JSON output; -1 without one.
inline std::int64_t JsonNumber(const std::string& json, const std::string& key) {
  const std::size_t at = json.find('"' + key + "\": ");
  return at == std::string::npos ? -1 : std::stoll(json.substr(at + key.size() + 4));
}

// A picture of a moving gradient, planes of 4:2:0 back to back.
inline std::string MakePicture(int width, int height, int number) {
  std::string planes;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const double wave = std::sin((x + 3 * number) * 0.05) * std::cos(y * 0.04);
      planes += static_cast<char>(static_cast<unsigned char>(std::lround(128 + 80 * wave)));
    }
  }
  const std::size_t chroma =
      static_cast<std::size_t>((width + 1) / 2) * static_cast<std::size_t>((height + 1) / 2);
  planes.append(chroma, static_cast<char>(110 + number % 20));
  planes.append(chroma, '\x8C');
  return planes;
}

inline std::string MakeY4m(int width, int height, int frames, const std::string& rate = "25:1",
                           const std::string& fields = " Ip A1:1 C420jpeg") {
  std::string video = "YUV4MPEG2 W" + std::to_string(width) + " H" + std::to_string(height) + " F" +
                      rate + fields + "\n";
  for (int number = 0; number < frames; ++number) {
    video += "FRAME\n" + MakePicture(width, height, number);
  }
  return video;
}

// A face file of pictures of one grey, 10 brighter and a second later from face to face.
inline void MakeFaces(const std::string& path, int count) {
  CMoxFile faces;
  faces.SetHostName("recorder");
  faces.SetCameraName("gate");
  faces.SetCameraIndex(1);
  faces.Open(path.c_str(), 1);
  for (int face = 0; face < count; ++face) {
    const std::vector<BYTE> picture(100 * 120, static_cast<BYTE>(10 * face));
    faces.Write(picture.data(), kTestBeginSeconds + static_cast<DWORD>(face));
  }
  faces.Close();
}
