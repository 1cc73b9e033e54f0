// SPDX-License-Identifier: MIT
// Potentiometers: correct and malformed files, transfers on a bus of the test, and observers that interfere.
#include "service/TCameraPotsFacade.h"

#include "service/TI2c.h"
#include "service/TObserverList.h"
#include "tests/support/Sanitizers.h"
#include "tests/support/TScratchWorkingDirectory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <functional>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using TTexts = std::vector<std::string>;
using TName = std::array<char, 512>;

/// Of this process; the machine may have other things to do.
double ProcessorSeconds()
{
  return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

/// What WritePrivateProfileString() was asked for: "file section key=value".
TTexts profileWrites;

/// Registers of devices. Notes transfers as "W 2C: 3 200" and "R 2C"; a refused one is noted too.
struct TFakeBus final : TI2c
{
  int Write(unsigned char address, unsigned char* data, unsigned int count) override
  {
    std::ostringstream line;
    line << "W " << std::hex << std::uppercase << int{address} << ":" << std::dec;
    for (unsigned int i = 0; i < count; ++i) line << " " << int{data[i]};
    transfers.push_back(line.str());
    if (refused.count(line.str())) return kFailed;
    selected[address] = data[0];
    if (count == 2) registers[{address, data[0]}] = data[1];
    return kDone;
  }
  int Read(unsigned char address, unsigned char* data, unsigned int count) override
  {
    std::ostringstream line;
    line << "R " << std::hex << std::uppercase << int{address};
    transfers.push_back(line.str());
    if (refused.count(line.str()) || count != 1) return kFailed;
    data[0] = registers[{address, selected[address]}];
    return kDone;
  }
  TTexts Take() { return std::exchange(transfers, {}); }

  std::map<std::pair<int, int>, unsigned char> registers;
  std::map<int, unsigned char> selected;
  std::map<std::string, bool> refused;
  TTexts transfers;
};

/// Groups Bias with two potentiometers, of which one is described in full, and Gain with one.
constexpr const char* kFile =
    "[Bias]\nNoPots=2\n"
    "Pot0_Name=High Level\nPot0_I2CAddress=2C\nPot0_I2CInternalAddress=010\nPot0_Max=3.25\n"
    "Pot0_Min=-1.5\nPot0_Default=150\nPot0_MaxAllowedValue=F0\nPot0_MinAllowedValue=0x1f\n"
    "Pot0_RailI2CAddressHex=48\nPot0_RailI2CInternalAddressHex=0x0A\n"
    "Pot0_RailVoltageMax=5.5\nPot0_RailVoltageMin=0.25\n"
    "Pot1_Name=Low\nPot1_I2CAddress=0x12C\nPot1_I2CInternalAddress=240\nPot1_Default=0x101\n"
    "[ Ga in ]\nNoPots=1\nPot0_I2CAddress=0x2D\nPot0_Default=7\nPot0_RailI2CAddressHex=80000048\n"
    "[Spare]\nNoPots=9\n";

class CameraPots : public ::testing::Test
{
protected:
  CameraPots()
  {
    profileWrites.clear();
    observers_.Register(Notified, this);
  }

  unsigned int Load(const std::string& text = kFile)
  {
    here_.WriteFile("pots.ini", text);
    return pots_.LoadFile("pots.ini");
  }
  int Groups() const
  {
    int groups = -1;
    EXPECT_EQ(pots_.GetNumberGroups(&groups), 0u);
    return groups;
  }
  int PotsIn(int group) const
  {
    int count = -1;
    EXPECT_EQ(pots_.GetNumberPotsInGroup(group, &count), 0u);
    return count;
  }
  std::string Name(int group) const
  {
    char name[512] = "";
    EXPECT_EQ(pots_.GetGroupName(group, name), 0u);
    return name;
  }
  template <class T>
  T Info(int group, int pot, int type, T value = {}) const
  {
    EXPECT_EQ(pots_.GetPotInfo(group, pot, type, &value), 0u);
    return value;
  }
  int Value(int group, int pot)
  {
    int value = -1;
    EXPECT_EQ(pots_.GetPotValue(group, pot, &value), 0u);
    return value;
  }
  int Rail(int group, int pot)
  {
    int value = -1;
    EXPECT_EQ(pots_.GetRailValue(group, pot, &value), 0u);
    return value;
  }

  TScratchWorkingDirectory here_;
  TFakeBus bus_;
  TCameraPotsFacade pots_{&bus_};
  TObserverList observers_{&pots_};
  int notified_ = 0;
  std::function<void()> whenNotified_;

private:
  static std::uint32_t Notified(void* context)
  {
    auto& test = *static_cast<CameraPots*>(context);
    ++test.notified_;
    if (test.whenNotified_) test.whenNotified_();
    return 1; // of no consequence
  }
};

TEST_F(CameraPots, LoadEveryGroupButTheLast)
{
  EXPECT_EQ(Groups(), 0);
  ASSERT_EQ(Load(), 0u);
  EXPECT_EQ(notified_, 1);
  ASSERT_EQ(Groups(), 2);
  EXPECT_EQ(Name(0), "Bias");
  EXPECT_EQ(Name(1), "Gain");
  EXPECT_EQ(PotsIn(0), 2);
  EXPECT_EQ(PotsIn(1), 1);

  EXPECT_STREQ(Info<TName>(0, 0, 0).data(), "HighLevel");
  EXPECT_EQ(Info<unsigned int>(0, 0, 1), 0x2Cu);
  EXPECT_EQ(Info<unsigned int>(0, 0, 2), 8u) << "octal behind a zero";
  EXPECT_EQ(Info<float>(0, 0, 3), 3.25F);
  EXPECT_EQ(Info<float>(0, 0, 4), -1.5F);
  EXPECT_EQ(Info<int>(0, 0, 5), -1);
  EXPECT_EQ(Info<unsigned int>(0, 0, 7), 0x1Fu);
  EXPECT_EQ(Info<unsigned int>(0, 0, 8), 0xF0u);
  EXPECT_EQ(Info<float>(0, 0, 9), 5.5F);
  EXPECT_EQ(Info<float>(0, 0, 10), 0.25F);
  EXPECT_EQ(Info<int>(0, 0, 11), 1);

  EXPECT_STREQ(Info<TName>(1, 0, 0).data(), "0") << "what is missing has defaults";
  EXPECT_EQ(Info<unsigned int>(1, 0, 2), 0u);
  EXPECT_EQ(Info<float>(1, 0, 3), 0.0F);
  EXPECT_EQ(Info<unsigned int>(1, 0, 7), 0u);
  EXPECT_EQ(Info<unsigned int>(1, 0, 8), 255u);
  EXPECT_EQ(Info<int>(1, 0, 11), 0) << "a negative address is no rail";

  for (const int type : {6, 12, -1, 0x7FFFFFFF}) EXPECT_EQ(Info(0, 0, type, 4711), 4711) << type;
  EXPECT_EQ(pots_.GetPotInfo(0, 0, 0, nullptr), 0u);
  EXPECT_TRUE(bus_.transfers.empty());

  EXPECT_EQ(pots_.LoadFile("missing.ini"), 1u);
  EXPECT_EQ(Groups(), 0) << "a failed load leaves nothing";
  EXPECT_EQ(notified_, 2);
}

TEST_F(CameraPots, MalformedFilesAreNotLoadedAndCostNoTime)
{
  std::string manySections;
  for (int section = 0; section < 1'000'000; ++section)
    manySections += "[" + std::to_string(section) + "]\nNoPots=3\n";
  std::string manyGroups; // each with fewer than one group may have
  for (int section = 0; section < 20; ++section) manyGroups += "[" + std::to_string(section) + "]\nNoPots=4096\n";
  const std::pair<const char*, std::string> texts[] = {{"empty", ""},
                                                       {"no section", "NoPots=2\n"},
                                                       {"one section", "[Bias]\nNoPots=1\n"},
                                                       {"one too many", "[A]\nNoPots=4097\n[B]\n"},
                                                       {"many sections", manySections},
                                                       {"many groups", manyGroups}};
  for (const auto& [name, text] : texts) here_.WriteFile(name, text);
  for (const auto& [name, size] : {std::pair{"hole", 1'000'000'000'000}, {"listed for seconds", 400'000'000}}) {
    here_.WriteFile(name, "[A]\nNoPots=1\n[B]\n");
    std::filesystem::resize_file(here_.Path() + "/" + name, static_cast<std::uintmax_t>(size));
  }
  here_.MakePipe("pipe");
  for (const char* const name : {"empty", "no section", "one section", "one too many", "many sections",
                                 "many groups", "hole", "listed for seconds", "pipe", "."}) {
    ASSERT_EQ(Load(), 0u);
    notified_ = 0;
    const double begin = ProcessorSeconds();
    EXPECT_EQ(pots_.LoadFile(name), 1u) << name;
    if (!kHasSanitizer) {
      EXPECT_LT(ProcessorSeconds() - begin, 2.0) << name;
    }
    EXPECT_EQ(Groups(), 0) << name;
    EXPECT_EQ(notified_, 1) << name;
  }
}

TEST_F(CameraPots, CountsThatMakeNoSenseAreNoPotentiometers)
{
  ASSERT_EQ(Load("[A]\nNoPots=-1\n[B]\nNoPots=-2147483648\n[C]\n[D]\nNoPots=many\n[E]\nNoPots=4096\n[F]"), 0u);
  ASSERT_EQ(Groups(), 5);
  for (const int group : {0, 1, 2, 3}) EXPECT_EQ(PotsIn(group), 0) << group;
  EXPECT_EQ(PotsIn(4), 4096);
  EXPECT_EQ(Info<unsigned int>(4, 4095, 8), 255u);
}

TEST_F(CameraPots, NullNamesAndOutputsAreTaken)
{
  EXPECT_EQ(pots_.LoadFile(nullptr), 1u);
  EXPECT_EQ(pots_.SaveFile(nullptr), 0u);
  ASSERT_EQ(Load(), 0u);
  EXPECT_EQ(pots_.GetNumberGroups(nullptr), 0u);
  EXPECT_EQ(pots_.GetNumberPotsInGroup(0, nullptr), 0u);
  EXPECT_EQ(pots_.GetGroupName(0, nullptr), 0u);
  EXPECT_EQ(pots_.GetPotValue(0, 0, nullptr), 0u);
  EXPECT_EQ(pots_.GetRailValue(0, 0, nullptr), 0u);
}

TEST_F(CameraPots, WhatDoesNotExistIsNotTouched)
{
  ASSERT_EQ(Load(), 0u);
  notified_ = 0;
  for (const auto& [group, pot] : {std::pair{-1, 0}, {2, 0}, {0, -1}, {0, 2}, {1, 1}, {0x7FFFFFFF, 0x7FFFFFFF}}) {
    int value = 4711;
    EXPECT_EQ(pots_.GetPotValue(group, pot, &value), 1u);
    EXPECT_EQ(pots_.GetRailValue(group, pot, &value), 1u);
    EXPECT_EQ(pots_.SetPotValue(group, pot, 1), 1u);
    EXPECT_EQ(pots_.GetPotInfo(group, pot, 5, &value), 1u);
    EXPECT_EQ(value, 4711);
  }
  for (const int group : {-1, 2, 3, 0x7FFFFFFF}) {
    int count = 4711;
    char name[] = "untouched";
    EXPECT_EQ(pots_.GetNumberPotsInGroup(group, &count), 1u);
    EXPECT_EQ(pots_.GetGroupName(group, name), 1u);
    EXPECT_EQ(count, 4711);
    EXPECT_STREQ(name, "untouched");
  }
  EXPECT_TRUE(bus_.transfers.empty());
  EXPECT_EQ(notified_, 0);
}

TEST_F(CameraPots, SettingWritesBothRegistersWaitsAndNotifies)
{
  ASSERT_EQ(Load(), 0u);
  notified_ = 0;
  TTexts sentWhenNotified;
  whenNotified_ = [&] { sentWhenNotified = bus_.Take(); };
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(pots_.SetPotValue(0, 0, 200), 0u);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(50));
  EXPECT_EQ(sentWhenNotified, (TTexts{"W 2C: 8 200", "W 2C: 40 200"}));
  EXPECT_EQ(notified_, 1);
  EXPECT_EQ(Info<int>(0, 0, 5), -1) << "known once it is read";

  EXPECT_EQ(pots_.SetPotValue(0, 1, -2), 0u);
  EXPECT_EQ(sentWhenNotified, (TTexts{"W 2C: 240 254", "W 2C: 16 254"})) << "bytes, all of them";

  EXPECT_EQ(pots_.SetPotDefaultEnable(false), 0u);
  bus_.refused["W 2D: 0 1"] = true;
  EXPECT_EQ(pots_.SetPotValue(1, 0, 1), 0u);
  EXPECT_EQ(sentWhenNotified, (TTexts{"W 2D: 0 1"}));
  EXPECT_EQ(notified_, 3) << "whether or not the device takes it";
}

