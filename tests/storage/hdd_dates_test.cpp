#include <numeric>

#include "platform/framework/archive.h"
#include "platform/framework/file_exception.h"
#include "platform/framework/mem_file.h"
#include "storage/hdd_obj.h"
#include "tests/support/disk_fixture.h"

namespace {

class HddDatesTest : public DiskTest {
 protected:
  // A disk on d:\ with these day directories.
  void CreateWithDays(std::initializer_list<const char*> days) {
    MakeDirs(days);
    ASSERT_EQ(Create(m_disk, "d:\\"), 1);
  }
  std::vector<BYTE> Summary() const {
    std::vector<BYTE> bytes(m_disk.GetDirSize());
    EXPECT_EQ(m_disk.WriteDirToBuf(bytes.data(), 0), bytes.size());
    return bytes;
  }

  TestDisk m_disk;
};

TEST_F(HddDatesTest, LoadsDayDirectoriesInAscendingOrder) {
  MakeFile("d20040405", 1);
  std::filesystem::create_directory_symlink(m_e.Path(), m_d.Path() / "d20040406");
  CreateWithDays({"d20040412", "D20040410", "d20040411", "d2004041", "d200404120", "d20041399",
                  "Remote/d20040301", "Remote/d20040302", "Picture/d20040201", "x"});
  EXPECT_EQ(m_disk.Dates(), (CDWordArray{DateOf(2004, 4, 10), DateOf(2004, 4, 11),
                                         DateOf(2004, 4, 12), DateOf(2005, 4, 9)}));
  EXPECT_EQ(m_disk.GetDirNum(1), 0);
  m_disk.LoadRemoteDir();
  m_disk.LoadPictureDir();
  EXPECT_EQ(m_disk.Dates(1), (CDWordArray{DateOf(2004, 3, 1), DateOf(2004, 3, 2)}));
  EXPECT_EQ(m_disk.GetDirDate(-1, 0), 0xFFFFFFFF);
  EXPECT_EQ(m_disk.GetDirDate(2, 1), 0xFFFFFFFF);
  std::filesystem::remove(m_d.Path() / "d20040411");
  m_disk.Refresh();
  EXPECT_EQ(m_disk.GetDirNum(0), 3);
}

TEST_F(HddDatesTest, TheRootOfANetworkDriveHasNoDays) {
  MakeDirs({"d20040412", "dvr/d20040411"});
  os::MountDrive('d', m_d.Path().string(), os::DriveKind::kNetwork);
  ASSERT_EQ(Create(m_disk, "d:\\"), 1);
  EXPECT_EQ(m_disk.GetDirNum(0), 0);
  ASSERT_EQ(Create(m_disk, "d:\\dvr"), 1);
  EXPECT_EQ(m_disk.GetDirNum(0), 1);
  CDWordArray dates;
  os::MountDrive('d', m_d.Path().string(), os::DriveKind::kRemovable);
  TestDisk::GetDirStruct(&dates, "d:");
  TestDisk::GetDirStruct(&dates, "");
  TestDisk::GetDirStruct(&dates, "d:\\none");
  TestDisk::GetDirStruct(nullptr, "d:");
  EXPECT_EQ(dates, CDWordArray{DateOf(2004, 4, 12)});
}

TEST_F(HddDatesTest, TestsBareNamesOnly) {
  EXPECT_EQ(CHddObj::IsVideoDir("D20040412"), 1);
  EXPECT_EQ(CHddObj::IsVideoDir("d:\\d20040412"), 0);
  CTime date(77);
  EXPECT_EQ(CHddObj::GetVideoDirDate(date, "\\d20040412"), 0);
  EXPECT_EQ(date.GetTime(), 77U);
  EXPECT_EQ(CHddObj::GetVideoDirDate(date, "d20040412"), 1);
  EXPECT_EQ(date.GetTime(), DateOf(2004, 4, 12));
  const DWORD dates[] = {1, 0x80000000};
  EXPECT_EQ(CHddObj::CompareFunc(&dates[0], &dates[1]), -1);
  EXPECT_EQ(CHddObj::CompareFunc(&dates[1], &dates[0]), 1);
  EXPECT_EQ(CHddObj::CompareFunc(&dates[1], &dates[1]), 0);
}

TEST_F(HddDatesTest, FindDateStopsAtTheFirstOlderDay) {
  CreateWithDays({"d20040410", "d20040411", "Remote/d20040410", "Remote/d20040305"});
  m_disk.LoadRemoteDir();
  const DWORD oldest = DateOf(2004, 4, 10);
  EXPECT_EQ(m_disk.FindDate(oldest, 0), 1);
  EXPECT_EQ(m_disk.FindDate(DateOf(2004, 4, 11), 0), 0);
  EXPECT_EQ(m_disk.FindDate(oldest - 1, 0), 0);
  EXPECT_EQ(m_disk.FindDate(DateOf(2004, 3, 5), 1), 1);
  EXPECT_EQ(m_disk.FindDate(oldest, 1), 0);  // an older remote day hides the local one
  std::filesystem::remove_all(m_d.Path() / "Remote");
  m_disk.LoadRemoteDir();
  EXPECT_EQ(m_disk.FindDate(oldest, 1), 1);
}

TEST_F(HddDatesTest, AssignmentTakesPlaceNameAndLocalDates) {
  tag_HDDPARAM param{7, 1, "d:\\", "Front", 1, "a.wav"};
  MakeDirs({"d20040410"});
  ASSERT_EQ(m_disk.Create(&param), 1);
  TestDisk copy;
  copy = m_disk;
  EXPECT_EQ(copy.GetBaseDir(), "d:\\");
  EXPECT_EQ(copy.GetDbsName(), "Front(d:\\)");
  EXPECT_EQ(copy.Dates(), m_disk.Dates());
  EXPECT_EQ(copy.GetDbsName1(), "ZebDatabase");
  EXPECT_EQ(copy.GetReservedSpace(), 1000U);
  EXPECT_EQ(copy.IsRecycle(), 0);
}

TEST_F(HddDatesTest, SummaryHasItsBytesAndComesBack) {
  CreateWithDays({"d20040410", "d20040411"});
  m_disk.SetDbsName("N(d)");
  const std::string golden = Little(3) + "d:\\" + Little(4) + "N(d)" + Little(2) +
                             Little(DateOf(2004, 4, 10)) + Little(DateOf(2004, 4, 11));
  std::vector<BYTE> bytes = Summary();
  EXPECT_EQ(std::string(bytes.begin(), bytes.end()), golden);

  TestDisk copy;
  EXPECT_EQ(copy.ReadDirFromBuf(bytes.data(), 0), bytes.size());
  EXPECT_EQ(copy.GetBaseDir(), "d:\\");
  EXPECT_EQ(copy.GetDbsName(), "N(d)");
  EXPECT_EQ(copy.GetDbsName1(), "ZebDatabase");
  EXPECT_EQ(copy.Dates(), m_disk.Dates());

  // Without a base directory the name and the dates are not told.
  TestDisk empty;
  std::vector<BYTE> four(empty.GetDirSize());
  EXPECT_EQ(empty.WriteDirToBuf(four.data(), 0), 4U);
  EXPECT_EQ(four, std::vector<BYTE>(4));
  EXPECT_EQ(copy.ReadDirFromBuf(four.data(), 0), 4U);
  EXPECT_EQ(copy.GetBaseDir() + copy.GetDbsName(), "");
  EXPECT_EQ(copy.GetDirNum(0), 0);
}

TEST_F(HddDatesTest, ASummaryCutOrLyingAnywhereChangesNothing) {
  CreateWithDays({"d20040410"});
  const std::vector<BYTE> bytes = Summary();
  const auto expect_refused = [&](std::span<const BYTE> damaged) {
    TestDisk disk;
    ASSERT_EQ(Create(disk, "e:\\"), 1);
    EXPECT_EQ(disk.ReadDirFromBuf(damaged), 0U);
    EXPECT_EQ(disk.GetDbsName(), "ZebDatabase(e:\\)");
  };
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    expect_refused(std::span(bytes).first(size));
    std::vector<BYTE> small(size);
    EXPECT_EQ(m_disk.WriteDirToBuf(std::span(small)), 0U);
  }
  const std::size_t name_length_at = 4 + 3;
  const std::size_t count_at = bytes.size() - 8;
  for (const std::size_t length_at : {std::size_t{0}, name_length_at, count_at}) {
    std::vector<BYTE> lying = bytes;
    std::fill_n(lying.begin() + static_cast<std::ptrdiff_t>(length_at), 4, BYTE{0xFF});
    expect_refused(lying);
  }
}

