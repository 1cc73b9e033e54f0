// SPDX-License-Identifier: MIT
// The potentiometers of a camera.
#include "service/TCameraPotsFacade.h"

#include "ini/regular_file.h"
#include "ini/TIniFileParser.h"
#include "service/camera_pot_file.h"
#include "service/TI2c.h"
#include "utility/outputs.h"
#include "utility/TQuorinLibDebugOutput.h"
#include "utility/TQuorinMisc.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <vector>

using QuorinUtility::TQuorinLibDebugOutput;
using QuorinUtility::TQuorinMisc;

namespace {

constexpr std::size_t kGroupNameSize = 512;
constexpr std::uint32_t kPowerOnOffset = 32; // from a working register to its power-on register
constexpr int kSettleMs = 50;
constexpr std::int64_t kListings = 3; // of the sections: one to count them, two to get their names

enum EPotInfo
{
  kInfoName,
  kInfoI2cAddress,
  kInfoI2cInternalAddress,
  kInfoMaximum,
  kInfoMinimum,
  kInfoCurrentValue,
  kInfoNothing,
  kInfoMinimumAllowed,
  kInfoMaximumAllowed,
  kInfoRailMaximum,
  kInfoRailMinimum,
  kInfoHasRail,
};

template <class T>
void CopyField(void* out, T field)
{
  std::memcpy(out, &field, sizeof field);
}

unsigned char LowByte(std::uint32_t value)
{
  return static_cast<unsigned char>(value & 0xFFU);
}

std::int64_t FileSize(const char* fileName)
{
  struct stat status = {};
  return ::stat(fileName, &status) == 0 ? status.st_size : 0;
}

/// Whether so many searches through a file would take too long.
bool IsTooMuch(std::int64_t searches, std::int64_t fileSize)
{
  return fileSize > TCameraPotsFacade::kMaxReading / searches - TCameraPotsFacade::kReadingPerKey;
}

void LogRefusedLoad(const char* fileName, const char* reason)
{
  TQuorinLibDebugOutput::Output(__FILE__, __LINE__, "LoadFile", TQuorinLibDebugOutput::Warning,
                                "potentiometer file %s is not loaded: %s", fileName ? fileName : "(null)", reason);
}

} // namespace

TCameraPotsFacade::~TCameraPotsFacade()
{
  Reset();
}

std::uint32_t TCameraPotsFacade::LoadFile(const char* fileName)
{
  Reset();
  bool isLoaded = false;
  try {
    isLoaded = LoadGroups(fileName);
  } catch (const std::bad_alloc&) {
    LogRefusedLoad(fileName, "no memory");
  }
  if (!isLoaded) Reset();
  Update();
  return isLoaded ? kDone : kFailed;
}

bool TCameraPotsFacade::LoadGroups(const char* fileName)
{
  if (!fileName || ::access(fileName, F_OK) != 0) {
    LogRefusedLoad(fileName, "there is no such file");
    return false;
  }
  const std::int64_t fileSize = FileSize(fileName);
  // Files without a size, such as those of /proc, may have no end.
  if (fileSize == 0) {
    LogRefusedLoad(fileName, "empty");
    return false;
  }
  if (IsTooMuch(kListings, fileSize)) {
    LogRefusedLoad(fileName, "too large");
    return false;
  }
  const int sections = TIniFileParser::GetNumberOfSections(fileName);
  if (sections < 1) {
    LogRefusedLoad(fileName, "no section, or one only, which is never loaded");
    return false;
  }
  groupNames_ = std::make_unique<std::unique_ptr<char[]>[]>(static_cast<std::size_t>(sections));
  std::vector<char*> names;
  for (int group = 0; group < sections; ++group) {
    groupNames_[group] = std::make_unique<char[]>(kGroupNameSize);
    names.push_back(groupNames_[group].get());
  }
  // The file may have become shorter since the sections were counted.
  groupCount_ = TIniFileParser::GetSections(fileName, names.data(), sections);
  return groupCount_ > 0 && LoadPots(fileName, fileSize);
}

