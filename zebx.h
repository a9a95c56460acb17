// Everything that a host uses, in one header.
#pragma once

// Types, files, times, and where errors are reported.
#include "platform/framework/bitmap.h"
#include "platform/framework/clock.h"
#include "platform/framework/error_report.h"
#include "platform/framework/file.h"
#include "platform/framework/file_exception.h"
#include "platform/framework/mem_file.h"
#include "platform/framework/object.h"
#include "platform/framework/time.h"
#include "platform/framework/types.h"

// Drives, deletion, the tick counter, and drawing.
#include "platform/os/clock.h"
#include "platform/os/files/drives.h"
#include "platform/os/files/files.h"
#include "platform/os/graphics/bitmap_resources.h"
#include "platform/os/graphics/graphics.h"

// Picture formats and capture control.
#include "capture/notify.h"
#include "capture/picture_formats.h"
#include "capture/zebx.h"

// Decoding what a recording holds.
#include "platform/noxcodec/noxcodec.h"

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

// Storage: disks, the database, and searches.
#include "storage/dbs.h"
#include "storage/file_search_info.h"
#include "storage/hdd_obj.h"
#include "storage/recycling.h"
#include "storage/search_param.h"
#include "storage/storage_messages.h"
