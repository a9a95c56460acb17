// Where a player goes and when: pace, steps, seeks, sound.
#include "image/image.h"
#include "tests/playback/file_player_fixture.h"

using namespace zebx;

namespace {

using FilePlayer = FilePlayerTest;

TEST_F(FilePlayer, KeepsTheRecordedPaceTimesItsSpeed) {
  struct Case {
    int speed;
    DWORD interval_ms;  // of 40
    DWORD post_processing;
  };
  for (const auto& [speed, interval_ms, post_processing] :
       {Case{0, 40, 0x1D}, {1, 20, 0}, {2, 10, 0}, {3, 6, 0}, {-1, 80, 0x1D}, {-2, 160, 0x1D}}) {
    SCOPED_TRACE(speed);
    ASSERT_EQ(Open({50, 0}, speed), 1);
    EXPECT_EQ(Pass(), "-") << "opens the file";
    EXPECT_EQ(Pass(1), "0");
    EXPECT_EQ(Doors::post_processing, post_processing);
    EXPECT_EQ(Pass(interval_ms - 1), "-");
    EXPECT_EQ(Pass(1), "1");
    EXPECT_EQ(Pass(1, 1), "2") << "the sound does not wait";
    m_player->ChangePlaySpeed(-2);
    EXPECT_EQ(Pass(interval_ms), "3") << "the speed before";
    EXPECT_EQ(Passes({159, 1}), "-4");
    m_player->ChangePlaySpeed(speed);
    m_player->StepNext();
    EXPECT_EQ(Pass(), "5");
    EXPECT_EQ(Doors::post_processing, 0x1DU) << "in single steps";
    m_player->ResetPlay();
    EXPECT_EQ(m_player->GetPlaySpeed(), 0);
    EXPECT_EQ(Pass(), "6");
    EXPECT_EQ(Passes({39, 1}), "-7") << "no step, no speed";
  }
}

TEST_F(FilePlayer, StepsByWhereReadingStands) {
  const std::vector<int> blocks = {4, 3, 1, 3, 0};
  // What a step back shows after each of the frames; the last one ends the file.
  const std::vector<std::string> before = {"-", "0", "1", "2", "1", "4", "5", "7", "7", "8"};
  ASSERT_EQ(Open(blocks), 1);
  EXPECT_EQ(m_player->StepPrev(), 0) << "no file yet";
  Pass();
  int number = 0;
  for (int block = 0; block < 4; ++block) {
    for (int index = 0; index < blocks[block] && number < 10; ++index, ++number) {
      SCOPED_TRACE(number);
      EXPECT_EQ(m_player->PlayFrom(block, index + 1), 1);
      EXPECT_EQ(m_player->StepNext(), 1);
      EXPECT_EQ(Passes({kLong, kLong}), std::to_string(number) + "-") << "one, then a pause";
      EXPECT_EQ(m_player->IsPause(), 1);
      EXPECT_EQ(m_player->StepPrev(), 0);
      EXPECT_EQ(Passes({kLong, kLong}), before[number] + "-");
    }
  }
  m_player->PlayFrom(3, -1);
  EXPECT_EQ(Passes({kLong, kLong, kLong}), "8910 end");
  EXPECT_EQ(m_player->StepNext() + m_player->PlayFrom(0, 1) + m_player->PlayFrom(CTime(5)), 0);
  EXPECT_EQ(m_player->GetPicture(nullptr), 0);
}

TEST_F(FilePlayer, SeeksMomentsBeforeAndAfterTheFileIsReady) {
  struct Case {
    bool is_finished;
    DWORD time;
    int result;         // once the file is ready
    const char* shown;  // once ready
    const char* shown_first;
  };
  for (const auto& [is_finished, time, result, shown, shown_first] :
       {Case{true, kBegin - 1, 1, "0", "0"},
        {true, kBegin + 1, 1, "24", "24"},
        {true, kBegin + 2, 1, "50", "50"},
        {true, kBegin + 5, 1, "124", "124"},
        {false, kBegin + 5, 0, "2", "0"},
        {true, kBegin + 6, 0, "2", "0"},
        {true, kBegin + 60, 0, "2", "0"},
        {true, 0, 1, "0", "0"}}) {
    SCOPED_TRACE(time);
    const auto blocks =
        is_finished ? std::vector<int>{50, 50, 50, 0} : std::vector<int>{50, 50, 50};
    Open(blocks);
    EXPECT_EQ(m_player->PlayFrom(CTime(time)), time < kBegin + 60 ? 1 : 0) << "kept, or not";
    EXPECT_EQ(Passes({kLong, kLong}), std::string("-") + shown_first);
    Open(blocks);
    Pass();
    EXPECT_EQ(Pass(), "0");
    m_player->StepNext();
    EXPECT_EQ(Pass(), "1");
    EXPECT_EQ(m_player->PlayFrom(CTime(time)), result);
    if (result == 0) m_player->StepNext();
    EXPECT_EQ(Passes({kLong, kLong}), std::string(shown) + "-") << "still in single steps";
  }
  // Positions: what is asked for before the file is ready is kept but for block 0.
  for (const auto& [block, shown] : {std::pair(0, "0"), {1, "54"}}) {
    Open({50, 50, 50, 0});
    EXPECT_EQ(m_player->PlayFrom(block, 5), 1);
    EXPECT_EQ(Passes({kLong, kLong}), std::string("-") + shown);
  }
  EXPECT_EQ(m_player->PlayFrom(0, 52), 1);
  EXPECT_EQ(Passes({kLong, 1}), "51-") << "runs on into the next block";
  m_player->PlayFrom(2, 1);
  EXPECT_EQ(Passes({1, kLong}), "-100") << "waits until a frame is due";
  m_player->PlayFrom(3, 1);
  EXPECT_EQ(Pass(), "- end") << "nothing is there";
}

TEST_F(FilePlayer, PausesAndShowsWhatItsSettingsSay) {
  m_show.ShowCaption(1);
  m_show.SetCaptionColor(0x010203);
  std::string bytes = RawRecording({5, 0});
  const auto set_flags = [&](const char* video, char low, char high) {
    bytes.replace(bytes.find(video) - 10, 2, {low, high});
  };
  set_flags("picture 1", 0, 0x40);
  set_flags("picture 2", 1, 0);
  m_disk.Put("played", bytes);
  EXPECT_EQ(m_player->IsPause(), 1);
  ASSERT_EQ(m_player->OpenVideo("played", 0, 0, 0), 1);
  EXPECT_EQ(m_player->IsPause(), 0);
  Pass();
  EXPECT_EQ(Pass(), "0");
  const std::string fields(&Doors::record.m_begin_time[0]);
  EXPECT_EQ(fields, CTime(kBegin).Format("%H:%M:%S"));
  EXPECT_EQ(&Doors::record.m_end_time[0], CTime(kBegin + 60).Format("%H:%M:%S"));
  EXPECT_EQ(Doors::record.m_clock_color, 0x010203U);
  EXPECT_EQ(Doors::record.m_caption_right, 320 - 4);
  EXPECT_EQ(Doors::record.m_flags, 0x4610EU);
  EXPECT_TRUE(Doors::is_upside_down);
  EXPECT_EQ(Pass(), "1");
  EXPECT_FALSE(Doors::is_upside_down) << "a real-time frame";
  m_player->Pause();
  EXPECT_EQ(Pass(), "-");
  m_player->Pause();
  m_show.ShowCaption(0);
  EXPECT_EQ(Pass(), "1") << "a frame without video shows the picture before";
  EXPECT_EQ(Doors::record.m_flags, 0x40900U);
  EXPECT_EQ(m_player->GetZebFile()->GetTotalFrame(), 5);
  CImage image;
  EXPECT_EQ(m_player->GetPicture(&image), 1);
  // Unseen, but it goes on.
  m_player->CloseDecodeWnd();
  EXPECT_EQ(Passes({kLong, kLong}), "-- end");
  Pump();
  EXPECT_EQ(m_told, "3 1:4 1:4 1:4 1:4 1:4 0") << "where playback stood when each was told";
}

// Each change takes the sound away from the player, and its undoing gives it back.
TEST_F(FilePlayer, HasTheSoundWhileItPlaysVoicedFramesAtTheirPace) {
  CZebFileInfo info = MakeInfo("voiced");
  CZebFile file;
  file.Open(&info, kZebFileWrite);
  CZebFrameData data;
  for (DWORD i = 0; i < 60; ++i) {
    FillFrame(data, i == 0 ? 0 : 1, i * 40, NumberedVideo(i), i < 50 ? "speech" : "");
    file.WriteOneFrame(&data);
  }
  info.SetEndTime(CTime(0xFFFFFFFF));
  file.Close();
  ASSERT_EQ(m_player->OpenVideo("voiced", 0, 1, 0), 1);
  Pass();
  // Whether the next frame is shown with the mark of sound; then the host is told.
  const auto has_sound = [&] {
    Pass();
    Pump();
    return (Doors::record.m_flags & noxdisplay::kShowAudio) != 0;
  };
  const auto expect_sound = [&](bool is_on, const char* when) {
    EXPECT_EQ(has_sound(), is_on) << when;
  };
  expect_sound(false, "begins when the host is told of a frame");
  struct Change {
    const char* name;
    std::function<void()> stop;
    std::function<void()> undo;
    bool is_at_once;
  };
  const std::vector<Change> changes = {
      {"pause", [&] { m_player->Pause(), m_player->Pause(); }, [] {}, true},
      {"step", [&] { m_player->StepNext(); }, [&] { m_player->Pause(); }, true},
      {"step back", [&] { m_player->StepPrev(); }, [&] { m_player->ResetPlay(); }, true},
      {"speed", [&] { m_player->ChangePlaySpeed(1); }, [&] { m_player->ResetPlay(); }, false},
      {"off", [&] { m_player->EnableSound(0); }, [&] { m_player->EnableSound(1); }, false}};
  for (const Change& change : changes) {
    expect_sound(true, change.name);
    change.stop();
    if (!change.is_at_once) expect_sound(true, "until the host is told");
    expect_sound(false, change.name);
    change.undo();
    if (std::string(change.name) != "pause") expect_sound(false, "until the host is told again");
  }
  CDecodeWnd other;
  other.OpenDecodeWnd(nullptr, 0, &m_show);
  other.OpenVideo("voiced", 0, 1, 0);
  for (int i = 0; i < 4; ++i, Pump()) other.OnDecode(0, m_now);
  EXPECT_EQ(Doors::record.m_flags & noxdisplay::kShowAudio, 0U) << "one player has it";
  expect_sound(true, "the first");
  m_player->PlayFrom(0, 50);
  expect_sound(true, "the last voiced frame");
  expect_sound(false, "the frame read ahead was not");
}

}  // namespace