// Every key is a search from the file's beginning. A file with wrong counts, or with a million sections, is noticed
// before the time is spent.
bool TCameraPotsFacade::LoadPots(const char* fileName, std::int64_t fileSize)
{
  const auto groups = static_cast<std::size_t>(groupCount_);
  std::int64_t searches = kListings + groupCount_;
  if (IsTooMuch(searches, fileSize)) {
    LogRefusedLoad(fileName, "too many sections");
    return false;
  }
  potsPerGroup_ = std::make_unique<std::int32_t[]>(groups);
  for (std::size_t group = 0; group < groups; ++group) {
    const int count = ReadCameraPotCount(fileName, groupNames_[group].get());
    if (count > 0) {
      potsPerGroup_[group] = count;
      searches += count * kKeysPerCameraPot;
    }
    if (count > kMaxPotsPerGroup || IsTooMuch(searches, fileSize)) {
      LogRefusedLoad(fileName, "too many potentiometers");
      return false;
    }
  }
  pots_ = std::make_unique<std::unique_ptr<TCameraPot[]>[]>(groups);
  for (std::size_t group = 0; group < groups; ++group) {
    pots_[group] = std::make_unique<TCameraPot[]>(static_cast<std::size_t>(potsPerGroup_[group]));
    for (int pot = 0; pot < potsPerGroup_[group]; ++pot)
      pots_[group][pot] = ReadCameraPot(fileName, groupNames_[group].get(), pot);
  }
  return true;
}

std::uint32_t TCameraPotsFacade::SaveFile(const char* fileName)
{
  CreateEmptyINIFile(fileName);
  for (int group = 0; group < groupCount_; ++group) {
    const char* const name = groupNames_[group].get();
    WriteCameraPotCount(fileName, name, potsPerGroup_[group]);
    for (int pot = 0; pot < potsPerGroup_[group]; ++pot) {
      ReadPot(pots_[group][pot]);
      WriteCameraPot(fileName, name, pot, pots_[group][pot]);
    }
  }
  return kDone;
}

std::uint32_t TCameraPotsFacade::CreateEmptyINIFile(const char* fileName)
{
  errno = EINVAL; // a null name
  TOpenFile file = fileName ? CreateRegularFile(fileName) : nullptr;
  bool isWritten = file != nullptr;
  for (int group = 0; file && group < groupCount_; ++group) {
    const bool isLast = group == groupCount_ - 1;
    if (std::fprintf(file.get(), "[%s]%s", groupNames_[group].get(), isLast ? "\n" : "\n\n\n") < 0)
      isWritten = false;
  }
  if (file && std::fclose(file.release()) != 0) isWritten = false;
  if (!isWritten)
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "potentiometer file %s is not written: %s",
                                  fileName ? fileName : "(null)",
                                  std::strerror(errno)); // NOLINT(concurrency-mt-unsafe): a text of each thread
  return kDone;
}

std::uint32_t TCameraPotsFacade::CommitValuesFromFile()
{
  ForEachPot([this](int group, int pot, const TCameraPot& description) {
    SetPotValue(group, pot, description.defaultValue);
  });
  return kDone;
}

std::uint32_t TCameraPotsFacade::Reset()
{
  groupCount_ = 0;
  groupNames_.reset();
  pots_.reset();
  potsPerGroup_.reset();
  ++generation_;
  return kDone;
}

std::uint32_t TCameraPotsFacade::Update()
{
  NotifyObservers();
  return kDone;
}

std::uint32_t TCameraPotsFacade::GetNumberGroups(int* count) const
{
  WriteOutput(count, groupCount_);
  return kDone;
}

std::uint32_t TCameraPotsFacade::GetNumberPotsInGroup(int group, int* count) const
{
  if (!IsGroup(group)) return kFailed;
  WriteOutput(count, potsPerGroup_[group]);
  return kDone;
}

std::uint32_t TCameraPotsFacade::GetGroupName(int group, char* name) const
{
  if (!IsGroup(group)) return kFailed;
  if (name) std::strcpy(name, groupNames_[group].get());
  return kDone;
}

std::uint32_t TCameraPotsFacade::GetPotInfo(int group, int pot, int infoType, void* out) const
{
  const TCameraPot* const description = Find(group, pot);
  if (!description) return kFailed;
  if (!out) return kDone;
  switch (infoType) {
  case kInfoName:
    std::strcpy(static_cast<char*>(out), description->name.data());
    break;
  case kInfoI2cAddress:
    CopyField(out, description->i2cAddress);
    break;
  case kInfoI2cInternalAddress:
    CopyField(out, description->i2cInternalAddress);
    break;
  case kInfoMaximum:
    CopyField(out, description->maximum);
    break;
  case kInfoMinimum:
    CopyField(out, description->minimum);
    break;
  case kInfoCurrentValue:
    CopyField(out, description->currentValue);
    break;
  case kInfoMinimumAllowed:
    CopyField(out, description->minimumAllowedValue);
    break;
  case kInfoMaximumAllowed:
    CopyField(out, description->maximumAllowedValue);
    break;
  case kInfoRailMaximum:
    CopyField(out, description->railVoltageMaximum);
    break;
  case kInfoRailMinimum:
    CopyField(out, description->railVoltageMinimum);
    break;
  case kInfoHasRail:
    CopyField(out, static_cast<std::int32_t>(static_cast<std::int32_t>(description->railI2cAddress) > 0));
    break;
  case kInfoNothing:
  default:
    break;
  }
  return kDone;
}

