// SPDX-License-Identifier: MIT
// Loads the libraries of backends.
#include "vxcore/backend/TBackendPlugin.h"

#include <cstring>
#include <dlfcn.h>

namespace vxcore {

namespace {

/// The directory of this library with a slash behind it, "" when it cannot be found.
std::string OwnDirectory()
{
  Dl_info own{};
  if (dladdr(reinterpret_cast<void*>(&OwnDirectory), &own) == 0 || !own.dli_fname) return "";
  const std::string path = own.dli_fname;
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "" : path.substr(0, slash + 1);
}

void* Load(const char* library)
{
  constexpr int kFlags = RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE; // its threads may outlive every use
  const std::string directory = OwnDirectory();
  if (!directory.empty())
    if (void* loaded = dlopen((directory + library).c_str(), kFlags)) return loaded;
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
