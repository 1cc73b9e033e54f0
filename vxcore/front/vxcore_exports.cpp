// SPDX-License-Identifier: MIT
// The exported functions of vxcore.h, in its order: argument checks, then one call on a feature or a device.
#include "vxcore.h"

#include "vxcore/front/TDeviceTable.h"
#include "vxcore/front/TInstrumentedCall.h"

#include <cstdint>
#include <cstring>
#include <cwchar>
#include <new>

using vxcore::IDevice;
using vxcore::IFeature;
using vxcore::RunCall;
using vxcore::TCallInfo;
using vxcore::TDeviceLock;
using vxcore::TDeviceTable;

namespace {

constexpr std::wstring_view kDeviceCount = L"DeviceCount";

/// No exception leaves the library.
template <typename Body>
int Guarded(const TCallInfo& info, Body&& body) noexcept
{
  try {
    return RunCall(info, body);
  } catch (const std::bad_alloc&) {
    return VX_ERR_OUT_OF_MEMORY;
  }
}

/// Runs @p body(feature, lock) on a feature of a device.
template <typename Body>
int OnFeature(const TCallInfo& info, Body&& body) noexcept
{
  return Guarded(info, [&info, &body] {
    if (!info.feature) return VX_ERR_NULL_ARGUMENT;
    return TDeviceTable::Instance().WithHandle(info.handle, [&info, &body](TDeviceLock& lock, IDevice& device) {
      IFeature* feature = device.Find(info.feature);
      return feature ? body(*feature, lock) : VX_ERR_NOT_IMPLEMENTED;
    });
  });
}

/// Sets *@p flag to what @p body(feature, exists) returns; the feature is null when the handle has none of that name,
/// and for those of the system handle.
template <typename Body>
int AskFlag(const TCallInfo& info, int* flag, Body&& body) noexcept
{
  return Guarded(info, [&info, &body, flag] {
    if (!info.feature || !flag) return VX_ERR_NULL_ARGUMENT;
    if (info.handle == VX_HANDLE_SYSTEM) {
      int count = 0;
      if (const int code = TDeviceTable::Instance().DeviceCount(count); code != VX_SUCCESS) return code;
      *flag = body(static_cast<IFeature*>(nullptr), kDeviceCount == info.feature) ? 1 : 0;
      return VX_SUCCESS;
    }
    return TDeviceTable::Instance().WithHandle(info.handle, [&info, &body, flag](TDeviceLock&, IDevice& device) {
      const IFeature* feature = device.Find(info.feature);
      *flag = body(feature, feature != nullptr) ? 1 : 0;
      return VX_SUCCESS;
    });
  });
}

int CopyText(std::wstring_view text, wchar_t* destination, int length)
{
  if (length < 1 || text.size() >= static_cast<size_t>(length)) return VX_ERR_TEXT_TOO_LONG;
  std::wmemcpy(destination, text.data(), text.size());
  destination[text.size()] = L'\0';
  return VX_SUCCESS;
}

/// Reads a number of a feature through one of its operations.
template <typename Number>
int ReadNumber(const TCallInfo& info, Number* value, int (IFeature::*read)(Number&) const) noexcept
{
  return OnFeature(info, [value, read](const IFeature& feature, TDeviceLock&) {
    return value ? (feature.*read)(*value) : VX_ERR_NULL_ARGUMENT;
  });
}

/// The integers of the system handle: "DeviceCount".
int ReadSystemInt(const TCallInfo& info, long long* value) noexcept
{
  return Guarded(info, [&info, value] {
    if (!info.feature || !value) return VX_ERR_NULL_ARGUMENT;
    int count = 0;
    if (const int code = TDeviceTable::Instance().DeviceCount(count); code != VX_SUCCESS) return code;
    if (kDeviceCount != info.feature) return VX_ERR_NOT_IMPLEMENTED;
    *value = count;
    return VX_SUCCESS;
  });
}

int ReadInt(TCallInfo info, long long* value, int (IFeature::*read)(long long&) const) noexcept
{
  info.outLong = value;
  return info.handle == VX_HANDLE_SYSTEM ? ReadSystemInt(info, value) : ReadNumber(info, value, read);
}

int ReadFloat(TCallInfo info, double* value, int (IFeature::*read)(double&) const) noexcept
{
  info.outDouble = value;
  return ReadNumber(info, value, read);
}

int SetIndex(const TCallInfo& info, int index) noexcept
{
  return OnFeature(info, [index](IFeature& feature, TDeviceLock&) { return feature.SetIndex(index); });
}

int SetText(const TCallInfo& info, const wchar_t* text) noexcept
{
  return OnFeature(info, [text](IFeature& feature, TDeviceLock&) {
    return text ? feature.SetText(text) : VX_ERR_NULL_ARGUMENT;
  });
}

int GetIndex(TCallInfo info, int* index) noexcept
{
  info.outInt = index;
  info.isRead = true;
  return ReadNumber(info, index, &IFeature::GetIndex);
}

int GetCount(TCallInfo info, int* count) noexcept
{
  info.outInt = count;
  return ReadNumber(info, count, &IFeature::GetCount);
}

int GetTextByIndex(TCallInfo info, int index, wchar_t* text, int length) noexcept
{
  info.With(static_cast<long long>(index));
  info.outText = text;
  info.outLength = length;
  info.isRead = true;
  return OnFeature(info, [index, text, length](const IFeature& feature, TDeviceLock&) {
    if (!text) return VX_ERR_NULL_ARGUMENT;
    std::wstring_view value;
    const int code = feature.GetTextByIndex(index, value);
    return code == VX_SUCCESS ? CopyText(value, text, length) : code;
  });
}

int AskIndex(TCallInfo info, int index, int* flag, int (IFeature::*ask)(int, bool&) const) noexcept
{
  info.With(static_cast<long long>(index));
  info.outInt = flag;
  return OnFeature(info, [index, flag, ask](const IFeature& feature, TDeviceLock&) {
    if (!flag) return VX_ERR_NULL_ARGUMENT;
    bool answer = false;
    const int code = (feature.*ask)(index, answer);
    if (code == VX_SUCCESS) *flag = answer ? 1 : 0;
    return code;
  });
}

TCallInfo FlagQuery(const char* function, int handle, const wchar_t* feature, int* flag)
{
  TCallInfo info(function, handle, feature);
  info.outInt = flag;
  return info;
}

TCallInfo Read(const char* function, int handle, const wchar_t* feature)
{
  TCallInfo info(function, handle, feature);
  info.isRead = true;
  return info;
}

} // namespace

