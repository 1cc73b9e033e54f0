// SPDX-License-Identifier: MIT
// Loading the libraries of backends.
#include "vxcore/backend/backend_plugin.h"

#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <system_error>

namespace vxcore {

namespace {

/// The directory of this library, "" when it cannot be found. The loader may have found it through a link.
std::filesystem::path OwnDirectory()
{
  Dl_info own{};
  std::error_code failed;
  if (dladdr(reinterpret_cast<void*>(&OwnDirectory), &own) == 0 || !own.dli_fname) return "";
  return std::filesystem::canonical(own.dli_fname, failed).parent_path();
}

void* Load(const char* library)
{
  constexpr int kFlags = RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE; // its threads may outlive every use
  if (const std::filesystem::path directory = OwnDirectory(); !directory.empty())
    if (void* loaded = dlopen((directory / library).c_str(), kFlags)) return loaded;
  return dlopen(library, kFlags);
}

} // namespace

std::unique_ptr<IDeviceBackend> MakePluginBackend(const char* library, const TBackendEntries& entries,
                                                  std::string& error)
{
  void* const loaded = Load(library);
  if (!loaded) {
    const char* reason = dlerror(); // NOLINT(concurrency-mt-unsafe): glibc keeps one a thread
    error = std::string(library) +
            " is needed for these cameras and cannot be loaded: " + (reason ? reason : "no reason");
    return nullptr;
  }
  const auto* const version = static_cast<const char*>(dlsym(loaded, "vxcoreBackendVersion"));
  const auto make = reinterpret_cast<decltype(&vxcoreMakeBackend)>(dlsym(loaded, "vxcoreMakeBackend"));
  if (!version || !make || std::strcmp(version, VXCORE_BACKEND_VERSION) != 0) {
    error = std::string(library) + " is of version " + (version ? version : "unknown") + ", and this is " +
            VXCORE_BACKEND_VERSION;
    return nullptr;
  }
  return std::unique_ptr<IDeviceBackend>(make(entries, error));
}

} // namespace vxcore
