// SPDX-License-Identifier: MIT
// Series on disk: every frame, whatever happens to the disk or to the program.
#include "tests/support/CounterCameraTest.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/Sanitizers.h"
#include "tests/support/TScratchDirectory.h"
#include "tests/support/TSpoolDirectory.h"
#include "vxcore/simulated/imaging/TCounterPattern.h"

#include <array>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <sched.h>
#include <span>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

enum
{
  kImagePerFile = 1,
  kImagesTogether = 3
};

/// What the counter pattern says of a spooled image: the camera's frame number from 1, 0 when a byte is wrong. The
/// stamp does not cover the metadata behind the pixels.
std::uint64_t FrameNumberOfBytes(const std::vector<unsigned char>& bytes, std::size_t pixelBytes)
{
  if (bytes.size() < pixelBytes) return 0;
  const auto result = vxsim::TCounterPattern::VerifyAny(std::span(bytes.data(), pixelBytes));
  return result ? result.head.frameNumber : 0;
}

class Spool : public CounterCameraTest
{
protected:
  Spool(const char* configuration = kCounterCamera) : CounterCameraTest(configuration) {}

  void SpoolTo(const std::string& path, int method)
  {
    std::string text = path;
    ASSERT_EQ(SetSpool(1, method, text.data()), RC_SUCCESS);
  }

  /// Every image of the directory is the frame that its number says.
  static std::uint64_t ExpectImagesOnDisk(const TSpoolDirectory& run, std::size_t pixelBytes)
  {
    return run.VisitImages([&](std::uint64_t number, const std::vector<unsigned char>& bytes) {
      ASSERT_EQ(FrameNumberOfBytes(bytes, pixelBytes), number + 1);
    });
  }

  /// The run may end before all frames are pushed, and the camera refuses the rest.
  static void PushWhatIsTaken(int count) { VXSIM_PushFrames(0, count); }

  /// Whether another process could write a run into the directory.
  bool IsDirectoryFree() const
  {
    const int other = open(run_.Path().c_str(), O_RDONLY | O_DIRECTORY);
    const bool isFree = flock(other, LOCK_EX | LOCK_NB) == 0;
    close(other);
    return isFree;
  }

  static bool HasEnded()
  {
    return Eventually([] { return Status() != RC_ACQUIRING; });
  }

  /// As HasEnded(), but a failure shows in the status before the directory is complete.
  bool HasEndedOnDisk() const
  {
    return HasEnded() && Eventually([this] { return run_.Text("run", "State") != "recording"; });
  }

  TScratchDirectory scratch_;
  TSpoolDirectory run_{scratch_.Directory() + "/a/b"};
};

class SpoolMethods : public Spool, public ::testing::WithParamInterface<int>
{
};

INSTANTIATE_TEST_SUITE_P(Methods, SpoolMethods, ::testing::Values(kImagePerFile, kImagesTogether));

constexpr std::size_t kCounterBytes = kCounterPixels * 2;

struct TSize
{
  int width;
  int height;
  int method;
  int images;
  int threads;
};

class SpoolSizes : public Spool, public ::testing::WithParamInterface<TSize>
{
protected:
  SpoolSizes() : Spool(kFreeCounterCamera) {}
};

// Small images go in blocks, large ones each for itself; odd widths leave no image but the first where a disk's
// blocks begin; the ring has 5000 slots for small images and fewer than 300 for those of 1 MB.
TEST_P(SpoolSizes, EveryFrameIsOnDiskBitForBit)
{
  const TSize& size = GetParam();
  Open(size.width, size.height);
  const int images = kHasSanitizer ? std::min(size.images, 20000) : size.images;
  SpoolTo(run_.Path(), size.method);
  ASSERT_EQ(SetSpoolThreadCount(size.threads), RC_SUCCESS);
  StartSeries(images);
  ASSERT_TRUE(HasEnded());
  ASSERT_EQ(Status(), RC_IDLE);
  EXPECT_EQ(ImageCount(), images);
  EXPECT_EQ(Statistics().framesOverflowed, 0u);

  EXPECT_EQ(ExpectImagesOnDisk(run_, static_cast<std::size_t>(size.width) * size.height * 2),
            static_cast<std::uint64_t>(images));
  EXPECT_EQ(run_.Text("run", "State"), "complete");
  EXPECT_EQ(run_.Number("run", "ImagesWritten"), images);
  EXPECT_EQ(run_.Number("image", "Width"), size.width);
}

