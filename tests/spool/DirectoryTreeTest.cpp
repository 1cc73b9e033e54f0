// SPDX-License-Identifier: MIT
// Directories made with their ancestors, and removed again.
#include "spool/TDirectoryTree.h"
#include "tests/support/TScratchDirectory.h"

#include <atomic>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <thread>
#include <vector>

namespace fs = std::filesystem;
using QuorinUtility::TQuorinFilePath;

namespace {

/// Each test has a directory to itself, which is also the working directory.
class DirectoryTree : public testing::Test
{
protected:
  void SetUp() override { fs::current_path(scratch_.Directory()); }
  void TearDown() override { fs::current_path(before_); }

  bool Creates(const std::string& name)
  {
    path_ = std::make_unique<TQuorinFilePath>(name.c_str());
    tree_ = std::make_unique<TDirectoryTree>(path_.get());
    return tree_->CreateDirectoryTree();
  }

  std::ptrdiff_t Entries() const { return std::distance(fs::directory_iterator(scratch_.Directory()), {}); }

  const fs::path before_ = fs::current_path();
  TScratchDirectory scratch_;
  std::unique_ptr<TQuorinFilePath> path_;
  std::unique_ptr<TDirectoryTree> tree_;
};

} // namespace

TEST_F(DirectoryTree, MakesEveryMissingLevelAndRemovesWhatItMade)
{
  for (const std::string& name :
       {scratch_.Directory() + "/a/b", std::string("./a//b/"), std::string("a/../b/c"), std::string("a\\b")}) {
    EXPECT_TRUE(Creates(name)) << name;
    EXPECT_TRUE(fs::is_directory(name == "a\\b" ? "a/b" : name)) << name;
    EXPECT_TRUE(tree_->CreateDirectoryTree()) << name;
    EXPECT_TRUE(tree_->DeleteDirectoryTree()) << name;
    EXPECT_EQ(Entries(), 0) << name;
  }
}

TEST_F(DirectoryTree, LeavesAloneWhatWasThere)
{
  fs::create_directory("there");
  fs::create_directory_symlink("there", "link");
  for (const char* name : {"/", ".", "there/", "link"}) {
    EXPECT_TRUE(Creates(name)) << name;
    EXPECT_TRUE(tree_->DeleteDirectoryTree()) << name;
  }
  EXPECT_TRUE(Creates("link/a"));
  tree_.reset();
  EXPECT_TRUE(fs::is_directory("there/a")) << "destruction leaves the disk alone";
  EXPECT_TRUE(Creates("there/a/b"));
  EXPECT_TRUE(tree_->DeleteDirectoryTree());
  EXPECT_TRUE(fs::is_directory("there/a"));
}

TEST_F(DirectoryTree, RemovesWhatItMadeWhenItFails)
{
  scratch_.File("", "file");
  fs::create_symlink("nowhere", "dangling");
  for (const std::string& name : {std::string(), std::string("file"), std::string("dangling/a"),
                                  std::string("a/b/../../file/c"), "a/" + std::string(300, 'x')}) {
    EXPECT_FALSE(Creates(name)) << name;
    EXPECT_EQ(Entries(), 2) << name;
  }
  EXPECT_FALSE(TDirectoryTree(nullptr).CreateDirectoryTree());
}

TEST_F(DirectoryTree, RemovesTheOthersWhenOneCannotBeRemoved)
{
  ASSERT_TRUE(Creates("a/b/c"));
  const std::string file = scratch_.File("", "a/b/file");
  EXPECT_FALSE(tree_->DeleteDirectoryTree());
  EXPECT_FALSE(fs::exists("a/b/c"));
  fs::remove(file);
  EXPECT_TRUE(tree_->DeleteDirectoryTree());
  EXPECT_EQ(Entries(), 0);
}

TEST_F(DirectoryTree, SeveralMayMakeTheSameTreeAtOnce)
{
  for (int round = 0; round < 50; ++round) {
    TQuorinFilePath path("a/b/c/d/e");
    std::vector<std::unique_ptr<TDirectoryTree>> trees(4);
    std::vector<std::thread> threads;
    for (auto& tree : trees) tree = std::make_unique<TDirectoryTree>(&path);
    for (auto& tree : trees) threads.emplace_back([&tree] { EXPECT_TRUE(tree->CreateDirectoryTree()); });
    for (std::thread& thread : threads) thread.join();
    fs::remove_all("a");
  }
}
