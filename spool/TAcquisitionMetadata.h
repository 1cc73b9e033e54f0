// SPDX-License-Identifier: MIT
// The file that describes a spooled run.
#pragma once

#include "ini/TQuorinIniParser.h"

#include <cstdint>
#include <string>

/// The contents of "acquisitionmetadata.ini", which is beside a run's spool files and describes their content. Made
/// by what writes a run (TSpoolDescription) or reads one. Reentrant. Operations return 0 for success and 1 for
/// a failure, which is logged; output parameters then keep their values. Only a lack of memory makes them throw.
class TAcquisitionMetadata final
{
public:
  static const char* const mpsz_iniFilename;

  int GetImagesPerFile(unsigned int& imagesPerFile) const;
  int GetImageSizeBytes(unsigned int& imageSizeBytes) const;
  /// 0 is refused by both.
  int SetImagesPerFile(unsigned int imagesPerFile);
  int SetImageSizeBytes(unsigned int imageSizeBytes);

  /// Replaces the file in @p directory: a reader, even after a power failure, finds the old file or the whole new
  /// one. Waits for the disk. Fails while nothing has been set. On failure errno has the reason; the file is
  /// then unchanged, except that a directory that cannot be synced may have the new one.
  int SaveFile(const char* directory) const;
  /// As SaveFile(), but in place of making a file uses @p reserved, a file without a name in @p directory, open for
  /// writing, whose blocks have been set aside: that needs no more room on the disk. -1 for none.
  int SaveFile(const char* directory, int reserved) const;
  /// Reads the file into an empty object; one that is not empty stays unchanged, which counts as success.
  int LoadFile(const char* directory);

  /// A text of one line: control characters become spaces, and spaces at either end go.
  int SetText(const char* section, const char* key, const std::string& value);
  int SetInteger(const char* section, const char* key, std::int64_t value);
  /// With 17 significant digits, enough to read back the very same number, and a decimal point in every locale.
  /// A number that is not finite is refused.
  int SetReal(const char* section, const char* key, double value);
  int SetBoolean(const char* section, const char* key, bool value);

  /// Fail quietly for a key that is missing or is not entirely a value of this kind.
  int GetText(const char* section, const char* key, std::string& value) const;
  int GetInteger(const char* section, const char* key, std::int64_t& value) const;
  int GetReal(const char* section, const char* key, double& value) const;
  /// Exactly "true" or "false".
  int GetBoolean(const char* section, const char* key, bool& value) const;

private:
  int Replace(const std::string& folder, const std::string& fileName, int reserved) const;
  std::string constructFilename(const char* directory) const;
  bool ReadCount(const char* section, const char* key, unsigned int& count) const;

  QuorinUtility::TQuorinIniParser parser_;
};
