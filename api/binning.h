// SPDX-License-Identifier: MIT
// Binning factors as the camera takes them.
#pragma once

// All of these write to the current camera and return the feature library's code; only a factor out of range is
// reported as a result code, that of its argument in SetImage().

/// @return RC_P1_INVALID when the factor is out of range
int setHorizontalBinning(int bin);
/// @return RC_P2_INVALID when the factor is out of range
int setVerticalBinning(int bin);
/// Sets square binning by its text, "2x2". @return RC_P1_INVALID when the factor is out of range
int setCombinedBinning(int bin);
/// Sets both factors, or square binning by the horizontal one on a camera that has no factor of its own for each.
int setBinningOptions(int hbin, int vbin);
