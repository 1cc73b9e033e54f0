// SPDX-License-Identifier: MIT
// The calls of the shared library into the feature library, with a record of each in the trace. The linker leads the calls
// of VX_Open(), for example, to __wrap_VX_Open(), and calls of __real_VX_Open() to the feature library (--wrap).
#include "features/core_calls.h"

#include "features/feature_names.h"
#include "trace/TCallRecord.h"
#include "trace/TTraceRecorder.h"
#include "trace/TTraceThread.h"
#include "vxcore.h"

#include <atomic>
#include <cwchar>

namespace {

#define CORE_CALL(name, parameters, arguments, signature)                                                         \
  extern "C" int Real##name parameters __asm__("__real_" #name);
#include "features/core_calls.def"

/// Which calls for frames have records: the first ones of a run. The others that succeed are counted.
class TFrameRecords final
{
public:
  static void BeginRun() { waits_ = queued_ = 0; }
  static bool IsNext(bool isWait)
  {
    if (TTraceRecorder::Instance()->Settings().hasAllFrames) return true;
    std::atomic<unsigned int>& count = isWait ? waits_ : queued_;
    if (count.load(std::memory_order_relaxed) >= kFirst) return false;
    return count.fetch_add(1, std::memory_order_relaxed) < kFirst;
  }

private:
  static constexpr unsigned int kFirst = 100;
  static inline std::atomic<unsigned int> waits_{0};
  static inline std::atomic<unsigned int> queued_{0};
};

template <class... Parameters, class... Arguments>
int CallCore(std::uint16_t number, int (*function)(Parameters...), Arguments... arguments)
{
  if (!Trace::IsOn(Trace::kCore)) [[likely]]
    return function(arguments...);
  return CallRecorded(number, function, arguments...);
}

int CallCore(std::uint16_t number, int (*function)(int, const wchar_t*), int handle, const wchar_t* feature)
{
  if (!Trace::IsOn(Trace::kCore)) [[likely]]
    return function(handle, feature);
  if (feature && std::wcscmp(feature, Feature::kAcquisitionStart) == 0) TFrameRecords::BeginRun();
  return CallRecorded(number, function, handle, feature);
}

/// Records a call for a frame when it is one of the first of a run, or fails.
template <class... Parameters, class... Arguments>
int CallForFrame(bool isWait, const int* sizeBytes, std::uint16_t number, int (*function)(Parameters...),
                 Arguments... arguments)
{
  if (TFrameRecords::IsNext(isWait)) return CallRecorded(number, function, arguments...);
  const std::uint64_t begin = Trace::Ticks();
  const int code = function(arguments...);
  if (code == VX_SUCCESS) {
    TTraceThread::Current().CountFrame(isWait, sizeBytes ? static_cast<std::uint64_t>(*sizeBytes) : 0);
  } else {
    const std::uint64_t values[] = {TraceValue(arguments)...};
    TCallRecord::Past(number, values, begin, TraceValue(code));
  }
  return code;
}

int CallCore(std::uint16_t number, int (*function)(int, unsigned char**, int*, unsigned int), int handle,
             unsigned char** buffer, int* sizeBytes, unsigned int timeoutMs)
{
  if (!Trace::IsOn(Trace::kCore)) [[likely]]
    return function(handle, buffer, sizeBytes, timeoutMs);
  return CallForFrame(true, sizeBytes, number, function, handle, buffer, sizeBytes, timeoutMs);
}

int CallCore(std::uint16_t number, int (*function)(int, unsigned char*, int), int handle, unsigned char* buffer,
             int sizeBytes)
{
  if (!Trace::IsOn(Trace::kCore)) [[likely]]
    return function(handle, buffer, sizeBytes);
  return CallForFrame(false, nullptr, number, function, handle, buffer, sizeBytes);
}

#define CORE_ARGUMENTS(...) __VA_OPT__(, ) __VA_ARGS__
#define CORE_CALL(name, parameters, arguments, signature)                                                         \
  extern "C" int Wrapped##name parameters __asm__("__wrap_" #name);                                               \
  int Wrapped##name parameters                                                                                    \
  {                                                                                                               \
    return CallCore(CoreNumber::name, Real##name CORE_ARGUMENTS arguments);                                       \
  }
#include "features/core_calls.def"

} // namespace

const void* FeatureLibraryFunction()
{
  return reinterpret_cast<const void*>(&RealVX_InitialiseLibrary);
}
