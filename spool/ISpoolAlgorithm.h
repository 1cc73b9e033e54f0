// SPDX-License-Identifier: MIT
// How frames get to the spooler.
#pragma once

/// Takes frames over for writing. Spool() is called on the acquisition thread.
class ISpoolAlgorithm
{
public:
  virtual ~ISpoolAlgorithm() = default;
  /// Takes @p sizeBytes bytes over as the image of that number, from 0. Returns 1 when they are accepted, 0 when
  /// not. How long @p buffer must stay as it is, the algorithm says.
  virtual int Spool(int index, unsigned char* buffer, int sizeBytes) = 0;
};
