// SPDX-License-Identifier: MIT
// The directory that a benchmark writes into.
#include "BenchmarkDirectory.h"

#include "BenchmarkCamera.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <unistd.h>

namespace fs = std::filesystem;

const BenchmarkDirectory& BenchmarkDirectory::get()
{
  static const BenchmarkDirectory directory;
  return directory;
}

BenchmarkDirectory::BenchmarkDirectory()
{
  const char* const place = std::getenv("VXMCD_BENCHMARK_DIRECTORY");
  path_ = std::string(place ? place : ".") + "/spool_benchmark_XXXXXX";
  require(mkdtemp(path_.data()) != nullptr, "a directory to write into");
  path_ = fs::absolute(path_).string();
}

BenchmarkDirectory::~BenchmarkDirectory()
{
  std::error_code error;
  fs::remove_all(path_, error);
}

std::uint64_t BenchmarkDirectory::freeBytes() const
{
  return fs::space(path_).available;
}

void BenchmarkDirectory::clear() const
{
  for (const auto& entry : fs::directory_iterator(path_)) fs::remove_all(entry.path());
  sync();
}
