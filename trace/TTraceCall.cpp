// SPDX-License-Identifier: MIT
// A call as a trace has it.
#include "trace/TTraceCall.h"

#include "vxmcd_result_codes.h"

#include <bit>
#include <charconv>
#include <cstdio>
#include <cstring>

namespace {

using Kind = TTraceValue::Kind;

/// Reads values one after the other; behind the end there are zeros, and IsValid() is false.
class TCursor final
{
public:
  explicit TCursor(std::span<const std::byte> bytes) : bytes_(bytes) {}

  bool IsValid() const { return isValid_; }
  std::span<const std::byte> Rest() const { return bytes_; }
  template <class T>
  T Take()
  {
    T value{};
    if (bytes_.size() < sizeof value) {
      isValid_ = false;
      bytes_ = {};
      return value;
    }
    std::memcpy(&value, bytes_.data(), sizeof value);
    bytes_ = bytes_.subspan(sizeof value);
    return value;
  }
  std::span<const std::byte> TakeBytes(std::size_t size)
  {
    if (bytes_.size() < size) {
      isValid_ = false;
      size = bytes_.size();
    }
    const auto taken = bytes_.first(size);
    bytes_ = bytes_.subspan(size);
    return taken;
  }

private:
  std::span<const std::byte> bytes_;
  bool isValid_ = true;
};

TTraceValue OfPointer(bool isSet)
{
  TTraceValue value;
  value.kind = isSet ? Kind::Set : Kind::Null;
  return value;
}

TTraceValue TakeNumber(TCursor& cursor, const TTraceArgument& argument)
{
  TTraceValue value;
  value.isSingle = argument.Width() == 4;
  value.kind = argument.number == 'f' ? Kind::Real : argument.number == 'u' ? Kind::Unsigned : Kind::Signed;
  if (value.kind == Kind::Real)
    value.real = value.isSingle ? static_cast<double>(cursor.Take<float>()) : cursor.Take<double>();
  else if (!value.isSingle)
    value.whole = cursor.Take<std::int64_t>();
  else if (value.kind == Kind::Signed)
    value.whole = cursor.Take<std::int32_t>();
  else
    value.whole = cursor.Take<std::uint32_t>();
  return value;
}

TTraceValue TakeObject(TCursor& cursor)
{
  TTraceValue value;
  value.whole = cursor.Take<std::uint32_t>();
  value.kind = value.whole == 0 ? Kind::Null : Kind::Object;
  return value;
}

TTraceValue TakeText(TCursor& cursor)
{
  TTraceValue value;
  const auto length = cursor.Take<std::uint16_t>();
  if (length == TraceFormat::kNullLength) return OfPointer(false);
  value.kind = Kind::Text;
  const auto bytes = cursor.TakeBytes(length);
  value.text.assign(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  return value;
}

TTraceValue TakeArray(TCursor& cursor, const TTraceArgument& argument)
{
  TTraceValue value = TakeText(cursor);
  if (value.kind != Kind::Text) return value;
  value.kind = Kind::Array;
  const std::size_t size = argument.type == TraceType::Words ? 4 : argument.bytes;
  for (std::size_t at = 0; at + size <= value.text.size(); at += size) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, value.text.data() + at, size);
    const bool isSigned = argument.type == TraceType::Array && argument.number == 'i' && size == 4;
    value.numbers.push_back(isSigned ? static_cast<std::int32_t>(bits) : static_cast<std::int64_t>(bits));
  }
  value.text.clear();
  return value;
}

TTraceValue TakeInput(TCursor& cursor, const TTraceArgument& argument)
{
  if (argument.type == TraceType::Number && !argument.isOutput) return TakeNumber(cursor, argument);
  if (argument.type == TraceType::Object) return TakeObject(cursor);
  if (argument.isOutput || argument.type != TraceType::Text) return OfPointer(cursor.Take<std::uint8_t>() != 0);
  return TakeText(cursor);
}

TTraceValue TakeOutput(TCursor& cursor, const TTraceArgument& argument)
{
  TTraceValue value;
  switch (argument.type) {
  case TraceType::Number:
    if (cursor.Take<std::uint8_t>() == 0) return OfPointer(false);
    return TakeNumber(cursor, argument);
  case TraceType::Pixels:
    value.kind = Kind::Pixels;
    value.pixels = cursor.Take<TraceFormat::TPixels>();
    return value;
  case TraceType::Array:
  case TraceType::Words:
    return TakeArray(cursor, argument);
  case TraceType::Text:
  case TraceType::Pot:
    return TakeText(cursor);
  default:
    return value;
  }
}

TTraceValue TakeResult(TCursor& cursor, const TTraceArgument& result)
{
  switch (result.type) {
  case TraceType::Void:
    return {};
  case TraceType::Text:
    return TakeText(cursor);
  case TraceType::Pointer:
    return OfPointer(cursor.Take<std::uint8_t>() != 0);
  case TraceType::Object:
    return TakeObject(cursor);
  default:
    return TakeNumber(cursor, result);
  }
}

std::string Quoted(const std::string& text)
{
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      quoted += '\\';
      quoted += c;
    } else if (static_cast<unsigned char>(c) < ' ' || c == '\x7f') {
      char code[8];
      std::snprintf(code, sizeof code, "\\x%02x", static_cast<unsigned int>(c) & 0xFFU);
      quoted += code;
    } else {
      quoted += c;
    }
  }
  return quoted + "\"";
}

