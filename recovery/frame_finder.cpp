#include "recovery/frame_finder.h"

#include <utility>

#include "recovery/frame_signs.h"
#include "recovery/header_recovery.h"
#include "recovery/recording_bytes.h"

namespace zebx {

class FrameFinder::Walk {
 public:
  Walk(CFile& file, HoleSink on_hole, const ProgressCallback& progress)
      : m_progress(progress), m_bytes(file, m_progress), m_on_hole(std::move(on_hole)) {}

  void Start(CFile& file) {
    const FirstBlock first = FindFirstBlock(CheckHeader(file), m_bytes);
    StartAt(first.offset, first.at_block);
  }
  void StartAt(ULONGLONG offset, bool at_block) {
    m_position = offset;
    m_limit = at_block ? offset : m_bytes.Length();
  }

  std::optional<FoundFrame> Next();

 private:
  // How certain it is that the file goes on somewhere.
  enum class Proof {
    kWeak,              // it may also end there
    kGoodButForAStamp,  // of three frames in a row one has a damaged stamp
    kGood,              // a block, or a frame, which may be cut off by the end of the file
    kFirm,              // a block, or a whole frame with something behind it
  };

  void EnterBlock();
  std::optional<FoundFrame> TakeTrustedFrame();
  std::optional<FoundFrame> TakeFrameBySigns();
  std::optional<FoundFrame> TakeDoubtfulFrame(const FrameHeader& header);
  FoundFrame Take(const FrameHeader& header, bool is_restored);
  std::optional<FrameHeader> RestoredFrameAt(ULONGLONG offset,
                                             const std::optional<FrameHeader>& ahead);
  std::optional<FrameHeader> FrameThatSwallowed(ULONGLONG end);
  bool GoesOnAt(ULONGLONG offset, const FrameHeader& ahead, Proof proof);
  bool IsBlockHere() {
    return m_last ? IsBlockBehind(*m_last, m_position) : m_bytes.IsBlock(m_position, m_block);
  }
  bool IsNewBlockHere() {
    const auto header = m_bytes.AnyFrameAt(m_position);
    return header && IsNewBlock(*header, m_block);
  }
  bool IsBlockBehind(const FrameHeader& ahead, ULONGLONG offset);
  bool EndsAt(ULONGLONG offset);
  bool IsInTime(DWORD stamp, DWORD next) const;
  std::optional<DWORD> LastStamp() const {
    return m_last ? std::optional(m_last->m_time_stamp) : std::nullopt;
  }
  void SkipTo(ULONGLONG offset);

