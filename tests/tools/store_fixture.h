// Two small drives and a database on them, for the tests of the subcommands that work with disks.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>

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
  void Mount(char letter, ULONGLONG quota_bytes = 0) {
    std::filesystem::create_directories(Drive(letter));
    ASSERT_EQ(os::MountDrive(letter, Drive(letter).string(), os::DriveKind::kFixed, quota_bytes),
              1);
  }

  std::filesystem::path Drive(char letter) const { return m_dir.Path() / std::string(1, letter); }
  std::string Database() const { return m_dir.File("disks.db"); }

  // `zebtool arguments... --db DATABASE`
  ToolRun Run(std::vector<std::string> arguments) const {
    arguments.insert(arguments.end(), {"--db", Database()});
    return RunTool(arguments);
  }

  // The database on d:\dvr, or on both drives.
  void Init(bool both = false) {
    for (const char letter : both ? std::string("de") : std::string("d")) {
      const ToolRun run = Run({"store", letter == 'd' ? "init" : "add",
                               letter + std::string(":\\dvr"), "--recycle", "--reserved", "1"});
      ASSERT_EQ(run.status, 0) << run.err;
    }
  }

  // A file of a day's directory.
  std::filesystem::path MakeFile(char letter, const std::string& day, std::size_t bytes) const {
    auto path = Drive(letter) / "dvr" / day / "recorder" / "video" / "file";
    std::filesystem::create_directories(path.parent_path());
    WriteWholeFile(path.string(), std::string(bytes, 'x'));
    return path;
  }
  bool HasDay(char letter, const std::string& day) const {
    return std::filesystem::exists(Drive(letter) / "dvr" / day);
  }

  TempDir m_dir;
};
