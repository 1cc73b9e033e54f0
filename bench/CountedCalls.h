// SPDX-License-Identifier: MIT
// Counts what the path of a frame must not do: allocate, work with files, log.
#pragma once

/// How much of it has happened in the process so far.
struct CountedCalls
{
  long allocations = 0;       ///< of heap memory, outside calls of the feature library
  long cameraAllocations = 0; ///< of heap memory during calls of the feature library
  long opens = 0;             ///< of files
  long readsAndWrites = 0;    ///< system calls, counted by the kernel
  long logBytes = 0;          ///< written to the log, which is set to write everything

  /// Makes ready to count. Ends the program if a counter does not see what it is there for.
  static void begin();
  static CountedCalls now();
  /// What has happened since @p before, apart from the looks themselves.
  CountedCalls since(const CountedCalls& before) const;
};
