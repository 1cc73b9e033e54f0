// SPDX-License-Identifier: MIT
// Records the calls of a process.
#include "trace/TTraceRecorder.h"

#include "trace/build_id.h"
#include "trace/record_contents.h"
#include "trace/TTraceThread.h"
#include "utility/library_version.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <pthread.h>
#include <string_view>
#include <sys/syscall.h>
#include <unistd.h>
#if defined(__x86_64__)
#include <x86intrin.h>
#endif

namespace {

using TraceFormat::TChunkHeader;
using TraceFormat::TFileHeader;
using TraceFormat::TRecordHeader;

constexpr const char* kVariable = "VXMCD_TRACE";
constexpr std::uint64_t kNsPerSecond = 1'000'000'000;
// How long the cycles of the processor are counted at the start; the records themselves measure them better later.
constexpr std::uint64_t kCalibrationNs = 1'000'000;

bool countsCycles = false;

std::uint64_t NsOf(clockid_t clock)
{
  timespec now{};
  clock_gettime(clock, &now);
  return static_cast<std::uint64_t>(now.tv_sec) * kNsPerSecond + static_cast<std::uint64_t>(now.tv_nsec);
}

// Only then do all processors count the same cycles, at a constant rate.
bool SystemCountsCycles()
{
#if defined(__x86_64__)
  std::FILE* const file = std::fopen("/sys/devices/system/clocksource/clocksource0/current_clocksource", "re");
  if (!file) return false;
  char name[16] = {};
  const bool isRead = std::fgets(name, sizeof name, file) != nullptr;
  std::fclose(file);
  return isRead && std::strcmp(name, "tsc\n") == 0;
#else
  return false;
#endif
}

double MeasureTicksPerSecond()
{
  if (!countsCycles) return static_cast<double>(kNsPerSecond);
  const std::uint64_t begin = NsOf(CLOCK_MONOTONIC);
  const std::uint64_t beginTicks = Trace::Ticks();
  std::uint64_t end = begin;
  while (end - begin < kCalibrationNs) end = NsOf(CLOCK_MONOTONIC);
  return static_cast<double>(Trace::Ticks() - beginTicks) * static_cast<double>(kNsPerSecond) /
         static_cast<double>(end - begin);
}

void SayOnStandardError(const std::string& text)
{
  const std::string line = std::string("vxmcd: ") + kVariable + ": " + text + "\n";
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line.data(), line.size());
}

std::string FileOf(const void* address)
{
  Dl_info info{};
  return dladdr(address, &info) != 0 && info.dli_fname ? info.dli_fname : "";
}

// Without characters that separate the lines and columns of the header.
std::string Line(std::string_view key, std::string_view value)
{
  std::string line = std::string(key) + "\t";
  for (const char c : value) line += c == '\n' || c == '\t' ? ' ' : c;
  return line + "\n";
}

} // namespace

namespace Trace {

std::atomic<unsigned int> recordedLayers{0};

std::uint64_t Ticks() noexcept
{
#if defined(__x86_64__)
  if (countsCycles) [[likely]]
    return __rdtsc();
#endif
  return NsOf(CLOCK_MONOTONIC);
}

} // namespace Trace

TTraceRecorder* TTraceRecorder::instance_ = nullptr;

TTraceRecorder::TTraceRecorder(TTraceSettings settings, std::span<const TTracedFunction> functions,
                               const void* featureLibrary)
    : settings_(std::move(settings)), functions_(functions), featureLibrary_(featureLibrary)
{
  for (const TTracedFunction& function : functions)
    signatures_.push_back(TTraceSignature::Parse(SignatureTextOf(function)).value_or(TTraceSignature()));
  const char* const home = secure_getenv("HOME");
  if (home && home[0] == '/' && home[1] != '\0') home_ = home;
  while (home_.ends_with('/')) home_.pop_back();
}

void TTraceRecorder::Configure(const char* setting, std::span<const TTracedFunction> functions,
                               const void* featureLibrary)
{
  if (!setting || *setting == '\0') return;
  try {
    TTraceSettings settings;
    const std::string wrong = settings.Parse(setting);
    if (!wrong.empty()) {
      SayOnStandardError(wrong + "; the trace stays off");
      return;
    }
    countsCycles = SystemCountsCycles();
    instance_ = new TTraceRecorder(settings, functions, featureLibrary);
    pthread_atfork(BeforeFork, AfterForkInParent, AfterForkInChild);
    Trace::recordedLayers = (settings.hasApi ? Trace::kApi : 0U) | (settings.hasCore ? Trace::kCore : 0U);
  } catch (const std::exception& error) {
    SayOnStandardError(std::string(error.what()) + "; the trace stays off");
  }
}

