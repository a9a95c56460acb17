// Drives on directories of a test's own, at noon of 12 April 2004 in New York.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "platform/os/clock.h"
#include "platform/os/drives.h"
#include "storage/day_directory.h"
#include "storage/hdd_obj.h"
#include "tests/support/recording_fixture.h"
#include "tests/support/temp_dir.h"

// What a host sees of a disk, and the operations kept for derived classes.
class TestDisk : public CHddObj {
 public:
  using CHddObj::operator=;
  using CHddObj::GetDirStruct;
  using CHddObj::IsAnyFile;
  using CHddObj::LoadPictureDir;
  using CHddObj::LoadRemoteDir;

  CDWordArray Dates(int remote = 0) const {
    CDWordArray dates;
    for (int i = 0; i < GetDirNum(remote); ++i) dates.push_back(GetDirDate(i, remote));
    return dates;
  }
};

inline DWORD DateOf(int year, int month, int day) {
  return CTime(year, month, day, 0, 0, 0).GetTime();
}

// The drives d: and e: stand for directories of the test's own.
class DiskTest : public testing::Test {
 protected:
  static constexpr DWORD kNoonInNewYork = 1081785600;  // 2004-04-12 16:00:00 UTC

  DiskTest() {
    os::MountDrive('d', m_d.Path().string(), os::DriveKind::kFixed);
    os::MountDrive('e', m_e.Path().string(), os::DriveKind::kFixed);
  }
  ~DiskTest() override {
    os::UnmountDrive('d');
    os::UnmountDrive('e');
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
  void MakeFile(std::string_view path, std::size_t bytes) { MakeFileIn(m_d, path, bytes); }
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

  ScopedTimeZone m_zone{"America/New_York"};
  os::SteppedClock m_clock{kNoonInNewYork, 0};
  TempDir m_d;
  TempDir m_e;
};
