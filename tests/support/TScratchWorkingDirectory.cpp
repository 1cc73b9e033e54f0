// SPDX-License-Identifier: MIT
// A directory of a test's own to work in.
#include "tests/support/TScratchWorkingDirectory.h"

#include <sys/stat.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

TScratchWorkingDirectory::TScratchWorkingDirectory() : before_(std::filesystem::current_path())
{
  std::string pattern =
      (std::filesystem::canonical(std::filesystem::temp_directory_path()) / "work-XXXXXX").string();
  if (!mkdtemp(pattern.data())) throw std::runtime_error("no scratch directory");
  path_ = pattern;
  std::filesystem::current_path(path_);
}

TScratchWorkingDirectory::~TScratchWorkingDirectory()
{
  std::error_code ignored;
  std::filesystem::current_path(before_, ignored);
  std::filesystem::remove_all(path_, ignored);
}

void TScratchWorkingDirectory::WriteFile(const std::string& name, const std::string& text) const
{
  std::ofstream stream(path_ / name, std::ios::binary);
  stream << text << std::flush;
  if (!stream) throw std::runtime_error("cannot write " + name);
}

std::string TScratchWorkingDirectory::ReadFile(const std::string& name) const
{
  std::ifstream stream(path_ / name, std::ios::binary);
  if (!stream) throw std::runtime_error("cannot read " + name);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

void TScratchWorkingDirectory::Copy(const std::string& from, const std::string& name) const
{
  Remove(name); // in a file of its own: the one before may be a library that is loaded
  std::filesystem::copy_file(from, path_ / name);
}

void TScratchWorkingDirectory::MakeDirectory(const std::string& name) const
{
  std::filesystem::create_directory(path_ / name);
}

void TScratchWorkingDirectory::MakePipe(const std::string& name) const
{
  if (mkfifo((path_ / name).c_str(), 0600) != 0) throw std::runtime_error("cannot make " + name);
}

void TScratchWorkingDirectory::Remove(const std::string& name) const
{
  std::filesystem::remove(path_ / name);
}

void TScratchWorkingDirectory::RemoveAll() const
{
  std::filesystem::remove_all(path_);
}
