// The whole of storage on a disk in memory of which every call fails in turn.
#include <map>
#include <optional>

#include "capture/zebx.h"
#include "storage/dbs.h"
#include "storage/file_search_info.h"
#include "storage/recycling.h"
#include "tests/support/disk_fixture.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/memory_file_system.h"

using namespace zebx;

namespace {

using Everything = std::map<std::string, std::string>;

constexpr ULONGLONG kMegabyte = 1 << 20;

class StorageFaults : public DiskTest {
 protected:
  StorageFaults() {
    FillDisk();
    m_memory->MakeDirectory("d:\\dvr");
    OpenForSave(false);
    Close();
    m_list = List();
  }

  // A new disk with a database "list" of d:\dvr\, which recycles, and e:\, each with some days, and
  // with what is others'.
  void FillDisk() {
    m_memory.reset();
    m_memory.emplace();
    CZebFileInfo info = MakeInfo("");
    const std::string recording = FileFormOf(info) + std::string(5000, 'x');
    for (const char* path :
         {R"(d:\dvr\d20040408\rec\video\a)", R"(d:\dvr\d20040409\rec\video\a)",
          R"(d:\dvr\d20040412\rec\video\a)", R"(d:\dvr\other\a)", R"(d:\d20040401\a)",
          R"(d:\data\a)", R"(d:\list.new)", R"(e:\new\d20040301\rec\video\a)"}) {
      m_memory->Put(path, recording);
    }
    m_memory->Put("d:\\list", m_list);
  }

  static int Open() {
    zebxInitZebx(0, nullptr, 0, nullptr, "d:\\dev");
    return dbsOpenDatabase("d:\\data", "d:\\list", "rec");
  }
  static void Close() {
    dbsCloseDatabase();
    zebxCloseZebx();
  }
  // Opens a database that is about to be saved: of the two disks, with or without a change.
  static void OpenForSave(bool is_changed) {
    EXPECT_EQ(Open(), 1);
    while (dbsGetHddNum() > 0) dbsRemoveHDDIndex(0);
    tag_HDDPARAM dvr{1000, 1, "d:\\dvr", "", 0, CString(is_changed ? 9000 : 300, 's')};
    tag_HDDPARAM other = Param("e:\\");
    EXPECT_EQ(dbsAddHDD(&dvr) + dbsAddHDD(&other), 2);
  }
  std::string List() const { return m_memory->Get("d:\\list"); }

  // What a recorder does in a day.
  void UseStorage() {
    if (Open() != 0) {
      tag_HDDPARAM param = Param("e:\\new");
      dbsRemoveHDDName("e:\\");
      dbsAddHDD(&param);
      CZebFileInfo header = MakeInfo("");
      header.SetHostName("rec");
      CZebFile* file = nullptr;
      if (dbsCreateZebFile(&file, &header) != 0) {
        const bool is_written = WriteRun(*file, {.m_frames = 3}).size() == 3;
        if (dbsCloseZebFile(file) != 0 && is_written) m_finished = header.GetFileName();
      }
      CString directory;
      dbsGetPictureDir(&directory, "rec", CTime());
      CSearchParam criteria;
      criteria.SetHostName("rec");
      criteria.SetBeginTime(CTime());
      CFileSearchInfo found(&criteria);
      dbsSearchFile(&found);
      criteria.SetTimeBegin(CTime(kNoonInNewYork));
      dbsSearchFile(&found);
      m_memory->SetFreeBytes(10 * kMegabyte);
      DWORD free_mb;
      dbsCheckWorkHDD(&free_mb);
      dbsChangeWorkDir();
      dbsSaveDatabase();
    }
    Close();
    m_memory->SetFreeBytes(100000 * kMegabyte);
  }

  // Whatever was there is there, but for days before today of the disk that recycles.
  void ExpectNothingLost(const Everything& before) const {
    const Everything after = m_memory->Everything();
    for (const auto& [path, bytes] : before) {
      if (path == "//d/list") continue;
      const auto found = after.find(path);
      if (found == after.end()) {
        EXPECT_TRUE(path.starts_with("//d/dvr/d20040408") || path.starts_with("//d/dvr/d20040409"))
            << path;
      } else {
        EXPECT_EQ(found->second, bytes) << path;
      }
    }
    // What is loaded of a list that is not whole is less, and saved in its place.
    const std::string list = List();
    Open();
    Close();
    EXPECT_EQ(List(), list);
    if (!m_finished.empty()) {
      const ParsedRecording recording = ParseRecording(m_memory->Get(m_finished));
      EXPECT_EQ(recording.m_fault, "");
      EXPECT_EQ(recording.m_videos, NumberedVideos({0, 1, 2}));
    }
  }

  static void FailCall(FaultyFileSystem& disk, bool cuts_power, std::uint64_t n) {
    constexpr std::size_t kPrefixBytes = 100;
    disk.FailCall(FaultyFileSystem::kEveryCall, n, kPrefixBytes);
    if (cuts_power) disk.CutPowerAfter(0);
  }

  // Uses storage with the n-th call failing, for every n, and answers how many there are.
  std::uint64_t FailEveryCall(bool cuts_power) {
    for (std::uint64_t n = 1;; ++n) {
      SCOPED_TRACE(n);
      FillDisk();
      const Everything before = m_memory->Everything();
      m_finished.clear();
      FaultyFileSystem faulty;
      FailCall(faulty, cuts_power, n);
      UseStorage();
      faulty.Heal();
      ExpectNothingLost(before);
      if (faulty.Failures() == 0 || HasFailure()) return n - 1;
    }
  }

  // Saves with the n-th call failing, for every n, and answers how many there are.
  std::uint64_t FailEveryCallOfASave(bool cuts_power, bool has_fixed_directories) {
    for (std::uint64_t n = 1;; ++n) {
      SCOPED_TRACE(n);
      FillDisk();
      OpenForSave(true);
      if (has_fixed_directories) m_memory->ForbidChangesOfDirectories();
      std::uint64_t failures = 0;
      bool is_saved = false;
      {
        FaultyFileSystem faulty;
        FailCall(faulty, cuts_power, n);
        is_saved = dbsSaveDatabase() != 0;
        failures = faulty.Failures();
      }
      const std::string list = List();
      Close();  // saves once more
      EXPECT_TRUE(list == List() || (!is_saved && list == m_list)) << list;
      EXPECT_NE(List(), m_list);
      EXPECT_TRUE(m_memory->Get("d:\\list.new").ends_with("x"));  // somebody's
      if (failures == 0 || HasFailure()) return n - 1;
    }
  }

  std::optional<MemoryFileSystem> m_memory;
  std::string m_list;
  CString m_finished;
};

TEST_F(StorageFaults, LoseNothingWhicheverCallFails) {
  const std::uint64_t calls = FailEveryCall(false);
  EXPECT_GT(calls, 90U);
  // Nothing failed in the end: a day was recycled, and a recording made.
  EXPECT_FALSE(m_memory->Has(R"(d:\dvr\d20040408\rec\video\a)"));
  EXPECT_NE(m_finished, "");
  EXPECT_NE(List().find("e:\\new\\"), std::string::npos);
  EXPECT_EQ(FailEveryCall(true), calls);
}

TEST_F(StorageFaults, LeaveTheOldListOrTheNewOne) {
  EXPECT_GT(FailEveryCallOfASave(false, false), 7U);
  EXPECT_GT(FailEveryCallOfASave(true, false), 7U);
  // Written over: a power failure in the middle is not to be survived then.
  EXPECT_GT(FailEveryCallOfASave(false, true), 7U);
}

}  // namespace
