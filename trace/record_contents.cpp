// SPDX-License-Identifier: MIT
// What the records of a call contain.
#include "trace/record_contents.h"

#include "vxmcd_result_codes.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>

using TraceFormat::kMaxTextBytes;
using TraceFormat::kNullLength;

namespace {

/// Puts values behind one another into a record, whose room suffices for every call of the table.
class TRecordContents final
{
public:
  explicit TRecordContents(std::byte* begin) : position_(begin) {}

  std::byte* End() const { return position_; }

  void PutByte(bool value) { *position_++ = std::byte{value}; }
  template <class T>
  void Put(const T& value)
  {
    std::memcpy(position_, &value, sizeof value);
    position_ += sizeof value;
  }
  /// A number that is given as 64 bits.
  void PutNumber(const TTraceArgument& argument, std::uint64_t bits)
  {
    if (argument.Width() == 8)
      Put(bits);
    else if (argument.number == 'f')
      Put(static_cast<float>(std::bit_cast<double>(bits)));
    else
      Put(static_cast<std::uint32_t>(bits));
  }
  void PutNull() { Put(kNullLength); }
  void PutBytes(const void* bytes, std::size_t size)
  {
    Put(static_cast<std::uint16_t>(size));
    std::memcpy(position_, bytes, size);
    position_ += size;
  }
  /// A text of at most @p room characters. The home directory at its beginning is "~".
  void PutText(const char* text, std::size_t room, const std::string& home)
  {
    std::size_t length = strnlen(text, std::min(room, std::size_t{4096}));
    if (!IsWithinHome({text, length}, home)) {
      PutBytes(text, std::min(length, kMaxTextBytes));
      return;
    }
    length -= home.size();
    Put(static_cast<std::uint16_t>(std::min(length + 1, kMaxTextBytes)));
    *position_++ = std::byte{'~'};
    length = std::min(length, kMaxTextBytes - 1);
    std::memcpy(position_, text + home.size(), length);
    position_ += length;
  }
  /// The same of wide characters, as UTF-8.
  void PutWide(const wchar_t* text, std::size_t room)
  {
    std::byte* const length = position_;
    position_ += sizeof(std::uint16_t);
    std::byte* const begin = position_;
    for (std::size_t i = 0; i < room && text[i] != L'\0'; ++i) {
      if (static_cast<std::size_t>(position_ - begin) + 4 > kMaxTextBytes) break;
      PutCharacter(text[i]);
    }
    const auto bytes = static_cast<std::uint16_t>(position_ - begin);
    std::memcpy(length, &bytes, sizeof bytes);
  }

private:
  void PutCharacter(wchar_t character)
  {
    std::uint32_t c = 0;
    std::memcpy(&c, &character, sizeof c);
    const auto put = [this](std::uint32_t byte) { *position_++ = static_cast<std::byte>(byte); };
    if (c < 0x80) {
      put(c);
      return;
    }
    if (c > 0x10FFFF) c = 0xFFFD;
    if (c < 0x800) {
      put(0xC0 | c >> 6);
    } else {
      if (c < 0x10000) {
        put(0xE0 | c >> 12);
      } else {
        put(0xF0 | c >> 18);
        put(0x80 | (c >> 12 & 0x3F));
      }
      put(0x80 | (c >> 6 & 0x3F));
    }
    put(0x80 | (c & 0x3F));
  }