TEST_F(CameraPots, ReadingSelectsTheRegisterAndKeepsTheValue)
{
  ASSERT_EQ(Load(), 0u);
  bus_.registers[{0x2C, 8}] = 201;
  EXPECT_EQ(Value(0, 0), 201);
  EXPECT_EQ(bus_.Take(), (TTexts{"W 2C: 8", "R 2C"}));
  EXPECT_EQ(Info<int>(0, 0, 5), 201);

  bus_.refused["W 2C: 8"] = true;
  bus_.selected[0x2C] = 9;
  bus_.registers[{0x2C, 9}] = 33;
  EXPECT_EQ(Value(0, 0), 33) << "read all the same";
  bus_.refused["R 2C"] = true;
  EXPECT_EQ(Value(0, 0), 0);
  EXPECT_EQ(Info<int>(0, 0, 5), 0);
  EXPECT_EQ(notified_, 1) << "reading notifies nobody";
}

TEST_F(CameraPots, RailsAreZeroWhenEitherStepFails)
{
  ASSERT_EQ(Load(), 0u);
  bus_.registers[{0x48, 10}] = 99;
  EXPECT_EQ(Rail(0, 0), 99);
  EXPECT_EQ(bus_.Take(), (TTexts{"W 48: 10", "R 48"}));
  EXPECT_EQ(Info<int>(0, 0, 5), -1);

  bus_.refused["R 48"] = true;
  EXPECT_EQ(Rail(0, 0), 0);
  bus_.Take();
  bus_.refused["W 48: 10"] = true;
  EXPECT_EQ(Rail(0, 0), 0);
  EXPECT_EQ(bus_.Take(), (TTexts{"W 48: 10"})) << "nothing is read then";
}

