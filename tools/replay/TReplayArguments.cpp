// SPDX-License-Identifier: MIT
// The arguments of a call that is made again.
#include "tools/replay/TReplayArguments.h"

#include "trace/record_contents.h"
#include "utility/utf8.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace vxtool {

namespace {

using Kind = TTraceValue::Kind;

// No program has an array as large as this one, whatever a damaged trace says.
constexpr std::size_t kMaxBytes = std::size_t{64} << 30;
// What a function may write that does not know the room: names, models, properties of potentiometers.
constexpr std::size_t kTextBytes = 4096;
constexpr const char* kNoMemory = "there is no memory for its array";
constexpr const char* kCut = "a text or an array is longer than its record";

std::uint64_t AddressOf(const void* pointer)
{
  return reinterpret_cast<std::uintptr_t>(pointer);
}

} // namespace

void* TReplayRoom::Of(std::size_t bytes)
{
  bytes = std::max<std::size_t>(bytes, 1);
  if (bytes > bytes_) {
    memory_.reset();
    memory_.reset(bytes > kMaxBytes ? nullptr : std::malloc(bytes));
    bytes_ = memory_ ? bytes : 0;
  }
  return memory_.get();
}

TReplayArguments::TReplayArguments(const TTraceCall& call, const TReplayFunction& function,
                                   const TContext& context)
    : call_(call),
      function_(function),
      context_(context),
      arguments_(call.function->signature.Arguments()),
      recorded_(call.Values())
{
  for (std::size_t i = 0; i < arguments_.size() && !whyUnknown_; ++i) values_.push_back(ValueOf(i));
  // A function that only returns a code ignores its arguments, and writes nothing to null. They may not be recorded.
  if (values_.size() < function.signature.Arguments().size())
    values_.resize(function.signature.Arguments().size());
}

std::uint64_t TReplayArguments::ValueOf(std::size_t index)
{
  const TTraceArgument& argument = arguments_[index];
  const Kind kind = recorded_[index].kind;
  if (kind == Kind::Missing) return Unknown("its arguments are not in the trace");
  if (argument.type == TraceType::Number && !argument.isOutput) return NumberOf(index);
  if (argument.isString) return AddressOf(&texts_.emplace_back());
  if (kind == Kind::Null) return 0;
  switch (argument.type) {
  case TraceType::Number:
    return OutputNumber(index);
  case TraceType::Text:
    if (!argument.isOutput) return InputText(index);
    return AddressOf(
        Memory(argument.lengthArgument < 0 ? kTextBytes : LengthOf(argument) * (argument.isWide ? 4 : 1)));
  case TraceType::Pot:
    return AddressOf(Memory(kTextBytes));
  case TraceType::Array:
    return argument.isOutput ? AddressOf(Memory(LengthOf(argument) * argument.bytes)) : InputArray(index);
  case TraceType::Words:
    return Words(index);
  case TraceType::Pixels:
    return Pixels(index);
  case TraceType::Object:
    return AddressOf(context_.objects.Context(recorded_[index].whole));
  case TraceType::Pointer:
    return Pointer(index);
  default:
    return Unknown("its arguments are of another kind");
  }
}

std::uint64_t TReplayArguments::Unknown(const char* why)
{
  whyUnknown_ = why;
  return 0;
}

void* TReplayArguments::Memory(std::size_t bytes)
{
  void* const memory = bytes > kMaxBytes ? nullptr : std::calloc(std::max<std::size_t>(bytes, 8), 1);
  if (!memory)
    Unknown(kNoMemory);
  else
    memory_.emplace_back(memory, std::free);
  return memory;
}

// In elements.
std::size_t TReplayArguments::LengthOf(const TTraceArgument& argument) const
{
  const std::int64_t length = recorded_[static_cast<std::size_t>(argument.lengthArgument)].whole;
  return static_cast<std::size_t>(std::clamp<std::int64_t>(length, 0, kMaxBytes)) * argument.factor;
}

std::uint64_t TReplayArguments::NumberOf(std::size_t index)
{
  const TTraceValue& value = recorded_[index];
  if (function_.writesFixedValue) return value.whole == 0 ? 0 : AddressOf(Memory(sizeof(std::uint64_t)));
  if (value.kind == Kind::Real) return std::bit_cast<std::uint64_t>(value.real);
  if (arguments_[index].name != "handle") return static_cast<std::uint64_t>(value.whole);
  return static_cast<std::uint64_t>(context_.objects.Replayed(TReplayObjects::kCamera, value.whole));
}

