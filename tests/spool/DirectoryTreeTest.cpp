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

/// Each test works in a directory of its own, which is also the working directory.
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

  bool IsEmpty() const { return fs::is_empty(scratch_.Directory()); }

  const fs::path before_ = fs::current_path();
  TScratchDirectory scratch_;
  std::unique_ptr<TQuorinFilePath> path_;
  std::unique_ptr<TDirectoryTree> tree_;
};

} // namespace

TEST_F(DirectoryTree, MakesEveryMissingLevelAndRemovesWhatItMade)
{
  const std::string names[] = {scratch_.Directory() + "/a/b", "a", "a/b", "./a//b/", "a/b/.", "a/../b/c", "a\\b"};
  for (const std::string& name : names) {
    EXPECT_TRUE(Creates(name)) << name;
    EXPECT_TRUE(fs::is_directory(name == "a\\b" ? "a/b" : name)) << name;
    EXPECT_TRUE(tree_->CreateDirectoryTree()) << name;
    EXPECT_TRUE(tree_->DeleteDirectoryTree()) << name;
    EXPECT_TRUE(IsEmpty()) << name;
  }
}

TEST_F(DirectoryTree, LeavesAloneWhatWasThere)
{
  fs::create_directory("there");
  fs::create_directory_symlink("there", "link");
  for (const char* name : {"there", "/", ".", "there/", "link"}) {
    EXPECT_TRUE(Creates(name)) << name;
    EXPECT_TRUE(tree_->DeleteDirectoryTree()) << name;
  }
  EXPECT_TRUE(fs::exists("link"));
  EXPECT_TRUE(Creates("link/a/b"));
  tree_.reset();
  EXPECT_TRUE(fs::is_directory("there/a/b")) << "destruction leaves the disk alone";
  EXPECT_TRUE(Creates("there/a/b/c"));
  EXPECT_TRUE(tree_->DeleteDirectoryTree());
  EXPECT_TRUE(fs::is_directory("there/a/b"));
}

TEST_F(DirectoryTree, RemovesWhatItMadeWhenItFails)
{
  scratch_.File("", "file");
  fs::create_symlink("nowhere", "dangling");
  const auto entries = [this] { return std::distance(fs::directory_iterator(scratch_.Directory()), {}); };
  const auto before = entries();
  const std::string names[] = {"",
                               "file",
                               "file/a",
                               "dangling",
                               "dangling/a",
                               "a/b/../../file/c",
                               "a/" + std::string(300, 'x'),
                               std::string(100000, 'x'),
                               "/proc/none/a"};
  for (const std::string& name : names) {
    EXPECT_FALSE(Creates(name)) << name;
    EXPECT_EQ(entries(), before) << name;
    EXPECT_TRUE(tree_->DeleteDirectoryTree()) << "nothing is left to remove";
  }
  EXPECT_FALSE(TDirectoryTree(nullptr).CreateDirectoryTree());
}

TEST_F(DirectoryTree, RemovesTheOthersWhenOneCannotBeRemoved)
{
  ASSERT_TRUE(Creates("a/b/c"));
  const std::string file = scratch_.File("", "a/b/file");
  EXPECT_FALSE(tree_->DeleteDirectoryTree());
  EXPECT_FALSE(fs::exists("a/b/c"));
  EXPECT_TRUE(fs::exists(file));
  fs::remove(file);
  EXPECT_TRUE(tree_->DeleteDirectoryTree());
  EXPECT_TRUE(IsEmpty());
}

TEST_F(DirectoryTree, SeveralMayMakeTheSameTreeAtOnce)
{
  constexpr int kThreads = 4;
  for (int round = 0; round < 50; ++round) {
    TQuorinFilePath path("a/b/c/d/e");
    std::vector<std::unique_ptr<TDirectoryTree>> trees;
    for (int i = 0; i < kThreads; ++i) trees.push_back(std::make_unique<TDirectoryTree>(&path));
    std::atomic<int> made{0};
    std::vector<std::thread> threads;
    for (auto& tree : trees) threads.emplace_back([&made, &tree] { made += tree->CreateDirectoryTree() ? 1 : 0; });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(made, kThreads);
    // Each removes its own, which may have to wait for what another one made in it.
    for (int pass = 0; pass < 5; ++pass)
      for (auto& tree : trees) tree->DeleteDirectoryTree();
    EXPECT_TRUE(IsEmpty());
  }
}