TEST_F(CameraPots, CommittingSetsEveryDefaultInOrder)
{
  EXPECT_EQ(pots_.CommitValuesFromFile(), 0u);
  EXPECT_EQ(notified_, 0);
  ASSERT_EQ(Load(), 0u);
  EXPECT_EQ(pots_.CommitValuesFromFile(), 0u);
  EXPECT_EQ(bus_.Take(),
            (TTexts{"W 2C: 8 150", "W 2C: 40 150", "W 2C: 240 1", "W 2C: 16 1", "W 2D: 0 7", "W 2D: 32 7"}));
  EXPECT_EQ(notified_, 4);
}

TEST_F(CameraPots, SavingLeavesTheGroupsAndReadsEveryValue)
{
  ASSERT_EQ(Load(), 0u);
  bus_.registers[{0x2C, 8}] = 5;
  bus_.registers[{0x2C, 240}] = 250;
  EXPECT_EQ(pots_.SaveFile("saved.ini"), 0u);
  EXPECT_EQ(here_.ReadFile("saved.ini"), "[Bias]\n\n\n[Gain]\n");
  EXPECT_EQ(bus_.Take(), (TTexts{"W 2C: 8", "R 2C", "W 2C: 240", "R 2C", "W 2D: 0", "R 2D"}));
  EXPECT_EQ(Info<int>(0, 1, 5), 250);
  EXPECT_EQ(notified_, 1);

  const TTexts first = {"saved.ini Bias NoPots=2",
                        "saved.ini Bias Pot0_Name=HighLevel",
                        "saved.ini Bias Pot0_I2CAddress=2C",
                        "saved.ini Bias Pot0_I2CInternalAddress=08",
                        "saved.ini Bias Pot0_Max=3.2500",
                        "saved.ini Bias Pot0_Min=-1.5000",
                        "saved.ini Bias Pot0_Default=005",
                        "saved.ini Bias Pot0_RailI2CAddressHex=48",
                        "saved.ini Bias Pot0_RailI2CInternalAddressHex=0A",
                        "saved.ini Bias Pot0_RailVoltageMax=5.5000",
                        "saved.ini Bias Pot0_RailVoltageMin=0.2500",
                        "saved.ini Bias Pot1_Name=Low"};
  ASSERT_EQ(profileWrites.size(), 2u + 3 * 10);
  EXPECT_EQ(TTexts(profileWrites.begin(), profileWrites.begin() + 12), first);
  EXPECT_EQ(profileWrites[12], "saved.ini Bias Pot1_I2CAddress=12C");
  EXPECT_EQ(profileWrites[21], "saved.ini Gain NoPots=1");
}

