// SPDX-License-Identifier: MIT
// The feature library below the flat functions.
#include "tools/CameraFeature.h"
#include "tools/check/CameraRuns.h"
#include "tools/check/Checks.h"
#include "tools/KnownFeatures.h"
#include "tools/TFeatureDevice.h"
#include "utility/utf8.h"

#include <algorithm>
#include <cstdint>

namespace vxtool {

namespace {

constexpr int kMaxTextLength = 4096;
constexpr unsigned int kFrameMs = 5000;

/// A camera that only the feature library has open, with frame buffers.
class TOpenDevice final
{
public:
  TOpenDevice(TCheckContext& check, std::size_t buffers) : check_(check)
  {
    check.Need("ShutDown", CHECK_CALL(check, ShutDown));
    const int code = device_.Open(check.Camera());
    check.Need("VX_Open answered " + TCheckContext::CodeText(code), code == VX_SUCCESS);
    CHECK_CALL(check, VX_SetEnumeratedString, Handle(), L"CycleMode", L"Continuous");
    long long bytes = 0;
    check.Need("the camera does not say how long an image is",
               CHECK_CALL(check, VX_GetInt, Handle(), L"ImageSizeBytes", &bytes) == VX_SUCCESS && bytes > 0);
    bytes_ = static_cast<int>(bytes);
    for (std::size_t number = 0; number < buffers; ++number)
      buffers_.emplace_back(static_cast<std::size_t>(bytes_) / sizeof(std::uint64_t) + 1);
  }
  ~TOpenDevice()
  {
    VX_Command(Handle(), L"AcquisitionStop");
    VX_Flush(Handle());
  }
  TOpenDevice(const TOpenDevice&) = delete;
  TOpenDevice& operator=(const TOpenDevice&) = delete;

