#include "platform/os/files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>
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

// Another process that has a file open through CFile until it is told to go.
class OtherProcess {
 public:
  explicit OtherProcess(const std::string& path) {
    int ready[2];
    int go[2];
    if (pipe(ready) != 0 || pipe(go) != 0) throw std::runtime_error("no pipes");
    m_child = fork();
    if (m_child == 0) {
      close(go[1]);
      CFile file;
      const char opened = file.Open(path, CFile::kModeRead | CFile::kShareDenyNone) ? 'y' : 'n';
      char end = 0;
      // Reading ends when the parent closes its side, by itself or by dying.
      if (write(ready[1], &opened, 1) != 1 || read(go[0], &end, 1) != 0) _exit(1);
      _exit(0);
    }
    close(ready[1]);
    close(go[0]);
    m_go = go[1];
    m_opened = read(ready[0], &m_answer, 1) == 1 && m_answer == 'y';
    close(ready[0]);
  }
  ~OtherProcess() { End(); }
  OtherProcess(const OtherProcess&) = delete;
  OtherProcess& operator=(const OtherProcess&) = delete;

  bool HasOpened() const { return m_opened; }
  void End() {
    if (m_child <= 0) return;
    close(m_go);
    waitpid(m_child, nullptr, 0);
    m_child = 0;
  }

 private:
  pid_t m_child = 0;
  int m_go = -1;
  char m_answer = 0;
  bool m_opened = false;
};

TEST_F(DeleteFileTest, DeletesAFileByItsLibraryPath) {
  os::MountDrive('d', m_directory.Path().string(), os::DriveKind::kFixed);
  EXPECT_EQ(os::DeleteFile("d:\\cam0.ZEBZ"), 1);
  EXPECT_FALSE(Exists());
  EXPECT_EQ(os::DeleteFile("d:\\cam0.ZEBZ"), 0);
  os::UnmountDrive('d');
  EXPECT_EQ(os::DeleteFile("d:\\cam0.ZEBZ"), 0);
}

TEST_F(DeleteFileTest, LeavesAFileThatItsOwnerMayNotWrite) {
  chmod(m_path.c_str(), 0444);
  EXPECT_EQ(os::DeleteFile(m_path), 0);
  EXPECT_TRUE(Exists());
  chmod(m_path.c_str(), 0644);
  EXPECT_EQ(os::DeleteFile(m_path), 1);
}

TEST_F(DeleteFileTest, LeavesAFileThatThisProcessHasOpen) {
  for (const UINT access : {CFile::kModeRead, CFile::kModeWrite, CFile::kModeReadWrite}) {
    CFile file;
    ASSERT_EQ(file.Open(m_path, access | CFile::kShareDenyNone), 1);
    EXPECT_EQ(os::DeleteFile(m_path), 0);
    EXPECT_TRUE(Exists());
  }
  EXPECT_EQ(os::DeleteFile(m_path), 1);
}

TEST_F(DeleteFileTest, LeavesAFileThatAnotherProcessHasOpen) {
  OtherProcess other(m_path);
  ASSERT_TRUE(other.HasOpened());
  EXPECT_EQ(os::DeleteFile(m_path), 0);
  EXPECT_TRUE(Exists());
  other.End();
  EXPECT_EQ(os::DeleteFile(m_path), 1);
  EXPECT_FALSE(Exists());
}

TEST_F(DeleteFileTest, LeavesWhatIsNoRegularFile) {
  const std::string directory = m_directory.File("directory");
  const std::string pipe = m_directory.File("pipe");
  std::filesystem::create_directory(directory);
  ASSERT_EQ(mkfifo(pipe.c_str(), 0666), 0);
  for (const std::string& path : {directory, pipe, std::string("/dev/null")}) {
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
