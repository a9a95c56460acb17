// Drives on directories of a test's own, at noon of 12 April 2004 in New York.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <initializer_list>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "platform/os/clock.h"
#include "platform/os/files/drives.h"
#include "storage/hdd_obj.h"
#include "tests/support/recording_fixture.h"
#include "tests/support/temp_dir.h"

// A value as it prints. Any may be given where one is asked for.
struct Word {
  template <typename Value>
  Word(const Value& value) {  // NOLINT(google-explicit-constructor,hicpp-explicit-conversions)
    std::ostringstream text;
    text << value;
    m_text = text.str();
  }
  std::string m_text;
};

// The values with a blank between them. They are found out in their order, so that one may be what
// the call before it changed.
inline std::string Words(std::initializer_list<Word> words) {
  std::string text;
  for (const Word& word : words) text += (&word == words.begin() ? "" : " ") + word.m_text;
  return text;
}

// A day of 2004, as the date of a disk's list.
inline DWORD DateOf(int month, int day) {
  return CTime(2004, month, day, 0, 0, 0).GetTime();
}

// What a host sees of a disk, and the operations kept for derived classes.
class TestDisk : public CHddObj {
 public:
  using CHddObj::operator=;
  using CHddObj::LoadRemoteDir;
};

// The days of a disk, as "410 411" of 10 and 11 April; with the hour where one is no midnight.
inline std::string DaysOf(const CHddObj& disk, int remote = 0) {
  std::string days;
  for (int i = 0; i < disk.GetDirNum(remote); ++i) {
    const CTime date(disk.GetDirDate(i, remote));
    days += (i == 0 ? "" : " ") + std::to_string(date.GetMonth() * 100 + date.GetDay());
    if (date.Format("%H%M%S") != "000000") days += date.Format("-%H:%M:%S");
  }
  return days;
}

// The drives d: and e: stand for directories of the test's own.
class DiskTest : public testing::Test {
 public:
  DiskTest() {
    Mount('d', m_d);
    Mount('e', m_e);
  }
  ~DiskTest() override {
    for (char letter = 'd'; letter <= 'z'; ++letter) os::UnmountDrive(letter);
  }

 protected:
  static constexpr DWORD kNoonInNewYork = 1081785600;  // 2004-04-12 16:00:00 UTC

  static void Mount(char letter, const TempDir& drive, os::DriveKind kind = os::DriveKind::kFixed) {
    os::MountDrive(letter, drive.Path().string(), kind);
  }
  // As a disk of so many megabytes.
  static void MountSmall(char letter, const TempDir& drive, ULONGLONG quota_mb) {
    os::MountDrive(letter, drive.Path().string(), os::DriveKind::kFixed, quota_mb << 20);
  }

  static tag_HDDPARAM Param(const CString& path) {
    tag_HDDPARAM param;
    param.m_path = path;
    return param;
  }
  static int Create(CHddObj& disk, const CString& path) {
    tag_HDDPARAM param = Param(path);
    return disk.Create(&param);
  }

  // Makes a file of `bytes` bytes below drive d:, and the directories it needs.
  void MakeFile(std::string_view path, std::size_t bytes = 1) { MakeFileIn(m_d, path, bytes); }
  static void MakeFileIn(const TempDir& drive, std::string_view path, std::size_t bytes) {
    const std::filesystem::path file = drive.Path() / path;
    std::filesystem::create_directories(file.parent_path());
    WriteWholeFile(file.string(), std::string(bytes, 'x'));
  }
  void MakeDirs(std::initializer_list<const char*> paths) {
    for (const char* path : paths) std::filesystem::create_directories(m_d.Path() / path);
  }
  // Whether drive d: has this very name, in this case.
  bool Has(std::string_view path) const { return std::filesystem::exists(m_d.Path() / path); }

  // Moves the clock on to a moment.
  void MoveTo(CTime time) { m_clock.MoveTo((time.GetTime() - ULONGLONG{kNoonInNewYork}) * 1000); }

  TestDisk m_disk;
  ScopedTimeZone m_zone{"America/New_York"};
  os::SteppedClock m_clock{kNoonInNewYork, 0};
  TempDir m_d;
  TempDir m_e;
};
