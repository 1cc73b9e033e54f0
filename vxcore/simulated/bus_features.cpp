// SPDX-License-Identifier: MIT
// The features of a camera's registers and buses.
#include "vxcore/simulated/feature_rows.h"

#include <cstdint>

namespace vxsim {

namespace {

/// There are gaps between registers, so limits do not suffice.
std::unique_ptr<IFeature> MakeRegisterAddress(const TBuild& b)
{
  TRegisterFile& r = b.state.registers;
  return b.Int(b.Access(), {.get = [&r] { return r.Address(); },
                            .set = [&r](long long v) { r.SetAddress(v); },
                            .minimum = [] { return 0LL; },
                            .maximum = [] { return static_cast<long long>(UINT32_MAX); },
                            .accepts = [&r](long long v) { return r.IsKnown(v); }});
}

std::unique_ptr<IFeature> MakeRegisterCount(const TBuild& b)
{
  TRegisterFile& r = b.state.registers;
  return b.Int(b.Access(), {.get = [&r] { return r.Count(); },
                            .set = [&r](long long v) { r.SetCount(v); },
                            .minimum = [] { return 0LL; },
                            .maximum = [&r] { return r.CountMaximum(); },
                            .accepts = [](long long v) { return v >= 0 && v <= TRegisterFile::kMaximumCount; }});
}

std::unique_ptr<IFeature> MakeRegisterIndex(const TBuild& b)
{
  TRegisterFile& r = b.state.registers;
  return b.Int(b.Access(), {.get = [&r] { return r.Index(); },
                            .set = [&r](long long v) { r.SetIndex(v); },
                            .minimum = [] { return 0LL; },
                            .maximum = [&r] { return r.Count() - 1; },
                            .accepts = [&r](long long v) { return IsPlaceIn(v, r.Count()); }});
}

std::unique_ptr<IFeature> MakeRegisterValue(const TBuild& b)
{
  TRegisterFile& r = b.state.registers;
  TFeatureAccess access = b.Access();
  access.available = [&r] { return r.Count() > 0; };
  return b.Int(std::move(access), {.get = [&r] { return r.Value(); },
                                   .set = [&r](long long v) { r.SetValue(v); },
                                   .minimum = [] { return 0LL; },
                                   .maximum = [] { return static_cast<long long>(UINT32_MAX); }});
}

std::unique_ptr<IFeature> MakeI2cAddress(const TBuild& b, TI2cBus& bus)
{
  return b.Int(b.Access(), {.get = [&bus] { return bus.Address(); },
                            .set = [&bus](long long v) { bus.SetAddress(v); },
                            .minimum = [] { return TI2cBus::kLowestAddress; },
                            .maximum = [] { return TI2cBus::kMaxAddress; }});
}

std::unique_ptr<IFeature> MakeI2cByteCount(const TBuild& b, TI2cBus& bus)
{
  return b.Int(b.Access(), {.get = [&bus] { return bus.Count(); },
                            .set = [&bus](long long v) { bus.SetCount(v); },
                            .minimum = [] { return 0LL; },
                            .maximum = [] { return TI2cBus::kMaximumCount; },
                            .accepts = [](long long v) { return v >= 0 && v <= TI2cBus::kMaximumCount; }});
}

std::unique_ptr<IFeature> MakeI2cByteSelector(const TBuild& b, TI2cBus& bus)
{
  return b.Int(b.Access(), {.get = [&bus] { return bus.Selector(); },
                            .set = [&bus](long long v) { bus.SetSelector(v); },
                            .minimum = [] { return 0LL; },
                            .maximum = [&bus] { return bus.Count() - 1; },
                            .accepts = [&bus](long long v) { return IsPlaceIn(v, bus.Count()); }});
}

std::unique_ptr<IFeature> MakeI2cByte(const TBuild& b, TI2cBus& bus)
{
  TFeatureAccess access = b.Access();
  access.available = [&bus] { return bus.Count() > 0; };
  return b.Int(std::move(access), {.get = [&bus] { return bus.Byte(); },
                                   .set = [&bus](long long v) { bus.SetByte(v); },
                                   .minimum = [] { return 0LL; },
                                   .maximum = [] { return 255LL; }});
}

std::unique_ptr<IFeature> MakeI2cRead(const TBuild& b, TI2cBus& bus)
{
  return b.Command(b.Access(), [&bus](TDeviceLock&) { return bus.Read(); });
}

std::unique_ptr<IFeature> MakeI2cWrite(const TBuild& b, TI2cBus& bus)
{
  return b.Command(b.Access(), [&bus](TDeviceLock&) { return bus.Write(); });
}

const TRow kRows[] = {
    {L"RegisterAddress", MakeRegisterAddress, true},
    {L"RegisterCount", MakeRegisterCount, true},
    {L"RegisterIndex", MakeRegisterIndex, true},
    {L"RegisterValue", MakeRegisterValue, true},
    {L"RegisterRead",
     [](const TBuild& b) {
       return b.Command(b.Access(), [&r = b.state.registers](TDeviceLock&) { return r.Read(); });
     }},
    {L"RegisterWrite",
     [](const TBuild& b) {
       return b.Command(b.Access(), [&r = b.state.registers](TDeviceLock&) { return r.Write(); });
     }},
    {L"InternalI2CAddress", [](const TBuild& b) { return MakeI2cAddress(b, b.state.internalBus); }, true},
    {L"InternalI2CByteCount", [](const TBuild& b) { return MakeI2cByteCount(b, b.state.internalBus); }, true},
    {L"InternalI2CByteSelector", [](const TBuild& b) { return MakeI2cByteSelector(b, b.state.internalBus); },
     true},
    {L"InternalI2CByte", [](const TBuild& b) { return MakeI2cByte(b, b.state.internalBus); }, true},
    {L"InternalI2CRead", [](const TBuild& b) { return MakeI2cRead(b, b.state.internalBus); }},
    {L"InternalI2CWrite", [](const TBuild& b) { return MakeI2cWrite(b, b.state.internalBus); }},
    {L"ControllerI2CAddress", [](const TBuild& b) { return MakeI2cAddress(b, b.state.controllerBus); }, true,
     Family::kControllerBus},
    {L"ControllerI2CByteCount", [](const TBuild& b) { return MakeI2cByteCount(b, b.state.controllerBus); }, true,
     Family::kControllerBus},
    {L"ControllerI2CByteSelector", [](const TBuild& b) { return MakeI2cByteSelector(b, b.state.controllerBus); },
     true, Family::kControllerBus},
    {L"ControllerI2CByte", [](const TBuild& b) { return MakeI2cByte(b, b.state.controllerBus); }, true,
     Family::kControllerBus},
    {L"ControllerI2CRead", [](const TBuild& b) { return MakeI2cRead(b, b.state.controllerBus); }, false,
     Family::kControllerBus},
    {L"ControllerI2CWrite", [](const TBuild& b) { return MakeI2cWrite(b, b.state.controllerBus); }, false,
     Family::kControllerBus},
};

} // namespace

std::span<const TRow> BusFeatureRows()
{
  return kRows;
}

} // namespace vxsim
