// SPDX-License-Identifier: MIT
// The register file and the I2C buses of the simulated cameras.
#include "tests/vxcore/SimulatedCameraTest.h"

#include <utility>

namespace {

constexpr const char* kTrellis = "[Camera0]\nModel = TRELLIS CMOS\nClock = free\nScene = stamp\n";

/// Stages and carries out transfers as an application would; gives the first code that is not 0.
class Staged final
{
public:
  explicit Staged(const OpenCamera& camera) : camera_(camera) {}

  int ReadRegisters(long long address, std::vector<long long>& values) const
  {
    return Registers(address, values, false);
  }
  int WriteRegisters(long long address, std::vector<long long> values) const
  {
    return Registers(address, values, true);
  }
  int ReadBytes(const std::wstring& bus, long long address, std::vector<long long>& bytes) const
  {
    return Bytes(bus, address, bytes, false);
  }
  int WriteBytes(const std::wstring& bus, long long address, std::vector<long long> bytes) const
  {
    return Bytes(bus, address, bytes, true);
  }
  /// The byte of one register of a device; -1 when the transfer fails.
  long long ByteAt(const std::wstring& bus, long long address, long long reg) const
  {
    std::vector<long long> byte(1);
    if (WriteBytes(bus, address, {reg}) != VX_SUCCESS) return -1;
    return ReadBytes(bus, address, byte) == VX_SUCCESS ? byte[0] : -1;
  }

private:
  int Registers(long long address, std::vector<long long>& values, bool write) const
  {
    return Transfer({L"RegisterAddress", L"RegisterCount", L"RegisterIndex", L"RegisterValue",
                     write ? L"RegisterWrite" : L"RegisterRead"},
                    address, values, write);
  }
  int Bytes(const std::wstring& bus, long long address, std::vector<long long>& bytes, bool write) const
  {
    return Transfer({bus + L"I2CAddress", bus + L"I2CByteCount", bus + L"I2CByteSelector", bus + L"I2CByte",
                     bus + (write ? L"I2CWrite" : L"I2CRead")},
                    address, bytes, write);
  }

  /// Names: address, count, index, value, command.
  int Transfer(const std::array<std::wstring, 5>& names, long long address, std::vector<long long>& values,
               bool write) const
  {
    int first = VX_SUCCESS;
    const auto step = [&first](int code) { first = first == VX_SUCCESS ? code : first; };
    step(camera_.TrySet(names[0].c_str(), address));
    step(camera_.TrySet(names[1].c_str(), static_cast<long long>(values.size())));
    if (first == VX_SUCCESS && !write) step(camera_.Command(names[4].c_str()));
    for (size_t i = 0; i < values.size() && first == VX_SUCCESS; ++i) {
      step(camera_.TrySet(names[2].c_str(), static_cast<long long>(i)));
      step(write ? camera_.TrySet(names[3].c_str(), values[i])
                 : VX_GetInt(camera_.handle, names[3].c_str(), &values[i]));
    }
    if (first == VX_SUCCESS && write) step(camera_.Command(names[4].c_str()));
    return first;
  }

