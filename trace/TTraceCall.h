// SPDX-License-Identifier: MIT
// A call as a trace has it.
#pragma once

#include "trace/trace_format.h"
#include "trace/TTraceSignature.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

/// A function of which a trace may have calls.
struct TTraceFunction
{
  bool isApi = true; ///< of the library; else of the feature library
  std::string name;
  TTraceSignature signature;
};

enum class CallState
{
  Open,    ///< the trace has no end of it: it did not return
  Ended,   ///< it returned
  Thrown,  ///< an exception left it
  Unknown, ///< its end may be in a part of the trace that was dropped
};

/// A value of an argument, or a result.
struct TTraceValue
{
  enum class Kind
  {
    Missing, ///< not recorded
    Null,
    Set,    ///< a pointer that is not null
    Object, ///< such a pointer with a number
    Signed,
    Unsigned,
    Real,
    Text,
    Array,
    Pixels,
  };

  Kind kind = Kind::Missing;
  std::int64_t whole = 0; ///< Signed; Unsigned as the same bits; the number of an Object
  double real = 0.0;
  bool isSingle = false; ///< of a Real: in single precision
  std::string text;
  std::vector<std::int64_t> numbers;
  TraceFormat::TPixels pixels = {};

  bool operator==(const TTraceValue& other) const { return Text() == other.Text(); }
  /// As the tool prints it: 0.02, "Mono16", null, 2560x... of pixels their length and checksum.
  std::string Text() const;
};

/// A call. Borrows the records from its file.
struct TTraceCall
{
  const TTraceFunction* function = nullptr;
  std::uint32_t thread = 0; ///< from 1, in the order of their first calls
  unsigned int depth = 0;   ///< calls of its thread that it is inside of
  std::uint16_t number = 0; ///< tells it from other calls of its thread, but for 65536 of them
  CallState state = CallState::Open;
  double beginSeconds = 0.0;          ///< s since the start of the trace
  double endSeconds = 0.0;            ///< only when it has one
  std::span<const std::byte> inputs;  ///< what the first record has behind its header
  std::span<const std::byte> outputs; ///< the same of the last one

  /// Whether the trace has its beginning: its time and inputs.
  bool HasBegin() const { return inputs.data() != nullptr; }
  /// What it returned; Missing without an end.
  TTraceValue Result() const;
  /// The code that it returned: of the library or of the feature library; 0 when it has none.
  std::uint32_t Code() const;
  /// Whether it returned a code that is neither success nor, as for a temperature, an answer.
  bool HasFailed() const;
  /// The values of its arguments: inputs as they were, outputs as the call left them.
  std::vector<TTraceValue> Values() const;
  struct TPlace
  {
    std::size_t argument;             ///< its number; that of the arguments for the result
    std::span<const std::byte> bytes; ///< of a text behind its two bytes of length, or of a number
    std::span<const std::byte> rest;  ///< of the record, behind it
  };
  /// Where the records have texts, and numbers that the call wrote, in their order.
  std::vector<TPlace> Places() const;
  /// An argument by its name; Missing without it.
  TTraceValue Value(const std::string& name) const;
};
