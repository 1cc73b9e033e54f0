// SPDX-License-Identifier: MIT
// Opening and closing, in every state.
#include "tools/check/CameraRuns.h"
#include "tools/check/Checks.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <set>
#include <thread>

namespace vxtool {

namespace {

using TClock = std::chrono::steady_clock;

constexpr int kMaxOpens = 20;
constexpr std::chrono::seconds kOpenTime(5); ///< a camera that opens slowly is opened less often
constexpr std::chrono::seconds kCloseTime(2);
constexpr int kFirstOpens = 2; ///< until everything is loaded

using TNames = std::multiset<std::string>;

std::string LineOf(const std::filesystem::path& file)
{
  std::string line;
  std::getline(std::ifstream(file), line);
  return line;
}

// What the process has open, without the numbers that tell sockets of one kind apart.
TNames OpenFiles()
{
  TNames names;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd", error)) {
    const std::string name = std::filesystem::read_symlink(entry.path(), error).string();
    names.insert(name.substr(0, name.find(":[")));
  }
  return names;
}

TNames Threads()
{
  TNames names;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task", error))
    names.insert(LineOf(entry.path() / "comm"));
  return names;
}

// What a camera needs for its closing may take a moment longer.
void ExpectAtMost(const char* what, TNames (*namesNow)(), const TNames& before)
{
  const auto end = TClock::now() + kCloseTime;
  TNames now = namesNow();
  while (now.size() > before.size() && TClock::now() < end) {
    TCheckContext::StopIfInterrupted();
    std::this_thread::sleep_for(std::chrono::milliseconds(5)); // between looks
    now = namesNow();
  }
  if (now.size() <= before.size()) return;
  std::string actual = std::to_string(now.size()) + ", with";
  std::vector<std::string> added;
  std::set_difference(now.begin(), now.end(), before.begin(), before.end(), std::back_inserter(added));
  for (const std::string& name : added) actual += " " + name;
  TCheckContext::Fail(what, std::to_string(before.size()) + " at most", actual);
}

void Reopen(TCheckContext& check)
{
  TCheckContext::ExpectCode("closing the camera", RC_SUCCESS, CHECK_CALL(check, ShutDown));
  TCheckContext::ExpectCode("opening the camera again", RC_SUCCESS, CHECK_CALL(check, Initialize, nullptr));
}

} // namespace

void OpensAndCloses(TCheckContext& check)
{
  TNames files;
  TNames threads;
  const auto end = TClock::now() + kOpenTime;
  for (int open = 0; open < kFirstOpens || (open < kMaxOpens && TClock::now() < end); ++open) {
    TCheckContext::ExpectCode("closing the camera", RC_SUCCESS, CHECK_CALL(check, ShutDown));
    if (open == kFirstOpens) { // of an open camera, threads may be about to open something
      files = OpenFiles();
      threads = Threads();
    }
    TCheckContext::ExpectCode("opening the camera again", RC_SUCCESS, CHECK_CALL(check, Initialize, nullptr));
  }
  if (files.empty()) TCheckContext::Skip("the camera opens too slowly to be opened often");
  TCheckContext::ExpectCode("closing the camera", RC_SUCCESS, CHECK_CALL(check, ShutDown));
  ExpectAtMost("open files after opening and closing often", OpenFiles, files);
  ExpectAtMost("threads after opening and closing often", Threads, threads);
}

