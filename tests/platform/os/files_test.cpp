#include "platform/os/files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "platform/framework/file.h"
#include "platform/os/directories.h"
#include "platform/os/drives.h"
#include "tests/support/temp_dir.h"

namespace {

class DeleteFileTest : public testing::Test {
 protected:
  DeleteFileTest() { WriteWholeFile(m_path, "recording"); }

  bool Exists() const { return std::filesystem::exists(m_path); }

  TempDir m_directory;
  std::string m_path = m_directory.File("Cam0.zebz");
};

TEST_F(DeleteFileTest, DeletesAFileByItsLibraryPath) {
  os::MountDrive('d', m_directory.Path().string(), os::DriveKind::kFixed);
  EXPECT_EQ(os::DeleteFile("d:\\cam0.ZEBZ"), 1);
  EXPECT_FALSE(Exists());
  EXPECT_EQ(os::DeleteFile("d:\\cam0.ZEBZ"), 0);
  os::UnmountDrive('d');
  EXPECT_EQ(os::DeleteFile("d:\\cam0.ZEBZ"), 0);
}

TEST_F(DeleteFileTest, LeavesAFileThatItsOwnerMayNotWriteOrThatThisProcessHasOpen) {
  chmod(m_path.c_str(), 0444);
  EXPECT_EQ(os::DeleteFile(m_path), 0);
  chmod(m_path.c_str(), 0644);
  for (const UINT access : {CFile::kModeRead, CFile::kModeWrite, CFile::kModeReadWrite}) {
    CFile file;
    ASSERT_EQ(file.Open(m_path, access | CFile::kShareDenyNone), 1);
    EXPECT_EQ(os::DeleteFile(m_path), 0);
  }
  EXPECT_TRUE(Exists());
  EXPECT_EQ(os::DeleteFile(m_path), 1);
}

TEST_F(DeleteFileTest, LeavesAFileThatAnotherProcessHasOpen) {
  int ready[2], go[2];
  ASSERT_EQ(pipe(ready) + pipe(go), 0);
  const pid_t other = fork();
  if (other == 0) {
    close(go[1]);
    CFile file;
    const int opened = file.Open(m_path, CFile::kModeRead | CFile::kShareDenyNone);
    char byte = 0;
    // Reading ends when the parent closes its side, by itself or by dying.
    _exit(opened == 1 && write(ready[1], &byte, 1) == 1 && read(go[0], &byte, 1) == 0 ? 0 : 1);
  }
  close(ready[1]);
  char byte = 0;
  EXPECT_EQ(read(ready[0], &byte, 1), 1);
  EXPECT_EQ(os::DeleteFile(m_path), 0);
  EXPECT_TRUE(Exists());
  for (const int end : {ready[0], go[0], go[1]}) close(end);
  EXPECT_EQ(waitpid(other, nullptr, 0), other);
  EXPECT_EQ(os::DeleteFile(m_path), 1);
}

TEST_F(DeleteFileTest, LeavesWhatIsNoRegularFile) {
  const std::string pipe = m_directory.File("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0666), 0);
  for (const std::string& path : {m_directory.Path().string(), pipe}) {
    EXPECT_EQ(os::DeleteFile(path), 0) << path;
    EXPECT_TRUE(std::filesystem::exists(path)) << path;
  }
}

TEST_F(DeleteFileTest, DeletesALinkAndNotWhatItLeadsTo) {
  namespace fs = std::filesystem;
  os::MountDrive('d', m_directory.Path().string(), os::DriveKind::kFixed);
  fs::create_directory(m_directory.File("directory"));
  WriteWholeFile(m_directory.File("LINK"), "not the link");
  for (const char* target : {"Cam0.zebz", "directory", "nothing", "link"}) {
    fs::create_symlink(target, m_directory.Path() / "link");
    EXPECT_EQ(os::IsSymbolicLink("d:\\link"), 1) << target;
    ULONGLONG length_bytes = 1;
    EXPECT_EQ(os::DeleteFile("d:\\link", &length_bytes), 1) << target;
    EXPECT_EQ(length_bytes, 0U) << target;
    EXPECT_FALSE(fs::is_symlink(m_directory.Path() / "link")) << target;
  }
  EXPECT_TRUE(Exists());
  EXPECT_TRUE(fs::exists(m_directory.File("directory")));
  EXPECT_TRUE(fs::exists(m_directory.File("LINK")));
  EXPECT_EQ(os::IsSymbolicLink("d:\\LINK"), 0);
  os::UnmountDrive('d');
}

TEST_F(DeleteFileTest, TellsTheLengthOfWhatIsGone) {
  ULONGLONG length_bytes = 77;
  EXPECT_EQ(os::DeleteFile(m_directory.File("none"), &length_bytes), 0);
  EXPECT_EQ(length_bytes, 77U);
  EXPECT_EQ(os::DeleteFile(m_path, &length_bytes), 1);
  EXPECT_EQ(length_bytes, 9U);
}

TEST(ReplaceFile, PutsTheNewFileInThePlaceOfTheOldOneOrLeavesBoth) {
  TempDir directory;
  const std::string old_file = directory.File("dbs");
  const std::string new_file = directory.File("dbs.new");
  WriteWholeFile(new_file, "first");
  EXPECT_EQ(os::ReplaceFile(old_file, new_file), 1);
  EXPECT_EQ(ReadWholeFile(old_file), "first");
  EXPECT_EQ(os::ReplaceFile(old_file, new_file), 0);
  EXPECT_EQ(ReadWholeFile(old_file), "first");
  WriteWholeFile(new_file, "second");
  EXPECT_EQ(os::ReplaceFile(directory.File("none/dbs"), new_file), 0);
  EXPECT_EQ(os::ReplaceFile("e:\\dbs", new_file), 0);
  EXPECT_EQ(ReadWholeFile(new_file), "second");
  EXPECT_EQ(os::ReplaceFile(old_file, new_file), 1);
  EXPECT_EQ(ReadWholeFile(old_file), "second");
  EXPECT_FALSE(std::filesystem::exists(new_file));
}

}  // namespace
