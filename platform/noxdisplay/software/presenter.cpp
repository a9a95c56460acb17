#include "platform/noxdisplay/software/presenter.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace zebx::noxdisplay {

namespace {

constexpr os::Color kEmptyArea = 0x181818;
constexpr os::Color kQuietText = 0xC0C0C0;
constexpr os::Color kActiveFrame = 0x30B0FF;
constexpr os::Color kMaskEdge = 0x101010;
constexpr os::Color kQuietMask = 0x20D040;
constexpr os::Color kMotionMask = 0xFFD020;
constexpr os::Color kAlarmMask = 0xFF3030;

constexpr std::string_view kVideoLostText = "VIDEO LOST";

// The small pictures of a state, from the right. They have the numbers of the record's bits.
constexpr DWORD kMarks[] = {kShowAlarm,  kShowRecord, kShowProgramming,
                            kShowActive, kShowAudio,  kShowMonitor};
constexpr bool IsSame(DWORD number, DWORD bit) {
  return number == bit;
}
static_assert(IsSame(kNoxshowAlarmPicture, kShowAlarm) &&
              IsSame(kNoxshowRecordPicture, kShowRecord) &&
              IsSame(kNoxshowProgramPicture, kShowProgramming) &&
              IsSame(kNoxshowActivePicture, kShowActive) &&
              IsSame(kNoxshowAudioPicture, kShowAudio) &&
              IsSame(kNoxshowWorkingPicture, kShowMonitor));

// The largest of the fonts, magnified by a whole factor, of which 16 lines fit into the window and
// 28 characters into a line; the smallest where none does.
TextFace FaceFor(const Canvas& canvas) {
  const TextFace faces[] = {{&LargeFont(), 4},
                            {&LargeFont(), 3},
                            {&LargeFont(), 2},
                            {&SmallFont(), 2},
                            {&LargeFont(), 1}};
  for (const TextFace& face : faces) {
    if (face.Height() * 16 <= canvas.Height() && face.Width() * 28 <= canvas.Width()) return face;
  }
  return {&SmallFont(), 1};
}

// Lines of a mask.
LONG LineWidth(const Canvas& canvas) {
  return 1 + std::min(canvas.Width(), canvas.Height()) / 256;
}

// The frame of the active window.
LONG FrameWidth(const Canvas& canvas) {
  return 2 * LineWidth(canvas);
}

os::Color ColorOf(DWORD color) {
  return (color & 0xFF) << 16 | (color & 0xFF00) | (color >> 16 & 0xFF);
}

std::string_view TextOf(const char (&field)[kDisplayTextBytes]) {
  const std::string_view text(field, kDisplayTextBytes);
  return text.substr(0, text.find('\0'));
}

// A place along one side of the window, for one along `size`; inside the window.
LONG Scaled(LONGLONG at, LONG size, LONG window_size) {
  return static_cast<LONG>(std::clamp<LONGLONG>(at, 0, size) * window_size / size);
}

// Where captions go: the record's rectangle of the stream's picture, all of it for an empty one.
CRect CaptionArea(const Canvas& canvas, CSize size, const tag_DISPLAYINFO& info) {
  const CRect area = {Scaled(info.m_caption_left, size.cx, canvas.Width()),
                      Scaled(info.m_caption_top, size.cy, canvas.Height()),
                      Scaled(info.m_caption_right, size.cx, canvas.Width()),
                      Scaled(info.m_caption_bottom, size.cy, canvas.Height())};
  return area.IsEmpty() ? CRect{0, 0, canvas.Width(), canvas.Height()} : area;
}

// Outlines keep out of a frame of that width round the window.
void DrawMasks(const Canvas& canvas, CSize size, const tag_DISPLAYINFO& info, LONG frame) {
  constexpr LONGLONG kMacroblockPixels = 16;
  const LONG width = info.m_encode_width != 0 ? info.m_encode_width : size.cx;
  const LONG height = info.m_encode_height != 0 ? info.m_encode_height : size.cy;
  const LONG line = LineWidth(canvas);
  const std::size_t count = std::min<std::size_t>(info.m_mask_count, kDisplayMasks);
  for (std::size_t i = 0; i < count; ++i) {
    const tag_DISPLAYMASK& mask = info.m_masks[i];
    const auto across = [&](LONG at) {
      return Scaled(at * kMacroblockPixels, width, canvas.Width());
    };
    const auto down = [&](LONG at) {
      return Scaled(at * kMacroblockPixels, height, canvas.Height());
    };
    const LONG left = std::max(across(mask.m_left), frame);
    const LONG top = std::max(down(mask.m_top), frame);
    const LONG right = std::min(across(mask.m_right), canvas.Width() - frame);
    const LONG bottom = std::min(down(mask.m_bottom), canvas.Height() - frame);
    if (left >= right || top >= bottom) continue;
    const os::Color color = (mask.m_state & kMaskIsInAlarm) != 0    ? kAlarmMask
                            : (mask.m_state & kMaskSeesMotion) != 0 ? kMotionMask
                                                                    : kQuietMask;
    canvas.Frame(left, top, right, bottom, line, color);
    canvas.Frame(left + line, top + line, right - line, bottom - line, 1, kMaskEdge);
  }
}

void DrawActiveFrame(const Canvas& canvas) {
  canvas.Frame(0, 0, canvas.Width(), canvas.Height(), FrameWidth(canvas), kActiveFrame);
}

// The lines of text of a window, in their places: with their outlines inside the area, and inside
// the frame of a window whose whole area it is.
class Captions {
 public:
  Captions(const Canvas& canvas, const CRect& area, const TextFace& face)
      : m_canvas(canvas), m_face(face) {
    const LONG margin = FrameWidth(canvas) + face.m_factor;
    m_left = area.left + margin;
    m_right = area.right - margin;
    m_top = area.top + margin;
    m_bottom = area.bottom - margin - face.Height();
  }

