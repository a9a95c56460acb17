#include "tools/zebtool/recordings/findings.h"

#include <nlohmann/json.hpp>

#include "tools/zebtool/console/text.h"

namespace zebtool {
namespace {

using zebx::Finding;
using Kind = Finding::Kind;

std::string Link(ULONGLONG offset) {
  return offset == zebx::kNoBlock ? "no block" : FormatOffset(offset);
}

std::string Moment(ULONGLONG seconds) {
  return FormatTime(CTime(static_cast<DWORD>(seconds)));
}

std::string Number(ULONGLONG number) {
  return std::to_string(number);
}

std::string HeaderText(const Finding& finding) {
  switch (finding.kind) {
    case Kind::kEmptyFile:
      return "the file is empty";
    case Kind::kNoMagic:
      return "the file does not begin with XBEZ: it is no recording, or its header is damaged";
    case Kind::kHeaderCut:
      return "the file ends inside its header";
    case Kind::kNameTooLong:
      return "the header has a name of " + Plural(finding.found, "byte") + ", more than the " +
             Number(finding.expected) + " that it may";
    case Kind::kVersion:
      return "the file version is " + Number(finding.found) + "; only version 0 is known";
    case Kind::kHeaderSize:
      return "the header says that it takes " + Plural(finding.found, "byte") +
             ", but its names end at " + FormatOffset(finding.expected);
    case Kind::kUnknownFlags:
      return "the header has flags that are not known";
    case Kind::kReservedField:
      return "the header has a reserved field that is not 0";
    case Kind::kFrameSize:
      return "the frame size " + Number(finding.found) + " does not exist";
    case Kind::kGmt:
      return "gmt is " + std::to_string(static_cast<LONG>(finding.found)) +
             " and not an hour of the day";
    case Kind::kEndBeforeBegin:
      return "the end time " + Moment(finding.found) + " is before the begin time " +
             Moment(finding.expected);
    case Kind::kBeginTimeStamp:
      return "the header's begin time stamp is " + Number(finding.found) + ", the first frame's " +
             Number(finding.expected) +
             (finding.severity == Finding::Severity::kNote
                  ? " (normal for clips of files of prepared blocks)"
                  : "");
    default:
      return "the end time is " + Moment(finding.found) + ", by the last frame's stamp it is " +
             Moment(finding.expected) +
             (finding.severity == Finding::Severity::kNote
                  ? " (normal for frames from before an alarm, and when the clock was set)"
                  : "");
  }
}

std::string OpenBlockText(const Finding& finding) {
  return "the last block was never closed, its writer died or is still writing; it holds " +
         Plural(finding.found, "whole frame") +
         (finding.expected > 0 ? " and " + Plural(finding.expected, "byte") + " behind them" : "");
}

std::string BlockText(const Finding& finding) {
  const std::string block = "block " + std::to_string(finding.block);
  switch (finding.kind) {
    case Kind::kReservedField:
      return block + " has a reserved field that is not 0";
    case Kind::kNoBlockHeader:
      return "the file ends " +
             (finding.found == 0 ? "" : Plural(finding.found, "byte") + " into ") +
             "where the next block header should stand";
    case Kind::kPreviousLink:
      return block + " points back to " + Link(finding.found) + " and not to " +
             Link(finding.expected);
    case Kind::kNextLink:
      return block + " points " +
             (finding.found == finding.offset ? "at itself"
                                              : "backwards, to " + FormatOffset(finding.found)) +
             "; the chain ends here";
    case Kind::kEmptyBlock:
      return block + " has no frames and yet a block behind it";
    case Kind::kCutBlock:
      return "the file is cut off inside " + block + ", which goes on to " +
             FormatOffset(finding.expected) + "; " + Plural(finding.found, "byte") +
             " at the end are no whole frame";
    case Kind::kBytesLeftOver:
      return Plural(finding.found, "byte") + " behind the last frame of " + block +
             " belong to nothing";
    case Kind::kNoBlockBehind:
      return block + " has frames but no block behind it";
    case Kind::kNoFrameYet:
      return "the recording holds no frame yet";
    case Kind::kOpenBlock:
      return OpenBlockText(finding);
    default:
      return block + " is stamped " + Number(finding.found) + ", its first frame " +
             Number(finding.expected) +
             (finding.severity == Finding::Severity::kNote
                  ? " (normal for files of prepared blocks)"
                  : "");
  }
}

std::string FrameText(const Finding& finding) {
  const std::string frame =
      "frame " + std::to_string(finding.frame) + " of block " + std::to_string(finding.block);
  switch (finding.kind) {
    case Kind::kMissingFrame:
      return frame + " is missing: the header counts " + Plural(finding.found, "frame");
    case Kind::kFrameTooLong:
      return frame + " takes " + Plural(finding.found, "byte") + ", but only " +
             FormatCount(finding.expected) + " are left in its block";
    case Kind::kStampGoesBack:
      return frame + " is stamped " +
             FormatCount(static_cast<DWORD>(finding.expected - finding.found)) +
             " ms before the frame ahead of it";
    default:
      return frame + " is no I-frame, so the block cannot be decoded from its start";
  }
}

std::string TextOf(const Finding& finding) {
  if (finding.block < 0) return HeaderText(finding);
  return finding.frame < 0 ? BlockText(finding) : FrameText(finding);
}

}  // namespace

std::string FindingLine(const Finding& finding) {
  return std::string(NameOf(finding.severity)) + " at " + FormatOffset(finding.offset) + ": " +
         TextOf(finding);
}

Json JsonOf(const Finding& finding) {
  Json json = {{"kind", NameOf(finding.severity)},
               {"what", NameOf(finding.kind)},
               {"offset", finding.offset}};
  if (finding.block >= 0) json["block"] = finding.block;
  if (finding.frame >= 0) json["frame"] = finding.frame;
  json["found"] = finding.found;
  json["expected"] = finding.expected;
  json["text"] = TextOf(finding);
  return json;
}

const char* StateOf(const zebx::CheckSummary& summary) {
  if (!summary.has_header || summary.damages > 0) return "damaged";
  return summary.unfinished ? "unfinished" : "whole";
}

}  // namespace zebtool
