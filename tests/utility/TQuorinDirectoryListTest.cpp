// SPDX-License-Identifier: MIT
// The names in a directory, and the working directory.
#include "utility/TQuorinDirectoryList.h"

#include "tests/support/TScratchWorkingDirectory.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

using QuorinUtility::TQuorinDirectoryList;

namespace {

class DirectoryList : public ::testing::Test
{
protected:
  DirectoryList()
  {
    for (const char* const name : {"a.so", "b.txt", "c.so.3"}) here_.WriteFile(name, "");
  }

  static std::multiset<std::string> Names(const TQuorinDirectoryList& list)
  {
    std::multiset<std::string> names;
    for (int index = 0; index < list.GetNumberItems(); ++index) names.insert(list.GetItem(index));
    return names;
  }

  TScratchWorkingDirectory here_;
};

TEST_F(DirectoryList, ListsNamesThatContainTheText)
{
  const TQuorinDirectoryList list(here_.Path().c_str(), ".so", TQuorinDirectoryList::Anywhere);
  EXPECT_EQ(Names(list), (std::multiset<std::string>{"a.so", "c.so.3"}));
  EXPECT_EQ(list.GetItem(2), nullptr);
  EXPECT_EQ(list.GetItem(-1), nullptr);
}

TEST_F(DirectoryList, TellsTheWorkingDirectoryUntilItIsGone)
{
  EXPECT_EQ(TQuorinDirectoryList::GetCurrentDir().GetForwardSlashPath(), here_.Path() + "/");
  here_.RemoveAll();
  EXPECT_STREQ(TQuorinDirectoryList::GetCurrentDir().GetForwardSlashPath(), "./");
}

} // namespace
