// SPDX-License-Identifier: MIT
// Makes a directory with its ancestors.
#pragma once

#include "utility/TQuorinFilePath.h"

#include <vector>

/// Makes a directory with the ancestors that are missing, and can remove what it made. Borrows the path.
/// Reentrant. Failures are logged; only a lack of memory makes it throw. Destroying it leaves the disk alone.
class TDirectoryTree final
{
public:
  explicit TDirectoryTree(QuorinUtility::TQuorinFilePath* root) : root_(root) {}
  TDirectoryTree(const TDirectoryTree&) = delete;
  TDirectoryTree& operator=(const TDirectoryTree&) = delete;

  /// Returns whether the directory exists now. When it cannot be made, the ancestors that were made are removed again.
  bool CreateDirectoryTree();
  /// Removes the directories that it made, deepest first. False when one could not be removed, because it is not
  /// empty for instance; the others are removed nevertheless.
  bool DeleteDirectoryTree();
  /// Why CreateDirectoryTree() failed, as an errno value.
  int Error() const { return error_; }

private:
  bool createDirectoryTree(const QuorinUtility::TQuorinFilePath& path);
  bool Make(const QuorinUtility::TQuorinFilePath& path);
  bool Fail(const QuorinUtility::TQuorinFilePath& path, int error);

  QuorinUtility::TQuorinFilePath* root_;
  std::vector<QuorinUtility::TQuorinFilePath> created_; // ancestors first
  int error_ = 0;
};
