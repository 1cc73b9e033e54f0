// SPDX-License-Identifier: MIT
// Runs on disks that lack something, are slow, or fail.
#include "spool/TSpoolPipeline.h"

#include "runs/TRunIndex.h"
#include "spool/ISpooler.h"
#include "spool/TSpoolLayout.h"
#include "tests/spool/logged_by.h"
#include "tests/spool/TDiskFaults.h"
#include "tests/support/TScratchDirectory.h"
#include "tests/support/TSpoolDirectory.h"
#include "tests/utility/SystemCalls.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Image = std::vector<unsigned char>;
using testing::EndsWith;
using testing::HasSubstr;
using Call = TDiskFaults::Call;

struct TCase
{
  int method;
  std::size_t imageBytes;
  int images;
};

class SpoolPipeline : public ::testing::TestWithParam<TCase>
{
protected:
  SpoolPipeline()
  {
    std::mt19937_64 random(1);
    images_.resize(static_cast<std::size_t>(GetParam().images), Image(GetParam().imageBytes));
    for (Image& image : images_)
      for (unsigned char& byte : image) byte = static_cast<unsigned char>(random());
  }

  /// Writes all images, as far as the pipeline takes them. Returns whether it took and brought all to the disk.
  /// @p event happens when half of them are written.
  bool Write(int threads = 2, const std::function<void()>& event = {})
  {
    TSpoolPipeline pipeline({run_.Path(), GetParam().method, threads}, GetParam().imageBytes,
                            static_cast<std::uint32_t>(GetParam().images));
    pipeline.Begin();
    for (int i = 0; i < GetParam().images; ++i) {
      if (event && i == GetParam().images / 2) {
        EXPECT_TRUE(system_calls::Eventually([this] { return HasRecordOfFirstImage(); }));
        event();
      }
      if (!pipeline.Spool(i, images_[static_cast<std::size_t>(i)].data())) break;
    }
    pipeline.Finish();
    return !pipeline.HasFailed();
  }

  /// An image that is still being written may hide that its file was truncated.
  bool HasRecordOfFirstImage() const
  {
    TRunIndex index;
    index.Read(run_.Path(), GetParam().images);
    return index.Find(0);
  }

  /// What the index names is what was given. Returns how many images there are.
  std::uint64_t ExpectImages() const
  {
    return run_.VisitImages([this](std::uint64_t number, const Image& bytes) {
      ASSERT_LT(number, images_.size());
      EXPECT_EQ(bytes, images_[number]) << "image " << number;
    });
  }

  void ExpectComplete() const
  {
    EXPECT_EQ(ExpectImages(), images_.size());
    EXPECT_EQ(run_.Text("run", "State"), "complete");
  }

  void ExpectFailed() const
  {
    const std::uint64_t there = ExpectImages();
    EXPECT_EQ(run_.Number("run", "ImagesWritten"), static_cast<long>(there));
    EXPECT_EQ(run_.Text("run", "State"), "failed");
    EXPECT_NE(run_.Text("run", "Failure"), "");
  }

  std::vector<Image> images_;
  TScratchDirectory scratch_;
  TSpoolDirectory run_{scratch_.Directory() + "/run"};
  TDiskFaults disk_;
};

TEST_P(SpoolPipeline, NeedsNeitherDirectWritesNorPreallocationNorAFastDisk)
{
  disk_.noDirectWrites = true;
  EXPECT_TRUE(Write());
  ExpectComplete();
  disk_.noPreallocation = true;
  EXPECT_TRUE(Write());
  ExpectComplete();
  disk_.noDirectWrites = false;
  disk_.Fail(Call::kSyncRange, ".dat", ENOSYS);
  disk_.writeDelayMs = 10;
  EXPECT_TRUE(Write());
  ExpectComplete();
}

TEST_P(SpoolPipeline, WritesOnWhereAWriteWasCutShort)
{
  disk_.noPreallocation = true;
  disk_.writesAreCut = true;
  EXPECT_TRUE(Write());
  ExpectComplete();
}