  std::byte* position_;
};

// The value of the argument that has the length of another.
std::size_t LengthOf(const TTraceArgument& argument, const std::uint64_t* values)
{
  if (argument.lengthArgument < 0) return kMaxTextBytes;
  const auto length = static_cast<std::int64_t>(values[argument.lengthArgument]);
  return length < 0 ? 0 : static_cast<std::size_t>(std::min<std::int64_t>(length, 1 << 20)) * argument.factor;
}

template <class T>
T* PointerOf(std::uint64_t value)
{
  return reinterpret_cast<T*>(value); // NOLINT(performance-no-int-to-ptr): it was made of a pointer
}

void PutArray(TRecordContents& contents, const TTraceArgument& argument, std::uint64_t value, std::size_t count)
{
  const std::size_t bytes = std::min(count * argument.bytes, kMaxTextBytes / argument.bytes * argument.bytes);
  contents.PutBytes(PointerOf<const void>(value), bytes);
}

void PutWords(TRecordContents& contents, std::uint64_t value)
{
  constexpr std::size_t kMaxBytes = 48;
  std::uint32_t size = 0;
  std::memcpy(&size, PointerOf<const void>(value), sizeof size);
  contents.PutBytes(PointerOf<const void>(value), std::clamp<std::size_t>(size / 4 * 4, 4, kMaxBytes));
}

// A number behind a pointer, as 64 bits.
std::uint64_t NumberAt(const TTraceArgument& argument, std::uint64_t value)
{
  const void* const place = PointerOf<const void>(value);
  const auto read = [place](auto number) {
    std::memcpy(&number, place, sizeof number);
    return TraceValue(number);
  };
  if (argument.number == 'f') return argument.bytes == 4 ? read(float{}) : read(double{});
  if (argument.bytes == 4) return argument.number == 'i' ? read(std::int32_t{}) : read(std::uint32_t{});
  return argument.bytes == 8   ? read(std::uint64_t{})
         : argument.bytes == 2 ? read(std::uint16_t{})
                               : read(std::uint8_t{});
}

void PutInput(TRecordContents& contents, const TTraceArgument& argument, std::uint64_t value,
              const std::string& home)
{
  if (argument.type == TraceType::Number && !argument.isOutput) {
    contents.PutNumber(argument, value);
  } else if (argument.type == TraceType::Object) {
    contents.Put(NumberOfObject(PointerOf<const void>(value)));
  } else if (argument.isOutput || argument.type != TraceType::Text) {
    contents.PutByte(value != 0); // an array is read when the call has taken it: its length may be wrong
  } else if (value == 0) {
    contents.PutNull();
  } else if (argument.isWide) {
    contents.PutWide(PointerOf<const wchar_t>(value), kMaxTextBytes);
  } else {
    contents.PutText(PointerOf<const char>(value), kMaxTextBytes * 2, home);
  }
}

// What a potentiometer's property is, by the number that asks for it.
void PutPot(TRecordContents& contents, std::uint64_t info, std::uint64_t value)
{
  if (info == 0) {
    contents.PutText(PointerOf<const char>(value), kMaxTextBytes, "");
  } else if (info == 6 || info > 11) {
    contents.PutNull();
  } else {
    std::uint32_t number = 0;
    std::memcpy(&number, PointerOf<const void>(value), sizeof number);
    char text[32];
    const bool isReal = info == 3 || info == 4 || info == 9 || info == 10;
    const int length =
        isReal ? std::snprintf(text, sizeof text, "%.7g", static_cast<double>(std::bit_cast<float>(number)))
               : std::snprintf(text, sizeof text, "%d", static_cast<int>(number));
    contents.PutBytes(text, static_cast<std::size_t>(length));
  }
}

// Numbers are there whatever the call answered; longer ones are only read when it has read or written them.
void PutOutput(TRecordContents& contents, const TTraceArgument& argument, const std::uint64_t* values,
               std::uint64_t value, bool isDone, const TraceFormat::TPixels& pixels, const std::string& home)
{
  switch (argument.type) {
  case TraceType::Number:
    contents.PutByte(value != 0);
    if (value != 0) contents.PutNumber(argument, NumberAt(argument, value));
    return;
  case TraceType::Pixels:
    contents.Put(pixels);
    return;
  case TraceType::Pointer:
    return;
  default:
    break;
  }
  if (value == 0 || !isDone) {
    contents.PutNull();
  } else if (argument.type == TraceType::Pot) {
    PutPot(contents, values[argument.lengthArgument], value);
  } else if (argument.type == TraceType::Words) {
    PutWords(contents, value);
  } else if (argument.type == TraceType::Array) {
    PutArray(contents, argument, value, LengthOf(argument, values));
  } else if (argument.isString) {
    contents.PutWide(PointerOf<const std::wstring>(value)->c_str(), kMaxTextBytes);
  } else if (argument.isWide) {
    contents.PutWide(PointerOf<const wchar_t>(value), LengthOf(argument, values));
  } else {
    contents.PutText(PointerOf<const char>(value), LengthOf(argument, values), home);
  }
}

} // namespace

std::uint32_t NumberOfObject(const void* object) noexcept
{
  constexpr std::uint32_t kMaxObjects = 256;
  static std::atomic<const void*> objects[kMaxObjects];
  if (!object) return 0;
  for (std::uint32_t index = 0; index < kMaxObjects; ++index) {
    const void* known = objects[index].load(std::memory_order_relaxed);
    if (!known && objects[index].compare_exchange_strong(known, object, std::memory_order_relaxed)) known = object;
    if (known == object) return index + 1;
  }
  return kMaxObjects + 1;
}

std::byte* WriteInputs(std::byte* begin, const TTraceSignature& signature, const std::uint64_t* values,
                       const std::string& home)
{
  TRecordContents contents(begin);
  for (const TTraceArgument& argument : signature.Arguments()) PutInput(contents, argument, *values++, home);
  return contents.End();
}

std::byte* WriteOutputs(std::byte* begin, const TTraceSignature& signature, const std::uint64_t* values,
                        std::uint64_t result, const TraceFormat::TPixels& pixels, const std::string& home)
{
  TRecordContents contents(begin);
  const TTraceArgument& kind = signature.Result();
  if (kind.type == TraceType::Text)
    contents.PutText(PointerOf<const char>(result), kMaxTextBytes, home);
  else if (kind.type == TraceType::Pointer)
    contents.PutByte(result != 0);
  else if (kind.type == TraceType::Object)
    contents.Put(NumberOfObject(PointerOf<const void>(result)));
  else if (kind.type != TraceType::Void)
    contents.PutNumber(kind, result);
  // The functions of the feature library, and those of potentiometers, have 0 for success; others return a length.
  const bool isDone = kind.type == TraceType::Number ? result != 0 : result == RC_SUCCESS || result == 0;
  const std::uint64_t* value = values;
  for (const TTraceArgument& argument : signature.Arguments()) {
    if (argument.IsAtEnd()) PutOutput(contents, argument, values, *value, isDone, pixels, home);
    ++value;
  }
  return contents.End();
}