std::string TTraceRecorder::OpenFile()
{
  TFileHeader header{};
  std::memcpy(header.magic, TraceFormat::kFileMagic, sizeof header.magic);
  header.version = TraceFormat::kVersion;
  header.process = static_cast<std::uint32_t>(getpid());
  header.ticksPerSecond = MeasureTicksPerSecond();
  header.startTicks = Trace::Ticks();
  header.startMonotonicNs = NsOf(CLOCK_MONOTONIC);
  header.startUtcNs = NsOf(CLOCK_REALTIME);
  file_ = new TTraceFileWriter();
  const std::string path = settings_.FileName();
  const std::string wrong = file_->Open(path, settings_.limitBytes, header, HeaderText());
  return wrong.empty() ? "" : "\"" + path + "\" " + wrong;
}

std::string TTraceRecorder::HeaderText() const
{
  const auto withoutHome = [this](std::string text) {
    if (IsWithinHome(text, home_)) text.replace(0, home_.size(), "~");
    return text;
  };
  std::string text = Line("program", program_invocation_short_name);
  text += Line("library", LibraryVersion::kText);
  text += Line("library_build", BuildIdOf(reinterpret_cast<const void*>(&Trace::recordedLayers)));
  text += Line("feature_library", withoutHome(FileOf(featureLibrary_)));
  text += Line("feature_library_build", BuildIdOf(featureLibrary_));
  text += Line("clock", countsCycles ? "cycles" : "monotonic");
  for (char** variable = environ; variable && *variable; ++variable) {
    const std::string_view whole = *variable;
    const std::size_t sign = whole.find('=');
    if (!whole.starts_with("VX") || sign == std::string_view::npos) continue;
    text +=
        Line("variable\t" + std::string(whole.substr(0, sign)), withoutHome(std::string(whole.substr(sign + 1))));
  }
  for (const TTracedFunction& function : functions_)
    text += "function\t" + std::to_string(&function - functions_.data()) +
            (function.layer == Trace::kApi ? "\tapi\t" : "\tcore\t") + function.name + "\t" +
            SignatureTextOf(function) + "\n";
  return text;
}

// Of functions whose arguments are not known the registers are recorded, when the program asks for it.
const char* TTraceRecorder::SignatureTextOf(const TTracedFunction& function) const
{
  if (!settings_.hasRegisters || std::strcmp(function.signature, "unused") != 0) return function.signature;
  return "unused first:u64 second:u64 third:u64 fourth:u64";
}

TTraceRecorder::TPlace TTraceRecorder::TakeChunk(bool isFirst, bool& isShared)
{
  const TLock lock(mutex_);
  isShared = false;
  if (!file_) {
    if (const std::string wrong = OpenFile(); !wrong.empty()) {
      End(wrong + "; the trace stays off");
      return {};
    }
  }
  if (isFirst && !rests_.empty()) {
    const TPlace rest = rests_.back();
    rests_.pop_back();
    isShared = true;
    return rest;
  }
  std::byte* const chunk = file_->TakeChunk();
  if (!file_->GrowthError().empty() && !hasWarned_) {
    hasWarned_ = true;
    if (chunk)
      SayOnStandardError("the file " + file_->GrowthError() + "; from here on the trace drops its oldest calls");
    else
      End("the file " + file_->GrowthError() + "; the trace ends here");
  }
  if (!chunk) return {};

  // What an earlier use has left in the chunk is ended first.
  auto* const header = reinterpret_cast<TChunkHeader*>(chunk);
  __atomic_store_n(&header->magic, 0, __ATOMIC_RELEASE);
  std::byte* const records = chunk + sizeof *header;
  __atomic_store_n(&reinterpret_cast<TRecordHeader*>(records)->size, 0, __ATOMIC_RELEASE);
  header->systemThread = static_cast<std::uint32_t>(syscall(SYS_gettid));
  header->number = file_->ChunksTaken();
  header->ticks = Trace::Ticks();
  header->monotonicNs = NsOf(CLOCK_MONOTONIC);
  __atomic_store_n(&header->magic, TraceFormat::kChunkMagic, __ATOMIC_RELEASE);
  return {records, chunk + TraceFormat::kChunkBytes};
}

void TTraceRecorder::ReleaseChunk(TPlace rest)
{
  const TLock lock(mutex_);
  if (file_) rests_.push_back(rest);
}

void TTraceRecorder::ReleaseFullChunk(const std::byte* end)
{
  const TLock lock(mutex_);
  if (file_) file_->ReleaseChunk(end - TraceFormat::kChunkBytes);
}

void TTraceRecorder::End(const std::string& why)
{
  Trace::recordedLayers = 0;
  SayOnStandardError(why);
}

void TTraceRecorder::BeforeFork() NO_THREAD_SAFETY_ANALYSIS
{
  instance_->mutex_.Lock();
}

void TTraceRecorder::AfterForkInParent() NO_THREAD_SAFETY_ANALYSIS
{
  instance_->mutex_.Unlock();
}

// The file, if there is one, is the parent's. Nothing is opened here, where only few functions may be called.
void TTraceRecorder::AfterForkInChild() NO_THREAD_SAFETY_ANALYSIS
{
  TTraceThread::Current().Forget();
  if (instance_->file_ && !instance_->settings_.IsForEachProcess()) Trace::recordedLayers = 0;
  instance_->file_ = nullptr;
  instance_->rests_.clear();
  instance_->mutex_.Unlock();
}
