// SPDX-License-Identifier: MIT
// Paths: separators, joining, parents.
#include "utility/TQuorinFilePath.h"

#include <gtest/gtest.h>
#include <string>

using QuorinUtility::TQuorinFilePath;

namespace {

std::string Delimited(TQuorinFilePath path)
{
  path.DelimitEnd();
  return path.GetForwardSlashPath();
}

std::string Joined(const char* directory, const char* name)
{
  return (TQuorinFilePath(directory) + name).GetForwardSlashPath();
}

/// All parents, nearest first; "..." when they come to no end.
std::string Parents(const char* text)
{
  std::string parents;
  auto parent = TQuorinFilePath(text).GetParent();
  for (int depth = 0; parent; ++depth) {
    if (depth == 10) return parents + "...";
    parents += std::string(parents.empty() ? "" : " ") + parent->GetForwardSlashPath();
    parent = parent->GetParent();
  }
  return parents;
}

} // namespace

TEST(QuorinFilePath, HasForwardSlashesOnly)
{
  EXPECT_STREQ(TQuorinFilePath("C:\\data\\run 1/x").GetForwardSlashPath(), "C:/data/run 1/x");
  EXPECT_STREQ(TQuorinFilePath().GetForwardSlashPath(), "");
  EXPECT_STREQ(TQuorinFilePath(nullptr).GetForwardSlashPath(), "");
}

TEST(QuorinFilePath, EndsInOneSeparatorOnceDelimited)
{
  EXPECT_EQ(Delimited("/a/b"), "/a/b/");
  EXPECT_EQ(Delimited("a/"), "a/");
  EXPECT_EQ(Delimited("a\\"), "a/");
  EXPECT_EQ(Delimited("/"), "/");
  EXPECT_EQ(Delimited(""), "./"); // the root would be somebody else's directory
}

TEST(QuorinFilePath, JoinsDirectoryAndName)
{
  EXPECT_EQ(Joined("/a", "x.so"), "/a/x.so");
  EXPECT_EQ(Joined("/a/", "x.so"), "/a/x.so");
  EXPECT_EQ(Joined("/", "x.so"), "/x.so");
  EXPECT_EQ(Joined("", "x.so"), "x.so");
}

TEST(QuorinFilePath, ParentsComeToAnEndAtTheTop)
{
  EXPECT_EQ(Parents("/a/b/c"), "/a/b /a /");
  EXPECT_EQ(Parents("/a//b//"), "/a /");
  EXPECT_EQ(Parents("a/b"), "a .");
  EXPECT_EQ(Parents("./a"), ".");
  EXPECT_EQ(Parents("../a"), ".. .");
  for (const char* top : {"", ".", "./", "/", "///"}) EXPECT_EQ(Parents(top), "") << top;
}
