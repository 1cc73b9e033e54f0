// SPDX-License-Identifier: MIT
// Reads a call trace.
#pragma once

#include "trace/TTraceCall.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// A trace in memory. Any bytes give a trace, with the calls of every chunk that is whole, or an error. A trace that a
/// process still writes can be read; what comes later is not in it. Used by one thread at a time.
class TTraceFile final
{
public:
  struct TThread
  {
    std::uint32_t number; ///< from 1
    std::uint32_t system; ///< the system's number
  };
  struct TFrames
  {
    std::uint32_t thread;
    double seconds; ///< since the start
    TraceFormat::TFrameCounts counts;
  };
  struct TVariable
  {
    std::string name;
    std::string value;
  };

  /// Why the file cannot be read; "" when it can.
  std::string Read(const std::string& path);
  std::string Parse(std::vector<std::byte> bytes);

  /// All calls by the time when they began.
  const std::vector<TTraceCall>& Calls() const { return calls_; }
  /// Counts of calls for frames that have no records each, by time.
  const std::vector<TFrames>& Frames() const { return frames_; }
  const std::vector<TThread>& Threads() const { return threads_; }
  const std::vector<TVariable>& Variables() const { return variables_; }
  /// The lines at the beginning of the file, as they stand there.
  std::string HeaderText() const;
  /// What the beginning of the file says: "program", "library", "library_build", "feature_library" and others; "" for what
  /// it does not say.
  std::string Fact(const std::string& key) const;
  std::uint32_t Process() const { return header_.process; }
  std::uint64_t StartUtcNs() const { return header_.startUtcNs; }
  /// The images that the call wrote to the program's array, where the trace has them; parts that it does not have are 0.
  std::vector<std::vector<std::byte>> ImagesOf(const TTraceCall& call) const;
  /// Calls that could not be recorded.
  std::uint64_t DroppedCalls() const { return droppedCalls_; }
  /// Parts of 64 KiB that later ones have replaced.
  std::uint64_t DroppedChunks() const { return droppedChunks_; }
  /// How much of the file is in use; what is behind it has only zeros.
  std::size_t UsedBytes() const { return usedBytes_; }
  /// The file itself.
  const std::vector<std::byte>& Bytes() const { return bytes_; }

private:
  struct TChunk;
  struct TPixelRecord
  {
    std::uint32_t thread;
    double seconds;
    std::span<const std::byte> contents;
  };
  struct TThreadState
  {
    std::uint32_t number;
    std::uint32_t system;
    std::vector<std::size_t> open;      // calls that have no end yet, the outermost first
    std::vector<std::size_t> uncertain; // calls whose end may be in a part that was dropped
  };

  bool ParseFact(const std::string& line);
  void ParseChunks();
  void ParseRecords(const TChunk& chunk, TThreadState*& thread);
  void AddRecord(const TraceFormat::TRecordHeader& header, std::span<const std::byte> contents,
                 TThreadState& thread);
  std::size_t TakeCall(std::vector<std::size_t>& calls, const TTraceFunction& function, std::uint16_t number);
  TThreadState& ThreadOf(std::uint32_t system);
  void MeasureClock(const std::vector<TChunk>& chunks);
  double SecondsOf(std::uint64_t ticks) const;

  std::vector<std::byte> bytes_;
  TraceFormat::TFileHeader header_ = {};
  double secondsPerTick_ = 1e-9;
  std::vector<std::unique_ptr<TTraceFunction>> functions_; // by their numbers; null: no such function
  std::vector<std::pair<std::string, std::string>> facts_;
  std::vector<TVariable> variables_;
  std::vector<TTraceCall> calls_;
  std::vector<TFrames> frames_;
  std::vector<TPixelRecord> pixels_; // by time
  std::vector<TThread> threads_;
  std::deque<TThreadState> states_; // while it is parsed
  std::uint64_t droppedCalls_ = 0;
  std::uint64_t droppedChunks_ = 0;
  std::size_t usedBytes_ = 0;
};
