// SPDX-License-Identifier: MIT
// Asks the library for its version, and the dynamic loader for the files.
#include "tools/Versions.h"

#include "vxmcd.h"

#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <elf.h>
#include <filesystem>
#include <link.h>

namespace vxtool {

namespace {

// Notes are a header, a name and a description, each filled up to 4 bytes.
std::string BuildIdIn(const unsigned char* note, std::size_t bytes)
{
  const auto filledUp = [](std::size_t size) { return (size + 3) / 4 * 4; };
  for (std::size_t at = 0; at + sizeof(ElfW(Nhdr)) <= bytes;) {
    ElfW(Nhdr) header;
    std::memcpy(&header, note + at, sizeof header);
    const std::size_t text = at + sizeof header + filledUp(header.n_namesz);
    if (text + header.n_descsz > bytes) return "";
    std::string id;
    for (std::size_t index = 0; index < header.n_descsz; ++index) {
      char digits[3];
      std::snprintf(digits, sizeof digits, "%02x", note[text + index]);
      id += digits;
    }
    if (header.n_type == NT_GNU_BUILD_ID) return id;
    at = text + filledUp(header.n_descsz);
  }
  return "";
}

// What the loader knows of the library at an address of memory.
std::string BuildIdAt(const void* base)
{
  struct TSearch
  {
    const void* base;
    std::string id;
  } search = {base, ""};
  dl_iterate_phdr(
      [](dl_phdr_info* info, std::size_t /*size*/, void* data) {
        auto& wanted = *static_cast<TSearch*>(data);
        if (reinterpret_cast<const void*>(info->dlpi_addr) != wanted.base) return 0;
        for (int index = 0; index < info->dlpi_phnum && wanted.id.empty(); ++index) {
          const ElfW(Phdr)& header = info->dlpi_phdr[index];
          if (header.p_type == PT_NOTE)
            wanted.id = BuildIdIn(reinterpret_cast<const unsigned char*>(info->dlpi_addr + header.p_vaddr),
                                  header.p_memsz);
        }
        return 1;
      },
      &search);
  return search.id;
}

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
  library.buildId = BuildIdAt(info.dli_fbase);
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