TEST_P(SpoolPipeline, KeepsTheImagesBeforeAWriteThatFailed)
{
  for (const int before : {0, 1, 5}) {
    disk_.writesUntilError = before;
    EXPECT_FALSE(Write());
    ExpectFailed();
    EXPECT_LT(ExpectImages(), images_.size());
  }
}

TEST_P(SpoolPipeline, KeepsEveryImageThatFitsOnTheDisk)
{
  const bool fits = GetParam().method == TSpoolLayout::kImagePerFile; // the room is that of each file
  disk_.fileRoom = static_cast<long>(7 * GetParam().imageBytes + GetParam().imageBytes / 2);
  for (const bool noPreallocation : {false, true}) {
    disk_.noPreallocation = noPreallocation;
    EXPECT_EQ(Write(), fits);
    EXPECT_EQ(ExpectImages(), fits ? images_.size() : 7u) << noPreallocation;
    if (!fits) ExpectFailed();
  }
}

// Each of the calls that bring a run to the disk fails alone.
TEST_P(SpoolPipeline, CountsOnlyWhatIsKnownToBeOnTheDisk)
{
  const std::pair<Call, const char*> failures[] = {{Call::kSyncRange, "spool_0000000000.dat"},
                                                   {Call::kSyncData, "spool_0000000000.dat"},
                                                   {Call::kSyncData, "spool_index.dat"}};
  for (const auto& [call, file] : failures) {
    disk_.FailNothing();
    disk_.Fail(call, file, EREMOTEIO);
    EXPECT_FALSE(Write()) << file;
    const std::uint64_t recorded = ExpectImages();
    EXPECT_LT(run_.Number("run", "ImagesWritten"), static_cast<long>(recorded)) << file;
    EXPECT_EQ(run_.Text("run", "State"), "failed") << file;
    EXPECT_THAT(run_.Text("run", "Failure"), EndsWith("Remote I/O error")) << file;
  }
}

TEST_P(SpoolPipeline, FailsWhenItsDescriptionDoesNotReachTheDisk)
{
  for (const char* file : {"acquisitionmetadata.ini.tmp", "/run"}) {
    disk_.FailNothing();
    disk_.Fail(Call::kSync, file, EREMOTEIO);
    EXPECT_FALSE(Write());
    EXPECT_EQ(ExpectImages(), 0u) << "it is seen before the first image";
  }
  disk_.FailNothing();
  disk_.Fail(Call::kSync, "(deleted)",
             EREMOTEIO); // the room for the description of the end, which must do without
  EXPECT_TRUE(Write());
  ExpectComplete();
  disk_.Fail(Call::kSync, "acquisitionmetadata.ini.tmp", EREMOTEIO, 1);
  EXPECT_FALSE(Write());
  EXPECT_EQ(run_.Text("run", "State"), "recording");
}

// Somebody cleans up while a run is written.
TEST_P(SpoolPipeline, FailsWhenItsFilesAreRemovedOrTruncated)
{
  const auto remove = [](const fs::path& file) { fs::remove(file); };
  const auto truncate = [](const fs::path& file) { fs::resize_file(file, 0); };
  for (const auto& [harm, file] :
       {std::pair<std::function<void(const fs::path&)>, const char*>{remove, "0000000000"},
        {truncate, "0000000000"},
        {remove, "index"},
        {truncate, "index"}}) {
    Write(2, [&, harm = harm, file = file] { harm(run_.Path() + "/spool_" + file + ".dat"); });
    EXPECT_EQ(run_.Text("run", "State"), "failed") << file;
    EXPECT_THAT(run_.Text("run", "Failure"), HasSubstr("removed or truncated")) << file;
    if (file == std::string("index")) continue;
    long readable = 0;
    run_.VisitImages([&](auto, const Image& bytes) { readable += bytes.empty() ? 0 : 1; });
    EXPECT_LE(run_.Number("run", "ImagesWritten"), readable) << file;
  }
}

