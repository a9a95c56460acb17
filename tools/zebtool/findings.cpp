#include "tools/zebtool/findings.h"

#include "tools/zebtool/text.h"

namespace zebtool {
namespace {

const char* KindName(Finding::Kind kind) {
  switch (kind) {
    case Finding::Kind::kNote:
      return "note";
    case Finding::Kind::kUnfinished:
      return "unfinished";
    case Finding::Kind::kDamage:
      break;
  }
  return "damage";
}

}  // namespace

std::string FindingLine(const Finding& finding) {
  return std::string(KindName(finding.kind)) + " at " + FormatOffset(finding.offset) + ": " +
         finding.text;
}

void PutFinding(JsonWriter& json, const Finding& finding) {
  json.BeginObject();
  json.Value("kind", KindName(finding.kind));
  json.Value("offset", finding.offset);
  json.Value("text", finding.text);
  json.EndObject();
}

const char* StateOf(const ScanSummary& summary) {
  if (!summary.has_header || summary.damages > 0) return "damaged";
  return summary.unfinished ? "unfinished" : "whole";
}

}  // namespace zebtool
