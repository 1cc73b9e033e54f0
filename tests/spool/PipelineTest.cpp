// SPDX-License-Identifier: MIT
// Runs on disks that lack something, are slow, or fail.
#include "spool/TSpoolPipeline.h"

#include "spool/ISpooler.h"
#include "spool/TSpoolImageSpooler.h"
#include "spool/TSpoolLayout.h"
#include "tests/spool/logged_by.h"
#include "tests/spool/TDiskFaults.h"
#include "tests/support/TScratchDirectory.h"
#include "tests/support/TSpoolDirectory.h"
#include "tests/utility/SystemCalls.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <ostream>
#include <random>
#include <sys/stat.h>
#include <sys/wait.h>
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

  friend std::ostream& operator<<(std::ostream& stream, const TCase& value)
  {
    return stream << "method " << value.method << ", " << value.images << " x " << value.imageBytes;
  }
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
        EXPECT_TRUE(system_calls::Eventually([this] { return HasRecord(); }));
        event();
      }
      if (!pipeline.Spool(i, images_[static_cast<std::size_t>(i)].data())) break;
    }
    pipeline.Finish();
    return !pipeline.HasFailed();
  }

  bool HasRecord() const
  {
    std::error_code none;
    const auto size = fs::file_size(run_.Path() + "/spool_index.dat", none);
    return !none && size > 0;
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

TEST_P(SpoolPipeline, NeedsNeitherDirectWritesNorPreallocation)
{
  disk_.noDirectWrites = true;
  EXPECT_TRUE(Write());
  ExpectComplete();
  disk_.noPreallocation = true;
  EXPECT_TRUE(Write());
  ExpectComplete();
  disk_.noDirectWrites = false;
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
  disk_.noPreallocation = true; // images are then written, and not mapped
  for (const int before : {0, 1, 5}) {
    disk_.writesUntilError = before;
    EXPECT_FALSE(Write());
    ExpectFailed();
    EXPECT_LT(ExpectImages(), images_.size());
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
    EXPECT_THAT(LoggedBy([this] { EXPECT_FALSE(Write()); }), HasSubstr("Remote I/O error"));
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
  }
}

TEST_P(SpoolPipeline, WaitsForASlowDiskThatLacksCalls)
{
  disk_.noPreallocation = true;
  disk_.Fail(Call::kSyncRange, ".dat", ENOSYS);
  disk_.writeDelayMs = 10;
  EXPECT_TRUE(Write());
  ExpectComplete();
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
  /// A run of nothing, or of images of 8 MiB. Returns what went wrong.
  std::string Write(const std::string& path, int images = 0)
  {
    Image image(8 << 20);
    const std::string log = LoggedBy([&] {
      TSpoolPipeline pipeline({path, TSpoolLayout::kImagesTogether, 2}, image.size(),
                              static_cast<std::uint32_t>(images));
      pipeline.Begin();
      for (int i = 0; i < images; ++i)
        if (!pipeline.Spool(i, image.data())) break;
      pipeline.Finish();
      failed_ = pipeline.HasFailed();
    });
    return failed_ ? log : "";
  }

  TScratchDirectory scratch_;
  TDiskFaults disk_;
  bool failed_ = false;
};

// A file of 64 MiB is on the disk by itself, and only its name is not.
TEST_F(SpoolDirectories, NeedNotKnowHowToGetNamesToTheDisk)
{
  for (const int error : {EINVAL, ENOTSUP, ENOSYS}) {
    disk_.FailNothing();
    disk_.Fail(Call::kSync, "/run", error);
    EXPECT_EQ(Write(scratch_.Directory() + "/run", 8), "");
  }
  for (const int error : {EIO, ENOSPC, EDQUOT}) {
    disk_.FailNothing();
    disk_.Fail(Call::kSync, "/run", error);
    EXPECT_NE(Write(scratch_.Directory() + "/run", 8), "");
  }
}

TEST_F(SpoolDirectories, ThatCannotBeUsedAreNamedWithTheReason)
{
  const std::string file = scratch_.File("", "file");
  EXPECT_THAT(Write(file), HasSubstr("cannot make the directory " + file + ": Not a directory"));
  const std::string real = scratch_.Directory() + "/a\\b";
  const std::string link = scratch_.Directory() + "/link";
  fs::create_directory(real);
  fs::create_directory_symlink(real, link);
  EXPECT_THAT(Write(link), HasSubstr("has a backslash: " + real));
  EXPECT_TRUE(fs::is_empty(real));
  EXPECT_FALSE(fs::exists(scratch_.Directory() + "/a"));
}

TEST_F(SpoolDirectories, AreFreeAfterTheRunThoughAChildHasTheirDescriptor)
{
  const std::string path = scratch_.Directory() + "/run";
  TSpoolPipeline pipeline({path, TSpoolLayout::kImagesTogether, 1}, 4096, 1);
  pipeline.Begin();
  const pid_t child = fork();
  if (child == 0)
    for (;;) pause();
  pipeline.Finish();
  EXPECT_EQ(Write(path), "") << "another run";
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
}

TEST_F(SpoolDirectories, KeepNoFileWhoseBlocksCannotBeHad)
{
  const std::string path = scratch_.Directory() + "/run";
  disk_.Fail(Call::kAllocate, "spool_0000000000.dat", ENOSPC);
  EXPECT_THAT(Write(path, 1),
              HasSubstr("cannot create " + path + "/spool_0000000000.dat: No space left on device"));
  EXPECT_FALSE(fs::exists(path + "/spool_0000000000.dat"));
  disk_.FailNothing();
  disk_.Fail(Call::kAllocate, "(deleted)", EDQUOT, 1); // behind the file that tries the file system
  EXPECT_THAT(Write(path), HasSubstr("no room for a run in " + path + ": Disk quota exceeded"));
}

// A series that fits must not be refused for places that it never fills.
TEST_F(SpoolDirectories, HoldBlocksForTheImagesOfTheRunOnly)
{
  constexpr std::uint64_t kMiB = 1 << 20;
  TSpoolFault fault;
  TSpoolIndex index(&fault);
  TSpoolFileSpooler files(&fault, &index);
  files.SetDirectory(scratch_.Directory());
  files.SetStem(L"spool");
  files.SetVolume(TSpoolVolume::Probe(scratch_.Directory()));
  files.SetImageSizeBytes(64 * kMiB);
  files.SetRunBytes(65 * kMiB);
  IImage* file = nullptr;
  ASSERT_EQ(files.OpenImage(1, ISpooler::kReadWrite, file), 0);
  struct stat status = {};
  ASSERT_EQ(stat((scratch_.Directory() + "/spool_0000000001.dat").c_str(), &status), 0);
  EXPECT_EQ(static_cast<std::uint64_t>(status.st_size), 64 * kMiB);
  EXPECT_NEAR(static_cast<double>(status.st_blocks) * 512, kMiB, kMiB / 4.0);
}

// The memory of a block has had other images in it.
TEST_F(SpoolDirectories, HoldZerosWhereABlockWasNotFilled)
{
  constexpr std::size_t kBytes = 3001;
  constexpr int kImages = 9000;
  disk_.noSync = true;
  Image image(kBytes, 0xFF);
  {
    TSpoolPipeline pipeline({scratch_.Directory() + "/run", TSpoolLayout::kImagesTogether, 1}, kBytes, 10000);
    pipeline.Begin();
    for (int i = 0; i < kImages; ++i) ASSERT_TRUE(pipeline.Spool(i, image.data()));
  }
  const std::string bytes = TextOf(scratch_.Directory() + "/run/spool_0000000000.dat");
  ASSERT_GT(bytes.size(), kBytes * kImages);
  EXPECT_EQ(bytes.find_first_not_of('\0', kBytes * kImages), std::string::npos);
}

// Who waits for the end of a run sees that the disk is not standing still.
TEST_F(SpoolDirectories, ProgressShowsWithEachPieceOfAnImageAndOfAFile)
{
  constexpr std::size_t kPieces = 10;
  Image image(kPieces << 23);
  TSpoolPipeline pipeline({scratch_.Directory() + "/run", TSpoolLayout::kImagesTogether, 1}, image.size(), 1);
  pipeline.Begin();
  std::vector<std::uint64_t> seen;
  disk_.beforeWrite = [&] { seen.push_back(pipeline.Progress()); };
  ASSERT_TRUE(pipeline.Spool(0, image.data()));
  pipeline.Finish();
  ASSERT_EQ(seen.size(), kPieces);
  EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end(), std::less_equal<>()));
  EXPECT_GE(pipeline.Progress() - seen.back(), kPieces) << "while the file was synced";
}