TEST_F(HddDatesTest, SerializesAllButPlainNameAlarmSpaceAndDates) {
  tag_HDDPARAM param{7, 1, "d:\\", "N", 1, "a.wav"};
  MakeDirs({"d20040410"});
  ASSERT_EQ(m_disk.Create(&param), 1);
  CMemFile file;
  CArchive store(file, CArchive::Mode::kStore);
  m_disk.Serialize(store);
  store.Close();
  const std::string golden =
      Little(1) + "\x03" + "d:\\" + "\x06" + "N(d:\\)" + Little(7) + Little(1) + "\x05" + "a.wav";
  std::string bytes(static_cast<std::size_t>(file.GetLength()), '\0');
  file.SeekToBegin();
  file.Read({reinterpret_cast<BYTE*>(bytes.data()), bytes.size()});
  EXPECT_EQ(bytes, golden);

  file.SeekToBegin();
  CArchive load(file, CArchive::Mode::kLoad);
  TestDisk copy;
  copy.Serialize(load);
  EXPECT_EQ(copy.IsRecycle(), 1);
  EXPECT_EQ(copy.GetBaseDir(), "d:\\");
  EXPECT_EQ(copy.GetDbsName(), "N(d:\\)");
  EXPECT_EQ(copy.GetReservedSpace(), 7U);
  EXPECT_EQ(copy.IsAlarmWhenSpaceNotEnough(), 1);
  EXPECT_EQ(copy.GetAlarmSound(), "a.wav");
  EXPECT_EQ(copy.GetAlarmSpace(), 1050U);
  EXPECT_EQ(copy.GetDbsName1(), "ZebDatabase");
  EXPECT_EQ(copy.GetDirNum(0), 0);
  EXPECT_THROW(copy.Serialize(load), CFileException);
}

}  // namespace
