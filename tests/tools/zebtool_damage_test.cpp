// Broken recordings: cut off at every byte, with every byte of the headers flipped, with chains
// that lead nowhere. Nothing may crash or hang, everything that is still there has to come back.
#include <gtest/gtest.h>

#include "tests/tools/test_recording.h"
#include "tests/tools/tool_run.h"

namespace {

constexpr int kFrames = 44;  // blocks of 18, 20 and 6

class BrokenRecording : public testing::Test {
 protected:
  // Files are made anew: some file systems flush one that was emptied, which takes its time.
  void Write(const std::string& bytes) {
    for (const std::string& path : {m_path, m_saved, m_exported}) std::filesystem::remove(path);
    WriteWholeFile(m_path, bytes);
  }

  ToolRun Info() { return RunTool({"info", m_path, "--blocks", "--frames"}); }
  ToolRun Verify() { return RunTool({"verify", m_path}); }
  ToolRun Export() { return RunTool({"export", m_path, m_exported, "--frames", "2"}); }
  ToolRun Salvage() { return RunTool({"salvage", m_path, m_saved}); }

  // Runs everything that reads the file and expects a clean end.
  void ExpectCleanEnds() {
    const int info = Info().status;
    EXPECT_EQ(info, Verify().status);
    EXPECT_TRUE(info == 0 || info == 1);
    const ToolRun exported = Export();  // of bytes that are no video
    EXPECT_EQ(exported.status, 1);
    EXPECT_FALSE(exported.err.empty());
  }

  TempDir m_dir;
  const std::string m_path = m_dir.File("broken.zebz");
  const std::string m_saved = m_dir.File("saved.zebz");
  const std::string m_exported = m_dir.File("out.y4m");
  const std::vector<TestFrame> m_frames = MakeFrames(kFrames);
};

TEST_F(BrokenRecording, CutAtEveryByteKeepsEveryWholeFrame) {
  for (const bool finished : {true, false}) {
    const std::string whole = MakeRecording(m_frames, finished);
    const auto ends = FrameEnds(MakeRecording(m_frames), m_frames);
    // An empty block header at the end is all that a writer leaves that dies between two blocks:
    // nothing is missing then.
    const std::size_t between_blocks =
        finished ? std::string::npos : BlockOffsets(whole).back() + kBlockHeaderBytes;
    for (std::size_t length = 0; length < whole.size(); ++length) {
      SCOPED_TRACE("cut at " + std::to_string(length));
      Write(whole.substr(0, length));
      ExpectCleanEnds();
      const ToolRun verified = Verify();
      EXPECT_EQ(verified.status, length == between_blocks ? 0 : 1);
      if (length > BlockOffsets(whole)[0] + kBlockHeaderBytes && length != between_blocks) {
        EXPECT_TRUE(Contains(verified.out, "zebtool salvage")) << verified.out;
      }

      std::vector<TestFrame> expected;
      for (std::size_t i = 0; i < ends.size() && ends[i] <= length; ++i) {
        expected.push_back(m_frames[i]);
      }
      const ToolRun saved = Salvage();
      EXPECT_EQ(saved.status, expected.empty() ? 1 : 0) << saved.err;
      ASSERT_EQ(ReadFrames(m_saved), expected);
      if (expected.empty()) continue;
      EXPECT_EQ(RunTool({"verify", m_saved}).status, 0);
    }
  }
}

TEST_F(BrokenRecording, EveryFlippedByteOfTheHeadersLosesNoFrame) {
  for (const bool finished : {true, false}) {
    const std::string whole = MakeRecording(m_frames, finished);
    const auto blocks = BlockOffsets(whole);
    std::vector<std::size_t> places;
    for (std::size_t at = 0; at < blocks[0]; ++at) places.push_back(at);
    for (const std::size_t block : blocks) {
      for (std::size_t at = block; at < block + kBlockHeaderBytes; ++at) places.push_back(at);
    }
    for (const std::size_t at : places) {
      for (const int flip : {0x01, 0xFF}) {
        SCOPED_TRACE("byte " + std::to_string(at) + " flipped by " + std::to_string(flip));
        std::string broken = whole;
        broken[at] = static_cast<char>(broken[at] ^ flip);
        Write(broken);
        ExpectCleanEnds();
        const ToolRun saved = Salvage();
        ASSERT_EQ(saved.status, 0) << saved.err;
        ASSERT_EQ(ReadFrames(m_saved), m_frames) << saved.out;
        const ToolRun verified = RunTool({"verify", m_saved});
        EXPECT_EQ(verified.status, 0) << verified.out;
      }
    }
  }
}

TEST_F(BrokenRecording, VerifyNamesTheDamagedFieldAndItsOffset) {
  const std::string whole = MakeRecording(m_frames);
  const auto blocks = BlockOffsets(whole);
  const auto ends = FrameEnds(whole, m_frames);
  struct {
    std::size_t at;
    std::size_t reported_at;
    const char* text;
  } const cases[] = {
      {1, 0, "XBEZ"},
      {4, 4, "version"},
      {8, 8, "header says"},
      {15, 12, "flags"},
      {16, 16, "reserved word"},
      {22, 22, "frame size"},
      {23, 23, "reserved byte"},
      {31, 28, "end time"},
      {35, 32, "begin time stamp"},
      {37, 36, "gmt"},
      {blocks[1], blocks[1], "points back"},
      {blocks[1] + 4, blocks[1], "block 1"},
      {blocks[1] + 8, blocks[1], "block 1"},
      {blocks[1] + 10, blocks[1] + 10, "reserved field"},
      {blocks[1] + 12, blocks[1], "stamped"},
      {blocks[2] + kBlockHeaderBytes, blocks[2] + kBlockHeaderBytes, "no I-frame"},
      {ends[2] + 10, ends[2], "frame 3 of block 0"},
      {ends[2] + 7, ends[2], "ms before the frame ahead"},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.text);
    std::string broken = whole;
    broken[one.at] = static_cast<char>(broken[one.at] ^ 0xFF);
    Write(broken);
    const ToolRun verified = Verify();
    EXPECT_EQ(verified.status, 1);
    EXPECT_TRUE(Contains(verified.out, one.text)) << verified.out;
    if (one.at == blocks[1] + 4 || one.at == blocks[1] + 8) continue;  // reported where it shows
    EXPECT_TRUE(Contains(verified.out, "at " + std::to_string(one.reported_at) + " (0x"))
        << verified.out;
  }
}