TEST_F(CameraPots, SavingNowhereStillReadsAndNeverWaits)
{
  ASSERT_EQ(Load(), 0u);
  here_.MakePipe("pipe");
  for (const char* const target : {"no/such/directory/file.ini", ".", "pipe", "/dev/full"}) {
    EXPECT_EQ(pots_.SaveFile(target), 0u) << target;
    EXPECT_EQ(bus_.Take().size(), 6u) << target;
  }
  EXPECT_EQ(pots_.Reset(), 0u);
  here_.WriteFile("saved.ini", "of old");
  EXPECT_EQ(pots_.SaveFile("saved.ini"), 0u);
  EXPECT_EQ(here_.ReadFile("saved.ini"), "");
}

TEST_F(CameraPots, AnObserverMayLoadAnotherFileWhileValuesAreSet)
{
  ASSERT_EQ(Load(), 0u);
  here_.WriteFile("other.ini", "[Other]\nNoPots=1\nPot0_I2CAddress=0x10\n[End]\n");
  whenNotified_ = [this] {
    whenNotified_ = nullptr;
    EXPECT_EQ(pots_.LoadFile("other.ini"), 0u);
  };
  EXPECT_EQ(pots_.CommitValuesFromFile(), 0u);
  EXPECT_EQ(bus_.Take(), (TTexts{"W 2C: 8 150", "W 2C: 40 150"})) << "the rest is gone";
  EXPECT_EQ(Name(0), "Other");

  ASSERT_EQ(Load(), 0u);
  Value(0, 0);
  Value(0, 1);
  bus_.Take();
  whenNotified_ = [this] {
    whenNotified_ = nullptr;
    EXPECT_EQ(pots_.LoadFile("missing.ini"), 1u);
  };
  EXPECT_EQ(pots_.SetPotDefaultEnable(true), 0u);
  EXPECT_EQ(bus_.Take().size(), 2u);
  EXPECT_EQ(Groups(), 0);
}

