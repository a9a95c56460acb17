// One stream of pictures on their way to windows.
#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "platform/framework/geometry.h"
#include "platform/noxdisplay/display_record.h"
#include "platform/noxdisplay/software/presenter.h"
#include "platform/noxdisplay/software/status_pictures.h"

namespace zebx::noxdisplay {

// Any thread may call. A picture is written into one surface while others are shown or copied: the
// lock is held for exchanging surfaces only, not while anybody draws, and nothing is called with
// it. Operations that answer bool are false for a failure, which changes nothing.
class Stream {
 public:
  // Throws std::bad_alloc. `info` may be null.
  Stream(CSize size, const tag_DISPLAYINFO* info);
  // False for no pixels, and for more than memory is asked for: such pictures are refused.
  static bool IsGoodSize(CSize size);

  // Takes the picture away; the stream takes none until it is restored.
  void Lose();
  bool IsLost();
  bool Restore();

  // Hands out a surface, which stays the caller's until Unlock. One at a time; none when lost.
  bool Lock(tag_SURFACELOCK* lock);
  // Makes what was written the stream's picture, unless it was lost or closed meanwhile.
  bool Unlock();

  // Presents the picture with the record, or with the one of the last call for null. False also for
  // a window that cannot be drawn into.
  bool Show(HWND window, const tag_DISPLAYINFO* info, const PictureSet& registered);
  bool CopyPicture(const tag_PICTUREDESC& picture);

  // Refuses everything from now on, except one Unlock. False for a stream that was closed already.
  bool Close();
  // Closed, with no surface handed out: nobody has anything of it any more.
  bool IsDone();

 private:
  struct Surface {
    std::vector<os::Color> m_pixels;
    int m_readers = 0;  // guarded by the stream's lock
  };
  class Reading;

  os::PixelSource SourceOf(const Surface& surface) const;
  // With the lock held.
  Surface* FreeSurface();

  const CSize m_size;
  std::mutex m_mutex;
  // Guarded by m_mutex. The pixels of a surface are its readers', or the writer's when it is
  // m_locked.
  std::vector<std::unique_ptr<Surface>> m_surfaces;  // two, and one for each that is read meanwhile
  Surface* m_shown = nullptr;                        // null: no picture
  Surface* m_locked = nullptr;
  bool m_is_lost = false;
  bool m_is_closed = false;
  tag_DISPLAYINFO m_info = {};
  std::unique_ptr<Presenter> m_presenter;  // taken out by who presents
};

}  // namespace zebx::noxdisplay