  LONG Left() const { return m_left; }
  LONG Right() const { return m_right; }
  LONG LineTop(int line) const { return m_top + line * (m_face.Height() + m_face.m_factor); }

  // Two texts of a line that ends at `right`, one on each side; the right one is given room first.
  void WriteLine(LONG top, LONG right, std::string_view left_text, os::Color left_color,
                 std::string_view right_text, os::Color right_color) const {
    const LONG room = std::max<LONG>(right - m_left, 0);
    const LONG taken = std::min(WidthOf(right_text, m_face), room);
    m_canvas.Write(right - taken, top, taken, right_text, m_face, right_color);
    const LONG left_room = taken == 0 ? room : room - taken - m_face.Width();
    m_canvas.Write(m_left, top, left_room, left_text, m_face, left_color);
  }
  // Whether there is room for a line, counted from the top.
  bool Has(int line) const { return m_bottom >= LineTop(line); }
  LONG BottomLine() const { return m_bottom; }

 private:
  const Canvas& m_canvas;
  const TextFace& m_face;
  LONG m_left = 0, m_right = 0, m_top = 0;
  LONG m_bottom = 0;  // the top of the last line
};

}  // namespace

void Presenter::Present(const Canvas& canvas, const os::PixelSource* picture, CSize size,
                        const tag_DISPLAYINFO& info, const PictureSet& registered) {
  const TextFace face = FaceFor(canvas);
  const DWORD flags = info.m_flags;
  const bool has_frame =
      (flags & kShowActive) != 0 && registered.Find(kNoxshowActivePicture) == nullptr;
  if ((flags & kShowVideoLost) != 0) {
    PresentStatus(canvas, kNoxshowVideoLostPicture, false, registered);
  } else {
    const bool is_smooth = (flags & kShowSmooth) != 0;
    DrawPicture(canvas, picture,
                is_smooth ? os::StretchMode::kHalftone : os::StretchMode::kDropped);
    if ((flags & kShowMasks) != 0)
      DrawMasks(canvas, size, info, has_frame ? FrameWidth(canvas) : 0);
  }
  if (has_frame) DrawActiveFrame(canvas);
  const auto shown = [flags](DWORD bit, const char(&field)[kDisplayTextBytes]) {
    return (flags & bit) != 0 ? TextOf(field) : std::string_view();
  };
  const Captions captions(canvas, CaptionArea(canvas, size, info), face);
  const os::Color clock_color = ColorOf(info.m_clock_color);
  captions.WriteLine(captions.LineTop(0), captions.Right(),
                     shown(kShowCameraName, info.m_camera_name), ColorOf(info.m_camera_name_color),
                     shown(kShowClock, info.m_clock), clock_color);
  if (captions.Has(1)) {
    const LONG marks = DrawMarks(canvas, captions.Left(), captions.Right(), captions.LineTop(1),
                                 face, flags, registered);
    captions.WriteLine(captions.LineTop(1), captions.Right() - marks,
                       shown(kShowBoardName, info.m_board_name), ColorOf(info.m_board_name_color),
                       {}, 0);
  }
  if (captions.Has(2)) {
    captions.WriteLine(captions.BottomLine(), captions.Right(),
                       shown(kShowBeginTime, info.m_begin_time), clock_color,
                       shown(kShowEndTime, info.m_end_time), clock_color);
  }
}

