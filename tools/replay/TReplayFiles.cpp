// SPDX-License-Identifier: MIT
// The files of a replay.
#include "tools/replay/TReplayFiles.h"

#include "tools/Environment.h"
#include "tools/replay/TReplayPlan.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace vxtool {

namespace fs = std::filesystem;

TReplayFiles::TReplayFiles(bool hasSamePaths) : hasSamePaths_(hasSamePaths), home_(Variable("HOME"))
{
  std::string name = (fs::temp_directory_path() / "vxmcd-replay-XXXXXX").string();
  if (!mkdtemp(name.data())) throw std::runtime_error(name + ": cannot be made");
  directory_ = name;
}

TReplayFiles::~TReplayFiles()
{
  Remove();
}

void TReplayFiles::Remove() const
{
  std::error_code error;
  fs::remove_all(directory_, error);
}

std::string TReplayFiles::PathFor(const std::string& function, const std::string& recorded) const
{
  const bool isOfHome = !home_.empty() && (recorded == "~" || recorded.starts_with("~/"));
  std::string path = isOfHome ? home_ + recorded.substr(1) : recorded;
  if (hasSamePaths_ || path.empty()) return path;
  std::error_code error;
  // Without "..", so that it stays in the directory.
  const fs::path moved =
      fs::path(directory_) / "files" / fs::absolute(path, error).lexically_normal().relative_path();
  if (!IsOneOf(function, {"SetSpool", "*SaveFile", "vxsys_EEPSV"}))
    return fs::exists(moved, error) ? moved.string() : path;
  fs::create_directories(moved.parent_path(), error);
  return moved.string();
}

std::string TReplayFiles::Write(const std::string& name, const std::string& text) const
{
  const std::string path = directory_ + "/" + name;
  std::ofstream file(path);
  file << text << std::flush;
  return file ? path : "";
}

} // namespace vxtool