INSTANTIATE_TEST_SUITE_P(Sizes, SpoolSizes,
                         ::testing::Values(TSize{16, 8, kImagesTogether, 500000, 2}, // 100 times the ring
                                           TSize{16, 8, kImagePerFile, 6000, 2},     //
                                           TSize{37, 19, kImagesTogether, 20000,
                                                 1}, // blocks that do not divide the file
                                           TSize{500, 301, kImagesTogether, 1200, 3}, // 294 KiB, at odd places
                                           TSize{512, 512, kImagesTogether, 1300, 2}, // twice the ring
                                           TSize{512, 511, kImagePerFile, 150, 2}));

TEST_F(Spool, TheDirectoryDescribesTheRun)
{
  Open();
  ASSERT_EQ(SetExposureTime(0.00123f), RC_SUCCESS);
  SpoolTo(run_.Path(), kImagesTogether);
  StartSeries(3);
  EXPECT_EQ(run_.Text("run", "State"), "recording") << "it must be there before the first frame";
  EXPECT_EQ(run_.Number("run", "ImagesExpected"), 3);
  Push(1);
  ASSERT_TRUE(HasImages(1));
  EXPECT_EQ(FrameOfImage(1), 1u) << "images can be retrieved during the run";
  Push(2);
  ASSERT_TRUE(HasEnded());
  EXPECT_TRUE(run_.IsDescribed());
  EXPECT_EQ(run_.Text("image", "PixelEncoding"), "Mono16");
  EXPECT_EQ(run_.Text("run", "Completed"), "true");
  EXPECT_EQ(run_.Number("image", "Height"), 8);
  EXPECT_EQ(run_.Number("image", "Stride"), 32);
  EXPECT_NEAR(std::strtod(run_.Text("acquisition", "ExposureTime").c_str(), nullptr), 0.00123, 1e-5);
  unsigned int count = 0;
  long long ticks = -1;
  ASSERT_EQ(vxsys_GetRawMetaDataInfo(&count, &ticks, 0), RC_SUCCESS);
  EXPECT_EQ(run_.Number("run", "FirstFrameTick"), ticks);
  EXPECT_GT(run_.Number("run", "TimestampFrequency"), 0);
}

// The camera writes whole frames into their slots and reports a part of one, as if the rest were an earlier frame's.
TEST_P(SpoolMethods, NothingOfAnEarlierFrameIsWrittenBehindAShortOne)
{
  constexpr std::size_t kReported = 512;
  for (const int width : {64, 512}) {
    Open(width, 64);
    AddFault("frame 2 short 512");
    SpoolTo(run_.Path(), GetParam());
    StartSeries(3);
    Push(3);
    ASSERT_TRUE(HasEnded());
    EXPECT_EQ(Status(), RC_IDLE);
    const std::uint64_t images =
        run_.VisitImages([&](std::uint64_t number, const std::vector<unsigned char>& bytes) {
          ASSERT_GT(bytes.size(), kReported) << "the checksum is that of the whole image";
          const auto zeros = std::count(bytes.begin() + kReported, bytes.end(), 0);
          EXPECT_EQ(zeros == static_cast<std::ptrdiff_t>(bytes.size() - kReported), number == 1) << number;
        });
    EXPECT_EQ(images, 3u);
    ASSERT_EQ(ShutDown(), RC_SUCCESS);
  }
}

TEST_F(Spool, TheRoomThatARunNeedsIsKnownWhereItsLengthIs)
{
  Open();
  unsigned long long needed = 0;
  EXPECT_EQ(vxmcd_GetSpoolSpace(&needed, nullptr), RC_NOT_AVAILABLE) << "nothing is written";
  SpoolTo(run_.Path(), kImagesTogether);
  ASSERT_EQ(SetAcquisitionMode(3) | SetNumberKinetics(1000), RC_SUCCESS);
  EXPECT_EQ(vxmcd_GetSpoolSpace(&needed, nullptr), RC_SUCCESS);
  EXPECT_NEAR(static_cast<double>(needed), 1000 * (kCounterBytes + 32.0), 100e3);
  ASSERT_EQ(SetAcquisitionMode(5), RC_SUCCESS);
  EXPECT_EQ(vxmcd_GetSpoolSpace(&needed, nullptr), RC_NOT_AVAILABLE) << "until it is aborted";
}

