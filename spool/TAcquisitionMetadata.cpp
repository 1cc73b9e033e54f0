// SPDX-License-Identifier: MIT
// The file that describes a spooled run.
#include "spool/TAcquisitionMetadata.h"

#include "ini/text_double.h"
#include "runs/run_format.h"
#include "utility/file_access.h"
#include "utility/TQuorinFilePath.h"
#include "utility/TQuorinLibDebugOutput.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <fcntl.h>
#include <limits>
#include <unistd.h>

using QuorinUtility::TQuorinFilePath;
using QuorinUtility::TQuorinIniParser;
using QuorinUtility::TQuorinLibDebugOutput;

namespace {

constexpr int kOk = 0;
constexpr int kFailed = 1;
constexpr const char* kSource = "acquisitionmetadata.cpp"; // the name that the log has always shown
constexpr const char* kTemporarySuffix = ".tmp";
constexpr int kSignificantDigits = 17;
constexpr std::size_t kNumberSize = 64;
constexpr std::size_t kFirstTextSize = 256;

/// Syncs a directory, where the file system supports that. 0 or an errno value.
int SyncDirectory(const std::string& name)
{
  const TFileDescriptor directory(::open(name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!directory.IsOpen()) return errno;
  return ::fsync(directory.Get()) == 0 || IsUnsupported(errno) ? 0 : errno;
}

/// Makes @p text the content of an open file and syncs it. 0 or an errno value.
int Fill(int file, const std::string& text)
{
  if (const int error = WriteAll(file, text.data(), text.size(), 0)) return error;
  return ::ftruncate(file, static_cast<off_t>(text.size())) == 0 && ::fsync(file) == 0 ? 0 : errno;
}

/// Gives a name to a file that has none.
int Link(int file, const std::string& name)
{
  const std::string open = "/proc/self/fd/" + std::to_string(file);
  return ::linkat(AT_FDCWD, open.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0 ? 0 : errno;
}

/// Makes a file of that content. 0 or an errno value.
int Make(const std::string& name, const std::string& text)
{
  const TFileDescriptor file(::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
  return file.IsOpen() ? Fill(file.Get(), text) : errno;
}

/// The directory's path with a slash at its end.
std::string WithDelimiter(const char* directory)
{
  TQuorinFilePath path(directory);
  path.DelimitEnd();
  return path.GetForwardSlashPath();
}

bool IsControl(char character)
{
  return static_cast<unsigned char>(character) < ' ' || character == '\x7f';
}

/// The text as one line of an INI file.
std::string OneLine(std::string text)
{
  for (char& character : text)
    if (IsControl(character)) character = ' ';
  text.erase(0, text.find_first_not_of(' '));
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

} // namespace

const char* const TAcquisitionMetadata::mpsz_iniFilename = RunFormat::kDescriptionName;

int TAcquisitionMetadata::GetImagesPerFile(unsigned int& imagesPerFile) const
{
  if (ReadCount(RunFormat::kImagesPerFile.section, RunFormat::kImagesPerFile.name, imagesPerFile)) return kOk;
  TQuorinLibDebugOutput::Output(kSource, __LINE__, __func__,
                                "TAcquisitionMetadata: GetImagesPerFile - Failed to read images per file\n");
  return kFailed;
}

int TAcquisitionMetadata::GetImageSizeBytes(unsigned int& imageSizeBytes) const
{
  if (ReadCount(RunFormat::kImageSize.section, RunFormat::kImageSize.name, imageSizeBytes)) return kOk;
  TQuorinLibDebugOutput::Output(kSource, __LINE__, __func__,
                                "TAcquisitionMetadata: GetImageSizeBytes - Failed to read image size bytes\n");
  return kFailed;
}

bool TAcquisitionMetadata::ReadCount(const char* section, const char* key, unsigned int& count) const
{
  long value = 0;
  if (parser_.ReadLong(section, key, value) != TQuorinIniParser::INI_OK) return false;
  if (value < 0 || value > static_cast<long>(std::numeric_limits<unsigned int>::max())) return false;
  count = static_cast<unsigned int>(value);
  return true;
}

int TAcquisitionMetadata::SetImagesPerFile(unsigned int imagesPerFile)
{
  if (imagesPerFile == 0) {
    TQuorinLibDebugOutput::Output(kSource, __LINE__, __func__,
                                  "TAcquisitionMetadata: SetImagesPerFile - _ui_imagesPerFile cannot be 0\n");
    return kFailed;
  }
  if (parser_.WriteLong(RunFormat::kImagesPerFile.section, RunFormat::kImagesPerFile.name, imagesPerFile) ==
      TQuorinIniParser::INI_OK)
    return kOk;
  TQuorinLibDebugOutput::Output(kSource, __LINE__, __func__,
                                "TAcquisitionMetadata: SetImagesPerFile - Failed to set images per file %d\n",
                                static_cast<int>(imagesPerFile));
  return kFailed;
}

int TAcquisitionMetadata::SetImageSizeBytes(unsigned int imageSizeBytes)
{
  if (imageSizeBytes == 0) {
    TQuorinLibDebugOutput::Output(kSource, __LINE__, __func__,
                                  "TAcquisitionMetadata: SetImageSizeBytes - _ui_imageSizeBytes cannot be 0\n");
    return kFailed;
  }
  if (parser_.WriteLong(RunFormat::kImageSize.section, RunFormat::kImageSize.name, imageSizeBytes) ==
      TQuorinIniParser::INI_OK)
    return kOk;
  TQuorinLibDebugOutput::Output(kSource, __LINE__, __func__,
                                "TAcquisitionMetadata: SetImageSizeBytes - Failed to set image size bytes %d\n",
                                static_cast<int>(imageSizeBytes));
  return kFailed;
}

int TAcquisitionMetadata::SaveFile(const char* directory) const
{
  return SaveFile(directory, -1);
}

int TAcquisitionMetadata::SaveFile(const char* directory, int reserved) const
{
  if (!directory) {
    TQuorinLibDebugOutput::Output(kSource, __LINE__, __func__,
                                  "TAcquisitionMetadata: SaveFile - _sz_filePath cannot be NULL\n");
    return kFailed;
  }
  const std::string folder = WithDelimiter(directory);
  const std::string fileName = folder + mpsz_iniFilename;
  const int error = Replace(folder, fileName, reserved);
  if (error == 0) return kOk;
  TQuorinLibDebugOutput::Output(kSource, __LINE__, __func__,
                                "TAcquisitionMetadata: SaveFile - Failed to save file %s\n", fileName.c_str());
  errno = error;
  return kFailed;
}

int TAcquisitionMetadata::Replace(const std::string& folder, const std::string& fileName, int reserved) const
{
  std::string text;
  if (parser_.SaveText(text) != TQuorinIniParser::INI_OK) return ENOMEM;
  const std::string temporary = fileName + kTemporarySuffix;
  ::unlink(temporary.c_str()); // it may be a link to another file
  int error = reserved < 0 ? ENOENT : Fill(reserved, text);
  if (error == 0) error = Link(reserved, temporary);
  if (error != 0) error = Make(temporary, text); // there may be no /proc
  if (error == 0 && std::rename(temporary.c_str(), fileName.c_str()) != 0) error = errno;
  if (error == 0) return SyncDirectory(folder);
  ::unlink(temporary.c_str());
  return error;
}

int TAcquisitionMetadata::LoadFile(const char* directory)
{
  if (!directory) {
    TQuorinLibDebugOutput::Output(kSource, __LINE__, __func__,
                                  "TAcquisitionMetadata: LoadFile - _sz_filePath cannot be NULL\n");
    return kFailed;
  }
  const std::string fileName = constructFilename(directory);
  if (parser_.LoadIni(fileName.c_str()) != TQuorinIniParser::INI_FAILED) return kOk;
  TQuorinLibDebugOutput::Output(kSource, __LINE__, __func__,
                                "TAcquisitionMetadata: LoadFile - Failed to Load file %s\n", fileName.c_str());
  return kFailed;
}

std::string TAcquisitionMetadata::constructFilename(const char* directory) const
{
  return WithDelimiter(directory) + mpsz_iniFilename;
}

int TAcquisitionMetadata::SetText(const char* section, const char* key, const std::string& value)
{
  if (parser_.WriteString(section, key, OneLine(value).c_str()) == TQuorinIniParser::INI_OK) return kOk;
  TQuorinLibDebugOutput::Output(kSource, __LINE__, __func__, "cannot set %s of %s", key ? key : "(null)",
                                section ? section : "(null)");
  return kFailed;
}

int TAcquisitionMetadata::SetInteger(const char* section, const char* key, std::int64_t value)
{
  return SetText(section, key, std::to_string(value));
}

int TAcquisitionMetadata::SetReal(const char* section, const char* key, double value)
{
  if (!std::isfinite(value)) {
    TQuorinLibDebugOutput::Output(kSource, __LINE__, __func__, "%s of %s is not a number", key ? key : "(null)",
                                  section ? section : "(null)");
    return kFailed;
  }
  std::array<char, kNumberSize> text;
  const auto end =
      std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::general, kSignificantDigits);
  return SetText(section, key, std::string(text.data(), end.ptr));
}

int TAcquisitionMetadata::SetBoolean(const char* section, const char* key, bool value)
{
  return SetText(section, key, value ? RunFormat::kTrueText : RunFormat::kFalseText);
}

int TAcquisitionMetadata::GetText(const char* section, const char* key, std::string& value) const
{
  std::string text(kFirstTextSize, '\0');
  while (parser_.ReadString(section, key, text.data(), static_cast<unsigned int>(text.size())) ==
         TQuorinIniParser::INI_OK) {
    const std::size_t length = text.find('\0');
    if (length + 1 < text.size()) {
      value = text.substr(0, length);
      return kOk;
    }
    text.assign(2 * text.size(), '\0'); // the text may have been cut
  }
  return kFailed;
}

int TAcquisitionMetadata::GetInteger(const char* section, const char* key, std::int64_t& value) const
{
  std::string text;
  if (GetText(section, key, text) != kOk) return kFailed;
  std::int64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number);
  if (result.ec != std::errc() || result.ptr != end) return kFailed;
  value = number;
  return kOk;
}

int TAcquisitionMetadata::GetReal(const char* section, const char* key, double& value) const
{
  std::string text;
  if (GetText(section, key, text) != kOk || text.empty()) return kFailed;
  const char* end = nullptr;
  const double number = LeadingDouble(text.c_str(), &end);
  if (*end != '\0' || !std::isfinite(number)) return kFailed;
  value = number;
  return kOk;
}

int TAcquisitionMetadata::GetBoolean(const char* section, const char* key, bool& value) const
{
  std::string text;
  if (GetText(section, key, text) != kOk) return kFailed;
  if (text != RunFormat::kTrueText && text != RunFormat::kFalseText) return kFailed;
  value = text == RunFormat::kTrueText;
  return kOk;
}
