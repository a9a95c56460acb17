// What every record that has a buffer form, or a file form too, keeps to.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "tests/support/recording_fixture.h"

// Expects the buffer form of a record byte for byte, and `read`, another record, to take it whole
// but nothing of one that is cut.
template <typename Record>
void ExpectBufferForm(Record& record, Record& read, const std::string& form) {
  constexpr DWORD kEnough = 1000;
  const std::string before = BufferFormOf(read, kEnough);
  for (std::size_t size = 0; size < form.size(); ++size) {
    EXPECT_EQ(ReadBufferForm(read, form.substr(0, size)), 0U) << size;
    EXPECT_EQ(BufferFormOf(read, kEnough), before) << size;
  }
  std::string forms(2 * form.size(), '\0');
  auto* cursor = reinterpret_cast<BYTE*>(forms.data());
  record.Write(cursor);
  record.Write(cursor);
  const BYTE* const end = std::exchange(cursor, reinterpret_cast<BYTE*>(forms.data()));
  EXPECT_EQ(forms, form + form);
  EXPECT_EQ(read.Read(cursor, end), form.size());
  EXPECT_EQ(read.Read(cursor), form.size()) << "with no end told";
  EXPECT_EQ(cursor, end);
  EXPECT_EQ(BufferFormOf(read, kEnough), form);
}

// Expects both forms of a record byte for byte, and `read`, another record, to take each of them
// whole but nothing of one that is cut. Reading the file form answers `file_result`.
template <typename Record>
void ExpectForms(Record& record, Record& read, const std::string& file_form,
                 const std::string& buffer_form, DWORD file_result) {
  ExpectBufferForm(record, read, buffer_form);
  EXPECT_EQ(FileFormOf(record), file_form);
  for (std::size_t size = 0; size < file_form.size(); ++size) {
    EXPECT_EQ(ReadFileForm(read, file_form.substr(0, size)), 0U) << size;
  }
  CMemFile two;
  record.Write(&two);
  record.Write(&two);
  two.SeekToBegin();
  EXPECT_EQ(read.Read(&two), file_result);
  EXPECT_EQ(two.GetPosition(), file_form.size());
  EXPECT_EQ(FileFormOf(read), file_form);
}
