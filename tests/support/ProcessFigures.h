// SPDX-License-Identifier: MIT
// What a process uses, for tests that nothing grows and nothing spins.
#pragma once

/// Threads of this process.
int ThreadCount();
/// Open file descriptors of this process.
int DescriptorCount();
/// Bytes of this process that are in memory.
long ResidentBytes();
/// Processor time that this process has used so far.
double ProcessorSeconds();