TEST_F(Spool, WrongArgumentsAreRefusedBeforeTheCameraIsLookedUp)
{
  std::array<char, 2> path{"x"};
  EXPECT_EQ(SetSpool(1, 2, path.data()), RC_P2_INVALID);
  EXPECT_EQ(SetSpool(1, 3, nullptr), RC_P3_INVALID);
  EXPECT_EQ(SetSpool(0, 1, nullptr), RC_NOT_INITIALIZED);
  EXPECT_EQ(SetSpoolThreadCount(0), RC_P1_INVALID);
  EXPECT_EQ(SetSpoolThreadCount(1), RC_NOT_INITIALIZED);
}

TEST_F(Spool, OnlyFiniteRunsAreWrittenAndOnlyWhileItIsOn)
{
  Open();
  SpoolTo(run_.Path(), kImagesTogether);
  StartUntilAborted();
  Push(5);
  ASSERT_TRUE(HasImages(5));
  ASSERT_EQ(AbortAcquisition(), RC_SUCCESS);
  ASSERT_EQ(SetSpool(2, kImagePerFile, nullptr), RC_SUCCESS) << "only 1 switches it on";
  ExpectCleanRun();
  EXPECT_FALSE(fs::exists(run_.Path()));
}

// What fills the page cache is missing when memory for the next ring is looked for.
TEST_P(SpoolMethods, FilesDoNotStayInThePageCache)
{
  constexpr int kImages = 600;
  struct statfs system = {};
  ASSERT_EQ(statfs(scratch_.Directory().c_str(), &system), 0);
  if (system.f_type == 0x01021994) GTEST_SKIP() << "files of tmpfs are nowhere else";
  Open(256, 256);
  SpoolTo(run_.Path(), GetParam());
  StartSeries(kImages);
  for (int pushed = 100; pushed <= kImages; pushed += 100) {
    Push(100);
    ASSERT_TRUE(HasImages(pushed));
  }
  ASSERT_TRUE(HasEnded());
  const int file = open((run_.Path() + "/spool_0000000000.dat").c_str(), O_RDONLY);
  struct stat status = {};
  ASSERT_EQ(fstat(file, &status), 0);
  const auto size = static_cast<std::size_t>(status.st_size);
  void* const memory = mmap(nullptr, size, PROT_READ, MAP_SHARED, file, 0);
  std::vector<unsigned char> pages((size + 4095) / 4096);
  ASSERT_EQ(mincore(memory, size, pages.data()), 0);
  EXPECT_LT(std::count_if(pages.begin(), pages.end(), [](auto page) { return page & 1; }),
            static_cast<std::ptrdiff_t>(pages.size() / 10 + 1));
  munmap(memory, size);
  close(file);
}

// The last image has come, but most are still on their way to the disk.
TEST_P(SpoolMethods, ASeriesThatWasDeliveredIsFinishedByTheNextStartAndByClosing)
{
  constexpr int kImages = 1100;
  for (const bool closes : {false, true}) {
    Open();
    SpoolTo(run_.Path(), GetParam());
    StartSeries(kImages);
    Push(kImages);
    ASSERT_TRUE(HasImages(kImages));
    if (!closes) {
      ASSERT_EQ(SetSpool(0, 1, nullptr), RC_SUCCESS);
      ASSERT_EQ(SetAcquisitionMode(kModeUntilAborted), RC_SUCCESS); // not writable before the series has ended
      ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
      EXPECT_EQ(Status(), RC_ACQUIRING);
    }
    ASSERT_EQ(ShutDown(), RC_SUCCESS);
    EXPECT_EQ(run_.Text("run", "State"), "complete") << (closes ? "closed" : "started");
    EXPECT_EQ(run_.Number("run", "ImagesWritten"), kImages);
    EXPECT_EQ(ExpectImagesOnDisk(run_, kCounterBytes), static_cast<std::uint64_t>(kImages));
  }
}

