// SPDX-License-Identifier: MIT
// Names of files and directories.
#include "utility/TQuorinFilePath.h"

#include <algorithm>

namespace QuorinUtility {

namespace {

constexpr char kSeparator = '/';
constexpr const char* kWorkingDirectory = ".";

/// Drops separators at the end, but not the one that is the root.
void TrimEnd(std::string& path)
{
  while (path.size() > 1 && path.back() == kSeparator) path.pop_back();
}

} // namespace

TQuorinFilePath::TQuorinFilePath(const char* text) : path_(text ? text : "")
{
  std::replace(path_.begin(), path_.end(), '\\', kSeparator);
}

void TQuorinFilePath::DelimitEnd()
{
  if (path_.empty()) path_.append(kWorkingDirectory);
  if (path_.back() != kSeparator) path_ += kSeparator;
}

std::unique_ptr<TQuorinFilePath> TQuorinFilePath::GetParent() const
{
  std::string parent = path_;
  TrimEnd(parent);
  if (parent.empty() || parent == kWorkingDirectory || parent == "/") return nullptr;
  const std::size_t separator = parent.rfind(kSeparator);
  if (separator == std::string::npos) return std::make_unique<TQuorinFilePath>(kWorkingDirectory);
  parent.resize(separator + 1);
  TrimEnd(parent);
  return std::make_unique<TQuorinFilePath>(parent.c_str());
}

TQuorinFilePath operator+(const TQuorinFilePath& directory, const TQuorinFilePath& name)
{
  TQuorinFilePath start = directory;
  if (*start.GetForwardSlashPath()) start.DelimitEnd();
  return (std::string(start.GetForwardSlashPath()) + name.GetForwardSlashPath()).c_str();
}

} // namespace QuorinUtility
