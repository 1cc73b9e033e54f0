// SPDX-License-Identifier: MIT
// Outputs of functions.
#pragma once

/// Writes @p value to an output that the caller may have left out.
template <class T, class Value>
void WriteOutput(T* output, Value value)
{
  if (output) *output = static_cast<T>(value);
}