  ProgressMeter m_progress;
  RecordingBytes m_bytes;
  HoleSink m_on_hole;
  ULONGLONG m_position = 0;
  ULONGLONG m_limit = 0;       // where the next block header stands, as far as that is certain
  ULONGLONG m_known_sync = 0;  // where a search that went ahead of m_position has ended
  DWORD m_block = kNoBlock;    // the block that m_position is in
  std::optional<DWORD> m_block_stamp;  // of its header, until its first frame is taken
  std::optional<FrameHeader> m_last;   // taken last
  DWORD m_trusted_frames = 0;          // frames that fill the rest of the block
};

std::optional<FoundFrame> FrameFinder::Walk::Next() {
  while (m_position < m_bytes.Length() && m_progress.Pass(m_position, m_bytes.Length())) {
    if (m_trusted_frames > 0) return TakeTrustedFrame();
    const bool is_cut_block = m_bytes.Length() - m_position < kBlockHeaderBytes &&
                              (m_position == m_limit || IsNewBlockHere());
    if (m_known_sync > m_position || is_cut_block) {
      SkipTo(is_cut_block ? m_bytes.Length() : m_known_sync);
    } else if (m_position == m_limit ? m_bytes.IsBlockOfChain(m_position, m_block)
                                     : IsBlockHere()) {
      EnterBlock();
    } else {
      // Where the chain leads to no block header, nothing is certain any more.
      if (m_position == m_limit) m_limit = m_bytes.Length();
      if (const auto frame = TakeFrameBySigns()) return frame;
    }
  }
  m_progress.Pass(m_bytes.Length(), m_bytes.Length());
  return std::nullopt;
}

void FrameFinder::Walk::EnterBlock() {
  const ULONGLONG offset = m_position;
  const auto header = m_bytes.BlockAt(offset);
  m_limit = m_bytes.Length();
  m_block = static_cast<DWORD>(offset);
  m_position = offset + kBlockHeaderBytes;
  m_block_stamp = header->m_time_stamp;
  const ULONGLONG next = header->m_next;
  if (header->m_next == kNoBlock || next < m_position || next > m_bytes.Length()) return;
  if (m_bytes.IsFilledByFrames(m_position, header->m_frames, next)) {
    m_trusted_frames = header->m_frames;
    m_limit = next;
    return;
  }
  const auto neighbour = m_bytes.BlockAt(next);
  if (neighbour && neighbour->m_previous == offset) m_limit = next;
}

std::optional<FoundFrame> FrameFinder::Walk::TakeTrustedFrame() {
  const auto header = m_bytes.AnyFrameAt(m_position);
  if (!header) {
    // The file shrank meanwhile.
    m_trusted_frames = 0;
    m_position = m_bytes.Length();
    return std::nullopt;
  }
  --m_trusted_frames;
  return Take(*header, false);
}

FoundFrame FrameFinder::Walk::Take(const FrameHeader& header, bool is_restored) {
  FoundFrame frame{m_position, header, is_restored, std::exchange(m_block_stamp, std::nullopt)};
  if (frame.block_stamp && !header.IsIFrame()) {
    // Every block begins with one.
    frame.header.m_type = kIFrame;
    frame.is_restored = true;
  }
  m_position += header.TotalBytes();
  m_last = header;
  return frame;
}

std::optional<FoundFrame> FrameFinder::Walk::TakeFrameBySigns() {
  const auto header = m_bytes.FrameAt(m_position);
  const ULONGLONG behind = header ? m_position + header->TotalBytes() : 0;
  // One damaged bit explains more than any other guess, so it is tried wherever it may be.
  const bool fits = header && behind <= m_limit;
  if (fits && (GoesOnAt(behind, *header, Proof::kGood) || RestoredFrameAt(behind, header))) {
    const auto shorter = FrameThatSwallowed(behind);
    return Take(shorter.value_or(*header), shorter.has_value());
  }
  if (const auto restored = RestoredFrameAt(m_position, m_last)) {
    // Not when it would swallow frames, among them the one whose time stamp is damaged.
    const ULONGLONG restored_end = m_position + restored->TotalBytes();
    const bool swallows =
        fits && behind < restored_end &&
        (m_bytes.LeadTo(behind, restored_end, std::nullopt) ||
         m_bytes.FindSync(behind, restored_end, header->m_time_stamp) < restored_end);
    return Take(swallows ? *header : *restored, !swallows);
  }
  if (fits && (GoesOnAt(behind, *header, Proof::kGoodButForAStamp) ||
               GoesOnAt(behind, *header, Proof::kWeak))) {
    return Take(*header, false);
  }
  if (header) return TakeDoubtfulFrame(*header);
  SkipTo(m_bytes.FindSync(m_position + 1, m_limit, LastStamp()));
  return std::nullopt;
}

// A frame behind which nothing goes on: it is cut off, what follows is damaged, or its length is.
std::optional<FoundFrame> FrameFinder::Walk::TakeDoubtfulFrame(const FrameHeader& header) {
  const ULONGLONG end = m_position + header.TotalBytes();
  const ULONGLONG body = m_position + header.HeaderBytes();
  if (end > m_limit) {
    // Within a block whose end is certain, such a length is damaged. At the end of the file the
    // frame is cut off, and what is left of it is no place to look for frames.
    SkipTo(m_limit < m_bytes.Length() ? m_bytes.FindSync(m_position + 1, m_limit, LastStamp())
                                      : m_bytes.FindChainedBlock(body, m_block));
    return std::nullopt;
  }
  const ULONGLONG across = m_bytes.FindRunAcross(body, end, m_limit, header.m_time_stamp);
  if (across < end) {
    SkipTo(across);
    return std::nullopt;
  }
  m_known_sync = m_bytes.FindSync(end, m_limit, header.m_time_stamp);
  return Take(header, false);
}

// The frame at `offset` with one bit of its header put right, when only so it is a frame that
// follows `ahead` and behind which the file goes on. The shortest such frame, for a longer one may
// end with a later frame. A frame that the end of the file explains needs more proof: its own bytes
// may look like a frame.
std::optional<FrameHeader> FrameFinder::Walk::RestoredFrameAt(
    ULONGLONG offset, const std::optional<FrameHeader>& ahead) {
  const auto there = m_bytes.FrameAt(offset);
  const bool is_at_end = there && m_limit == m_bytes.Length() &&
                         offset + there->TotalBytes() + kVoicedFrameHeaderBytes > m_limit;
  std::optional<FrameHeader> restored;
  for (const FrameHeader& header : m_bytes.NearFramesAt(offset)) {
    const ULONGLONG end = offset + header.TotalBytes();
    if (end > m_limit || (ahead && !Follows(*ahead, header))) continue;
    if (restored && header.TotalBytes() >= restored->TotalBytes()) continue;
    if (!GoesOnAt(end, header, Proof::kFirm)) continue;
    if (!is_at_end || m_bytes.LeadOn(end, m_limit, header)) restored = header;
  }
  return restored;
}

// The frame at the position when one bit of its length made it end at `end` with a later frame:
// from where it ends without that bit, frames lead there exactly.
std::optional<FrameHeader> FrameFinder::Walk::FrameThatSwallowed(ULONGLONG end) {
  for (const FrameHeader& header : m_bytes.NearFramesAt(m_position)) {
    const ULONGLONG begin = m_position + header.TotalBytes();
    if (begin < end && m_bytes.LeadTo(begin, end, header)) return header;
  }
  return std::nullopt;
}

// Whether something begins at `offset`, behind the frame `ahead`: the next block, or a frame.
bool FrameFinder::Walk::GoesOnAt(ULONGLONG offset, const FrameHeader& ahead, Proof proof) {
  const bool may_be_cut = m_limit == m_bytes.Length();
  if (offset == m_limit && !may_be_cut) return true;
  if (IsBlockBehind(ahead, offset)) return true;
  const bool is_weak = proof == Proof::kWeak;
  if (may_be_cut && m_limit - offset < kVoicedFrameHeaderBytes) return is_weak;
  const auto next = m_bytes.FrameAt(offset);
  if (!next) return false;
  const bool follows = is_weak || proof == Proof::kGoodButForAStamp
                           ? IsInTime(ahead.m_time_stamp, next->m_time_stamp)
                           : Follows(ahead, *next);
  if (is_weak) return follows;
  const ULONGLONG end = offset + next->TotalBytes();
  if (!HasContents(*next)) return false;
  if (proof == Proof::kGood) return follows && (end <= m_limit || may_be_cut);
  if (end > m_limit) return false;
  const auto behind = m_bytes.FrameAt(end);
  if (!behind && !EndsAt(end)) return false;
  if (follows || proof != Proof::kGoodButForAStamp) return follows;
  return behind && HasContents(*behind) &&
         (IsInTime(ahead.m_time_stamp, behind->m_time_stamp) ||
          StampsFit(next->m_time_stamp, behind->m_time_stamp));
}

// Where no chain leads to a block header, its stamp has to fit as well.
bool FrameFinder::Walk::IsBlockBehind(const FrameHeader& ahead, ULONGLONG offset) {
  if (!m_bytes.IsBlock(offset, m_block)) return false;
  const auto block = m_bytes.BlockAt(offset);
  return block && (block->m_previous == m_block || offset + kBlockHeaderBytes == m_bytes.Length() ||
                   StampsFit(ahead.m_time_stamp, block->m_time_stamp));
}

// Whether a run of frames can end at `offset`.
bool FrameFinder::Walk::EndsAt(ULONGLONG offset) {
  const bool may_be_cut = m_limit == m_bytes.Length();
  return offset == m_limit || m_bytes.IsBlock(offset, m_block) ||
         (may_be_cut && m_limit - offset < kVoicedFrameHeaderBytes);
}

// `stamp` itself may be damaged.
bool FrameFinder::Walk::IsInTime(DWORD stamp, DWORD next) const {
  return StampsFit(stamp, next) || (m_last && StampsFit(m_last->m_time_stamp, next));
}

void FrameFinder::Walk::SkipTo(ULONGLONG offset) {
  if (offset > m_position) m_on_hole({m_position, offset});
  m_position = offset;
  m_block_stamp.reset();
}

FrameFinder::FrameFinder(CFile& file, HoleSink on_hole, const ProgressCallback& progress)
    : m_walk(std::make_unique<Walk>(file, std::move(on_hole), progress)) {
  m_walk->Start(file);
}

FrameFinder::FrameFinder(CFile& file, HoleSink on_hole, const ProgressCallback& progress,
                         ULONGLONG offset, bool at_block)
    : m_walk(std::make_unique<Walk>(file, std::move(on_hole), progress)) {
  m_walk->StartAt(offset, at_block);
}

FrameFinder::~FrameFinder() = default;

std::optional<FoundFrame> FrameFinder::Next() {
  return m_walk->Next();
}

}  // namespace zebx
