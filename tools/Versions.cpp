// SPDX-License-Identifier: MIT
// Asks the library for its version, and the dynamic loader for the files.
#include "tools/Versions.h"

#include "trace/build_id.h"
#include "vxmcd.h"

#include <dlfcn.h>
#include <filesystem>

namespace vxtool {

namespace {

// The library with this function. Its name is without the version.
TLoadedLibrary LibraryWith(const char* function, const char* name)
{
  TLoadedLibrary library = {name, "", "", ""};
  Dl_info info = {};
  void* const address = dlsym(RTLD_DEFAULT, function);
  if (!address || dladdr(address, &info) == 0 || !info.dli_fname) return library;
  std::error_code error;
  const std::filesystem::path file = std::filesystem::canonical(info.dli_fname, error);
  library.file = error ? info.dli_fname : file.string();
  library.buildId = BuildIdOf(address);
  return library;
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

std::vector<TLoadedLibrary> LoadedLibraries()
{
  TLoadedLibrary flat = LibraryWith("GetVersionInfo", "libvxmcd");
  char version[64] = "";
  GetVersionInfo(VXMCD_VERSION_LIBRARY, version, sizeof version - 1);
  flat.version = version;
  TLoadedLibrary core = LibraryWith("VX_Open", "libvxcore");
  core.version = VersionInName(core.file);
  return {flat, core};
}

std::string VersionsText()
{
  std::string text = Line("vxmcd", VXTOOL_VERSION, ProgramFile());
  for (const TLoadedLibrary& library : LoadedLibraries())
    text += "\n" + Line(library.name, library.version, library.file);
  return text;
}

std::string LibraryFile()
{
  return LibraryWith("GetVersionInfo", "libvxmcd").file;
}

std::string ProgramFile()
{
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

} // namespace vxtool