void Presenter::PresentStatus(const Canvas& canvas, DWORD number, bool is_active,
                              const PictureSet& registered) {
  const TextFace face = FaceFor(canvas);
  if (const StatusPicture* picture = registered.Find(number)) {
    const os::PixelSource source = picture->Source();
    DrawPicture(canvas, &source, os::StretchMode::kHalftone);
  } else {
    DrawPicture(canvas, nullptr, os::StretchMode::kHalftone);
    if (number == kNoxshowVideoLostPicture) {
      const LONG width = std::min(WidthOf(kVideoLostText, face), canvas.Width());
      canvas.Write((canvas.Width() - width) / 2, (canvas.Height() - face.Height()) / 2, width,
                   kVideoLostText, face, kQuietText);
    }
  }
  if (!is_active) return;
  const Captions captions(canvas, {0, 0, canvas.Width(), canvas.Height()}, face);
  if (registered.Find(kNoxshowActivePicture) == nullptr) DrawActiveFrame(canvas);
  if (!captions.Has(1)) return;
  DrawMarks(canvas, captions.Left(), captions.Right(), captions.LineTop(1), face, kShowActive,
            registered);
}

void Presenter::DrawPicture(const Canvas& canvas, const os::PixelSource* picture,
                            os::StretchMode mode) {
  if (picture == nullptr) {
    canvas.Fill(0, 0, canvas.Width(), canvas.Height(), kEmptyArea);
    return;
  }
  const os::Area from = {0, 0, picture->m_layout.m_width, picture->m_layout.m_height};
  m_picture_stretcher.Stretch(*picture, from, canvas.Target(),
                              {0, 0, canvas.Width(), canvas.Height()}, mode);
}

LONG Presenter::DrawMarks(const Canvas& canvas, LONG left, LONG right, LONG top,
                          const TextFace& face, DWORD flags, const PictureSet& registered) {
  LONG end = right;
  for (const DWORD number : kMarks) {
    const StatusPicture* const picture = (flags & number) != 0 ? registered.Find(number) : nullptr;
    if (picture == nullptr) continue;
    const LONG height = face.Height();
    const LONGLONG width = std::clamp<LONGLONG>(
        LONGLONG{picture->m_size.cx} * height / picture->m_size.cy, 1, LONGLONG{4} * height);
    if (end - left < width) break;
    end -= static_cast<LONG>(width);
    m_mark_stretcher.Stretch(picture->Source(), {0, 0, picture->m_size.cx, picture->m_size.cy},
                             canvas.Target(), {end, top, static_cast<LONG>(width), height},
                             os::StretchMode::kHalftone);
    end -= 2 * face.m_factor;
  }
  return right - end;
}

}  // namespace zebx::noxdisplay