extern "C" {

int VX_InitialiseLibrary(void)
{
  return Guarded({"VX_InitialiseLibrary", VX_HANDLE_NONE}, [] { return TDeviceTable::Instance().Initialise(); });
}

int VX_FinaliseLibrary(void)
{
  return Guarded({"VX_FinaliseLibrary", VX_HANDLE_NONE}, [] { return TDeviceTable::Instance().Finalise(); });
}

int VX_Open(int deviceIndex, int* handle)
{
  TCallInfo info("VX_Open", VX_HANDLE_NONE);
  info.With(static_cast<long long>(deviceIndex));
  info.device = deviceIndex;
  info.outInt = handle;
  return Guarded(info, [deviceIndex, handle] {
    return handle ? TDeviceTable::Instance().Open(deviceIndex, *handle) : VX_ERR_NULL_ARGUMENT;
  });
}

int VX_Close(int handle)
{
  return Guarded({"VX_Close", handle}, [handle] { return TDeviceTable::Instance().Close(handle); });
}

int VX_IsImplemented(int handle, const wchar_t* feature, int* flag)
{
  return AskFlag(FlagQuery("VX_IsImplemented", handle, feature, flag), flag,
                 [](const IFeature*, bool implemented) { return implemented; });
}

int VX_IsReadable(int handle, const wchar_t* feature, int* flag)
{
  return AskFlag(FlagQuery("VX_IsReadable", handle, feature, flag), flag,
                 [](const IFeature* f, bool implemented) { return f ? f->IsReadable() : implemented; });
}

int VX_IsWritable(int handle, const wchar_t* feature, int* flag)
{
  return AskFlag(FlagQuery("VX_IsWritable", handle, feature, flag), flag,
                 [](const IFeature* f, bool) { return f && f->IsWritable(); });
}

int VX_SetInt(int handle, const wchar_t* feature, long long value)
{
  return OnFeature(TCallInfo("VX_SetInt", handle, feature).With(value),
                   [value](IFeature& f, TDeviceLock&) { return f.SetInt(value); });
}

int VX_GetInt(int handle, const wchar_t* feature, long long* value)
{
  return ReadInt(Read("VX_GetInt", handle, feature), value, &IFeature::GetInt);
}

int VX_GetIntMin(int handle, const wchar_t* feature, long long* minimum)
{
  return ReadInt({"VX_GetIntMin", handle, feature}, minimum, &IFeature::GetIntMin);
}

int VX_GetIntMax(int handle, const wchar_t* feature, long long* maximum)
{
  return ReadInt({"VX_GetIntMax", handle, feature}, maximum, &IFeature::GetIntMax);
}

int VX_SetFloat(int handle, const wchar_t* feature, double value)
{
  return OnFeature(TCallInfo("VX_SetFloat", handle, feature).With(value),
                   [value](IFeature& f, TDeviceLock&) { return f.SetFloat(value); });
}

int VX_GetFloat(int handle, const wchar_t* feature, double* value)
{
  return ReadFloat(Read("VX_GetFloat", handle, feature), value, &IFeature::GetFloat);
}

int VX_GetFloatMin(int handle, const wchar_t* feature, double* minimum)
{
  return ReadFloat({"VX_GetFloatMin", handle, feature}, minimum, &IFeature::GetFloatMin);
}

int VX_GetFloatMax(int handle, const wchar_t* feature, double* maximum)
{
  return ReadFloat({"VX_GetFloatMax", handle, feature}, maximum, &IFeature::GetFloatMax);
}

int VX_SetBool(int handle, const wchar_t* feature, int value)
{
  return OnFeature(TCallInfo("VX_SetBool", handle, feature).With(static_cast<long long>(value)),
                   [value](IFeature& f, TDeviceLock&) {
                     return value == 0 || value == 1 ? f.SetBool(value == 1) : VX_ERR_OUT_OF_RANGE;
                   });
}

int VX_GetBool(int handle, const wchar_t* feature, int* value)
{
  TCallInfo info = Read("VX_GetBool", handle, feature);
  info.outInt = value;
  return OnFeature(info, [value](const IFeature& f, TDeviceLock&) {
    if (!value) return VX_ERR_NULL_ARGUMENT;
    bool answer = false;
    const int code = f.GetBool(answer);
    if (code == VX_SUCCESS) *value = answer ? 1 : 0;
    return code;
  });
}

int VX_SetEnumerated(int handle, const wchar_t* feature, int index)
{
  return SetIndex(TCallInfo("VX_SetEnumerated", handle, feature).With(static_cast<long long>(index)), index);
}

int VX_SetEnumeratedString(int handle, const wchar_t* feature, const wchar_t* text)
{
  return SetText(TCallInfo("VX_SetEnumeratedString", handle, feature).With(text), text);
}

int VX_GetEnumerated(int handle, const wchar_t* feature, int* index)
{
  return GetIndex({"VX_GetEnumerated", handle, feature}, index);
}

int VX_GetEnumeratedCount(int handle, const wchar_t* feature, int* count)
{
  return GetCount({"VX_GetEnumeratedCount", handle, feature}, count);
}

int VX_GetEnumeratedString(int handle, const wchar_t* feature, int index, wchar_t* text, int length)
{
  return GetTextByIndex({"VX_GetEnumeratedString", handle, feature}, index, text, length);
}

int VX_IsEnumeratedIndexAvailable(int handle, const wchar_t* feature, int index, int* flag)
{
  return AskIndex({"VX_IsEnumeratedIndexAvailable", handle, feature}, index, flag, &IFeature::IsIndexAvailable);
}

int VX_IsEnumeratedIndexImplemented(int handle, const wchar_t* feature, int index, int* flag)
{
  return AskIndex({"VX_IsEnumeratedIndexImplemented", handle, feature}, index, flag,
                  &IFeature::IsIndexImplemented);
}

int VX_SetEnumIndex(int handle, const wchar_t* feature, int index)
{
  return SetIndex(TCallInfo("VX_SetEnumIndex", handle, feature).With(static_cast<long long>(index)), index);
}

int VX_SetEnumString(int handle, const wchar_t* feature, const wchar_t* text)
{
  return SetText(TCallInfo("VX_SetEnumString", handle, feature).With(text), text);
}

int VX_GetEnumIndex(int handle, const wchar_t* feature, int* index)
{
  return GetIndex({"VX_GetEnumIndex", handle, feature}, index);
}

int VX_GetEnumCount(int handle, const wchar_t* feature, int* count)
{
  return GetCount({"VX_GetEnumCount", handle, feature}, count);
}

int VX_GetEnumStringByIndex(int handle, const wchar_t* feature, int index, wchar_t* text, int length)
{
  return GetTextByIndex({"VX_GetEnumStringByIndex", handle, feature}, index, text, length);
}

int VX_IsEnumIndexAvailable(int handle, const wchar_t* feature, int index, int* flag)
{
  return AskIndex({"VX_IsEnumIndexAvailable", handle, feature}, index, flag, &IFeature::IsIndexAvailable);
}

int VX_IsEnumIndexImplemented(int handle, const wchar_t* feature, int index, int* flag)
{
  return AskIndex({"VX_IsEnumIndexImplemented", handle, feature}, index, flag, &IFeature::IsIndexImplemented);
}

int VX_SetString(int handle, const wchar_t* feature, const wchar_t* value)
{
  return OnFeature(TCallInfo("VX_SetString", handle, feature).With(value), [value](IFeature& f, TDeviceLock&) {
    return value ? f.SetString(value) : VX_ERR_NULL_ARGUMENT;
  });
}

int VX_GetString(int handle, const wchar_t* feature, wchar_t* value, int length)
{
  TCallInfo info = Read("VX_GetString", handle, feature);
  info.outText = value;
  info.outLength = length;
  return OnFeature(info, [value, length](const IFeature& f, TDeviceLock&) {
    if (!value) return VX_ERR_NULL_ARGUMENT;
    std::wstring_view text;
    const int code = f.GetString(text);
    return code == VX_SUCCESS ? CopyText(text, value, length) : code;
  });
}

int VX_GetStringMaxLength(int handle, const wchar_t* feature, int* length)
{
  TCallInfo info("VX_GetStringMaxLength", handle, feature);
  info.outInt = length;
  return ReadNumber(info, length, &IFeature::GetStringMaxLength);
}

int VX_Command(int handle, const wchar_t* feature)
{
  return OnFeature({"VX_Command", handle, feature},
                   [](IFeature& f, TDeviceLock& lock) { return f.Execute(lock); });
}

int VX_QueueBuffer(int handle, unsigned char* buffer, int sizeBytes)
{
  return Guarded(TCallInfo("VX_QueueBuffer", handle).With(static_cast<long long>(sizeBytes)), [handle, buffer,
                                                                                               sizeBytes] {
    if (!buffer) return VX_ERR_NULL_ARGUMENT;
    if (reinterpret_cast<uintptr_t>(buffer) % VX_BUFFER_ALIGNMENT != 0) return VX_ERR_BUFFER_MISALIGNED;
    return TDeviceTable::Instance().WithHandle(handle, [buffer, sizeBytes](TDeviceLock& lock, IDevice& device) {
      return device.QueueBuffer(lock, buffer, sizeBytes);
    });
  });
}

int VX_WaitBuffer(int handle, unsigned char** buffer, int* sizeBytes, unsigned int timeoutMs)
{
  TCallInfo info("VX_WaitBuffer", handle);
  info.With(static_cast<long long>(timeoutMs));
  info.outBuffer = buffer;
  info.outInt = sizeBytes;
  return Guarded(info, [handle, buffer, sizeBytes, timeoutMs] {
    if (!buffer || !sizeBytes) return VX_ERR_NULL_ARGUMENT;
    return TDeviceTable::Instance().WithOpenDevice(
        handle, [buffer, sizeBytes, timeoutMs](TDeviceLock& lock, IDevice& device) {
          return device.WaitBuffer(lock, buffer, sizeBytes, timeoutMs);
        });
  });
}

int VX_Flush(int handle)
{
  return Guarded({"VX_Flush", handle}, [handle] { return TDeviceTable::Instance().Flush(handle); });
}

} // extern "C"
