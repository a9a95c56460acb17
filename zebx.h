// Everything that a host uses, in one header.
#pragma once

// Types, files, times, and where errors are reported.
#include "platform/framework/archive.h"
#include "platform/framework/bitmap.h"
#include "platform/framework/clock.h"
#include "platform/framework/error_report.h"
#include "platform/framework/file.h"
#include "platform/framework/file_exception.h"
#include "platform/framework/file_find.h"
#include "platform/framework/file_system.h"
#include "platform/framework/geometry.h"
#include "platform/framework/mem_file.h"
#include "platform/framework/object.h"
#include "platform/framework/time.h"
#include "platform/framework/types.h"

// The operating system: drives and files by name, windows and messages, drawing, sound, the tick
// counter.
#include "platform/os/clock.h"
#include "platform/os/debug_output.h"
#include "platform/os/files/directories.h"
#include "platform/os/files/disk_space.h"
#include "platform/os/files/drives.h"
#include "platform/os/files/files.h"
#include "platform/os/graphics/bitmap_resources.h"
#include "platform/os/graphics/graphics.h"
#include "platform/os/sound/wave_out.h"
#include "platform/os/windows/windows.h"
#include "platform/os/windows/wnd.h"

// The libraries that a host can bring its own of: devices, codec, display.
#include "platform/noxcodec/noxcodec.h"
#include "platform/noxdisplay/display_record.h"
#include "platform/noxdisplay/noxdisplay.h"
#include "platform/noxdisplay/streams.h"
#include "platform/zebdev/channels.h"
#include "platform/zebdev/zebdev.h"

// Picture formats and capture control: what cameras are opened with, and what they hand over.
#include "capture/encode_param.h"
#include "capture/mask_info.h"
#include "capture/mask_list.h"
#include "capture/notify.h"
#include "capture/picture_formats.h"
#include "capture/show_param.h"
#include "capture/video_color.h"
#include "capture/video_data.h"
#include "capture/zebx.h"

// Pictures and snapshots.
#include "image/dib_obj.h"
#include "image/image.h"

// Recording files and face files.
#include "record/frame_block.h"
#include "record/mox_face.h"
#include "record/mox_file.h"
#include "record/zeb_file.h"
#include "record/zeb_file_info.h"
#include "record/zeb_frame_data.h"

// Checking recordings, saving what is intact of damaged ones, finishing unfinished ones.
#include "recovery/frame_finder.h"
#include "recovery/recording_check.h"
#include "recovery/repair.h"
#include "recovery/salvage.h"

// Playback.
#include "playback/decode_wnd.h"
#include "playback/multi_decode_wnd.h"
#include "playback/play_messages.h"
#include "playback/wave_out.h"
#include "playback/zeb_decode_wnd.h"

// Storage: disks, the database, and searches.
#include "storage/dbs.h"
#include "storage/file_search_info.h"
#include "storage/hdd_obj.h"
#include "storage/recycling_results.h"
#include "storage/search_param.h"
#include "storage/storage_messages.h"