  const OpenCamera& camera_;
};

using SimulatorRegisters = SimulatedCameraTest;
using SimulatorI2c = SimulatedCameraTest;
using Values = std::vector<long long>;

TEST_F(SimulatorRegisters, BlocksAreStagedAndMovedAsAWhole)
{
  Configure(kTrellis);
  const OpenCamera camera;
  const Staged staged(camera);
  Values values(3);
  EXPECT_EQ(staged.ReadRegisters(0, values), VX_SUCCESS);
  EXPECT_EQ(values, (Values{0x56585331, 2048, 2048}));

  EXPECT_EQ(staged.WriteRegisters(0x104, {7, 0xFFFFFFFF}), VX_SUCCESS);
  values.assign(4, -1);
  EXPECT_EQ(staged.ReadRegisters(0x100, values), VX_SUCCESS);
  EXPECT_EQ(values, (Values{0, 7, 0xFFFFFFFF, 0}));

  // Staged values stay in the feature until the command.
  camera.Set(L"RegisterIndex", 1LL);
  camera.Set(L"RegisterValue", 99LL);
  EXPECT_EQ(camera.Command(L"RegisterRead"), VX_SUCCESS);
  EXPECT_EQ(camera.Int(L"RegisterValue"), 7);
}

TEST_F(SimulatorRegisters, WhatIsNoBlockOfRegistersIsRefused)
{
  Configure(kTrellis);
  const OpenCamera camera;
  const Staged staged(camera);
  Values values(3);
  for (const long long address : {-4LL, 2LL, 0x14LL, 0x140LL, 0xFB08LL, 0x1'0000'0000LL}) {
    EXPECT_EQ(staged.ReadRegisters(address, values), VX_ERR_OUT_OF_RANGE) << address;
  }
  EXPECT_EQ(staged.ReadRegisters(0xFB00, values), VX_ERR_OUT_OF_RANGE); // only two follow each other there
  EXPECT_EQ(staged.WriteRegisters(0x100, {-1}), VX_ERR_OUT_OF_RANGE);
  EXPECT_EQ(staged.WriteRegisters(0x100, {0x1'0000'0000}), VX_ERR_OUT_OF_RANGE);
  EXPECT_EQ(staged.WriteRegisters(0x4, {1}), VX_ERR_NOT_WRITABLE);

  camera.Set(L"RegisterAddress", 0x100LL);
  camera.Set(L"RegisterCount", 16LL);
  EXPECT_EQ(camera.TrySet(L"RegisterIndex", 16LL), VX_ERR_OUT_OF_RANGE);
  camera.Set(L"RegisterAddress", 0xFB00LL); // the count set before is too much here
  EXPECT_EQ(camera.Command(L"RegisterRead"), VX_ERR_OUT_OF_RANGE);
  EXPECT_EQ(camera.Command(L"RegisterWrite"), VX_ERR_OUT_OF_RANGE);

  camera.Set(L"RegisterCount", 0LL);
  EXPECT_EQ(camera.TrySet(L"RegisterIndex", 0LL), VX_ERR_OUT_OF_RANGE);
  EXPECT_EQ(camera.TrySet(L"RegisterValue", 0LL), VX_ERR_NOT_AVAILABLE);
  EXPECT_EQ(camera.Command(L"RegisterRead"), VX_SUCCESS);
}

TEST_F(SimulatorRegisters, TheFifoShowsTheFillOfTheMemory)
{
  Configure("[Camera0]\nModel = RQ512_LX\nSource = manual\nScene = stamp\nMemoryFrames = 4\n");
  const OpenCamera camera;
  camera.Set(L"FrameCount", 10LL);
  camera.Start();
  for (const auto& [pushed, sum] : {std::pair{0, 0LL}, {1, 43674624LL}, {2, 131023872LL}, {1, 174698496LL}}) {
    EXPECT_EQ(VXSIM_PushFrames(0, pushed), VX_SUCCESS);
    Values values(2);
    EXPECT_EQ(Staged(camera).ReadRegisters(0xFB00, values), VX_SUCCESS);
    EXPECT_EQ(values[0] + values[1], sum);
  }
}

TEST_F(SimulatorI2c, BusesAreApartAndAnswerOnlyForTheirDevices)
{
  Configure("[Simulator]\nCameras = 2\n[Camera0]\nModel = TRELLIS CMOS\nMissingI2C = Internal 0x2D, Controller "
            "0x4B\n[Camera1]\nModel = TARN 1M\n");
  const OpenCamera camera(0);
  const Staged staged(camera);
  EXPECT_EQ(staged.WriteBytes(L"Internal", 0x2C, {0, 1}), VX_SUCCESS);
  EXPECT_EQ(staged.WriteBytes(L"Controller", 0x2E, {0, 2}), VX_SUCCESS);
  EXPECT_EQ(camera.Int(L"InternalI2CAddress"), 0x2C);
  EXPECT_EQ(staged.WriteBytes(L"Controller", 0x2C, {0, 2}), VX_ERR_BUS);
  EXPECT_EQ(staged.WriteBytes(L"Internal", 0x2D, {}), VX_ERR_BUS);
  EXPECT_EQ(staged.WriteBytes(L"Controller", 0x4B, {}), VX_ERR_BUS);
  EXPECT_EQ(staged.WriteBytes(L"Internal", 0x48, {0, 1}), VX_ERR_BUS); // a rail monitor can only be read
  EXPECT_EQ(staged.WriteBytes(L"Internal", 0x2C, {15, 1, 2}), VX_ERR_BUS);
  EXPECT_EQ(staged.ByteAt(L"Internal", 0x2C, 15), 0x80); // nothing of a refused transfer is written
  EXPECT_EQ(staged.ByteAt(L"Internal", 0x2C, 200), -1);

  Values many(65);
  EXPECT_EQ(staged.ReadBytes(L"Internal", 0x2C, many), VX_ERR_OUT_OF_RANGE);
  for (const long long address : {-1LL, 7LL, 0x78LL, 256LL}) {
    EXPECT_EQ(staged.WriteBytes(L"Internal", address, {0}), VX_ERR_OUT_OF_RANGE) << address;
  }
  Values none;
  EXPECT_EQ(staged.WriteBytes(L"Internal", 0x2C, none), VX_SUCCESS);
  EXPECT_EQ(staged.ReadBytes(L"Internal", 0x2C, none), VX_SUCCESS);
  EXPECT_EQ(camera.TrySet(L"InternalI2CByteSelector", 0LL), VX_ERR_OUT_OF_RANGE);

  const OpenCamera tarn(1);
  int implemented = -1;
  EXPECT_EQ(VX_IsImplemented(tarn.handle, L"ControllerI2CWrite", &implemented), VX_SUCCESS);
  EXPECT_EQ(implemented, 0);
  EXPECT_EQ(Staged(tarn).ByteAt(L"Internal", 0x2C, 0), 0x80);
}

} // namespace
