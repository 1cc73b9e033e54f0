// SPDX-License-Identifier: MIT
// A directory of a test's own to work in.
#include "tests/support/TScratchWorkingDirectory.h"

#include <stdexcept>

TScratchWorkingDirectory::TScratchWorkingDirectory() : before_(std::filesystem::current_path())
{
  std::filesystem::current_path(Path());
}

TScratchWorkingDirectory::~TScratchWorkingDirectory()
{
  std::error_code ignored;
  std::filesystem::current_path(before_, ignored);
}

void TScratchWorkingDirectory::WriteFile(const std::string& name, const std::string& text) const
{
  scratch_.File(text, name);
}

std::string TScratchWorkingDirectory::ReadFile(const std::string& name) const
{
  if (!std::filesystem::exists(scratch_.Path(name))) throw std::runtime_error("no file " + name);
  return TextOf(scratch_.Path(name));
}

void TScratchWorkingDirectory::Copy(const std::string& from, const std::string& name) const
{
  Remove(name); // in a file of its own: the one before may be a library that is loaded
  std::filesystem::copy_file(from, scratch_.Path(name));
}

void TScratchWorkingDirectory::MakeDirectory(const std::string& name) const
{
  std::filesystem::create_directory(scratch_.Path(name));
}

void TScratchWorkingDirectory::MakePipe(const std::string& name) const
{
  scratch_.Fifo(name);
}

void TScratchWorkingDirectory::Remove(const std::string& name) const
{
  std::filesystem::remove(scratch_.Path(name));
}

void TScratchWorkingDirectory::RemoveAll() const
{
  std::filesystem::remove_all(Path());
}
