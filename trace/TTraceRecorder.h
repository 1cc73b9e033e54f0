// SPDX-License-Identifier: MIT
// Records the calls of a process.
#pragma once

#include "trace/trace_switch.h"
#include "trace/TTraceFileWriter.h"
#include "trace/TTraceSettings.h"
#include "trace/TTraceSignature.h"
#include "utility/TMutex.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

/// A function whose calls may be recorded. Its number is its place in the table of all of them.
struct TTracedFunction
{
  Trace::Layer layer;
  const char* name;
  const char* signature; ///< see TTraceSignature
};

/// Where the records of all threads go: gives them chunks of the file, which is made at the first call. Made when VXMCD_TRACE
/// asks for a trace, and never destroyed, since threads may make calls until the process is gone. Thread-safe. What goes wrong
/// is one line on standard error and ends the trace; no call of the program answers otherwise than without a trace.
class TTraceRecorder final
{
public:
  /// Switches the trace on as @p setting says; null leaves it off. Called when the library is loaded.
  /// @param functions       the table of all functions, borrowed for good
  /// @param featureLibrary  the address of a function of the feature library, for its name in the trace
  static void Configure(const char* setting, std::span<const TTracedFunction> functions,
                        const void* featureLibrary);
  /// Null when there is no trace.
  static TTraceRecorder* Instance() { return instance_; }

  const TTraceSettings& Settings() const { return settings_; }
  const TTraceSignature& SignatureOf(std::uint16_t function) const { return signatures_[function]; }
  /// The user's home directory, which is "~" in the trace; "" when it is not known.
  const std::string& Home() const { return home_; }

  struct TPlace
  {
    std::byte* begin; ///< null when there is none
    std::byte* end;
  };
  /// Room for the records of the calling thread. The first room of a thread may be the rest of a chunk of another one: @p
  /// isShared is true then, and the first record must name the thread. (Later, that would put its records out of order: those
  /// of a chunk come before those of chunks with greater numbers.) Blocks while other threads are here, and while the file
  /// grows.
  TPlace TakeChunk(bool isFirst, bool& isShared);
  /// Takes a chunk back: the rest of it may be used by another thread.
  void ReleaseChunk(TPlace rest);
  /// The same for a chunk that is full.
  void ReleaseFullChunk(const std::byte* end);

private:
  TTraceRecorder(TTraceSettings settings, std::span<const TTracedFunction> functions, const void* featureLibrary);

  std::string OpenFile() REQUIRES(mutex_);
  std::string HeaderText() const;
  const char* SignatureTextOf(const TTracedFunction& function) const;
  void End(const std::string& why) REQUIRES(mutex_);

  static void BeforeFork();
  static void AfterForkInParent();
  static void AfterForkInChild();

  static TTraceRecorder* instance_;

  const TTraceSettings settings_;
  const std::span<const TTracedFunction> functions_;
  const void* const featureLibrary_;
  std::vector<TTraceSignature> signatures_;
  std::string home_;
  TMutex mutex_;
  TTraceFileWriter* file_ GUARDED_BY(mutex_) = nullptr; // never deleted: its mapping is in use
  std::vector<TPlace> rests_ GUARDED_BY(mutex_);        // of chunks whose thread has ended
  bool hasWarned_ GUARDED_BY(mutex_) = false;
};
