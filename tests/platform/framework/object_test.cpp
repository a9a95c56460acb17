#include "platform/framework/object.h"

#include <gtest/gtest.h>

#include <vector>

#include "platform/framework/mem_file.h"

namespace {

TEST(CObject, KnowsItsClassAtRunTimeAndWhatThatDerivesFrom) {
  const CMemFile memory_file;
  const CObject& object = memory_file;
  EXPECT_STREQ(object.GetRuntimeClass()->m_name, "CMemFile");
  EXPECT_TRUE(object.IsKindOf(RUNTIME_CLASS(CMemFile)));
  EXPECT_TRUE(object.IsKindOf(RUNTIME_CLASS(CObject)));
  EXPECT_FALSE(CFile().IsKindOf(RUNTIME_CLASS(CMemFile)));
}

TEST(CObList, KeepsItsOrderAndNeverOwns) {
  CFile first, second;
  CObList list;
  list.AddTail(&second);
  list.AddTail(nullptr);
  list.AddHead(&first);
  EXPECT_EQ(std::vector<CObject*>(list.begin(), list.end()),
            (std::vector<CObject*>{&first, &second, nullptr}));
  EXPECT_EQ(list.GetTail(), nullptr);
  EXPECT_EQ(list.RemoveHead(), &first);
  EXPECT_EQ(list.GetHead(), &second);
  list.RemoveAll();
  EXPECT_TRUE(list.IsEmpty());
}

}  // namespace
