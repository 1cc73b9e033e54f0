// SPDX-License-Identifier: MIT
// The names in directories that grow and vanish.
#include "utility/TQuorinDirectoryList.h"

#include "tests/support/TScratchWorkingDirectory.h"

#include <gtest/gtest.h>

#include <dirent.h>
#include <functional>
#include <string>

using QuorinUtility::TQuorinDirectoryList;

namespace {

// Called before a directory is opened.
std::function<void()> beforeOpening;

} // namespace

extern "C" {
DIR* __real_opendir(const char* name);
DIR* __wrap_opendir(const char* name);

DIR* __wrap_opendir(const char* name)
{
  if (beforeOpening) beforeOpening();
  return __real_opendir(name);
}
}

namespace {

class DirectoryList : public ::testing::Test
{
protected:
  DirectoryList()
  {
    for (const char* const name : {"a.so", "b.txt", "c.so.3"}) here_.WriteFile(name, "");
  }

  void TearDown() override { beforeOpening = nullptr; }

  TScratchWorkingDirectory here_;
};

// The names are counted first and read then.
TEST_F(DirectoryList, HasRoomForWhatWasCounted)
{
  int opened = 0;
  beforeOpening = [this, &opened] {
    if (++opened == 2)
      for (const char* const name : {"d.so", "e.so", "f.so"}) here_.WriteFile(name, "");
  };
  TQuorinDirectoryList list(".", ".so", TQuorinDirectoryList::Anywhere);
  ASSERT_EQ(list.GetNumberItems(), 2);
  for (int index = 0; index < 2; ++index)
    EXPECT_NE(std::string(list.GetItem(index)).find(".so"), std::string::npos);
  EXPECT_EQ(list.GetItem(2), nullptr);
  EXPECT_EQ(list.GetItem(-1), nullptr);
  beforeOpening = [this, &opened] {
    if (++opened == 4) here_.RemoveAll();
  };
  list.Reenumerate();
  for (int index = 0; index < 5; ++index) EXPECT_EQ(list.GetItem(index), nullptr) << index;
}

} // namespace
