// SPDX-License-Identifier: MIT
// The records of one call.
#include "trace/TCallRecord.h"

#include "trace/TTraceRecorder.h"
#include "trace/TTraceThread.h"

using TraceFormat::Kind;

TCallRecord::TCallRecord(std::uint16_t function, const std::uint64_t* values) noexcept
    : TCallRecord(function, values, 0)
{
}

TCallRecord::TCallRecord(std::uint16_t function, const std::uint64_t* values, std::uint64_t ticks) noexcept
    : function_(function),
      values_(values),
      thread_(TTraceThread::Current()),
      call_(thread_.NextCall()),
      outerPixels_(thread_.Pixels())
{
  const TTraceRecorder& recorder = *TTraceRecorder::Instance();
  const TTraceSignature& signature = recorder.SignatureOf(function);
  if (signature.HasPixels()) thread_.SetPixels(&pixels_);
  if (std::byte* const begin = thread_.BeginRecord()) {
    const std::byte* const end = WriteInputs(begin, signature, values, recorder.Home());
    thread_.FinishRecord(Kind::Begin, function, call_, ticks != 0 ? ticks : Trace::Ticks(), end);
  }
  thread_.EnterCall();
}

TCallRecord::~TCallRecord()
{
  thread_.LeaveCall();
  thread_.SetPixels(outerPixels_);
  if (isEnded_) return;
  const std::uint64_t ticks = Trace::Ticks();
  if (std::byte* const begin = thread_.BeginRecord())
    thread_.FinishRecord(Kind::Thrown, function_, call_, ticks, begin);
}

void TCallRecord::End(std::uint64_t result) noexcept
{
  isEnded_ = true;
  const std::uint64_t ticks = Trace::Ticks();
  std::byte* const begin = thread_.BeginRecord();
  if (!begin) return;
  const TTraceRecorder& recorder = *TTraceRecorder::Instance();
  const std::byte* const end =
      WriteOutputs(begin, recorder.SignatureOf(function_), values_, result, pixels_, recorder.Home());
  thread_.FinishRecord(Kind::End, function_, call_, ticks, end);
}

void TCallRecord::Past(std::uint16_t function, const std::uint64_t* values, std::uint64_t ticks,
                       std::uint64_t result) noexcept
{
  TCallRecord(function, values, ticks).End(result);
}
