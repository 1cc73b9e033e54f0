// SPDX-License-Identifier: MIT
// Makes a directory with its ancestors.
#include "spool/TDirectoryTree.h"

#include "utility/TQuorinLibDebugOutput.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

using QuorinUtility::TQuorinFilePath;
using QuorinUtility::TQuorinLibDebugOutput;

namespace {

constexpr mode_t kMode = 0777; // less what the process masks

/// 0 for a directory, else the error that making something in it would meet.
int DirectoryError(const TQuorinFilePath& path)
{
  struct stat status = {};
  if (::stat(path.GetForwardSlashPath(), &status) != 0) return errno;
  return S_ISDIR(status.st_mode) ? 0 : ENOTDIR;
}

void Log(const TQuorinFilePath& path, int error)
{
  TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "directory %s: error %d", path.GetForwardSlashPath(),
                                error);
}

} // namespace

bool TDirectoryTree::CreateDirectoryTree()
{
  if (root_ && createDirectoryTree(*root_)) return true;
  DeleteDirectoryTree();
  return false;
}

bool TDirectoryTree::createDirectoryTree(const TQuorinFilePath& path)
{
  std::vector<TQuorinFilePath> missing; // ancestors last
  auto ancestor = std::make_unique<TQuorinFilePath>(path);
  int error = DirectoryError(*ancestor);
  while (error == ENOENT) {
    missing.push_back(*ancestor);
    ancestor = ancestor->GetParent();
    if (!ancestor) return Fail(path, error);
    error = DirectoryError(*ancestor);
  }
  if (error != 0) return Fail(*ancestor, error);
  created_.reserve(created_.size() + missing.size()); // so that every directory made is remembered
  return std::all_of(missing.rbegin(), missing.rend(), [this](const TQuorinFilePath& step) { return Make(step); });
}

bool TDirectoryTree::Make(const TQuorinFilePath& path)
{
  if (::mkdir(path.GetForwardSlashPath(), kMode) == 0) {
    created_.push_back(path);
    return true;
  }
  const int error = errno;
  // Another process may have been faster, and "a/.." exists as soon as "a" does.
  if (error == EEXIST && DirectoryError(path) == 0) return true;
  return Fail(path, error);
}

bool TDirectoryTree::Fail(const TQuorinFilePath& path, int error)
{
  Log(path, error);
  error_ = error;
  return false;
}

bool TDirectoryTree::DeleteDirectoryTree()
{
  std::vector<TQuorinFilePath> left;
  for (auto path = created_.rbegin(); path != created_.rend(); ++path) {
    if (::rmdir(path->GetForwardSlashPath()) == 0) continue;
    Log(*path, errno);
    left.insert(left.begin(), *path);
  }
  created_ = std::move(left);
  return created_.empty();
}
