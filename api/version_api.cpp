// SPDX-License-Identifier: MIT
// The library's version.
#include "api/call_log.h"
#include "api/entry_points.h"
#include "api/traced_functions.h"
#include "api/TTracedCall.h"
#include "utility/library_version.h"
#include "utility/outputs.h"
#include "vxmcd.h"

#include <cstring>

// Under its decorated name the function takes references. The plain name is a separate function, because a
// reference is never null to a compiler and a pointer may be.
extern "C" VXMCD_API unsigned int PlainGetSDKVersion(unsigned int* major, unsigned int* minor, unsigned int* build,
                                                     unsigned int* revision) __asm__("getSDKVersion");
VXMCD_API unsigned int getSDKVersion(unsigned int& major, unsigned int& minor, unsigned int& build,
                                     unsigned int& revision);

namespace {

constexpr const char* kUnknownText = "Unknown";

// A text that fills the buffer is not terminated; the rest of a larger buffer is cleared.
void CopyBounded(char* buffer, unsigned int size, const char* text)
{
  const std::size_t length = std::strlen(text);
  std::memset(buffer, 0, size);
  std::memcpy(buffer, text, length < size ? length : size);
}

} // namespace

namespace {

unsigned int WriteSDKVersion(unsigned int* major, unsigned int* minor, unsigned int* build, unsigned int* revision)
{
  WriteOutput(major, LibraryVersion::kMajor);
  WriteOutput(minor, LibraryVersion::kMinor);
  WriteOutput(build, LibraryVersion::kBuild);
  WriteOutput(revision, LibraryVersion::kRevision);
  return RC_SUCCESS;
}

} // namespace

unsigned int PlainGetSDKVersion(unsigned int* major, unsigned int* minor, unsigned int* build,
                                unsigned int* revision)
{
  return TTracedCall(FunctionNumber::getSDKVersion, WriteSDKVersion)(major, minor, build, revision);
}

unsigned int getSDKVersion(unsigned int& major, unsigned int& minor, unsigned int& build, unsigned int& revision)
{
  return PlainGetSDKVersion(&major, &minor, &build, &revision);
}

namespace EntryPoint {

unsigned int GetSoftwareVersion(unsigned int* eprom, unsigned int* cofFile, unsigned int* vxdRevision,
                                unsigned int* vxdVersion, unsigned int* dllRevision, unsigned int* dllVersion)
{
  WriteOutput(eprom, 0);
  WriteOutput(cofFile, 0);
  WriteOutput(vxdRevision, 0);
  WriteOutput(vxdVersion, 0);
  WriteOutput(dllRevision, LibraryVersion::kMinor);
  WriteOutput(dllVersion, LibraryVersion::kMajor);
  return RC_SUCCESS;
}

unsigned int GetVersionInfo(int id, char* buffer, unsigned int size)
{
  if (id != VXMCD_VERSION_LIBRARY && id != VXMCD_VERSION_DRIVER)
    return Refuse(RC_P1_INVALID, "the versions are %d and %d", VXMCD_VERSION_LIBRARY, VXMCD_VERSION_DRIVER);
  if (size == 0) return RC_P3_INVALID;
  if (!buffer) return RC_P2_INVALID;
  const bool isLibrary = id == VXMCD_VERSION_LIBRARY;
  CopyBounded(buffer, size, isLibrary ? LibraryVersion::kText : kUnknownText);
  return isLibrary ? RC_SUCCESS : RC_NOT_AVAILABLE;
}

} // namespace EntryPoint