  int Handle() const { return device_.Handle(); }
  int Bytes() const { return bytes_; }
  unsigned char* Buffer(std::size_t number) { return reinterpret_cast<unsigned char*>(buffers_[number].data()); }
  void QueueAll()
  {
    for (std::size_t number = 0; number < buffers_.size(); ++number) {
      const int code = CHECK_CALL(check_, VX_QueueBuffer, Handle(), Buffer(number), bytes_);
      check_.Need("VX_QueueBuffer answered " + TCheckContext::CodeText(code), code == VX_SUCCESS);
    }
  }
  void Start()
  {
    const int code = CHECK_CALL(check_, VX_Command, Handle(), L"AcquisitionStart");
    check_.Need("AcquisitionStart answered " + TCheckContext::CodeText(code), code == VX_SUCCESS);
  }

private:
  TCheckContext& check_;
  TFeatureDevice device_;
  int bytes_ = 0;
  std::vector<std::vector<std::uint64_t>> buffers_;
};

} // namespace

void HasKinds(TCheckContext& check)
{
  const int handle = check.FeatureHandle();
  for (const TKnownFeature& known : KnownFeatures()) {
    const std::wstring name = FromUtf8(known.name);
    int isImplemented = 0;
    VX_IsImplemented(handle, name.c_str(), &isImplemented);
    if (isImplemented == 0) continue;
    long long integer = 0;
    double number = 0.0;
    int flag = 0;
    int index = 0;
    wchar_t text[kMaxTextLength + 1] = L""; // has an end whatever the camera writes
    const int codes[] = {CHECK_CALL(check, VX_GetInt, handle, name.c_str(), &integer),
                         CHECK_CALL(check, VX_GetFloat, handle, name.c_str(), &number),
                         CHECK_CALL(check, VX_GetBool, handle, name.c_str(), &flag),
                         CHECK_CALL(check, VX_GetEnumerated, handle, name.c_str(), &index),
                         CHECK_CALL(check, VX_GetString, handle, name.c_str(), text, kMaxTextLength)};
    int kinds = 0;
    for (const int code : codes) kinds += code == VX_ERR_WRONG_KIND ? 0 : 1;
    TCheckContext::Expect(kinds <= 1, std::string(known.name) + ": kinds that it can be read as",
                          "1, or 0 for a command", std::to_string(kinds));
  }
}

void KeepsLimits(TCheckContext& check)
{
  const int handle = check.FeatureHandle();
  for (const TKnownFeature& known : KnownFeatures()) {
    const std::wstring name = FromUtf8(known.name);
    long long integer[3] = {};
    double number[3] = {};
    const auto expectWithin = [&known](auto low, auto value, auto high) {
      TCheckContext::Expect(low <= value && value <= high, known.name,
                            TCheckContext::Shown(low) + " to " + TCheckContext::Shown(high),
                            TCheckContext::Shown(value));
    };
    int isWritable = 0; // what is only read, a clock for example, may have other limits a moment later
    if (VX_IsWritable(handle, name.c_str(), &isWritable) != VX_SUCCESS || isWritable == 0) continue;
    if (CHECK_CALL(check, VX_GetInt, handle, name.c_str(), &integer[1]) == VX_SUCCESS &&
        CHECK_CALL(check, VX_GetIntMin, handle, name.c_str(), &integer[0]) == VX_SUCCESS &&
        CHECK_CALL(check, VX_GetIntMax, handle, name.c_str(), &integer[2]) == VX_SUCCESS)
      expectWithin(integer[0], integer[1], integer[2]);
    if (CHECK_CALL(check, VX_GetFloat, handle, name.c_str(), &number[1]) == VX_SUCCESS &&
        CHECK_CALL(check, VX_GetFloatMin, handle, name.c_str(), &number[0]) == VX_SUCCESS &&
        CHECK_CALL(check, VX_GetFloatMax, handle, name.c_str(), &number[2]) == VX_SUCCESS)
      expectWithin(number[0], number[1], number[2]);
  }
}

void EndsTexts(TCheckContext& check)
{
  const int handle = check.FeatureHandle();
  const auto expectEnd = [](const std::string& what, const std::vector<wchar_t>& text) {
    TCheckContext::Expect(std::find(text.begin(), text.end(), L'\0') != text.end(), what,
                          "a text with a terminator among " + std::to_string(text.size()) + " characters",
                          "no terminator");
  };
  for (const TKnownFeature& known : KnownFeatures()) {
    const std::wstring name = FromUtf8(known.name);
    std::vector<wchar_t> text(kMaxTextLength, L'x');
    if (VX_GetString(handle, name.c_str(), text.data(), kMaxTextLength) == VX_SUCCESS) expectEnd(known.name, text);
    int count = 0;
    if (VX_GetEnumCount(handle, name.c_str(), &count) != VX_SUCCESS) continue;
    for (int index = 0; index < count; ++index) {
      std::fill(text.begin(), text.end(), L'x');
      if (VX_GetEnumStringByIndex(handle, name.c_str(), index, text.data(), kMaxTextLength) == VX_SUCCESS)
        expectEnd(known.name + std::string(", value ") + std::to_string(index), text);
    }
  }
}

void TakesEachWord(TCheckContext& check)
{
  const int handle = check.FeatureHandle();
  for (const TKnownFeature& known : KnownFeatures()) {
    TCameraFeature feature;
    if (!ReadFeature(handle, known.name, feature) || feature.kind != FeatureKind::Enumerated ||
        !feature.isWritable)
      continue;
    if (feature.name == "FanSpeed" && !check.IsHarsh()) continue; // a fan is not stopped for a check
    const std::wstring name = FromUtf8(feature.name);
    const std::string before = FeatureValueText(feature.value);
    for (const TFeatureWord& word : feature.words) {
      if (!word.isAvailable) continue;
      const std::string what = feature.name + " \"" + word.text + "\"";
      TCheckContext::ExpectFeatureCode(
          "setting " + what, VX_SUCCESS,
          CHECK_CALL(check, VX_SetEnumeratedString, handle, name.c_str(), FromUtf8(word.text).c_str()));
      TCheckContext::ExpectEqual("what was set as " + what, word.text, check.Word(name.c_str()).value_or(""));
    }
    CHECK_CALL(check, VX_SetEnumeratedString, handle, name.c_str(), FromUtf8(before).c_str());
  }
}

void RefusesSecondStart(TCheckContext& check)
{
  TOpenDevice device(check, 1);
  device.QueueAll();
  device.Start();
  TCheckContext::ExpectFeatureCode("AcquisitionStart during a run", VX_ERR_START_REFUSED,
                                   CHECK_CALL(check, VX_Command, device.Handle(), L"AcquisitionStart"));
}

void FillsBuffersInOrder(TCheckContext& check)
{
  constexpr std::size_t kBuffers = 6;
  TOpenDevice device(check, kBuffers);
  device.QueueAll();
  device.Start();
  for (std::size_t number = 0; number < kBuffers; ++number) {
    unsigned char* buffer = nullptr;
    int bytes = 0;
    const std::string frame = "frame " + std::to_string(number + 1);
    TCheckContext::ExpectFeatureCode("waiting for " + frame, VX_SUCCESS,
                                     CHECK_CALL(check, VX_WaitBuffer, device.Handle(), &buffer, &bytes, kFrameMs));
    std::size_t place = 0;
    while (place < kBuffers && device.Buffer(place) != buffer) ++place;
    TCheckContext::Expect(place == number, "the buffer of " + frame, "buffer " + std::to_string(number + 1),
                          place == kBuffers ? "none that was queued" : "buffer " + std::to_string(place + 1));
    TCheckContext::ExpectEqual("bytes of " + frame, device.Bytes(), bytes);
  }
}

void FlushesBuffers(TCheckContext& check)
{
  TOpenDevice device(check, 3);
  unsigned char* buffer = nullptr;
  int bytes = 0;
  device.QueueAll();
  TCheckContext::ExpectFeatureCode("VX_Flush", VX_SUCCESS, CHECK_CALL(check, VX_Flush, device.Handle()));
  TCheckContext::ExpectFeatureCode("a wait after the buffers were taken back", VX_ERR_TIMED_OUT,
                                   CHECK_CALL(check, VX_WaitBuffer, device.Handle(), &buffer, &bytes, 10));
  device.QueueAll();
  device.Start();
  const int code = CHECK_CALL(check, VX_WaitBuffer, device.Handle(), &buffer, &bytes, kFrameMs);
  check.Need("VX_WaitBuffer answered " + TCheckContext::CodeText(code), code == VX_SUCCESS);
  CHECK_CALL(check, VX_Command, device.Handle(), L"AcquisitionStop");
  TCheckContext::ExpectFeatureCode("VX_Flush", VX_SUCCESS, CHECK_CALL(check, VX_Flush, device.Handle()));
  TCheckContext::ExpectFeatureCode("a wait after a run and VX_Flush", VX_ERR_TIMED_OUT,
                                   CHECK_CALL(check, VX_WaitBuffer, device.Handle(), &buffer, &bytes, 10));
}

void RefusesBadBuffers(TCheckContext& check)
{
  TOpenDevice device(check, 1);
  TCheckContext::ExpectFeatureCode(
      "a buffer that is too small", VX_ERR_BUFFER_TOO_SMALL,
      CHECK_CALL(check, VX_QueueBuffer, device.Handle(), device.Buffer(0), device.Bytes() - 1));
  TCheckContext::ExpectFeatureCode(
      "a misaligned buffer", VX_ERR_BUFFER_MISALIGNED,
      CHECK_CALL(check, VX_QueueBuffer, device.Handle(), device.Buffer(0) + 1, device.Bytes()));
  TCheckContext::ExpectFeatureCode("no buffer", VX_ERR_NULL_ARGUMENT,
                                   CHECK_CALL(check, VX_QueueBuffer, device.Handle(), nullptr, device.Bytes()));
}

} // namespace vxtool
