// The encoder's decisions about one macroblock: skip it, predict it from the picture before or from
// its surroundings, and with which vector, modes and levels.
#pragma once

#include "platform/noxcodec/software/level_choice.h"
#include "platform/noxcodec/software/macroblock_syntax.h"
#include "platform/noxcodec/software/prediction.h"
#include "platform/noxcodec/software/rate_distortion.h"

namespace zebx::noxcodec {

// Encodes the macroblocks of one picture in coding order. Borrows all it is given.
class MacroblockEncoder {
 public:
  // `source` and `target` are of whole macroblocks; `reference` has its border extended.
  MacroblockEncoder(FrameKind frame, int quantiser, const Picture& source, const Picture& reference,
                    const MacroblockMap& previous_map, const SyntaxModel& model, Picture& target,
                    MacroblockMap& map);

  // Decides, writes the decoded pixels to the target picture and the macroblock to the map, and
  // returns it to be coded.
  Macroblock& Encode(int column, int row);

 private:
  struct Candidate {
    Macroblock macroblock;
    MacroblockPixels pixels;
    std::int64_t cost;
    int squared_error;  // before levels are added
  };
  struct Site {
    int column, row;
    Neighbours neighbours;
    MotionVector predicted_motion;
  };

  bool TrySkipped(const Site& site);
  void TryInter(const Site& site);
  bool IsIntraWorthTrying(const Site& site) const;
  void TryIntra(const Site& site);
  std::int64_t EncodeIntra(const Site& site, int first, int count, const IntraModeModel& model,
                           IntraMode& chosen);
  void TransformDifference(const Site& site, int block, const BYTE* predicted, int stride,
                           Coefficients& coefficients) const;
  LevelChoice EncodeBlock(const Site& site, int block, const BYTE* predicted, int stride,
                          Coefficients& levels) const;
  std::int64_t CostOfKind(const Site& site, MacroblockInfo& macroblock) const;
  MotionVector FindMotion(const Site& site) const;

  FrameKind m_frame;
  int m_quantiser;
  RateDistortion m_rate;
  const Picture& m_source;
  const Picture& m_reference;
  const MacroblockMap& m_previous_map;
  const SyntaxModel& m_model;
  Picture& m_target;
  MacroblockMap& m_map;
  Candidate m_best;
  Candidate m_trial;
};

}  // namespace zebx::noxcodec
