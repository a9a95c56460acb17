// What a check of a recording can find, as data: a host or a tool makes its own words of it.
#pragma once

#include "platform/framework/export.h"
#include "platform/framework/types.h"

namespace zebx {

struct Finding {
  enum class Severity {
    kNote,        // unusual, but something the library itself makes
    kUnfinished,  // the writer died, or is still writing; nothing is damaged
    kDamage,
  };

  // Behind each kind, what `found` and `expected` say. Where nothing stands they are 0.
  enum class Kind {
    // Of the header.
    kEmptyFile,
    kNoMagic,        // no recording at all, or a damaged header
    kHeaderCut,      // the file ends inside its header
    kNameTooLong,    // bytes of the name, and the most that it may have
    kVersion,        // the version, and the one that is known
    kHeaderSize,     // what the header says, and where its names end
    kUnknownFlags,   // all flags, and the known ones among them
    kReservedField,  // of the header or of a block: the value, which should be 0
    kFrameSize,      // a frame size that does not exist
    kGmt,            // no hour of the day
    // Of the header's times.
    kEndBeforeBegin,  // end time and begin time, seconds since 1970
    kBeginTimeStamp,  // the header's stamp, and the first frame's
    kEndTime,         // the header's end time, and that by the last frame's stamp
    // Of the chain. Links are file offsets or kNoBlock.
    kNoBlockHeader,  // bytes that stand where the next block header should; too few for one
    kPreviousLink,   // the link back, and what it should be
    kNextLink,       // a link onwards that does not lead onwards
    kEmptyBlock,     // without frames, and yet a block behind it
    kCutBlock,       // bytes at the end of the file that are no whole frame; where the block ends
    kBytesLeftOver,  // bytes behind a block's last frame that belong to nothing
    kNoBlockBehind,  // the last block counts frames, so another one should follow
    kNoFrameYet,     // a recording just created
    kOpenBlock,  // whole frames in a block that was never closed; bytes of a cut one behind them
    // Of frames.
    kMissingFrame,   // frames that the block header counts
    kFrameTooLong,   // bytes that the frame takes, and those left in its block
    kStampGoesBack,  // the frame's stamp, and that of the frame ahead of it
    kNoIFrame,       // the first frame of a block
    kBlockStamp,     // the block header's stamp, and its first frame's
  };

  Severity severity = Severity::kDamage;
  Kind kind = Kind::kNoMagic;
  ULONGLONG offset = 0;  // in the file
  int block = -1;        // counted from 0; -1 where the finding is about none
  int frame = -1;        // in the block
  ULONGLONG found = 0;
  ULONGLONG expected = 0;
};

// Names for programs: "damage", "stamp-goes-back".
ZEBX_API const char* NameOf(Finding::Severity severity);
ZEBX_API const char* NameOf(Finding::Kind kind);

}  // namespace zebx