std::uint32_t TCameraPotsFacade::GetPotValue(int group, int pot, int* value)
{
  TCameraPot* const description = Find(group, pot);
  if (!description) return kFailed;
  ReadPot(*description);
  WriteOutput(value, description->currentValue);
  return kDone;
}

std::uint32_t TCameraPotsFacade::SetPotValue(int group, int pot, int value)
{
  const TCameraPot* const description = Find(group, pot);
  if (!description) return kFailed;
  const std::uint32_t address = description->i2cAddress;
  const std::uint32_t working = description->i2cInternalAddress;
  WriteRegister(address, working, value);
  if (defaultEnable_) WriteRegister(address, working + kPowerOnOffset, value);
  TQuorinMisc::Sleep(kSettleMs);
  Update();
  return kDone;
}

std::uint32_t TCameraPotsFacade::GetRailValue(int group, int pot, int* value)
{
  const TCameraPot* const description = Find(group, pot);
  if (!description) return kFailed;
  WriteOutput(value, 0);
  if (!SelectRegister(description->railI2cAddress, description->railI2cInternalAddress)) return kDone;
  unsigned char byte = 0;
  if (Fetch(description->railI2cAddress, byte)) WriteOutput(value, int{byte});
  return kDone;
}

std::uint32_t TCameraPotsFacade::SetPotDefaultEnable(bool enable)
{
  defaultEnable_ = enable;
  if (!enable) return kDone;
  ForEachPot([this](int group, int pot, const TCameraPot& description) {
    if (description.currentValue != TCameraPot::kUnknown) SetPotValue(group, pot, description.currentValue);
  });
  return kDone;
}

std::uint32_t TCameraPotsFacade::GetPotDefaultEnable(bool& enable) const
{
  enable = defaultEnable_;
  return kDone;
}

const TCameraPot* TCameraPotsFacade::Find(int group, int pot) const
{
  const bool isThere = IsGroup(group) && pot >= 0 && pot < potsPerGroup_[group];
  return isThere ? &pots_[group][pot] : nullptr;
}

TCameraPot* TCameraPotsFacade::Find(int group, int pot)
{
  return const_cast<TCameraPot*>(static_cast<const TCameraPotsFacade*>(this)->Find(group, pot));
}

// An observer may replace the description; nothing of the old one is left then.
template <class TAction>
void TCameraPotsFacade::ForEachPot(TAction action)
{
  const std::uint64_t generation = generation_;
  for (int group = 0; group < groupCount_; ++group) {
    for (int pot = 0; pot < potsPerGroup_[group]; ++pot) {
      action(group, pot, pots_[group][pot]);
      if (generation_ != generation) return;
    }
  }
}

// The value counts as read in either case; a failure is only in the log.
void TCameraPotsFacade::ReadPot(TCameraPot& pot)
{
  unsigned char byte = 0;
  SelectRegister(pot.i2cAddress, pot.i2cInternalAddress);
  Fetch(pot.i2cAddress, byte);
  pot.currentValue = byte;
}

void TCameraPotsFacade::WriteRegister(std::uint32_t address, std::uint32_t internalAddress, int value)
{
  unsigned char bytes[] = {LowByte(internalAddress), LowByte(static_cast<std::uint32_t>(value))};
  Send(address, bytes, sizeof bytes);
}

bool TCameraPotsFacade::SelectRegister(std::uint32_t address, std::uint32_t internalAddress)
{
  unsigned char byte = LowByte(internalAddress);
  return Send(address, &byte, 1);
}

bool TCameraPotsFacade::Send(std::uint32_t address, unsigned char* bytes, unsigned int count)
{
  const int status = i2c_->Write(LowByte(address), bytes, count);
  if (status != TI2c::kDone)
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, TQuorinLibDebugOutput::Warning,
                                  "I2C device 0x%02X does not take %u bytes for register %d, status %d",
                                  LowByte(address), count, bytes[0], status);
  return status == TI2c::kDone;
}

bool TCameraPotsFacade::Fetch(std::uint32_t address, unsigned char& byte)
{
  const int status = i2c_->Read(LowByte(address), &byte, 1);
  if (status != TI2c::kDone)
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, TQuorinLibDebugOutput::Warning,
                                  "I2C device 0x%02X cannot be read, status %d", LowByte(address), status);
  return status == TI2c::kDone;
}
