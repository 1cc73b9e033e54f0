// SPDX-License-Identifier: MIT
// A configuration library for an EEPROM of 256 bytes. The EEPROM itself is the file that the environment variable
// VXCONF_EEPROM names, or memory of the process without it. The first four bytes are the version of the contents, least
// significant byte first. Files that are loaded and saved have the 256 bytes and nothing else.
#include "vxmcd_plugins.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>

namespace {

constexpr std::size_t kSize = 256;
using TImage = std::array<unsigned char, kSize>;

enum EStatus
{
  kDone = 0,
  kFileFailed = 1,
};

/// The contents of a new camera: version 1, the rest erased.
TImage NewEeprom()
{
  TImage image;
  image.fill(0xFF);
  image[0] = 1;
  image[1] = image[2] = image[3] = 0;
  return image;
}

struct TFileCloser
{
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using TFile = std::unique_ptr<std::FILE, TFileCloser>;

/// Reads the image from a file of exactly its size; otherwise the image stays as it is.
bool ReadImage(const char* fileName, TImage& image)
{
  const TFile file(fileName ? std::fopen(fileName, "rb") : nullptr);
  TImage read;
  if (!file || std::fread(read.data(), 1, kSize, file.get()) != kSize || std::fgetc(file.get()) != EOF)
    return false;
  image = read;
  return true;
}

bool WriteImage(const char* fileName, const TImage& image)
{
  TFile file(fileName ? std::fopen(fileName, "wb") : nullptr);
  if (!file) return false;
  const bool isWritten = std::fwrite(image.data(), 1, kSize, file.get()) == kSize;
  return std::fclose(file.release()) == 0 && isWritten;
}

/// The configuration of one camera. Made by GetConfiguration(), deleted by DestroyConfiguration().
class TRegcamConfiguration final : public IConfiguration
{
public:
  int ReadFromEEPROM() override
  {
    const char* const fileName = EepromFile();
    if (fileName) return ReadImage(fileName, contents_) ? kDone : kFileFailed;
    contents_ = eeprom_;
    return kDone;
  }

  int WriteToEEPROM() override
  {
    const char* const fileName = EepromFile();
    if (fileName) return WriteImage(fileName, contents_) ? kDone : kFileFailed;
    eeprom_ = contents_;
    return kDone;
  }

  int LoadFromFile(const char* fileName) override { return ReadImage(fileName, contents_) ? kDone : kFileFailed; }

  int SaveToFile(const char* fileName) override { return WriteImage(fileName, contents_) ? kDone : kFileFailed; }

  unsigned int GetVersion() override
  {
    unsigned int version = 0;
    for (int byte = 3; byte >= 0; --byte) version = version << 8 | contents_[static_cast<std::size_t>(byte)];
    return version;
  }

private:
  static const char* EepromFile() { return std::getenv("VXCONF_EEPROM"); }

  TImage eeprom_ = NewEeprom(); // used without a file
  TImage contents_ = NewEeprom();
};

} // namespace

extern "C" {
__attribute__((visibility("default"))) IConfiguration* GetConfiguration(int coreHandle);
__attribute__((visibility("default"))) int DestroyConfiguration(IConfiguration* configuration);
}

IConfiguration* GetConfiguration(int /*coreHandle*/)
{
  return new (std::nothrow) TRegcamConfiguration;
}

int DestroyConfiguration(IConfiguration* configuration)
{
  delete configuration;
  return kDone;
}
