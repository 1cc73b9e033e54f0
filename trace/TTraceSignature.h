// SPDX-License-Identifier: MIT
// What is recorded of a function's arguments.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

enum class TraceType : std::uint8_t
{
  Number,  ///< an integer or floating-point number
  Text,    ///< narrow or wide characters with a terminator
  Array,   ///< numbers of one type
  Words,   ///< 32-bit numbers; the first is the size in bytes, set by the caller
  Pixels,  ///< pixels, of which length and checksum are recorded
  Pot,     ///< a property of a potentiometer, whose type another argument says
  Pointer, ///< whether it is null
  Object,  ///< a pointer of which a number is recorded, so that it can be told from others
  Status,  ///< a code of the feature library (of a result)
  Code,    ///< a result code (of a result)
  Void,    ///< nothing (of a result)
};

/// An argument, or the result, of a function whose calls are recorded.
struct TTraceArgument
{
  std::string name; ///< "" for the result
  TraceType type = TraceType::Pointer;
  bool isOutput = false;   ///< written by the function, through a pointer
  bool isWide = false;     ///< of a text: wchar_t
  bool isString = false;   ///< of a text: a std::wstring
  char number = 'i';       ///< of a number: 'i' signed, 'u' unsigned, 'f' floating-point
  std::uint8_t bytes = 8;  ///< of a number
  int lengthArgument = -1; ///< the argument that has the length of a text or an array; -1: none
  std::uint8_t factor = 1; ///< by which the length is multiplied

  /// Of a number: how many bytes a record has of it.
  std::size_t Width() const { return bytes == 8 ? 8 : 4; }
  /// Whether its value is recorded when the call ends.
  bool IsAtEnd() const { return isOutput || type == TraceType::Array; }
  bool operator==(const TTraceArgument&) const = default;
};

/// Parsed from a text: the result, then "name:type" of each argument, with spaces between. Types are i32, u8, f64 and
/// so on; text and wtext; pointer, words, pixels, pot, wstring. A star in front marks an output, and [ARGUMENT] or
/// [ARGUMENT*2] behind it the argument that has the length. "unused" as the result stands for a function that does nothing
/// but return a code, and whose arguments are those of the first registers, if there are any. Reentrant.
class TTraceSignature final
{
public:
  /// Nothing for a text that is no signature.
  static std::optional<TTraceSignature> Parse(std::string_view text);

  const TTraceArgument& Result() const { return result_; }
  const std::vector<TTraceArgument>& Arguments() const { return arguments_; }
  /// Whether the function does nothing but return a code.
  bool IsUnused() const { return isUnused_; }
  /// Whether one of them is an array of pixels.
  bool HasPixels() const { return hasPixels_; }
  bool operator==(const TTraceSignature&) const = default;

private:
  TTraceArgument result_;
  std::vector<TTraceArgument> arguments_;
  bool hasPixels_ = false;
  bool isUnused_ = false;
};
