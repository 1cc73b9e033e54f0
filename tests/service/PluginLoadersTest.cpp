// SPDX-License-Identifier: MIT
// The loaders of plug-in libraries, with the example libraries and with ones that fall short.
#include "api/trigger_board_library.h"
#include "service/TConfigurationLoader.h"
#include "service/TLoadUSBi2cDll.h"
#include "tests/support/TScratchWorkingDirectory.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <dlfcn.h>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr const char* kConfigurationLibrary = "libvxconf_regcam.so";
constexpr const char* kTriggerBoardLibrary = "usbi2c.dll";

std::string Example(const std::string& library)
{
  return VXMCD_TEST_PLUGINS "/" + library;
}

class ConfigurationLoader : public ::testing::Test
{
protected:
  const TScratchWorkingDirectory here_;
};

TEST_F(ConfigurationLoader, NamesLibrariesOfAtMost127Characters)
{
  struct TRow
  {
    std::size_t stem, length;
    bool hasSuffix;
  };
  for (const TRow& row : {TRow{0, 10, true}, TRow{6, 16, true}, TRow{114, 124, true}, TRow{115, 125, false},
                          TRow{117, 127, false}, TRow{120, 127, false}, TRow{1000, 127, false}}) {
    const std::string stem(row.stem, 's');
    std::array<char, TConfigurationLoader::kNameSize + 1> name;
    name.fill('?');
    EXPECT_EQ(TConfigurationLoader::createLibName(stem.c_str(), name.data()), row.length);
    EXPECT_EQ(std::string(name.data()),
              ("libvxconf_" + stem).substr(0, row.length) + (row.hasSuffix ? ".so" : ""));
    EXPECT_EQ(name.back(), '?');
  }
}

// What plug-ins compiled by others rely on.
TEST_F(ConfigurationLoader, OperationsHaveTheirPositionsInTheTable)
{
  here_.Copy(Example(kConfigurationLibrary), kConfigurationLibrary);
  TConfigurationLoader loader(7);
  IConfiguration* const configuration = loader.GetConfiguration();
  ASSERT_NE(configuration, nullptr);
  void* const* table = nullptr;
  std::memcpy(&table, static_cast<void*>(configuration), sizeof table);
  Dl_info here = {};
  const auto call = [&](int position, auto function, auto... arguments) {
    EXPECT_NE(dladdr(table[position - 1], &here), 0) << position;
    std::memcpy(&function, &table[position - 1], sizeof function);
    return function(configuration, arguments...);
  };
  using TPlain = int (*)(IConfiguration*);
  using TWithFile = int (*)(IConfiguration*, const char*);
  here_.WriteFile("image", "\x05\x01" + std::string(254, '\0'));
  EXPECT_EQ(call(5, TWithFile{}, "image"), 0);
  EXPECT_EQ(call(16, TPlain{}), 0x105);
  EXPECT_EQ(call(4, TPlain{}), 0);
  here_.WriteFile("image", std::string(256, '\1'));
  EXPECT_EQ(call(5, TWithFile{}, "image"), 0);
  EXPECT_EQ(call(16, TPlain{}), 0x1010101);
  EXPECT_EQ(call(3, TPlain{}), 0);
  EXPECT_EQ(call(16, TPlain{}), 0x105) << "as it was written";
  EXPECT_EQ(call(6, TWithFile{}, "saved"), 0);
  EXPECT_EQ(here_.ReadFile("saved"), "\x05\x01" + std::string(254, '\0'));
  EXPECT_EQ(loader.DestroyConfiguration(configuration), 0);
}

class TriggerBoardLoader : public ::testing::Test
{
protected:
  static void ExpectNotLoaded(const TLoadUSBi2cDll& board)
  {
    int output = 4711;
    EXPECT_EQ(board.CallTriggerBoard_Initialize(), 1);
    EXPECT_EQ(board.CallTriggerBoard_GetAvailableTriggers(&output), 1);
    EXPECT_EQ(board.CallTriggerBoard_GetTriggerHandle(0, &output), 1);
    EXPECT_EQ(board.CallTriggerBoard_SetCurrentTrigger(0), 1);
    EXPECT_EQ(board.CallTriggerBoard_I2CWrite(1, 2, 3), 1);
    EXPECT_EQ(board.CallTriggerBoard_ExternalTrigger(0, 1, 2), 1);
    EXPECT_EQ(board.CallTriggerBoard_ShutDown(), 1);
    EXPECT_EQ(output, 4711);
  }

