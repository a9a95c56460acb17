// A database on two drives, d: and e:, for tests of the subcommands that use one.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "platform/os/files/drives.h"
#include "tests/tools/tool_fixture.h"

class StoreFixture : public testing::Test {
 protected:
  static constexpr ULONGLONG kMegabyte = 1 << 20;

  StoreFixture() {
    Mount('d');
    Mount('e');
  }
  ~StoreFixture() override {
    os::UnmountDrive('d');
    os::UnmountDrive('e');
  }

  // A quota of 0 is none.
  void Mount(char letter, ULONGLONG quota_bytes = 0) const {
    std::filesystem::create_directories(Drive(letter));
    os::MountDrive(letter, Drive(letter).string(), os::DriveKind::kFixed, quota_bytes);
  }
  std::filesystem::path Drive(char letter) const { return m_dir.Path() / std::string(1, letter); }
  // The directory of a day, or another one, of the disk d:\dvr.
  std::filesystem::path Day(const std::string& day) const { return Drive('d') / "dvr" / day; }

  // `zebtool arguments... --db DATABASE`
  ToolRun Run(std::vector<std::string> arguments) const {
    arguments.insert(arguments.end(), {"--db", m_database});
    return RunTool(arguments);
  }
  // The database on d:\dvr, or on both drives.
  void Init(bool both = false) const {
    for (const char letter : both ? std::string("de") : std::string("d")) {
      const ToolRun run = Run({"store", letter == 'd' ? "init" : "add",
                               letter + std::string(":\\dvr"), "--recycle", "--reserved", "1"});
      ASSERT_EQ(run.status, 0) << run.err;
    }
  }
  // A file of a day's directory.
  std::string MakeFile(const std::string& day, std::size_t bytes) const {
    const std::filesystem::path path = Day(day) / "recorder" / "video" / "file";
    std::filesystem::create_directories(path.parent_path());
    WriteWholeFile(path.string(), std::string(bytes, 'x'));
    return path.string();
  }

  TempDir m_dir;
  const std::string m_database = m_dir.File("disks.db");
};
