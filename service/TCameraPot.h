// SPDX-License-Identifier: MIT
// The description of one potentiometer.
#pragma once

#include <array>
#include <cstdint>

/// A digital potentiometer of a camera and, if there is one, the voltage rail that it sets, as a potentiometer
/// file describes them. A plain value. Only the low 8 bits of addresses are used. Clients have to respect the allowed
/// values.
struct TCameraPot
{
  static constexpr std::int32_t kUnknown = -1;

  std::array<char, 512> name{};
  std::uint32_t i2cAddress = 0;
  std::uint32_t i2cInternalAddress = 0; ///< working register; the power-on value is in the one 32 above
  float maximum = 0.0F;                 ///< of the physical quantity
  float minimum = 0.0F;
  std::int32_t currentValue = kUnknown; ///< last value read from the device
  std::int32_t defaultValue = 0;
  std::uint32_t maximumAllowedValue = 0;
  std::uint32_t minimumAllowedValue = 0;
  float railVoltageMaximum = 0.0F;
  float railVoltageMinimum = 0.0F;
  std::uint32_t railI2cAddress = 0; ///< 0 means no rail
  std::uint32_t railI2cInternalAddress = 0;
};
