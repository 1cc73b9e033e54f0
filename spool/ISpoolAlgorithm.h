// SPDX-License-Identifier: MIT
// How frames get to the spooler.
#pragma once

/// Accepts the frames of a run for writing. Spool() and Finish() belong to the acquisition thread, Abort() is
/// thread-safe.
class ISpoolAlgorithm
{
public:
  virtual ~ISpoolAlgorithm() = default;
  /// Accepts @p sizeBytes bytes as the frame of that number, from 0. Returns 1 when they are accepted, 0 when not. How
  /// long @p buffer must stay unchanged depends on the algorithm.
  virtual int Spool(int index, unsigned char* buffer, int sizeBytes) = 0;

  /// Whether frames stay in their slots after Spool(), and the algorithm requeues these later. Constant.
  virtual bool RequeuesSlots() const { return false; }
  /// Drops the frames that are still in their slots.
  virtual void Abort() {}
  /// Blocks until everything that was accepted and not dropped is written; nothing is accepted any more.
  virtual void Finish() {}
};