std::string RealText(double real, bool isSingle)
{
  char text[64];
  const auto result = isSingle ? std::to_chars(text, text + sizeof text, static_cast<float>(real))
                               : std::to_chars(text, text + sizeof text, real);
  return {text, result.ptr};
}

bool IsAnswer(std::uint32_t code)
{
  switch (code) {
  case 0:
  case RC_SUCCESS:
  case RC_TEMP_OFF:
  case RC_TEMP_STABILIZED:
  case RC_TEMP_NOT_REACHED:
  case RC_TEMP_DRIFT:
  case RC_TEMP_NOT_STABILIZED:
    return true;
  default:
    return false;
  }
}

} // namespace

std::string TTraceValue::Text() const
{
  switch (kind) {
  case Kind::Missing:
    return "?";
  case Kind::Null:
    return "null";
  case Kind::Set:
    return "set";
  case Kind::Object:
    return "object " + std::to_string(whole);
  case Kind::Signed:
    return std::to_string(whole);
  case Kind::Unsigned:
    return std::to_string(static_cast<std::uint64_t>(whole));
  case Kind::Real:
    return RealText(real, isSingle);
  case Kind::Text:
    return Quoted(text);
  case Kind::Array:
    break;
  case Kind::Pixels: {
    if (pixels.images == 0) return "nothing copied";
    char checksum[32] = "";
    if (pixels.checksum != 0)
      std::snprintf(checksum, sizeof checksum, ", %016llx", static_cast<unsigned long long>(pixels.checksum));
    const std::string images = pixels.images == 1 ? "" : std::to_string(pixels.images) + " images, ";
    return images + std::to_string(pixels.bytes) + " bytes" + checksum;
  }
  }
  std::string list = "{";
  for (const std::int64_t number : numbers) list += (list.size() > 1 ? ", " : "") + std::to_string(number);
  return list + "}";
}

TTraceValue TTraceCall::Result() const
{
  if (state != CallState::Ended) return {};
  TCursor cursor(outputs);
  return TakeResult(cursor, function->signature.Result());
}

std::uint32_t TTraceCall::Code() const
{
  const TraceType type = function->signature.Result().type;
  if (type != TraceType::Code && type != TraceType::Status) return 0;
  return static_cast<std::uint32_t>(Result().whole);
}

bool TTraceCall::HasFailed() const
{
  return state == CallState::Ended && !IsAnswer(Code());
}

std::vector<TTraceValue> TTraceCall::Values() const
{
  std::vector<TTraceValue> values;
  TCursor begin(inputs);
  for (const TTraceArgument& argument : function->signature.Arguments())
    values.push_back(HasBegin() ? TakeInput(begin, argument) : TTraceValue());
  if (state != CallState::Ended) return values;
  TCursor end(outputs);
  TakeResult(end, function->signature.Result());
  std::size_t index = 0;
  for (const TTraceArgument& argument : function->signature.Arguments()) {
    if (argument.IsAtEnd()) {
      TTraceValue value = TakeOutput(end, argument);
      // Longer outputs of a call that failed are not recorded, though there was a place for them; into a null array
      // nothing was copied.
      const bool isKnown = value.kind != Kind::Missing &&
                           !(value.kind == Kind::Null && values[index].kind == Kind::Set) &&
                           !(value.kind == Kind::Pixels && values[index].kind == Kind::Null);
      if (isKnown && end.IsValid()) values[index] = std::move(value);
    }
    ++index;
  }
  return values;
}

std::vector<TTraceCall::TPlace> TTraceCall::Places() const
{
  std::vector<TPlace> places;
  const auto note = [&places](std::size_t argument, const TTraceValue& value, std::span<const std::byte> before,
                              TCursor& cursor) {
    const std::size_t taken = before.size() - cursor.Rest().size();
    const std::size_t head = value.kind == Kind::Text ? sizeof(std::uint16_t) : sizeof(std::uint8_t);
    if (cursor.IsValid() && value.kind != Kind::Null && taken > head)
      places.push_back({argument, before.subspan(head, taken - head), cursor.Rest()});
  };
  const auto& arguments = function->signature.Arguments();
  TCursor cursor(inputs);
  for (std::size_t i = 0; i < arguments.size() && HasBegin(); ++i) {
    const auto before = cursor.Rest();
    const TTraceValue value = TakeInput(cursor, arguments[i]);
    if (value.kind == Kind::Text) note(i, value, before, cursor);
  }
  if (state != CallState::Ended) return places;
  TCursor outputCursor(outputs);
  const auto whole = outputCursor.Rest();
  const TTraceValue result = TakeResult(outputCursor, function->signature.Result());
  if (result.kind == Kind::Text) note(arguments.size(), result, whole, outputCursor);
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (!arguments[i].IsAtEnd()) continue;
    const auto before = outputCursor.Rest();
    const TTraceValue value = TakeOutput(outputCursor, arguments[i]);
    const bool isNumber = arguments[i].type == TraceType::Number;
    if (value.kind == Kind::Text || isNumber) note(i, value, before, outputCursor);
  }
  return places;
}

TTraceValue TTraceCall::Value(const std::string& name) const
{
  const auto& arguments = function->signature.Arguments();
  for (std::size_t i = 0; i < arguments.size(); ++i)
    if (arguments[i].name == name) return Values()[i];
  return {};
}
