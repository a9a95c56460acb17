#include <gtest/gtest.h>

#include <filesystem>
#include <optional>

#include "platform/os/clock.h"
#include "record/frame_block.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/recording_fixture.h"
#include "tests/support/temp_dir.h"

using namespace zebx;

namespace {

constexpr DWORD kNow = 1000000000;

class ZebFileWriter : public testing::Test {
 protected:
  ZebFileWriter() { Open(); }

  // A new writer for a new file; what the last one wrote is lost.
  void Open() {
    m_file.emplace();
    EXPECT_EQ(m_file->Open(&m_info, kZebFileWrite), 1);
  }
  ParsedRecording Finish() {
    m_file->Close();
    return ParseRecording(ReadWholeFile(m_path));
  }
  int WriteIFrame(DWORD time_stamp, const std::string& video = "i") {
    FillFrame(m_frame, 0, time_stamp, video);
    return m_file->WriteOneFrame(&m_frame);
  }

  const ScopedTimeZone m_zone{"CST-8"};
  os::SteppedClock m_clock{kNow, 500};
  const TempDir m_directory;
  const std::string m_path = m_directory.File("r.zebz");
  CZebFileInfo m_info = MakeInfo(m_path);
  std::optional<CZebFile> m_file;
  CZebFrameData m_frame{64, 64, 64};
};

TEST_F(ZebFileWriter, StartsBlocksAtTheIFrameBehindEnoughFrames) {
  const std::pair<FrameRun, const char*> cases[] = {
      // one frame a millisecond
      {{250, 25, 0}, "125@1000 125@1125 0@500"},
      {{205, 1, 0}, "101@1000 101@1101 3@1202 0@500"},
      {{300, 200, 0}, "200@1000 100@1200 0@500"},
      {{500, 25, 2}, "225@1000 250@1225 25@1475 0@500"},
      {{23, 1, 2}, "9@1000 10@1009 4@1019 0@500"},
  };
  for (const auto& [run, blocks] : cases) {
    Open();
    const std::vector<int> written = WriteRun(*m_file, run);
    EXPECT_EQ(m_file->GetTotalFrame(), run.m_frames);
    const ParsedRecording parsed = Finish();
    EXPECT_EQ(parsed.m_blocks, blocks);
    EXPECT_EQ(parsed.m_videos, NumberedVideos(written));
  }
  // I-frames of RT8Port boards are counted across files: three are left.
  ASSERT_EQ(m_file->Open(&m_info, kZebFileWrite), 1);
  WriteRun(*m_file, {15, 1, 2});
  EXPECT_EQ(Finish().m_blocks, "6@1000 9@1006 0@500");
}

TEST_F(ZebFileWriter, AWholeRecordingIsByteForByte) {
  m_clock.Advance(2000);
  std::string frames;
  for (BYTE i = 1; i <= 9; ++i) {
    const std::string video(1, static_cast<char>(i));
    Fill(m_frame, {0, 0x0020, 0x1000U + i, video, {}});
    ASSERT_EQ(m_file->WriteOneFrame(&m_frame), 1);
    frames.append(Hex("0000 2000")).append(video).append(Hex("100000 01000000")).append(video);
  }
  m_clock.Advance(1000);
  Fill(m_frame, {0, 0x8020, 0x2000, "V", "S"});
  ASSERT_EQ(m_file->WriteOneFrame(&m_frame), 1);
  m_clock.Advance(96);
  m_file->Close();
  EXPECT_EQ(ReadWholeFile(m_path),
            Hex("5842455a 00000000 3e000000 04000000 00000000 02010200 02ca9a3b 03ca9a3b"
                "01100000 10000000 03000000 63616d 03000000 627264 04000000 686f7374") +
                Hex("ffffffff c3000000 0900 0000 01100000") + frames +
                Hex("3e000000 e5000000 0100 0000 00200000") +
                Hex("0000 2080 00200000 01000000 01000000 56 53") +
                Hex("c3000000 ffffffff 0000 0000 0c0e0000"));
}

TEST_F(ZebFileWriter, TheFirstPreAlarmFrameMovesTheBeginBack) {
  m_info.SetBeginTime(CTime(5000));
  m_info.SetEndTime(CTime(6000));
  m_info.SetBeginTimeStamp(10000);
  m_info.SetGmt(11);  // of the alarm's moment: not to be computed anew
  for (const auto& [stamp, header] : {std::pair(4500, "4995-4995, stamp 4500, gmt 11, flags 0"),
                                      {12000, "5000-6000, stamp 12000, gmt 11, flags 0"}}) {
    Open();
    for (int i = 0; i < 102; ++i) {
      FillFrame(m_frame, 0, static_cast<DWORD>(stamp + i), "pre");
      ASSERT_EQ(m_file->WritePreAlarmFrame(&m_frame), 1);
    }
    const ParsedRecording parsed = Finish();
    EXPECT_EQ(parsed.m_header, header);
    EXPECT_EQ(parsed.m_blocks,
              "101@" + std::to_string(stamp) + " 1@" + std::to_string(stamp + 101) + " 0@500");
  }
}

TEST_F(ZebFileWriter, RefusedFramesChangeNothing) {
  EXPECT_EQ(CFile().Open(m_path, CFile::kShareExclusive), 1);  // no handle before the first frame
  EXPECT_EQ(m_file->WriteOneFrame(nullptr), kWriteNoFile);
  const std::string created = ReadWholeFile(m_path);
  FillFrame(m_frame, 1, 1, "p");
  EXPECT_EQ(m_file->WriteOneFrame(&m_frame), kFrameDropped);
  EXPECT_EQ(m_file->WritePreAlarmFrame(&m_frame), kFrameDropped);
  m_file->SetLength(0x7F000000);
  EXPECT_EQ(WriteIFrame(1), kWriteFileFull);
  EXPECT_EQ(ReadWholeFile(m_path), created);
  m_file->SetLength(0x7EFFFFFF);
  EXPECT_EQ(WriteIFrame(1), kFrameWritten);
  m_frame.SetVoice(1);
  m_frame.SetSpeechDataLen(65);  // more than there is
  EXPECT_EQ(m_file->WriteOneFrame(&m_frame), kWriteNoFile);
  EXPECT_EQ(m_file->GetLength(), created.size() + 13);
}

TEST_F(ZebFileWriter, FilesWithoutAFrameAreDeletedAndThoseThatTheDiskRefusesUnlessTheyWereThere) {
  EXPECT_EQ(m_file->Open(&m_info, kZebFileWrite), 0);  // busy
  m_file->Close();
  EXPECT_FALSE(std::filesystem::exists(m_path));
  EXPECT_EQ(WriteIFrame(1), kWriteNoFile);
  EXPECT_EQ(m_file->Open(&m_info, tag_ZEBFILEMODE{2}), 0);
  FaultyFileSystem disk;
  for (const bool exists : {false, true}) {
    if (exists) WriteWholeFile(m_path, "before");
    for (const std::uint64_t room : {0U, 50U, 70U}) {
      disk.FillDiskAfter(room);
      EXPECT_EQ(m_file->Open(&m_info, kZebFileWrite), 0);
      EXPECT_EQ(std::filesystem::exists(m_path), exists) << room;
    }
  }
}

TEST_F(ZebFileWriter, NamesSetMeanwhileHarmNeitherTheFirstBlockNorOtherFiles) {
  FaultyFileSystem disk;
  disk.FailCall(FaultyFileSystem::kRead, 1, 0, 1000);  // a writer has nothing to read
  m_file->SetHostName("HOST");
  for (const char* name : {"cam", "a longer camera", "c"}) {
    m_file->SetCameraName(name);
    EXPECT_EQ(WriteRun(*m_file, {102, 1}).size(), 102U);
    EXPECT_TRUE(ReadWholeFile(m_path).substr(44).starts_with("cam\3")) << name;
  }
  EXPECT_EQ(Finish().m_fault, "");
  EXPECT_EQ(ReadWholeFile(m_path).substr(58, 4), "HOST");

  const std::string other = m_directory.File("other.zebz");
  Open();
  m_file->SetFileName(other);
  WriteWholeFile(other, "evidence");
  m_file->Close();  // without a frame: deletes what it made
  EXPECT_TRUE(std::filesystem::exists(other) && !std::filesystem::exists(m_path));
}

TEST_F(ZebFileWriter, AnAppendedFrameIsOneCallAndReservesAheadFromTheSecondBlockOn) {
  for (const bool refused : {false, true}) {
    FaultyFileSystem disk;
    if (refused) disk.RefuseReserves();
    Open();
    WriteIFrame(1);
    const std::uint64_t calls = disk.Calls();
    FillFrame(m_frame, 0, 1, "video", "speech");
    for (int i = 0; i < 100; ++i) ASSERT_EQ(m_file->WriteOneFrame(&m_frame), 1);
    EXPECT_EQ(disk.Calls() - calls, 100U);
    EXPECT_EQ(disk.Reserves(), 0U);
    for (int i = 0; i < 150; ++i) ASSERT_EQ(m_file->WriteOneFrame(&m_frame), 1);
    EXPECT_EQ(disk.Reserves(), 1U);
    m_file.reset();
  }
}

TEST_F(ZebFileWriter, ABlockEndsWhereItsCountDoes) {
  WriteRun(*m_file, {65535, 65535});
  FillFrame(m_frame, 1, 1, "p");
  EXPECT_EQ(m_file->WriteOneFrame(&m_frame), kWriteFileFull);
  EXPECT_EQ(WriteIFrame(2), kFrameWritten);
  EXPECT_EQ(Finish().m_blocks, "65535@1000 1@2 0@500");
}

TEST_F(ZebFileWriter, QueriesHideTheLastEntryOfAnIndexThatIsExactlyFull) {
  while (m_file->GetTotalBlock() < 1024) WriteRun(*m_file, {10, 1, 2});
  EXPECT_EQ(m_file->GetFrameNumOfBlock(1022) + m_file->GetFrameNumOfBlock(1023), 10);
  EXPECT_EQ(m_file->GetBlockTimeStamp(1023), 0xFFFFFFFF);
  EXPECT_EQ(m_file->GetBlockTime(1023).GetTime(), 0U);
  int number = 0;
  for (int before = 0; before < 1024; ++before) number += m_file->GetFrameNumOfBlock(before);
  EXPECT_EQ(m_file->GetFrameIndex(1024, 0), number);
  while (m_file->GetTotalBlock() < 1025) WriteRun(*m_file, {10, 1, 2});
  int block = 0, index = 0;
  EXPECT_EQ(m_file->GetFilePos(block, index), 1);
  EXPECT_EQ(block, 1024);
  EXPECT_EQ(m_file->GetFrameIndex(block, index) + 1, m_file->GetTotalFrame());
}

class PreparedBlock : public CFrameBlock {
 public:
  PreparedBlock(DWORD time_stamp, DWORD frames, const std::string& video)
      : m_time_stamp(time_stamp), m_frames(frames) {
    CZebFrameData frame(64, 64, 64);
    for (DWORD i = 0; i < frames; ++i) {
      FillFrame(frame, i == 0 ? 0 : 1, time_stamp, video);
      frame.Write(&m_stream);
    }
    m_bytes = static_cast<DWORD>(m_stream.GetLength());
  }
  DWORD GetDataLength() const override { return m_bytes; }
  DWORD GetTimeStamp() const override { return m_time_stamp; }
  DWORD GetFrameNum() const override { return m_frames; }
  CTime GetBeginTime() const override { return CTime(2 * m_time_stamp); }
  CTime GetEndTime() const override { return CTime(3 * m_time_stamp); }
  CFile* GetStream() override { return &m_stream; }

