// SPDX-License-Identifier: MIT
// Registers by address.
#pragma once

/// Blocks of 32-bit registers. Both operations return 0, or 1 on any failure.
class IRegisterMap
{
public:
  virtual ~IRegisterMap() = default;
  virtual int Read(unsigned int address, unsigned int count, unsigned int* values) = 0;
  virtual int Write(unsigned int address, unsigned int count, unsigned int* values) = 0;
};
