// New recordings on the working disk of the open database: room for them, their making, their end.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "record/zeb_file.h"

namespace zebtool {

class DatabaseSession;

enum class RecordingKind { kVideo, kAlarm };

// True when the working disk is below its reserved space, or there is none.
bool IsWorkingDiskShort();
// Chooses a disk with room, and deletes the oldest days where none has any, until recording can go
// on. Throws JobError when nothing more can be done.
void MakeRoom();

// The path that a recording of this header would get now, where something lies there already: the
// database names a recording after its camera and its begin, and would empty that file.
std::optional<std::string> ExistingRecording(const DatabaseSession& database,
                                             const CZebFileInfo& header, RecordingKind kind);
// Creates a recording; its path goes into the header. Throws JobError.
std::unique_ptr<CZebFile> CreateRecording(const DatabaseSession& database, CZebFileInfo& header,
                                          RecordingKind kind);
// Finishes it and returns its path; one without a frame is gone. Throws JobError.
std::string FinishRecording(std::unique_ptr<CZebFile> file);

}  // namespace zebtool
