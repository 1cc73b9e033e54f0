// SPDX-License-Identifier: MIT
// What the records of a call contain.
#pragma once

#include "trace/trace_format.h"
#include "trace/TTraceSignature.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

/// An argument as 64 bits: a number, or an address.
template <class T>
std::uint64_t TraceValue(const T& value) noexcept
{
  if constexpr (std::is_floating_point_v<T>)
    return std::bit_cast<std::uint64_t>(static_cast<double>(value));
  else if constexpr (std::is_pointer_v<T>)
    return reinterpret_cast<std::uintptr_t>(value);
  else if constexpr (std::is_class_v<T>)
    return reinterpret_cast<std::uintptr_t>(&value);
  else
    return static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
}

/// Whether a path is the user's home directory or in it; never for "" as that directory.
inline bool IsWithinHome(std::string_view path, std::string_view home)
{
  return !home.empty() && path.starts_with(home) && (path.size() == home.size() || path[home.size()] == '/');
}

/// The number of an object by its address: 1, 2 and so on in the order in which they appear in this process; 0 for null. Those
/// above 256 have the same one. Thread-safe; takes no lock.
std::uint32_t NumberOfObject(const void* object) noexcept;

/// Writes what is recorded when a call begins, of arguments as TraceValue() makes them, into a room of kMaxRecordBytes.
/// @param home  the directory that is "~" in texts; "" for none
/// @return the end of what was written
std::byte* WriteInputs(std::byte* begin, const TTraceSignature& signature, const std::uint64_t* values,
                       const std::string& home);
/// The same when it has ended.
std::byte* WriteOutputs(std::byte* begin, const TTraceSignature& signature, const std::uint64_t* values,
                        std::uint64_t result, const TraceFormat::TPixels& pixels, const std::string& home);
