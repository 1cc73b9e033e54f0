// SPDX-License-Identifier: MIT
// Files for a test, gone when it ends.
#include "tests/support/TScratchDirectory.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <sys/stat.h>

TScratchDirectory::TScratchDirectory()
{
  namespace fs = std::filesystem;
  std::string pattern = (fs::canonical(fs::temp_directory_path()) / "vxmcd-test-XXXXXX").string();
  if (!mkdtemp(pattern.data())) throw std::runtime_error("no scratch directory");
  path_ = pattern;
}

TScratchDirectory::~TScratchDirectory()
{
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string TScratchDirectory::File(const std::string& text, const std::string& name) const
{
  const std::string file = Path(name);
  std::ofstream stream(file, std::ios::binary);
  stream << text << std::flush;
  if (!stream) throw std::runtime_error("cannot write " + file);
  return file;
}

std::string TScratchDirectory::Fifo(const std::string& name) const
{
  const std::string file = Path(name);
  if (mkfifo(file.c_str(), 0600) != 0) throw std::runtime_error("cannot make " + file);
  return file;
}

std::string TextOf(const std::string& fileName)
{
  std::ifstream stream(fileName, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::ptrdiff_t OpenDescriptors()
{
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}
