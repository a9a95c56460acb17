#include "storage/zeb_database.h"

#include <gtest/gtest.h>

#include "storage/file_search_info.h"
#include "tests/support/disk_fixture.h"
#include "tests/support/faulty_file_system.h"

namespace {

namespace fs = std::filesystem;

using Names = std::vector<CString>;

// The text as a database file holds a short one.
std::string Text(const std::string& text) {
  return static_cast<char>(text.size()) + text;
}

// A database file "list" on drive d:, whose data directory d:\Data does not exist at first.
class ZebDatabase : public DiskTest {
 protected:
  ZebDatabase() { m_database = std::make_unique<CZebDatabase>(); }

  int Open() { return m_database->Open("d:\\Data", nullptr, "d:\\list", "rec"); }
  int Reopen() {
    m_database = std::make_unique<CZebDatabase>();
    return Open();
  }
  int Add(const CString& path) {
    tag_HDDPARAM param = Param(path);
    param.m_reserved_mb = 1000;
    return m_database->AddHDD(&param);
  }
  // A database with the disks d:\dvr\ and e:\ that was saved.
  void OpenTwoDisks() {
    MakeDirs({"data"});
    ASSERT_EQ(Open(), 1);
    ASSERT_EQ(m_database->RemoveHDD("d:\\"), 1);
    ASSERT_EQ(Add("d:\\dvr"), 1);
    tag_HDDPARAM second{0x01020304, 1, "e:\\", "Second", 1, "bell.wav"};
    ASSERT_EQ(m_database->AddHDD(&second), 1);
    ASSERT_EQ(m_database->Save(), 1);
  }
  Names Disks() const {
    Names names;
    for (const CObject* disk : m_database->GetHDDs()) {
      names.push_back(static_cast<const CHddObj*>(disk)->GetBaseDir());
    }
    return names;
  }
  CString WorkDisk() const {
    const CHddObj* disk = m_database->GetWorkHDD();
    return disk != nullptr ? disk->GetBaseDir() : "none";
  }
  std::string FileBytes() const { return ReadWholeFile(m_d.File("list")); }
  void WriteFile(const std::string& bytes) const { WriteWholeFile(m_d.File("list"), bytes); }

  static std::string TwoDisksFile() {
    return Little(2) + Text("d:\\") + Little(1000) + Little(0) + Text("d:\\dvr\\") +
           Text("ZebDatabase") + Little(0) + Text("") + Little(0x01020304) + Little(1) +
           Text("e:\\") + Text("Second") + Little(1) + Text("bell.wav");
  }