TEST_P(SpoolMethods, AnAbortKeepsWhatWasWrittenAndSaysHowMuch)
{
  Open();
  SpoolTo(run_.Path(), GetParam());
  StartSeries(1000);
  Push(37);
  ASSERT_TRUE(HasImages(37));
  ASSERT_EQ(AbortAcquisition(), RC_SUCCESS);
  ASSERT_TRUE(HasEnded());
  EXPECT_EQ(Status(), RC_IDLE);
  EXPECT_EQ(run_.Text("run", "State"), "aborted");
  const std::uint64_t written = ExpectImagesOnDisk(run_, kCounterBytes);
  EXPECT_EQ(run_.Number("run", "ImagesWritten"), static_cast<long>(written));
  EXPECT_LE(written, 37u);
  if (GetParam() == kImagesTogether) {
    EXPECT_EQ(written, 37u);
  }
  ASSERT_EQ(SetSpool(0, 1, nullptr), RC_SUCCESS);
  ExpectCleanRun();
}

TEST_P(SpoolMethods, ADirectoryThatCannotBeUsedEndsTheRunWithItsStatusAndKeepsNothingOpen)
{
  Open();
  ExpectCleanRun();
  const int descriptors = DescriptorCount();
  const int threads = ThreadCount();
  for (const std::string& path : {scratch_.File("", "file") + "/below", std::string()}) {
    SpoolTo(path, GetParam());
    StartSeries(10);
    PushWhatIsTaken(10);
    ASSERT_TRUE(HasEnded());
    EXPECT_EQ(Status(), RC_STATUS_SPOOL_ISSUE) << path;
    EXPECT_EQ(WaitForAcquisitionTimeOut(50), RC_NO_NEW_DATA);
  }
  SpoolTo(run_.Path(), GetParam());
  StartSeries(10);
  EXPECT_FALSE(IsDirectoryFree());
  Push(10);
  ASSERT_TRUE(HasEnded());
  EXPECT_EQ(Status(), RC_IDLE) << "the next run works";
  EXPECT_EQ(ExpectImagesOnDisk(run_, kCounterBytes), 10u);
  EXPECT_TRUE(IsDirectoryFree());
  EXPECT_EQ(DescriptorCount(), descriptors);
  EXPECT_TRUE(Eventually([threads] { return ThreadCount() == threads; }));
}

TEST_P(SpoolMethods, ACameraThatDoesNotStartLeavesTheEarlierRunAsItIs)
{
  Open();
  ExpectCleanRun();
  const int threads = ThreadCount();
  SpoolTo(run_.Path(), GetParam());
  StartSeries(10);
  Push(10);
  ASSERT_TRUE(HasEnded());
  for (const auto& [fault, answer] :
       {std::pair{"call VX_Command feature AcquisitionStart at 1 rc 13", RC_SUCCESS},
        {"call VX_Command feature AcquisitionStart at 1 rc 37", RC_FRAME_UNAVAILABLE}}) {
    AddFault(fault);
    EXPECT_EQ(StartAcquisition(), answer) << fault;
    AbortAcquisition();
    EXPECT_EQ(run_.Text("run", "State"), "complete") << fault;
    EXPECT_EQ(ExpectImagesOnDisk(run_, kCounterBytes), 10u);
  }
  EXPECT_TRUE(IsDirectoryFree());
  EXPECT_TRUE(Eventually([threads] { return ThreadCount() == threads; }));
}

// With one image a file, frames are written after their dispatch; otherwise the last frame is accepted before its file
// is complete.
TEST_P(SpoolMethods, AFailureThatNoDispatchCanReportShowsInTheStatus)
{
  Open();
  ASSERT_EQ(SetTriggerMode(1), RC_SUCCESS) << "frames have no time limit";
  SpoolTo(run_.Path(), GetParam());
  StartSeries(GetParam() == kImagePerFile ? 100 : 10);
  Push(9);
  ASSERT_TRUE(GetParam() == kImagesTogether ||
              Eventually([this] { return run_.VisitImages([](auto, const auto&) {}) == 9; }));
  ASSERT_TRUE(HasImages(9));
  fs::remove_all(run_.Path());
  Push(1);
  ASSERT_TRUE(HasEnded());
  EXPECT_EQ(Status(), RC_STATUS_SPOOL_ISSUE);
}

