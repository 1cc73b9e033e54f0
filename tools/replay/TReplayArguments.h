// SPDX-License-Identifier: MIT
// The arguments of a call that is made again.
#pragma once

#include "tools/replay/ReplayFunctions.h"
#include "tools/replay/TReplayFiles.h"
#include "tools/replay/TReplayObjects.h"
#include "trace/TTraceCall.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <memory>
#include <string>
#include <vector>

namespace vxtool {

/// Memory for the images of one thread, which is used again for each call. One thread at a time.
class TReplayRoom final
{
public:
  /// At least so many bytes, with any contents; null when there is not so much memory.
  void* Of(std::size_t bytes);

private:
  std::unique_ptr<void, decltype(&std::free)> memory_{nullptr, std::free};
  std::size_t bytes_ = 0;
};

/// Arguments as the program gave them: numbers, texts and arrays with the recorded values, and memory of the recorded size for
/// what the function writes. Borrows all that it is made of. One thread at a time.
class TReplayArguments final
{
public:
  struct TContext
  {
    TReplayObjects& objects;
    const TReplayFiles& files;
    TReplayRoom& room;
    unsigned int (*observer)(void*); ///< stands for the callbacks of the program
  };

  TReplayArguments(const TTraceCall& call, const TReplayFunction& function, const TContext& context);
  TReplayArguments(const TReplayArguments&) = delete;
  TReplayArguments& operator=(const TReplayArguments&) = delete;

  /// Why the arguments are not known; null when they are.
  const char* WhyUnknown() const { return whyUnknown_; }
  const std::uint64_t* Values() const { return values_.data(); }
  /// The record of the call's end, with this result.
  std::vector<std::byte> Outputs(std::uint64_t result) const;

private:
  std::uint64_t ValueOf(std::size_t index);
  std::uint64_t NumberOf(std::size_t index);
  std::uint64_t InputText(std::size_t index);
  std::uint64_t InputArray(std::size_t index);
  std::uint64_t OutputNumber(std::size_t index);
  std::uint64_t Words(std::size_t index);
  std::uint64_t Pointer(std::size_t index);
  std::uint64_t Pixels(std::size_t index);
  std::uint64_t Unknown(const char* why);
  void* Memory(std::size_t bytes);
  std::size_t LengthOf(const TTraceArgument& argument) const;

  const TTraceCall& call_;
  const TReplayFunction& function_;
  const TContext& context_;
  const std::vector<TTraceArgument>& arguments_;
  const std::vector<TTraceValue> recorded_;
  const char* whyUnknown_ = nullptr;
  std::vector<std::uint64_t> values_;
  std::deque<std::unique_ptr<void, decltype(&std::free)>> memory_;
  std::deque<std::wstring> texts_;
};

} // namespace vxtool
