// SPDX-License-Identifier: MIT
// The library that makes a camera's configuration.
#include "service/TConfigurationLoader.h"

#include "utility/TQuorinDynamicLoader.h"
#include "utility/TQuorinLibDebugOutput.h"
#include "utility/TQuorinMisc.h"
#include "vxmcd_plugins.h"

#include <array>
#include <cstring>

using QuorinUtility::TQuorinDynamicLoader;
using QuorinUtility::TQuorinLibDebugOutput;
using QuorinUtility::TQuorinMisc;

namespace {

constexpr const char* kStem = "regcam";
constexpr const char* kPrefix = "libvxconf_";
constexpr const char* kSuffix = ".so";

} // namespace

TConfigurationLoader::TConfigurationLoader(int coreHandle) : coreHandle_(coreHandle)
{
  std::array<char, kNameSize> name{};
  createLibName(kStem, name.data());
  loader_ = std::make_unique<TQuorinDynamicLoader>(name.data(), nullptr, false);
  if (loader_->Open() != TQuorinDynamicLoader::kOpen)
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, TQuorinLibDebugOutput::Info,
                                  "no configuration library: %s", loader_->GetErrorMessage());
}

TConfigurationLoader::~TConfigurationLoader()
{
  loader_->Close();
}

std::size_t TConfigurationLoader::createLibName(const char* stem, char* out)
{
  const int whole = TQuorinMisc::snprintf(out, kNameSize, "%s%s", kPrefix, stem);
  const std::size_t length = whole < 0 ? 0 : std::strlen(out);
  if (length + std::strlen(kSuffix) < kNameSize) std::strcpy(out + length, kSuffix);
  return length;
}

IConfiguration* TConfigurationLoader::GetConfiguration()
{
  if (loader_->Open() != TQuorinDynamicLoader::kOpen) return nullptr;
  const auto get = reinterpret_cast<VxmcdGetConfiguration>(loader_->GetFunction("GetConfiguration"));
  return get ? get(coreHandle_) : nullptr;
}

int TConfigurationLoader::DestroyConfiguration(IConfiguration* configuration)
{
  if (const int status = loader_->Open(); status != TQuorinDynamicLoader::kOpen) return status;
  const auto destroy = reinterpret_cast<VxmcdDestroyConfiguration>(loader_->GetFunction("DestroyConfiguration"));
  return destroy ? destroy(configuration) : 0;
}
