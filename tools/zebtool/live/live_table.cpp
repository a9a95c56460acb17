#include "tools/zebtool/live/live_table.h"

#include <algorithm>

#include "tools/zebtool/console/text.h"

namespace zebtool {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t kNameWidth = 18;
constexpr double kBitsPerByte = 8;
constexpr double kThousand = 1000;
// Lines longer than the terminal's are cut by it, so that every line stays one.
constexpr char kNoWrap[] = "\033[?7l";
constexpr char kWrap[] = "\033[?7h";

bool StartsCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

// `text` in a column of so many characters, cut or filled up on the right, or on the left.
std::string Column(std::string text, std::size_t width, bool to_the_right = false) {
  std::size_t characters = 0;
  std::size_t end = 0;
  for (; end < text.size(); ++end) {
    if (!StartsCharacter(text[end])) continue;
    if (characters == width) break;
    ++characters;
  }
  text.resize(end);
  text.insert(to_the_right ? 0 : text.size(), width - characters, ' ');
  return text + "  ";
}

std::string NameOfFile(const std::string& path) {
  return path.substr(path.find_last_of("\\/") + 1);
}

std::string WhatIsSeen(const LiveCamera::Figures& figures) {
  if (figures.is_video_lost) return "no video";
  if (figures.is_in_alarm) return "alarm";
  return figures.sees_motion ? "motion" : "-";
}

std::string Row(const CameraStatus& camera) {
  const std::string& path =
      camera.recorder.alarm_file.empty() ? camera.recorder.file : camera.recorder.alarm_file;
  std::string row =
      Column(std::to_string(camera.who.number), 3, true) + Column(camera.who.name, kNameWidth) +
      Column(camera.figures.frame_rate, 8, true) +
      Column(FormatDecimals(camera.figures.kbit_per_second, 0) + " kbit/s", 11, true) +
      Column(WhatIsSeen(camera.figures), 8) + Column(FormatCount(camera.figures.frames), 9, true) +
      (path.empty() ? "-" : NameOfFile(path));
  if (camera.recorder.lost > 0) row += ", " + FormatCount(camera.recorder.lost) + " lost";
  return row;
}

std::string SummaryLine(LiveTable::Duration elapsed, const std::vector<CameraStatus>& cameras) {
  ULONGLONG frames = 0;
  ULONGLONG bytes = 0;
  std::string alarms;
  std::string motion;
  for (const CameraStatus& camera : cameras) {
    frames += camera.figures.frames;
    bytes += camera.figures.bytes;
    const std::string number = ' ' + std::to_string(camera.who.number);
    if (camera.figures.is_in_alarm) {
      alarms += number;
    } else if (camera.figures.sees_motion) {
      motion += number;
    }
  }
  const double seconds = std::max(std::chrono::duration<double>(elapsed).count(), 1.0);
  return FormatDecimals(std::chrono::duration<double>(elapsed).count(), 0) +
         " s: " + Plural(cameras.size(), "camera") + ", " +
         FormatDecimals(static_cast<double>(frames) / seconds, 1) + " frames/s, " +
         FormatDecimals(static_cast<double>(bytes) * kBitsPerByte / kThousand / seconds, 0) +
         " kbit/s" + (motion.empty() ? "" : ", motion in" + motion) +
         (alarms.empty() ? "" : ", alarm in" + alarms);
}

}  // namespace

std::vector<std::string> TableOf(const std::vector<CameraStatus>& cameras) {
  std::vector<std::string> lines = {Column("", 3) + Column("camera", kNameWidth) +
                                    Column("rate", 8, true) + Column("bits", 11, true) +
                                    Column("sees", 8) + Column("frames", 9, true) + "file"};
  for (const CameraStatus& camera : cameras) lines.push_back(Row(camera));
  return lines;
}

LiveTable::~LiveTable() {
  Wipe();
}

void LiveTable::Show(Duration elapsed, const std::vector<CameraStatus>& cameras) {
  if (!IsDue(elapsed)) return;
  if (!m_console.show_progress) {
    if (m_next > Duration::zero()) m_console.out << SummaryLine(elapsed, cameras) << std::endl;
    m_next = elapsed + 1s;
    return;
  }
  m_next = elapsed + 250ms;
  const std::vector<std::string> lines = TableOf(cameras);
  std::string text = kNoWrap;
  if (m_lines > 0) text += "\033[" + std::to_string(m_lines) + 'A';
  for (const std::string& line : lines) text += '\r' + line + "\033[K\n";
  m_console.err << text << kWrap << std::flush;
  m_lines = lines.size();
}

void LiveTable::Wipe() {
  if (m_lines == 0) return;
  m_console.err << "\033[" << m_lines << "A\r\033[J" << std::flush;
  m_lines = 0;
}

}  // namespace zebtool
