// SPDX-License-Identifier: MIT
// A thread for each camera.
#include "tools/TAcquireSeveral.h"

#include "tools/TCameraOutput.h"
#include "tools/TInterrupt.h"

#include <algorithm>
#include <barrier>
#include <cstdio>
#include <exception>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace vxtool {

namespace {

std::vector<std::string> NamesOf(const std::vector<TOptions>& options)
{
  std::vector<std::string> names;
  names.reserve(options.size());
  for (const TOptions& camera : options) names.push_back(camera.camera.Text());
  return names;
}

// Lets its thread wait for the others, which do not wait for it any more when it ends.
class TInStep
{
public:
  explicit TInStep(std::barrier<>& all) : all_(all) {}
  ~TInStep() { all_.arrive_and_drop(); }
  TInStep(const TInStep&) = delete;
  TInStep& operator=(const TInStep&) = delete;
  void WaitForOthers() { all_.arrive_and_wait(); }

private:
  std::barrier<>& all_;
};

} // namespace

TAcquireSeveral::TAcquireSeveral(const std::vector<TOptions>& options)
    : rows_(stderr, isatty(STDERR_FILENO) == 1, NamesOf(options))
{
  for (const TOptions& camera : options)
    cameras_.push_back(std::make_unique<TAcquireCommand>(camera, camera.camera.Text()));
}

ExitCode TAcquireSeveral::Run()
{
  ExitCode code = ExitCode::Success;
  {
    const TInterrupt interrupt;
    code = InThreads([](TAcquireCommand& camera) { return camera.Open().value_or(ExitCode::Success); }, [] {});
    if (code == ExitCode::Success) code = SetUp();
    if (code == ExitCode::Success) code = TakeImages();
  }
  return FirstOf(code, WarmUp());
}

ExitCode TAcquireSeveral::SetUp()
{
  for (std::size_t index = 0; index < cameras_.size(); ++index) {
    const TCameraOutput output(rows_, index);
    if (const std::optional<ExitCode> refused = cameras_[index]->SetUp()) return *refused;
  }
  return ExitCode::Success;
}

ExitCode TAcquireSeveral::TakeImages()
{
  std::barrier<> all(static_cast<std::ptrdiff_t>(cameras_.size()));
  const auto take = [&all](TAcquireCommand& camera) {
    TInStep inStep(all);
    return camera.TakeImages([&inStep] { inStep.WaitForOthers(); });
  };
  return InThreads(take, [&all] { all.arrive_and_drop(); });
}

ExitCode TAcquireSeveral::WarmUp()
{
  const auto isWarmedUp = [](const auto& camera) { return camera->IsToWarmUp(); };
  if (std::none_of(cameras_.begin(), cameras_.end(), isWarmedUp)) return ExitCode::Success;
  const TInterrupt interrupt;
  return InThreads(
      [](TAcquireCommand& camera) { return camera.IsToWarmUp() ? camera.WarmUp() : ExitCode::Success; }, [] {});
}

ExitCode TAcquireSeveral::InThreads(const std::function<ExitCode(TAcquireCommand&)>& function,
                                    const std::function<void()>& onNoThread)
{
  std::vector<ExitCode> codes(cameras_.size(), ExitCode::Success);
  const auto run = [&](std::size_t index) {
    const TCameraOutput output(rows_, index);
    try {
      codes[index] = function(*cameras_[index]);
    } catch (const std::exception& error) {
      codes[index] = Fail(ExitCode::CameraError, error.what());
    }
  };
  std::vector<std::thread> threads;
  threads.reserve(cameras_.size());
  for (std::size_t index = 0; index < cameras_.size(); ++index) {
    try {
      threads.emplace_back(run, index);
    } catch (const std::system_error& error) {
      codes[index] = Fail(ExitCode::CameraError, rows_.Name(index) + ": no thread: " + error.what());
      onNoThread();
    }
  }
  for (std::thread& thread : threads) thread.join();
  ExitCode first = ExitCode::Success;
  for (const ExitCode code : codes) first = FirstOf(first, code);
  return first;
}

} // namespace vxtool
