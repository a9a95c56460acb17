#include "platform/os/files/files.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>

#include "platform/framework/file.h"
#include "platform/os/files/directories.h"
#include "tests/support/test_drive.h"

namespace {

// Locks as network file systems have them: a shared one needs a file open for reading, an exclusive
// one a file open for writing.
struct NetworkLocks {
  NetworkLocks() { are_in_force = true; }
  ~NetworkLocks() { are_in_force = false; }
  NetworkLocks(const NetworkLocks&) = delete;
  NetworkLocks& operator=(const NetworkLocks&) = delete;

  static inline bool are_in_force = false;
  static inline int refusal = 0;  // of every lock
};

}  // namespace

// In the place of the C library's, for this program.
extern "C" int flock(int descriptor, int operation) {
  if (NetworkLocks::are_in_force) {
    const int access = fcntl(descriptor, F_GETFL) & O_ACCMODE;
    const bool is_exclusive = (operation & LOCK_EX) != 0;
    errno = access == (is_exclusive ? O_RDONLY : O_WRONLY) ? EBADF : NetworkLocks::refusal;
    if (errno != 0) return -1;
  }
  return static_cast<int>(syscall(SYS_flock, descriptor, operation));
}

namespace {

class DeleteFile : public testing::Test {
 protected:
  DeleteFile() { m_drive.MakeFile("Cam0.zebz", "recording"); }

  const TestDrive m_drive;
  const std::string m_path = m_drive.File("Cam0.zebz");
};

TEST_F(DeleteFile, DeletesAFileByItsLibraryPathAndTellsItsLength) {
  ULONGLONG length_bytes = 77;
  EXPECT_EQ(os::DeleteFile("d:\\none", &length_bytes), 0);
  EXPECT_EQ(length_bytes, 77U);
  EXPECT_EQ(os::DeleteFile("d:\\cam0.ZEBZ", &length_bytes), 1);
  EXPECT_EQ(length_bytes, 9U);
  EXPECT_FALSE(m_drive.Has("Cam0.zebz"));
  EXPECT_EQ(os::DeleteFile("d:\\cam0.ZEBZ"), 0);
  EXPECT_EQ(os::DeleteFile("e:\\cam0.ZEBZ"), 0);
}

TEST_F(DeleteFile, LeavesAFileThatItsOwnerMayNotWriteOrThatSomebodyHasOpen) {
  chmod(m_path.c_str(), 0444);
  EXPECT_EQ(os::DeleteFile(m_path), 0);
  chmod(m_path.c_str(), 0644);
  for (const UINT access : {CFile::kModeRead, CFile::kModeWrite, CFile::kModeReadWrite}) {
    CFile file;
    ASSERT_EQ(file.Open(m_path, access | CFile::kShareDenyNone), 1);
    EXPECT_EQ(os::DeleteFile(m_path), 0);
  }
  EXPECT_TRUE(m_drive.Has("Cam0.zebz"));
  EXPECT_EQ(os::DeleteFile(m_path), 1);
}

// Where a lock is refused for what it was asked through, or for no lock at all, nobody knows
// whether the file is in use.
TEST_F(DeleteFile, LeavesAFileInUseOnANetworkDrive) {
  const NetworkLocks locks;
  for (const UINT access :
       {CFile::kModeRead | CFile::kShareDenyNone, CFile::kModeWrite | CFile::kShareDenyNone,
        CFile::kModeRead | CFile::kShareExclusive}) {
    CFile file;
    ASSERT_EQ(file.Open(m_path, access), 1);
    EXPECT_EQ(os::DeleteFile(m_path), 0) << access;
  }
  NetworkLocks::refusal = ENOLCK;
  EXPECT_EQ(os::DeleteFile(m_path), 0);
  NetworkLocks::refusal = 0;
  EXPECT_EQ(os::DeleteFile(m_path), 1);
}

TEST_F(DeleteFile, DeletesAPipeAndLeavesADirectoryAndADevice) {
  ASSERT_EQ(mkfifo(m_drive.File("pipe").c_str(), 0444), 0);
  ASSERT_EQ(os::DeleteFile(m_drive.File("pipe")), 1);
  const bool has_device = mknod(m_drive.File("null").c_str(), S_IFCHR | 0666, makedev(1, 3)) == 0;
  EXPECT_EQ(os::DeleteFile(m_drive.Root()), 0);
  EXPECT_EQ(os::DeleteFile(m_drive.File("null")), 0);
  EXPECT_EQ(m_drive.Has("null"), has_device);
}

TEST_F(DeleteFile, DeletesALinkAndNotWhatItLeadsTo) {
  for (const char* target : {"Cam0.zebz", "nothing"}) {
    std::filesystem::create_symlink(target, m_drive.Path() / "link");
    ULONGLONG length_bytes = 1;
    EXPECT_EQ(os::IsSymbolicLink("d:\\link") + os::DeleteFile("d:\\link", &length_bytes), 2);
    EXPECT_EQ(length_bytes, 0U);
    EXPECT_FALSE(std::filesystem::is_symlink(m_drive.Path() / "link")) << target;
  }
  EXPECT_TRUE(m_drive.Has("Cam0.zebz"));
  EXPECT_EQ(os::IsSymbolicLink("d:\\Cam0.zebz"), 0);
}

TEST(Directories, AreMadeOneLevelAtATimeAndRemovedWhenEmptyButForTheRoot) {
  const TestDrive drive;
  drive.MakeFile("file");
  EXPECT_EQ(os::CreateDirectory("d:\\A") + os::CreateDirectory("d:\\a\\b"), 2);
  EXPECT_TRUE(drive.Has("A/b"));
  for (const char* path : {"d:\\a", "d:\\none\\b", "d:\\file", "d:\\file\\x", "e:\\a"}) {
    EXPECT_EQ(os::CreateDirectory(path) + os::RemoveDirectory(path), 0) << path;
  }
  EXPECT_EQ(os::RemoveDirectory("d:\\A\\B") + os::RemoveDirectory(drive.File("A")), 2);
  EXPECT_EQ(os::IsDirectory("d:\\a") + os::IsDirectory("d:\\file") + os::IsDirectory(""), 0);
  std::filesystem::remove(drive.File("file"));
  for (const char* root : {"d:\\", "d:", "d:\\a\\.."}) {  // stays although it is empty
    EXPECT_EQ(os::RemoveDirectory(root), 0) << root;
    EXPECT_EQ(os::IsDirectory(root), 1) << root;
  }
}

}  // namespace
