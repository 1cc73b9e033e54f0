// SPDX-License-Identifier: MIT
// Asks the library for its version, and the dynamic loader for the files.
#include "tools/Versions.h"

#include "vxmcd.h"

#include <dlfcn.h>
#include <filesystem>

namespace vxtool {

namespace {

// The file with this function, behind all links; "" when it cannot be told.
std::string FileWith(const char* function)
{
  Dl_info info = {};
  void* const address = dlsym(RTLD_DEFAULT, function);
  if (!address || dladdr(address, &info) == 0 || !info.dli_fname) return "";
  std::error_code error;
  const std::filesystem::path file = std::filesystem::canonical(info.dli_fname, error);
  return error ? info.dli_fname : file.string();
}

// "3" of "libvxcore.so.3".
std::string VersionInName(const std::string& file)
{
  constexpr std::string_view kMark = ".so.";
  const std::size_t mark = file.rfind(kMark);
  return mark == std::string::npos ? "" : file.substr(mark + kMark.size());
}

std::string Line(std::string name, const std::string& version, const std::string& file)
{
  name.resize(10, ' ');
  return name + (version.empty() ? "unknown version" : version) + (file.empty() ? "" : "  " + file);
}

} // namespace

std::string VersionsText()
{
  char version[64] = "";
  GetVersionInfo(VXMCD_VERSION_LIBRARY, version, sizeof version - 1);
  const std::string core = FileWith("VX_Open");
  return Line("vxmcd", VXTOOL_VERSION, ProgramFile()) + "\n" + Line("libvxmcd", version, LibraryFile()) + "\n" +
         Line("libvxcore", VersionInName(core), core);
}

std::string LibraryFile()
{
  return FileWith("GetVersionInfo");
}

std::string ProgramFile()
{
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

} // namespace vxtool