std::uint64_t TReplayArguments::InputText(std::size_t index)
{
  const std::string& text = recorded_[index].text;
  if (text.size() + 4 > TraceFormat::kMaxTextBytes) return Unknown(kCut);
  if (arguments_[index].isWide) return AddressOf(texts_.emplace_back(FromUtf8(text)).c_str());
  const std::string& name = arguments_[index].name;
  const bool isPath = name == "path" || name == "fileName";
  const std::string passed = isPath ? context_.files.PathFor(call_.function->name, text) : text;
  void* const memory = Memory(passed.size() + 1);
  if (memory) std::memcpy(memory, passed.c_str(), passed.size() + 1);
  return AddressOf(memory);
}

// Its contents were recorded when the call had taken it.
std::uint64_t TReplayArguments::InputArray(std::size_t index)
{
  const TTraceArgument& argument = arguments_[index];
  const std::vector<std::int64_t>& numbers = recorded_[index].numbers;
  if (recorded_[index].kind != Kind::Array) return Unknown("its array is not recorded when it fails");
  if (numbers.size() < LengthOf(argument)) return Unknown(kCut);
  auto* const memory = static_cast<std::byte*>(Memory(numbers.size() * argument.bytes));
  for (std::size_t i = 0; i < numbers.size() && memory; ++i)
    std::memcpy(memory + i * argument.bytes, &numbers[i], argument.bytes); // little-endian
  return AddressOf(memory);
}

// Begins with what it has after the call: a function that writes nothing changes nothing in the program either.
std::uint64_t TReplayArguments::OutputNumber(std::size_t index)
{
  void* const memory = Memory(sizeof(std::uint64_t));
  const TTraceValue& value = recorded_[index];
  const auto single = static_cast<float>(value.real);
  if (!memory || value.kind == Kind::Set) return AddressOf(memory);
  if (value.kind != Kind::Real)
    std::memcpy(memory, &value.whole, sizeof value.whole);
  else if (arguments_[index].bytes == 4)
    std::memcpy(memory, &single, sizeof single);
  else
    std::memcpy(memory, &value.real, sizeof value.real);
  return AddressOf(memory);
}

std::uint64_t TReplayArguments::Words(std::size_t index)
{
  const auto& numbers = recorded_[index].numbers;
  const std::size_t ours = function_.targetBytes[index];
  const auto bytes = static_cast<std::uint32_t>(numbers.empty() ? static_cast<std::int64_t>(ours) : numbers[0]);
  if (bytes > kTextBytes) return Unknown("its structure is larger than any");
  void* const memory = Memory(std::max<std::size_t>({ours, bytes, sizeof bytes}));
  if (memory) std::memcpy(memory, &bytes, sizeof bytes);
  return AddressOf(memory);
}

std::uint64_t TReplayArguments::Pixels(std::size_t index)
{
  std::uint64_t size = 0;
  for (std::size_t i = 0; i < arguments_.size(); ++i)
    if (arguments_[i].name == "size") size = static_cast<std::uint64_t>(recorded_[i].whole);
  void* const memory =
      size > kMaxBytes ? nullptr : context_.room.Of(static_cast<std::size_t>(size) * function_.targetBytes[index]);
  return memory ? AddressOf(memory) : Unknown(kNoMemory);
}

std::uint64_t TReplayArguments::Pointer(std::size_t index)
{
  if (arguments_[index].name == "callback") return reinterpret_cast<std::uintptr_t>(context_.observer);
  return AddressOf(Memory(1)); // an empty text: what it is is not recorded, since the function does not read it
}

std::vector<std::byte> TReplayArguments::Outputs(std::uint64_t result) const
{
  std::vector<std::byte> outputs(TraceFormat::kMaxRecordBytes);
  const std::byte* const end =
      WriteOutputs(outputs.data(), call_.function->signature, values_.data(), result, {}, context_.files.Home());
  outputs.resize(static_cast<std::size_t>(end - outputs.data()));
  return outputs;
}

} // namespace vxtool