TEST_F(CameraPots, WhatAnObserverThrowsReachesTheCaller)
{
  whenNotified_ = [] { throw std::runtime_error("no"); };
  EXPECT_THROW(Load(), std::runtime_error);
  EXPECT_EQ(Groups(), 2) << "loaded before they were notified";
  EXPECT_THROW(pots_.CommitValuesFromFile(), std::runtime_error);
  whenNotified_ = nullptr;
  EXPECT_EQ(bus_.Take(), (TTexts{"W 2C: 8 150", "W 2C: 40 150"}));
  EXPECT_EQ(pots_.CommitValuesFromFile(), 0u);
}

TEST_F(CameraPots, TheFirst64ObserversAreNotifiedAndAContextGoesAsAWhole)
{
  observers_.Unregister(this);
  std::string called;
  struct TContext
  {
    std::string* called;
    char name;
  };
  TContext a{&called, 'a'}, b{&called, 'b'}, c{&called, 'c'};
  const TObserverCallBack::TFunction call = [](void* context) -> std::uint32_t {
    auto* const who = static_cast<TContext*>(context);
    *who->called += who->name;
    return 0;
  };
  for (int i = 0; i < 32; ++i) {
    observers_.Register(call, &a);
    observers_.Register(i < 31 ? call : nullptr, &b);
  }
  observers_.Register(call, &c); // one too many
  pots_.Update();
  EXPECT_EQ(std::count(called.begin(), called.end(), 'a'), 32);
  EXPECT_EQ(std::count(called.begin(), called.end(), 'b'), 31);
  EXPECT_EQ(std::count(called.begin(), called.end(), 'c'), 0);

  observers_.Unregister(&a);
  observers_.Unregister(&called); // nobody's
  called.clear();
  pots_.Update();
  EXPECT_EQ(called, std::string(31, 'b')) << "the one that was lost stays lost";
}

} // namespace

// The library's own function does nothing.
extern "C" unsigned int __wrap__ZN10EntryPoint25WritePrivateProfileStringEPKcS1_S1_S1_(const char* section,
                                                                                       const char* key,
                                                                                       const char* value,
                                                                                       const char* file);
extern "C" unsigned int __wrap__ZN10EntryPoint25WritePrivateProfileStringEPKcS1_S1_S1_(const char* section,
                                                                                       const char* key,
                                                                                       const char* value,
                                                                                       const char* file)
{
  if (file) profileWrites.push_back(std::string(file) + " " + section + " " + key + "=" + value);
  return 0;
}
