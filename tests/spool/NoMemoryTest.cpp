// SPDX-License-Identifier: MIT
// Runs that find no memory at one point or another.
#include "spool/TSpoolPipeline.h"

#include "spool/TSpoolLayout.h"
#include "tests/spool/RefusedAllocations.h"
#include "tests/spool/TDiskFaults.h"
#include "tests/support/TScratchDirectory.h"
#include "tests/support/TSpoolDirectory.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <new>
#include <sys/file.h>
#include <unistd.h>
#include <vector>

namespace {

struct TCase
{
  int method;
  std::size_t imageBytes;
};

class SpoolWithoutMemory : public ::testing::TestWithParam<TCase>
{
protected:
  SpoolWithoutMemory() { disk_.noSync = true; }
  ~SpoolWithoutMemory() override { allocationsLeft = kNever; }

  /// Writes a run that is refused one allocation. Returns whether there were enough of them.
  bool Write(long allocations)
  {
    failed_ = false;
    allocationsLeft = allocations;
    try {
      TSpoolPipeline pipeline({run_.Path(), GetParam().method, 2}, GetParam().imageBytes, kImages);
      pipeline.Begin();
      const bool isSpooled = Spool(pipeline);
      pipeline.Finish();
      failed_ = pipeline.HasFailed() || !isSpooled;
    } catch (const std::bad_alloc&) {
      failed_ = true;
    }
    return allocationsLeft.exchange(kNever) < 0;
  }

  /// What fails here by an exception, the acquisition thread counts as a failure.
  bool Spool(TSpoolPipeline& pipeline)
  {
    try {
      for (int i = 0; i < kImages; ++i)
        if (!pipeline.Spool(i, images_[static_cast<std::size_t>(i)].data())) return false;
      return true;
    } catch (const std::bad_alloc&) {
      return false;
    }
  }

  void ExpectATrueDescription() const
  {
    EXPECT_TRUE(IsDirectoryFree());
    const std::string state = run_.Text("run", "State");
    if (!failed_) {
      EXPECT_EQ(state, "complete");
    } else {
      EXPECT_NE(state, "complete");
    }
    if (state.empty()) return; // not described
    ASSERT_GT(run_.Number("multiimage", "ImagesPerFile"), 0);
    ASSERT_EQ(run_.Number("run", "ImagesExpected"), kImages);
    const std::uint64_t there = run_.VisitImages([this](std::uint64_t number, const auto& bytes) {
      ASSERT_LT(number, images_.size());
      EXPECT_EQ(bytes, images_[number]) << "image " << number;
    });
    if (state == "complete") {
      EXPECT_EQ(there, images_.size());
    }
    if (state != "recording") {
      EXPECT_EQ(run_.Number("run", "ImagesWritten"), static_cast<long>(there));
    }
  }

  bool IsDirectoryFree() const
  {
    const int other = open(run_.Path().c_str(), O_RDONLY | O_DIRECTORY);
    if (other < 0) return true; // not made yet
    const bool isFree = flock(other, LOCK_EX | LOCK_NB) == 0;
    close(other);
    return isFree;
  }

  static constexpr int kImages = 3;
  std::vector<std::vector<unsigned char>> images_{{std::vector<unsigned char>(GetParam().imageBytes, 1),
                                                   std::vector<unsigned char>(GetParam().imageBytes, 2),
                                                   std::vector<unsigned char>(GetParam().imageBytes, 3)}};
  TScratchDirectory scratch_;
  TSpoolDirectory run_{scratch_.Directory() + "/run"};
  TDiskFaults disk_;
  bool failed_ = false;
};

TEST_P(SpoolWithoutMemory, DescribesWhatItLeaves)
{
  for (long allocations = 0; Write(allocations); ++allocations) {
    SCOPED_TRACE(allocations);
    ExpectATrueDescription();
    if (HasFailure()) return;
  }
  EXPECT_FALSE(failed_) << "with enough memory";
  ExpectATrueDescription();
}

INSTANTIATE_TEST_SUITE_P(Cases, SpoolWithoutMemory,
                         ::testing::Values(TCase{1, 9001}, TCase{3, 3001}, TCase{3, 300007}));

} // namespace