// What is open may be in staging memory, which must not go first.
TEST_F(SpoolDirectories, ImagesLeftOpenGoWithTheirSpooler)
{
  TSpoolFault fault;
  TSpoolIndex index(&fault);
  ASSERT_TRUE(index.Create(scratch_.Directory()));
  TSpoolFileSpooler files(&fault, &index);
  files.SetDirectory(scratch_.Directory());
  files.SetStem(L"spool");
  {
    TSpoolImageSpooler images(&files, TSpoolLayout::Choose(TSpoolLayout::kImagesTogether, 8 << 20, 10), &index,
                              &fault);
    for (unsigned int i = 0; i < 2; ++i) {
      IImage* image = nullptr;
      unsigned char* memory = nullptr;
      ASSERT_EQ(images.OpenImage(i, ISpooler::kReadWrite, image), 0);
      ASSERT_EQ(image->Lock(memory), 0);
      memory[0] = 1;
    }
  }
  EXPECT_EQ(index.Count(), 0u);
}

TEST(SpoolFault, KeepsTheFirstFailure)
{
  TSpoolFault fault;
  EXPECT_EQ(fault.Text(), "");
  fault.Raise("cannot write", "one", ENOSPC);
  fault.Raise("cannot write", "two", EIO);
  EXPECT_TRUE(fault.IsRaised());
  EXPECT_EQ(fault.Text(), "cannot write one: No space left on device");
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