  std::unique_ptr<CZebDatabase> m_database;
};

TEST_F(ZebDatabase, MakesADefaultDiskInTheDataDirectory) {
  EXPECT_EQ(Open(), 0);
  EXPECT_FALSE(Has("data"));
  MakeDirs({"data"});
  EXPECT_EQ(Reopen(), 1);
  EXPECT_TRUE(Has("data/database"));
  EXPECT_EQ(Disks(), Names{"d:\\data\\database\\"});
  EXPECT_EQ(WorkDisk(), "d:\\data\\database\\");
  const CHddObj* disk = m_database->GetHDD(0);
  EXPECT_EQ(disk->GetDbsName(), "ZebDatabase(d:\\)");
  EXPECT_EQ(disk->GetReservedSpace(), 1000U);
  EXPECT_EQ(disk->IsRecycle(), 1);
  EXPECT_EQ(m_database->GetRuntimeClass()->m_name, CString("CZebDatabase"));

  m_database.reset();
  fs::remove_all(m_d.Path() / "data" / "database");
  WriteWholeFile((m_d.Path() / "data" / "database").string(), "");
  fs::remove(m_d.Path() / "list");
  EXPECT_EQ(Reopen(), 0);
}

TEST_F(ZebDatabase, KeepsItsDisksInAFileOfThisForm) {
  OpenTwoDisks();
  EXPECT_EQ(FileBytes(), TwoDisksFile());
  EXPECT_EQ(Reopen(), 1);
  EXPECT_EQ(Disks(), (Names{"d:\\dvr\\", "e:\\"}));
  EXPECT_EQ(WorkDisk(), "d:\\dvr\\");
  const CHddObj* second = m_database->GetHDD(1);
  EXPECT_EQ(second->GetDbsName(), "Second(e:\\)");
  EXPECT_EQ(second->GetReservedSpace(), 0x01020304U);
  EXPECT_EQ(second->IsRecycle() + second->IsAlarmWhenSpaceNotEnough(), 2);
  EXPECT_EQ(second->GetAlarmSound(), "bell.wav");
  EXPECT_EQ(m_database->Save(), 1);
  EXPECT_EQ(FileBytes(), TwoDisksFile());
  EXPECT_FALSE(Has("list.new"));
}

TEST_F(ZebDatabase, DropsDisksThatAreGoneAndKeepsTheNameOfTheWorkingDisk) {
  WriteFile(TwoDisksFile());
  os::MountDrive('d', m_d.Path().string(), os::DriveKind::kRemovable);
  EXPECT_EQ(Reopen(), 1);
  EXPECT_EQ(Disks(), Names{"e:\\"});
  EXPECT_EQ(WorkDisk(), "none");
  EXPECT_EQ(m_database->Save(), 1);
  EXPECT_EQ(FileBytes().substr(0, 8), Little(1) + Text("d:\\"));
}

TEST_F(ZebDatabase, LoadsWhatIsWholeOfAFileCutAnywhere) {
  const std::string whole = TwoDisksFile();
  const std::size_t first_end = whole.size() - (4 + 4 + 4 + 7 + 4 + 9);
  for (std::size_t bytes = 0; bytes <= whole.size(); ++bytes) {
    m_database = std::make_unique<CZebDatabase>();
    WriteFile(whole.substr(0, bytes));
    EXPECT_EQ(Open(), bytes < first_end ? 0 : 1) << bytes;
    const std::size_t disks = bytes < first_end ? 0 : bytes < whole.size() ? 1 : 2;
    EXPECT_EQ(Disks().size(), disks) << bytes;
  }
  m_database = std::make_unique<CZebDatabase>();
  WriteFile(Little(0xFFFFFFFF) + whole.substr(4));
  EXPECT_EQ(Open(), 1);
  EXPECT_EQ(Disks().size(), 2U);
}

TEST_F(ZebDatabase, KeepsTheOldFileWhenASaveFails) {
  OpenTwoDisks();
  ASSERT_EQ(m_database->RemoveHDD(1), 1);
  const auto expect_failure = [&](const char* what) {
    EXPECT_EQ(m_database->Save(), 0) << what;
    EXPECT_EQ(FileBytes(), TwoDisksFile()) << what;
    EXPECT_FALSE(Has("list.new")) << what;
  };
  {
    FaultyFileSystem faulty;
    using Call = FaultyFileSystem::Call;
    for (const auto& [kind, n] :
         {std::pair{Call::kOpen, 1U}, {Call::kOpen, 2U}, {Call::kWrite, 1U}, {Call::kClose, 1U}}) {
      faulty.FailCall(kind, n);
      expect_failure("call");
    }
    for (const std::uint64_t bytes : {0, 1, 20}) {
      faulty.FillDiskAfter(bytes);
      expect_failure("full disk");
    }
    // Closing loses the list in memory, and that alone.
    faulty.FillDiskAfter(9);
    m_database->Close();
    EXPECT_TRUE(m_database->GetHDDs().IsEmpty());
    EXPECT_EQ(FileBytes(), TwoDisksFile());
  }
  EXPECT_EQ(Add("e:\\"), 1);
  EXPECT_EQ(WorkDisk(), "e:\\");
  fs::remove(m_d.Path() / "list");
  MakeDirs({"list/below"});
  EXPECT_EQ(m_database->Save(), 0);
  m_database->Close();
  EXPECT_TRUE(m_database->GetHDDs().IsEmpty());
  EXPECT_FALSE(Has("list.new"));
}

TEST_F(ZebDatabase, ForgetsTheWorkingDiskOnClosingUnlessTheListIsEmpty) {
  OpenTwoDisks();
  m_database->Close();
  EXPECT_EQ(m_database->Save(), 0);  // without disks
  EXPECT_EQ(FileBytes(), TwoDisksFile());
  EXPECT_EQ(m_database->GetWorkHDDFreeSpace(), 0U);
  EXPECT_EQ(m_database->GetHostName(), "rec");

  EXPECT_EQ(Reopen(), 1);
  EXPECT_EQ(m_database->RemoveHDD(1), 1);
  EXPECT_EQ(m_database->RemoveHDD(0), 0);
  m_database->Close();
  EXPECT_GT(m_database->GetWorkHDDFreeSpace(), 0U);  // still of d:
  EXPECT_EQ(FileBytes(), TwoDisksFile());
}

// A database that keeps a result, as derived ones may.
class KeepingDatabase : public CZebDatabase {
 public:
  void Keep(CSearchParam criteria, const CString& found) {
    m_last_search = std::make_unique<CFileSearchInfo>(&criteria);
    m_last_search->Append(std::make_unique<CZebFileInfo>(MakeInfo(found)));
  }
  bool Keeps() const { return m_last_search != nullptr; }
};

TEST_F(ZebDatabase, AnswersAKeptSearchUntilTheCriteriaChange) {
  KeepingDatabase database;
  CSearchParam criteria;
  criteria.SetHostName("rec");
  database.Keep(criteria, "kept");
  CFileSearchInfo same(&criteria);
  EXPECT_EQ(database.SearchFile(&same), 1);
  ASSERT_EQ(same.GetCount(), 1U);
  EXPECT_EQ(static_cast<const CZebFileInfo*>(same.GetHead())->GetFileName(), "kept");

  criteria.SetHostName("other");
  CFileSearchInfo other(&criteria);
  EXPECT_EQ(database.SearchFile(&other), 1);
  EXPECT_TRUE(other.IsEmpty());
  EXPECT_FALSE(database.Keeps());
  EXPECT_EQ(database.SearchFile(nullptr), 0);

  database.Keep(criteria, "kept");
  database.Close();
  EXPECT_FALSE(database.Keeps());
}

}  // namespace
