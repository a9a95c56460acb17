// What every record that has a file form and a buffer form keeps to.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "tests/support/recording_fixture.h"

// Expects both forms of a record byte for byte, and `read`, another record, to take each of them
// whole but nothing of one that is cut. Reading the file form answers `file_result`.
template <typename Record>
void ExpectForms(Record& record, Record& read, const std::string& file_form,
                 const std::string& buffer_form, DWORD file_result) {
  const auto buffer_bytes = static_cast<DWORD>(buffer_form.size());
  EXPECT_EQ(FileFormOf(record), file_form);
  EXPECT_EQ(BufferFormOf(record, buffer_bytes), buffer_form);
  const std::string before = BufferFormOf(read, 1000);
  for (std::size_t size = 0; size < buffer_form.size(); ++size) {
    EXPECT_EQ(ReadBufferForm(read, buffer_form.substr(0, size)), 0U) << size;
  }
  EXPECT_EQ(BufferFormOf(read, 1000), before);
  EXPECT_EQ(ReadBufferForm(read, buffer_form + "next"), buffer_bytes);
  EXPECT_EQ(BufferFormOf(read, buffer_bytes), buffer_form);
  for (std::size_t size = 0; size < file_form.size(); ++size) {
    EXPECT_EQ(ReadFileForm(read, file_form.substr(0, size)), 0U) << size;
  }
  EXPECT_EQ(ReadFileForm(read, file_form + "next"), file_result);
  EXPECT_EQ(FileFormOf(read), file_form);
  CMemFile two;
  record.Write(&two);
  record.Write(&two);
  two.SeekToBegin();
  read.Read(&two);
  EXPECT_EQ(two.GetPosition(), file_form.size());
}