  /// Whether the library is in the process.
  bool IsLoaded() const
  {
    void* const handle = dlopen((here_.Path() + "/" + kTriggerBoardLibrary).c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (handle) dlclose(handle);
    return handle != nullptr;
  }

  /// What the loaded library's board has in a register.
  int Register(unsigned int number) const
  {
    void* const handle = dlopen((here_.Path() + "/" + kTriggerBoardLibrary).c_str(), RTLD_LAZY | RTLD_NOLOAD);
    int (*readRegister)(unsigned int) = nullptr;
    if (handle) *reinterpret_cast<void**>(&readRegister) = dlsym(handle, "TriggerBoard_ReadRegister");
    const int value = readRegister ? readRegister(number) : -1;
    if (handle) dlclose(handle);
    return value;
  }

  const TScratchWorkingDirectory here_;
};

TEST_F(TriggerBoardLoader, ForwardsWhatNoEntryPointShows)
{
  here_.Copy(Example(kTriggerBoardLibrary), kTriggerBoardLibrary);
  TLoadUSBi2cDll board;
  EXPECT_EQ(board.CallTriggerBoard_Initialize(), 0);
  EXPECT_EQ(board.CallTriggerBoard_I2CWrite(0x50, 0xFE, 0xFF), 0);
  EXPECT_EQ(Register(0xFE), 0xFF);
  EXPECT_EQ(board.CallTriggerBoard_I2CWrite(0x51, 0, 0), -4);
  EXPECT_EQ(board.CallTriggerBoard_ExternalTrigger(1, 30, 40), 0);
  EXPECT_EQ((std::array{Register(0), Register(1), Register(2)}), (std::array{1, 30, 40}));
  EXPECT_EQ(board.unloadUSBi2c(), 0);
  ExpectNotLoaded(board);
  EXPECT_FALSE(IsLoaded());
  EXPECT_EQ(board.unloadUSBi2c(), 0);
}

// There is always somebody inside, and everybody comes in a second time from there.
TEST_F(TriggerBoardLoader, IsUnloadedWhileCallsOverlapWithoutEnd)
{
  using TClock = std::chrono::steady_clock;
  constexpr std::chrono::milliseconds kCall(5);
  here_.Copy(Example(kTriggerBoardLibrary), kTriggerBoardLibrary);
  std::atomic<int> cameras{1};
  LoadTriggerBoardLibrary(cameras);
  std::atomic<bool> isUnloaded{false};
  const auto begin = TClock::now();
  std::vector<std::thread> callers;
  for (int i = 0; i < 6; ++i) {
    callers.emplace_back([&, i] {
      std::this_thread::sleep_for(kCall * i / 6);
      while (!isUnloaded && TClock::now() - begin < std::chrono::seconds(50)) {
        const TTriggerBoardUse board;
        std::this_thread::sleep_for(kCall);
        const TTriggerBoardUse again;
        int count = 0;
        EXPECT_EQ(again->CallTriggerBoard_GetAvailableTriggers(&count),
                  board->CallTriggerBoard_GetAvailableTriggers(&count));
      }
    });
  }
  std::this_thread::sleep_for(kCall * 10);
  UnloadTriggerBoardLibrary(cameras);
  EXPECT_TRUE(IsLoaded()) << "another camera has been opened meanwhile";
  cameras = 0;
  UnloadTriggerBoardLibrary(cameras);
  isUnloaded = true;
  EXPECT_LT(TClock::now() - begin, std::chrono::seconds(40));
  for (std::thread& caller : callers) caller.join();
  ExpectNotLoaded(*gblp_LoadUSBi2cDll);
  EXPECT_FALSE(IsLoaded());
}

} // namespace
