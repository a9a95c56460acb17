// The work behind SalvageRecording, for callers that look at the result before it takes its name.
#pragma once

#include <functional>

#include "recovery/salvage.h"

namespace zebx {

// Sees the report while the files are whole and still have their temporary names. False: they are
// deleted and the result is kCancelled.
using SalvageJudge = std::function<bool(const SalvageReport&)>;

SalvageReport SalvageJudged(CFile& damaged, const CString& output, bool replace,
                            const ProgressCallback& progress, const SalvageJudge& judge);

}  // namespace zebx
