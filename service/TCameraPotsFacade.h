// SPDX-License-Identifier: MIT
// The potentiometers of a camera.
#pragma once

#include "service/TCameraPot.h"
#include "utility/TSubject.h"

#include <cstdint>
#include <memory>

class TI2c;

/// The digital potentiometers of a camera, in the named groups of a potentiometer file: loads and saves their
/// description, writes and reads them over the internal I2C bus, and notifies observers at the end of every load and
/// every write. Owned by the camera's record; borrows the bus. Not synchronised: its callers serialise. Observers run
/// inside the calls that cause them and may call anything here, a load included; their exceptions pass
/// through. Every operation answers a status, kDone or kFailed. Transfers that fail are logged and otherwise
/// ignored.
class TCameraPotsFacade final : public TSubject
{
public:
  enum EStatus : std::uint32_t
  {
    kDone = 0,
    kFailed = 1,
  };

  /// More in one group are not loaded.
  static constexpr std::int32_t kMaxPotsPerGroup = 4096;
  /// Nor are files that need more reading: the bytes of the file, plus a share for opening it, for every key and every
  /// listing of the sections. This is about 350 potentiometers with all their keys.
  static constexpr std::int64_t kMaxReading = 512 * 1024 * 1024;
  static constexpr std::int64_t kReadingPerKey = 8 * 1024;

  explicit TCameraPotsFacade(TI2c* i2c) : i2c_(i2c) {}
  ~TCameraPotsFacade();

  /// Replaces the description; a failed load leaves it empty. The last section of the file is not a group.
  std::uint32_t LoadFile(const char* fileName);
  /// Writes the names of the groups and refreshes every current value from the devices. Always kDone.
  std::uint32_t SaveFile(const char* fileName);
  /// Writes the names of the groups. Always kDone.
  std::uint32_t CreateEmptyINIFile(const char* fileName);
  /// Sets every potentiometer to its default. Always kDone.
  std::uint32_t CommitValuesFromFile();
  /// Empties the description without notifying observers.
  std::uint32_t Reset();
  /// Notifies the observers.
  std::uint32_t Update();

  std::uint32_t GetNumberGroups(int* count) const;
  std::uint32_t GetNumberPotsInGroup(int group, int* count) const;
  /// @param name  room for the name, 255 characters at most
  std::uint32_t GetGroupName(int group, char* name) const;
  /// Copies one field, chosen by its number; see vxsys_CameraPotsGetPotInfo().
  std::uint32_t GetPotInfo(int group, int pot, int infoType, void* out) const;

  /// Reads the working register, 0 when that fails.
  std::uint32_t GetPotValue(int group, int pot, int* value);
  /// Writes the working register and, if enabled, the power-on register, and waits 50 ms for the device to settle.
  std::uint32_t SetPotValue(int group, int pot, int value);
  /// Reads the monitor of the potentiometer's rail, 0 when that fails.
  std::uint32_t GetRailValue(int group, int pot, int* value);
  /// Whether writes go into the power-on registers too. Enabling writes the known values there.
  std::uint32_t SetPotDefaultEnable(bool enable);
  std::uint32_t GetPotDefaultEnable(bool& enable) const;

private:
  bool LoadGroups(const char* fileName);
  bool LoadPots(const char* fileName, std::int64_t fileSize);
  bool IsGroup(int group) const { return group >= 0 && group < groupCount_; }
  const TCameraPot* Find(int group, int pot) const;
  TCameraPot* Find(int group, int pot);
  template <class TAction>
  void ForEachPot(TAction action);
  void ReadPot(TCameraPot& pot);
  void WriteRegister(std::uint32_t address, std::uint32_t internalAddress, int value);
  bool SelectRegister(std::uint32_t address, std::uint32_t internalAddress);
  bool Send(std::uint32_t address, unsigned char* bytes, unsigned int count);
  bool Fetch(std::uint32_t address, unsigned char& byte);

  std::int32_t groupCount_ = 0;
  std::unique_ptr<std::unique_ptr<char[]>[]> groupNames_;
  std::unique_ptr<std::int32_t[]> potsPerGroup_;
  std::unique_ptr<std::unique_ptr<TCameraPot[]>[]> pots_;
  TI2c* i2c_;
  bool defaultEnable_ = true;
  std::uint64_t generation_ = 0; // of the description: an observer may replace it while potentiometers are set
};
