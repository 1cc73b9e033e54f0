// SPDX-License-Identifier: MIT
// Configuration libraries that fall short: each variant defines what is wrong with it.
#include "vxmcd_plugins.h"

#include <stdexcept>

#define EXPORTED __attribute__((visibility("default")))

namespace {

/// Does what the variant asks for; it is never deleted.
class TConfiguration final : public IConfiguration
{
public:
  int ReadFromEEPROM() override { return 0; }
  int WriteToEEPROM() override { return WRITE_STATUS; }
  int LoadFromFile(const char* fileName) override { return fileName ? 0 : 7; }
  int SaveToFile(const char* fileName) override { return fileName ? 0 : 7; }
  unsigned int GetVersion() override { return 0xFFFFFFFEU; }
};

[[maybe_unused]] IConfiguration* TheConfiguration()
{
  static TConfiguration configuration;
  return &configuration;
}

} // namespace

extern "C" {

#if HAS_FACTORY
EXPORTED IConfiguration* GetConfiguration(int coreHandle);
IConfiguration* GetConfiguration(int)
{
#if FACTORY_THROWS
  throw std::runtime_error("no configuration");
#elif FACTORY_GIVES_NULL
  return nullptr;
#else
  return TheConfiguration();
#endif
}
#endif

#if HAS_DESTROY
EXPORTED int DestroyConfiguration(IConfiguration* configuration);
int DestroyConfiguration([[maybe_unused]] IConfiguration* configuration)
{
#if DESTROY_THROWS
  throw std::runtime_error("not destroyed");
#else
  return configuration ? 5 : 6;
#endif
}
#endif
}