void RefusesWhenClosed(TCheckContext& check)
{
  TCheckContext::ExpectCode("closing the camera", RC_SUCCESS, CHECK_CALL(check, ShutDown));
  int number = 0;
  int other = 0;
  long count = 0;
  float time = 0.0F;
  unsigned short pixel = 0;
  const auto expectRefused = [](const char* what, unsigned int code) {
    TCheckContext::ExpectCode(std::string(what) + " with a closed camera", RC_NOT_INITIALIZED, code);
  };
  expectRefused("ShutDown", CHECK_CALL(check, ShutDown));
  expectRefused("SetExposureTime", CHECK_CALL(check, SetExposureTime, 0.01F));
  expectRefused("GetAcquisitionTimings", CHECK_CALL(check, GetAcquisitionTimings, &time, &time, &time));
  expectRefused("GetDetector", CHECK_CALL(check, GetDetector, &number, &other));
  expectRefused("SetImage", CHECK_CALL(check, SetImage, 1, 1, 1, 16, 1, 16));
  expectRefused("GetTemperatureF", CHECK_CALL(check, GetTemperatureF, &time));
  expectRefused("GetCameraSerialNumber", CHECK_CALL(check, GetCameraSerialNumber, &number));
  expectRefused("StartAcquisition", CHECK_CALL(check, StartAcquisition));
  expectRefused("AbortAcquisition", CHECK_CALL(check, AbortAcquisition));
  expectRefused("WaitForAcquisitionTimeOut", CHECK_CALL(check, WaitForAcquisitionTimeOut, 10));
  expectRefused("GetStatus", CHECK_CALL(check, GetStatus, &number));
  expectRefused("GetMostRecentImage16", CHECK_CALL(check, GetMostRecentImage16, &pixel, 1));
  expectRefused("GetTotalNumberImagesAcquired", CHECK_CALL(check, GetTotalNumberImagesAcquired, &count));
  TCheckContext::ExpectEqual("the feature library's handle of a closed camera", VX_HANDLE_NONE,
                             check.FeatureHandle());
  TCheckContext::ExpectCode("opening the camera again", RC_SUCCESS, CHECK_CALL(check, Initialize, nullptr));
}

void OpensTwice(TCheckContext& check)
{
  const int handle = check.FeatureHandle();
  const TImageSize size = ImageSize(check);
  TCheckContext::ExpectCode("opening an open camera", RC_SUCCESS, CHECK_CALL(check, Initialize, nullptr));
  TCheckContext::ExpectEqual("the feature library's handle afterwards", handle, check.FeatureHandle());
  TCheckContext::ExpectEqual("the image area afterwards", size.Text(), ImageSize(check).Text());
}

void ClosesInRun(TCheckContext& check)
{
  StartRun(check, RunKind::UntilAborted);
  WaitForImages(check, 1);
  Reopen(check);
  TCheckContext::ExpectEqual("the status of a camera that was opened", static_cast<int>(RC_IDLE), Status(check));
  MakeReady(check);
  TakeSeries(check, 2);
}

void ClosesInWait(TCheckContext& check)
{
  constexpr int kWaitMs = 3000;
  StartRun(check, RunKind::UntilAborted);
  check.Need("AbortAcquisition", CHECK_CALL(check, AbortAcquisition));
  check.Need("a run cannot be ended", !IsAcquiring(check));
  UseUpWaits(check);
  const auto start = TClock::now();
  auto wait =
      std::async(std::launch::async, [&check] { return CHECK_CALL(check, WaitForAcquisitionTimeOut, kWaitMs); });
  const bool isWaiting = wait.wait_for(std::chrono::milliseconds(50)) == std::future_status::timeout;
  const unsigned int closed = CHECK_CALL(check, ShutDown);
  const unsigned int code = wait.get();
  const double seconds = std::chrono::duration<double>(TClock::now() - start).count();
  TCheckContext::Expect(isWaiting, "a wait without a run", "lasts until its time-out", "ended at once");
  TCheckContext::ExpectCode("closing the camera during a wait", RC_SUCCESS, closed);
  TCheckContext::Expect(code == RC_NO_NEW_DATA || code == RC_NOT_INITIALIZED, "the wait",
                        TCheckContext::CodeText(static_cast<unsigned int>(RC_NO_NEW_DATA)),
                        TCheckContext::CodeText(code));
  TCheckContext::Expect(seconds < kWaitMs * 1e-3, "the wait's end", "when the camera is closed",
                        "at its time-out, after " + TCheckContext::Shown(seconds) + " s");
}

} // namespace vxtool