  DWORD m_time_stamp, m_frames, m_bytes;
  CMemFile m_stream;
};

class PreparedBlocks : public ZebFileWriter {
 protected:
  int Write(std::initializer_list<CObject*> blocks) {
    CObList list;
    for (CObject* block : blocks) list.AddTail(block);
    return m_file->WriteBlock(&list);
  }
  PreparedBlock m_first{7000, 2, "a"};
  PreparedBlock m_second{8000, 2, std::string(5000, 'b')};
  PreparedBlock m_empty{9000, 0, ""};
};

TEST_F(PreparedBlocks, AreAppendedUpToAnEmptyOne) {
  EXPECT_EQ(m_file->WriteBlock(nullptr) + Write({nullptr, &m_first}) + Write({&m_empty}), 0);
  EXPECT_EQ(Write({&m_first, &m_second, &m_empty, &m_first}), 1);
  EXPECT_EQ(m_second.m_stream.GetPosition(), m_second.m_bytes);
  EXPECT_EQ(m_file->GetBlockTimeStamp(1), m_file->GetBlockTimeStamp(0));
  EXPECT_EQ(m_file->GetTotalFrame(), 4);
  EXPECT_EQ(m_file->GetLength(), std::filesystem::file_size(m_path));
  EXPECT_EQ(Write({&m_first}), 0);  // the block has frames now
  EXPECT_EQ(WriteIFrame(8100, "live"), 1);

  const ParsedRecording parsed = Finish();
  EXPECT_EQ(parsed.m_blocks, "2@500 3@8000 0@500");  // the first one stamped at its creation
  EXPECT_EQ(parsed.m_header, "14000-1000000000, stamp 7000, gmt 16, flags 0");
  EXPECT_EQ(parsed.m_videos.back(), "live");

  Open();
  m_first.m_bytes += 1000;  // more than its stream holds
  EXPECT_EQ(Write({&m_first, &m_second, nullptr}), 1);
  EXPECT_EQ(m_first.m_stream.GetPosition(), m_first.m_bytes);
  EXPECT_EQ(Finish().m_blocks, "2@500 2@8000 0@500");
}

TEST_F(PreparedBlocks, BeyondWhatAFileCanCountAreRefusedBehindTheOthers) {
  PreparedBlock many = {9000, 1, "m"}, large = {9000, 1, "l"};
  many.m_frames = 0x10000;
  large.m_bytes = 0xFFFFFFB0;
  for (PreparedBlock* block : {&many, &large}) {
    EXPECT_EQ(Write({block}), 0);
    EXPECT_EQ(m_file->GetTotalFrame(), 0);
    EXPECT_EQ(Write({&m_first, block, &m_second}), 0);
    EXPECT_EQ(m_file->GetTotalFrame(), 2);
    EXPECT_EQ(Finish().m_blocks, "2@500 0@500");
    Open();
  }
  EXPECT_EQ(Write({&m_first}), 1);
  CZebFileInfo info = MakeInfo(m_directory.File("alarm.zebz"));
  CZebFile alarm;
  ASSERT_EQ(alarm.Open(&info, kZebFileWrite), 1);
  EXPECT_EQ(m_file->AlarmPreviewData(&alarm, 1), 1);
  EXPECT_EQ(alarm.GetTotalFrame(), 2);
}

TEST_F(PreparedBlocks, ThatTheDiskRefusesAreTakenBackAndMayBeOfferedAgain) {
  FaultyFileSystem disk;
  for (std::uint64_t n = 1; disk.Failures() == n - 1; ++n) {
    SCOPED_TRACE(n);
    Open();
    disk.FailCall(FaultyFileSystem::kWrite, n);
    try {
      EXPECT_EQ(Write({&m_first, &m_second}), 1);
    } catch (const CFileException&) {
      EXPECT_EQ(Write({&m_second}), m_file->IsNextIFrame());
    }
    disk.Heal();
    m_file->Close();
    EXPECT_EQ(ParseRecording(ReadWholeFile(m_path)).m_fault, "");
  }
  EXPECT_GT(disk.Failures(), 4U);
}

}  // namespace