TEST_F(BrokenRecording, ChainThatLoopsOrPointsBackEnds) {
  const std::string whole = MakeRecording(m_frames);
  const auto blocks = BlockOffsets(whole);
  for (const std::size_t target : {blocks[1], blocks[0], std::size_t{0}, blocks[1] + 8}) {
    SCOPED_TRACE(target);
    std::string broken = whole;
    PutDword(broken, blocks[1] + 4, static_cast<DWORD>(target));
    Write(broken);
    ExpectCleanEnds();
    EXPECT_EQ(Verify().status, 1);
    EXPECT_EQ(Salvage().status, 0);
    EXPECT_EQ(ReadFrames(m_saved), m_frames);
  }
}

TEST_F(BrokenRecording, WhatIsNoRecordingIsRefused) {
  const std::string cases[] = {"", "XBEZ", std::string(5000, '\0'), std::string(5000, '\xFF'),
                               "RIFF" + std::string(3000, 'x')};
  for (const std::string& bytes : cases) {
    Write(bytes);
    ExpectCleanEnds();
    EXPECT_EQ(Verify().status, 1);
    EXPECT_EQ(Salvage().status, 1);
    EXPECT_FALSE(std::filesystem::exists(m_saved));
  }
}

TEST_F(BrokenRecording, LibrarysOwnOdditiesAreNoDamage) {
  const std::string whole = MakeRecording(m_frames);
  const auto blocks = BlockOffsets(whole);

  // The stamp of the creation in the first block, as prepared blocks leave it.
  std::string prepared = whole;
  PutDword(prepared, blocks[0] + 12, 1);
  Write(prepared);
  EXPECT_EQ(Verify().status, 0) << Verify().out;
  EXPECT_TRUE(Contains(Verify().out, "note at")) << Verify().out;

  // A clip of it takes that stamp for its begin, and ends in the source's empty block.
  const std::string clip = m_dir.File("clip.zebz");
  ASSERT_EQ(RunTool({"clip", m_path, clip, "--from-block", "0"}).status, 0);
  EXPECT_EQ(RunTool({"verify", clip}).status, 0) << RunTool({"verify", clip}).out;

  // A clock that was set while recording: begin and end time and the stamps do not agree.
  std::string pre_alarm = whole;
  PutDword(pre_alarm, 24, kTestBeginSeconds - 3600);
  PutDword(pre_alarm, 28, kTestBeginSeconds - 3600 + 3);
  Write(pre_alarm);
  EXPECT_EQ(Verify().status, 0) << Verify().out;
}

}  // namespace