TEST_P(SpoolPipeline, DoesWithAsManyThreadsAsThereAre)
{
  EXPECT_TRUE(Write(0));
  ExpectComplete();
  EXPECT_TRUE(Write(50));
  ExpectComplete();
  // With no thread to be had everything is done by the caller, but for what the write task does.
  system_calls::Directed system;
  system.threadCreationError = EAGAIN;
  const bool needsThread = GetParam().method == TSpoolLayout::kImagePerFile;
  EXPECT_EQ(Write(), !needsThread);
  if (!needsThread) ExpectComplete();
}

INSTANTIATE_TEST_SUITE_P(Cases, SpoolPipeline,
                         ::testing::Values(TCase{1, 9001, 40}, TCase{1, 300007, 12}, TCase{3, 3001, 10000},
                                           TCase{3, 300007, 40}, TCase{3, 524288, 30}));

class SpoolDirectories : public ::testing::Test
{
protected:
  /// A run of nothing, or of images of 8 MiB. Returns whether it was written.
  bool Write(int images = 0) const
  {
    Image image(8 << 20);
    TSpoolPipeline pipeline({path_, TSpoolLayout::kImagesTogether, 2}, image.size(),
                            static_cast<std::uint32_t>(images));
    pipeline.Begin();
    for (int i = 0; i < images; ++i)
      if (!pipeline.Spool(i, image.data())) break;
    pipeline.Finish();
    return !pipeline.HasFailed();
  }

  TScratchDirectory scratch_;
  std::string path_ = scratch_.Directory() + "/run";
  TDiskFaults disk_;
};

// A file of 64 MiB is on the disk by itself, and only its name is not.
TEST_F(SpoolDirectories, NeedNotKnowHowToGetNamesToTheDisk)
{
  for (const int error : {EINVAL, ENOTSUP, ENOSYS, EIO, ENOSPC, EDQUOT}) {
    disk_.FailNothing();
    disk_.Fail(Call::kSync, "/run", error);
    EXPECT_EQ(Write(8), error == EINVAL || error == ENOTSUP || error == ENOSYS) << error;
  }
}

TEST_F(SpoolDirectories, MustNotHaveABackslashInTheirRealName)
{
  const std::string real = scratch_.Directory() + "/a\\b";
  fs::create_directory(real);
  fs::create_directory_symlink(real, path_);
  EXPECT_FALSE(Write());
  EXPECT_TRUE(fs::is_empty(real));
  EXPECT_FALSE(fs::exists(scratch_.Directory() + "/a"));
}

TEST_F(SpoolDirectories, HaveOneRunAndAreFreeAfterItThoughAChildHasTheirDescriptor)
{
  TSpoolPipeline pipeline({path_, TSpoolLayout::kImagesTogether, 1}, 4096, 1);
  pipeline.Begin();
  EXPECT_FALSE(Write()) << "another run";
  const pid_t child = fork();
  if (child == 0)
    for (;;) pause();
  pipeline.Finish();
  EXPECT_TRUE(Write());
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
}

TEST_F(SpoolDirectories, KeepAnEarlierRunThatCannotBeRemoved)
{
  fs::create_directories(path_ + "/acquisitionmetadata.ini");
  scratch_.File("an image", "run/spool_0000000000.dat");
  EXPECT_FALSE(Write(1));
  EXPECT_EQ(TextOf(path_ + "/spool_0000000000.dat"), "an image");
}

TEST_F(SpoolDirectories, LoseTheFilesOfAnEarlierRunAndNothingElse)
{
  fs::create_directory(path_);
  for (const char* name : {"notes.txt", "spool_0000000007.dat", "spool_000000001x.dat", "spool_1.dat"})
    scratch_.File("", std::string("run/") + name);
  EXPECT_TRUE(Write(1));
  const std::vector<std::string> expected = {"acquisitionmetadata.ini", "notes.txt",   "spool_0000000000.dat",
                                             "spool_000000001x.dat",    "spool_1.dat", "spool_index.dat"};
  EXPECT_EQ(TSpoolDirectory(path_).Files(), expected);
}

