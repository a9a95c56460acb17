#include "platform/framework/directory_listing.h"

#include <gtest/gtest.h>

#include "tests/support/test_drive.h"

using namespace zebx;

namespace {

// Bytes from 0x80 come behind ASCII whatever the compiler's char is.
TEST(DirectoryListing, GoesByNameWhateverTheCaseAndTakesALinkForAFile) {
  const TestDrive drive;
  for (const char* name : {"b.zebz", "A.zebz", "C.zebz", "a", "~", "!", "_", "aa", "\xC3\x84"}) {
    drive.MakeFile(name);
  }
  drive.MakeDirectory("B");
  std::filesystem::create_directory_symlink(drive.File("B"), drive.File("link"));
  std::filesystem::create_symlink(drive.File("none"), drive.File("broken"));
  const auto entries = ListByName(CurrentFileSystem(), "d:\\");
  ASSERT_TRUE(entries);
  std::string names;
  for (const DirectoryEntry& entry : *entries) {
    names += entry.m_name + (entry.m_is_directory ? "/ " : " ");
  }
  EXPECT_EQ(names, "./ ../ ! _ a A.zebz aa B/ b.zebz broken C.zebz link ~ \xC3\x84 ");
  EXPECT_FALSE(ListByName(CurrentFileSystem(), "d:\\!"));
}

}  // namespace
