#include "platform/framework/object.h"

#include <gtest/gtest.h>

#include <vector>

#include "platform/framework/mem_file.h"

namespace {

TEST(CObject, KnowsItsClassAtRunTimeAndKeepsItsPlaceInAList) {
  CMemFile memory_file;
  CFile file;
  CObList list;
  list.AddTail(&file);
  list.AddTail(nullptr);
  list.AddHead(&memory_file);
  EXPECT_EQ(std::vector<CObject*>(list.begin(), list.end()),
            (std::vector<CObject*>{&memory_file, &file, nullptr}));
  EXPECT_STREQ(list.GetHead()->GetRuntimeClass()->m_name, "CMemFile");
  EXPECT_TRUE(list.GetHead()->IsKindOf(RUNTIME_CLASS(CObject)));
  EXPECT_EQ(list.RemoveHead(), &memory_file);
  EXPECT_FALSE(list.GetHead()->IsKindOf(RUNTIME_CLASS(CMemFile)));
}

}  // namespace