// Small images are closed many at a time, but the index does not wait for that when they come slowly.
TEST_F(SpoolDirectories, HaveImagesOfASlowCameraWithinASecondOrTwoWithTheirTimes)
{
  std::vector<Image> images{Image(256, 1), Image(256, 2), Image(256, 3)};
  TSpoolPipeline pipeline({path_, TSpoolLayout::kImagesTogether, 2}, 256, 100);
  ASSERT_TRUE(pipeline.Spool(0, images[0].data()));
  std::this_thread::sleep_for(std::chrono::milliseconds(1100)); // the camera is slow
  ASSERT_TRUE(pipeline.Spool(1, images[1].data()));
  std::array<std::int64_t, 8> records{}; // of 32 bytes; the third number is the time
  std::ifstream index(path_ + "/spool_index.dat", std::ios::binary);
  ASSERT_TRUE(index.read(reinterpret_cast<char*>(records.data()), sizeof records));
  EXPECT_GE(records[6] - records[2], 1'000'000'000);
  ASSERT_TRUE(pipeline.Spool(2, images[2].data()));
  pipeline.Finish();
  EXPECT_FALSE(pipeline.HasFailed()) << "there is one record for each";
  EXPECT_EQ(TSpoolDirectory(path_).VisitImages(
                [&](std::uint64_t number, const Image& bytes) { EXPECT_EQ(bytes, images.at(number)); }),
            3u);
}

TEST_F(SpoolDirectories, KeepNoFileWhoseBlocksCannotBeHad)
{
  disk_.Fail(Call::kAllocate, "spool_0000000000.dat", ENOSPC);
  EXPECT_FALSE(Write(1));
  EXPECT_FALSE(fs::exists(path_ + "/spool_0000000000.dat"));
  disk_.FailNothing();
  disk_.Fail(Call::kAllocate, "(deleted)", EDQUOT, 1); // after the file that probes the file system
  EXPECT_FALSE(Write());
}

TEST_F(SpoolDirectories, MayBeTooSmallWhichIsLoggedBeforeTheStart)
{
  const auto logged = [this](std::uint32_t images) {
    return LoggedBy([=, this] { TSpoolPipeline({path_, TSpoolLayout::kImagesTogether, 1}, 8 << 20, images); });
  };
  EXPECT_THAT(logged(UINT32_MAX), HasSubstr("a run of 4294967295 images needs 36028"));
  EXPECT_EQ(logged(1), "");
}

/// Limits the size of this process's files for as long as it lives.
class TFileSizeLimit
{
public:
  explicit TFileSizeLimit(rlim_t bytes)
  {
    getrlimit(RLIMIT_FSIZE, &previous_);
    const rlimit limit{bytes, previous_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~TFileSizeLimit() { setrlimit(RLIMIT_FSIZE, &previous_); }

private:
  rlimit previous_{};
};

// SIGXFSZ has its default action here: it would end this program.
TEST_P(SpoolPipeline, KeepsToALimitForTheSizeOfFilesOrFails)
{
  for (const rlim_t limit : {rlim_t{0}, rlim_t{4096}, rlim_t{GetParam().imageBytes - 1}}) {
    const TFileSizeLimit limited(limit);
    EXPECT_FALSE(Write()) << limit;
  }
  const TFileSizeLimit limited(std::max<rlim_t>(400'000, 2 * GetParam().imageBytes)); // has room for the index
  EXPECT_TRUE(Write()) << "with more files";
  ExpectComplete();
}

// The index grows beyond a limit that the image files keep.
TEST_F(SpoolDirectories, KeepTheImagesBeforeAnIndexThatMayNotGrow)
{
  const TFileSizeLimit limited(32768);
  disk_.noSync = true;
  Image image(256, 7);
  TSpoolPipeline pipeline({path_, TSpoolLayout::kImagePerFile, 2}, image.size(), 1100);
  pipeline.Begin();
  for (int i = 0; i < 1100 && pipeline.Spool(i, image.data()); ++i) {
  }
  pipeline.Finish();
  EXPECT_TRUE(pipeline.HasFailed());
  EXPECT_EQ(TSpoolDirectory(path_).VisitImages([&](auto, const Image& bytes) { EXPECT_EQ(bytes, image); }), 1024u);
}

// A series that fits must not be refused for places that it never fills.
TEST_F(SpoolDirectories, HaveBlocksForTheImagesOfTheRunOnly)
{
  constexpr std::uint64_t kMiB = 1 << 20;
  TSpoolFault fault;
  TSpoolIndex index(&fault);
  TSpoolFileSpooler files(&fault, &index);
  files.SetDirectory(scratch_.Directory());
  files.SetStem(L"spool");
  files.SetVolume(TSpoolVolume::Probe(scratch_.Directory()));
  files.SetImageSizeBytes(64 * kMiB);
  files.SetRun(kMiB, 65);
  IImage* file = nullptr;
  ASSERT_EQ(files.OpenImage(1, ISpooler::kReadWrite, file), 0);
  struct stat status = {};
  ASSERT_EQ(stat((scratch_.Directory() + "/spool_0000000001.dat").c_str(), &status), 0);
  EXPECT_EQ(static_cast<std::uint64_t>(status.st_size), 64 * kMiB);
  EXPECT_NEAR(static_cast<double>(status.st_blocks) * 512, kMiB, kMiB / 4.0);
}

// The memory of a block has had other images in it.
TEST_F(SpoolDirectories, HaveZerosWhereABlockWasNotFilled)
{
  constexpr std::size_t kBytes = 3001;
  constexpr int kImages = 9000;
  disk_.noSync = true;
  Image image(kBytes, 0xFF);
  {
    TSpoolPipeline pipeline({path_, TSpoolLayout::kImagesTogether, 1}, kBytes, 10000);
    pipeline.Begin();
    for (int i = 0; i < kImages; ++i) ASSERT_TRUE(pipeline.Spool(i, image.data()));
  }
  const std::string bytes = TextOf(path_ + "/spool_0000000000.dat");
  ASSERT_GT(bytes.size(), kBytes * kImages);
  EXPECT_EQ(bytes.find_first_not_of('\0', kBytes * kImages), std::string::npos);
}

} // namespace

// The system reports what it could not write once, and what is cut off is gone however many images come behind it.
TEST(SpoolIndex, StaysUnsyncedAfterAFailureAndSeesThatItWasCutOff)
{
  const TScratchDirectory directory;
  const RunFormat::TIndexRecord image{};
  {
    TDiskFaults disk;
    TSpoolFault fault;
    TSpoolIndex index(&fault);
    ASSERT_TRUE(index.Create(directory.Path("")) && index.Append({&image, 1}) == 1);
    disk.Fail(TDiskFaults::Call::kSyncData, RunFormat::kIndexName, EIO);
    EXPECT_FALSE(index.Sync());
    disk.FailNothing();
    EXPECT_EQ(index.Append({&image, 1}), 1U);
    EXPECT_FALSE(index.Sync());
    EXPECT_FALSE(index.Close());
  }
  const std::string path = directory.Path(RunFormat::kIndexName);
  fs::remove(path);
  TSpoolFault fault;
  TSpoolIndex index(&fault);
  ASSERT_TRUE(index.Create(directory.Path("")) && index.Append({&image, 1}) == 1);
  fs::resize_file(path, 0);
  EXPECT_FALSE(index.Close());
  EXPECT_TRUE(fault.IsRaised());
}
