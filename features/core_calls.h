// SPDX-License-Identifier: MIT
// The calls of the shared library into the feature library.
#pragma once

#include <cstdint>

/// The numbers of the feature library's functions in the table of traced functions, whose first ones they are.
namespace CoreNumber {

enum : std::uint16_t
{
#define CORE_CALL(name, parameters, arguments, signature) name,
#include "features/core_calls.def"
  kCount
};

} // namespace CoreNumber

/// An address in the feature library.
const void* FeatureLibraryFunction();