/// Runs @p test in a child process whose /tmp-like directory is a file system of @p bytes. Returns the child's
/// exit code, or -1 where that cannot be had.
template <class Test>
int OnSmallDisk(const std::string& directory, const std::string& size, Test test)
{
  const pid_t child = fork();
  if (child == 0) {
    const std::string options = "size=" + size;
    if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount("none", directory.c_str(), "tmpfs", 0, options.c_str()) != 0)
      _exit(99);
    _exit(test());
  }
  int status = 0;
  waitpid(child, &status, 0);
  if (WIFSIGNALED(status)) return 1000 + WTERMSIG(status);
  return WEXITSTATUS(status) == 99 ? -1 : WEXITSTATUS(status);
}

class SpoolFullDisk : public Spool, public ::testing::WithParamInterface<TSize>
{
};

// Each disk is full in the middle of a file. The images that fit are there, but for what the description takes.
TEST_P(SpoolFullDisk, EndsTheRunWithItsStatusAndEveryFrameThatFitsIntact)
{
  const TSize& size = GetParam();
  for (const char* room : {"4k", "64k", "2m", "7m", "8700k"}) {
    const int result = OnSmallDisk(scratch_.Directory(), room, [&] {
      VXSIM_Configure(kFreeCounterCamera);
      Open(size.width, size.height);
      SpoolTo(run_.Path(), size.method);
      EXPECT_EQ(SetAcquisitionMode(3) | SetNumberKinetics(size.images), RC_SUCCESS);
      unsigned long long needed = 0, available = 0, availableAgain = 0;
      EXPECT_EQ(vxmcd_GetSpoolSpace(&needed, &available), RC_SUCCESS);
      EXPECT_GT(needed, available);
      StartSeries(size.images);
      if (!HasEndedOnDisk() || Status() != RC_STATUS_SPOOL_ISSUE) return 2;
      const auto written =
          static_cast<long>(ExpectImagesOnDisk(run_, static_cast<std::size_t>(size.width) * size.height * 2));
      EXPECT_EQ(written, run_.Number("run", "ImagesWritten"));
      const long imageBytes =
          size.method == kImagePerFile && size.width < 64 ? 4096 : run_.Number("data", "ImageSize");
      EXPECT_GE(written, (static_cast<long>(available) - 65536) / (imageBytes + 32));
      EXPECT_TRUE(Eventually([&] { // the files of a run without images are made anew at its end
        return vxmcd_GetSpoolSpace(&needed, &availableAgain) == RC_SUCCESS && availableAgain == available;
      })) << "the next run replaces this one: "
          << availableAgain << " instead of " << available;
      return HasFailure() ? 3 : 0;
    });
    if (result < 0) GTEST_SKIP() << "no right to mount a small file system here";
    EXPECT_EQ(result, 0) << room;
  }
}

INSTANTIATE_TEST_SUITE_P(Sizes, SpoolFullDisk,
                         ::testing::Values(TSize{16, 8, kImagePerFile, 4000, 2},
                                           TSize{16, 8, kImagesTogether, 28000, 2},
                                           TSize{512, 512, kImagesTogether, 20, 2}));

TEST_P(SpoolMethods, WhatTheIndexNamesIsOnDiskThoughTheProgramIsKilled)
{
  constexpr int kTimes = kHasSanitizer ? 5 : 12;
  std::uint64_t found = 0;
  for (int time = 0; time < kTimes; ++time) {
    const std::string directory = scratch_.Directory() + "/" + std::to_string(time);
    const pid_t child = fork();
    if (child == 0) {
      prctl(PR_SET_PDEATHSIG, SIGKILL); // nobody else would stop it
      VXSIM_Configure(kFreeCounterCamera);
      Initialize(nullptr);
      SetImage(1, 1, 1, 300, 1, 300);
      SpoolTo(directory, GetParam());
      StartSeries(50000); // 9 GB: more than is written before the end
      for (;;) pause();
    }
    const TSpoolDirectory run(directory);
    const std::string index = directory + "/spool_index.dat";
    if (time == kTimes - 1) // not before there is something to find
      EXPECT_TRUE(Eventually([&] { return fs::exists(index) && fs::file_size(index) >= 32; }));
    else
      std::this_thread::sleep_for(std::chrono::milliseconds(20 + 13 * time));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    if (!run.IsDescribed()) continue; // not that far yet
    EXPECT_EQ(run.Text("run", "State"), "recording");
    found += ExpectImagesOnDisk(run, 300 * 300 * 2);
    fs::remove_all(directory);
  }
  EXPECT_GT(found, 0u);
}

} // namespace
