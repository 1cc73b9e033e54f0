// SPDX-License-Identifier: MIT
// Copying frames out of a queue: geometry, cursor, ranges, and what happens when the camera is faster.
#include "acquisition/TCircularBuffer.h"
#include "acquisition/TDispatchQueue_Ignore.h"
#include "retrieval/TPackedFetchImage.h"
#include "retrieval/TUnpackedFetchImage.h"
#include "ScriptedQueue.h"
#include "vxmcd_result_codes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <limits>

using testing::Each;
using testing::ElementsAre;

namespace {

using Bytes = std::vector<unsigned char>;
using ByteFetch = TUnpackedFetchImage<unsigned char, unsigned char>;
using PackedFetch = TPackedFetchImage<unsigned char, unsigned short>;

// Ten frames of 2 x 1 bytes, of which the first four are gone; frame n has the bytes n and n + 100.
class TenFrames : public testing::Test
{
protected:
  ~TenFrames() override { EXPECT_EQ(queue_.references, 0); }

  static ScriptedQueue FramesFiveToTen()
  {
    ScriptedQueue queue;
    for (unsigned char n = 1; n <= 10; ++n) queue.Push({n, static_cast<unsigned char>(n + 100)});
    for (int i = 0; i < 4; ++i) queue.DropOldest();
    return queue;
  }

  ScriptedQueue queue_ = FramesFiveToTen();
  ByteFetch fetch_{&queue_, 2, 1, 2};
  Bytes output_ = Bytes(40, 0xEE);
  long validFirst_ = -1;
  long validLast_ = -1;
};

template <class Fetch, class Dst>
std::vector<Dst> copied(const Bytes& frame, int width, int height, int stride, unsigned int expectedResult)
{
  ScriptedQueue queue;
  queue.Push(frame);
  Fetch fetch(&queue, width, height, stride);
  std::vector<Dst> output(16, static_cast<Dst>(-1));
  EXPECT_EQ(fetch.copyImageByLine(output.data(), queue.GetImage(1)), expectedResult);
  return output;
}

} // namespace

TEST(FetchImage, PaddingNeverReachesTheOutput)
{
  const Bytes frame = {1, 2, 3, 77, 77, 4, 5, 6, 77, 77};
  const auto bytes = copied<ByteFetch, unsigned char>(frame, 3, 2, 5, RC_SUCCESS);
  EXPECT_THAT(Bytes(bytes.begin(), bytes.begin() + 7), ElementsAre(1, 2, 3, 4, 5, 6, 255));
  const auto ints = copied<TUnpackedFetchImage<unsigned char, int>, int>(frame, 3, 2, 5, RC_SUCCESS);
  EXPECT_THAT(std::vector<int>(ints.begin(), ints.begin() + 7), ElementsAre(1, 2, 3, 4, 5, 6, -1));
}

TEST(FetchImage, RowsOfAnOddStrideAreRead)
{
  const Bytes frame = {0x34, 0x12, 0xFF, 0x78, 0x56, 0xFF};
  const auto output = copied<TUnpackedFetchImage<unsigned short, int>, int>(frame, 1, 2, 3, RC_SUCCESS);
  EXPECT_THAT(std::vector<int>(output.begin(), output.begin() + 3), ElementsAre(0x1234, 0x5678, -1));
}

TEST(FetchImage, LastRowNeedsNoPadding)
{
  const auto output = copied<ByteFetch, unsigned char>({1, 2, 77, 77, 3, 4}, 2, 2, 4, RC_SUCCESS);
  EXPECT_THAT(Bytes(output.begin(), output.begin() + 5), ElementsAre(1, 2, 3, 4, 255));
}

TEST(FetchImage, PackedRowsOfOddWidthEndInHalfAGroup)
{
  const Bytes frame = {0x12, 0x34, 0x56, 0x78, 0x9A, 0xAB, 0xCD, 0xEF, 0x01, 0x02};
  const auto output = copied<PackedFetch, unsigned short>(frame, 3, 2, 5, RC_SUCCESS);
  EXPECT_THAT(std::vector<int>(output.begin(), output.begin() + 7),
              ElementsAre(0x124, 0x563, 0x78A, 0xABD, 0xEFC, 0x012, 0xFFFF));
}

TEST(FetchImage, DenseAndPaddedFramesGiveTheSamePixels)
{
  constexpr int kHeight = 3;
  for (int width = 1; width <= 70; ++width) {
    const auto rowBytes = static_cast<std::size_t>(width / 2 * 3 + width % 2 * 2);
    Bytes dense;
    Bytes padded;
    for (std::size_t row = 0; row < kHeight; ++row) {
      for (std::size_t i = 0; i < rowBytes; ++i) dense.push_back(static_cast<unsigned char>(row * 83 + i * 29));
      padded.insert(padded.end(), dense.end() - static_cast<std::ptrdiff_t>(rowBytes), dense.end());
      padded.resize(padded.size() + 5, 0xFF);
    }
    ScriptedQueue queue;
    queue.Push(dense);
    queue.Push(padded);
    const int stride = static_cast<int>(rowBytes);
    std::vector<unsigned short> fromDense(static_cast<std::size_t>(width) * kHeight, 0xFFFF);
    std::vector<unsigned short> fromPadded(fromDense.size(), 0xEEEE);
    PackedFetch(&queue, width, kHeight, stride).copyImageByLine(fromDense.data(), queue.GetImage(1));
    PackedFetch(&queue, width, kHeight, stride + 5).copyImageByLine(fromPadded.data(), queue.GetImage(2));
    EXPECT_EQ(fromDense, fromPadded) << "width " << width;
  }
}

TEST(FetchImage, NarrowingKeepsTheLowBitsAndWideningAddsNoSign)
{
  const int wide = 0x00012345;
  Bytes frame(4);
  std::memcpy(frame.data(), &wide, 4);
  EXPECT_EQ((copied<TUnpackedFetchImage<int, unsigned short>, unsigned short>(frame, 1, 1, 4, RC_SUCCESS)[0]),
            0x2345);
  EXPECT_EQ((copied<TUnpackedFetchImage<unsigned short, int>, int>({0xFE, 0xFF}, 1, 1, 2, RC_SUCCESS)[0]), 0xFFFE);
}

TEST(FetchImage, RefusesGeometryThatTheStoredFrameDoesNotHave)
{
  struct Geometry
  {
    int width, height, stride;
  };
  constexpr int kMax = std::numeric_limits<int>::max();
  for (const Geometry& g : {Geometry{0, 1, 4},
                            {1, 0, 4},
                            {1, 1, 0},
                            {-1, 1, 4},
                            {1, -1, 4},
                            {4, 2, -4},
                            {4, 3, 4},
                            {4, 2, 5},
                            {9, 1, 4},
                            {kMax, kMax, kMax},
                            {65536, 65536, 1},
                            {1, kMax, kMax}}) {
    SCOPED_TRACE(testing::Message() << g.width << " x " << g.height << ", stride " << g.stride);
    EXPECT_THAT((copied<ByteFetch, unsigned char>(Bytes(8, 1), g.width, g.height, g.stride, RC_COPY_REFUSED)),
                Each(255));
  }
  EXPECT_THAT((copied<PackedFetch, unsigned short>(Bytes(4, 1), 3, 1, 4, RC_COPY_REFUSED)), Each(0xFFFF));
}

TEST(FetchImage, RefusesNullPointersAndAMissingQueue)
{
  ScriptedQueue queue;
  queue.Push({1});
  unsigned char pixel = 0;
  EXPECT_EQ(ByteFetch(&queue, 1, 1, 1).copyImageByLine(nullptr, queue.GetImage(1)), RC_COPY_REFUSED);
  EXPECT_EQ(ByteFetch(&queue, 1, 1, 1).copyImageByLine(&pixel, nullptr), RC_COPY_REFUSED);

  ByteFetch fetch(nullptr, 1, 1, 1);
  int cursor = 0;
  EXPECT_EQ(fetch.copyImageByLine(&pixel, queue.GetImage(1)), RC_COPY_REFUSED);
  EXPECT_EQ(fetch.GetNextOldestImage(&pixel, 1, cursor), RC_NO_NEW_DATA);
  EXPECT_EQ(fetch.GetAcquiredData(&pixel, 1), RC_NO_NEW_DATA);
  EXPECT_EQ(fetch.GetMostRecentImage(&pixel, 1), RC_NO_NEW_DATA);
  EXPECT_EQ(fetch.GetImages(1, 2, &pixel, 1, nullptr, nullptr), RC_NO_NEW_DATA);
}

TEST_F(TenFrames, ArgumentsAreCheckedBeforeAnythingElse)
{
  int cursor = 0;
  EXPECT_EQ(fetch_.GetNextOldestImage(nullptr, 3, cursor), RC_P1_INVALID);
  EXPECT_EQ(fetch_.GetNextOldestImage(output_.data(), 3, cursor), RC_P2_INVALID);
  EXPECT_EQ(fetch_.GetAcquiredData(nullptr, 3), RC_P1_INVALID);
  EXPECT_EQ(fetch_.GetAcquiredData(output_.data(), 3), RC_P2_INVALID);
  EXPECT_EQ(fetch_.GetMostRecentImage(nullptr, 3), RC_P1_INVALID);
  EXPECT_EQ(fetch_.GetMostRecentImage(output_.data(), 3), RC_P2_INVALID);
  EXPECT_EQ(fetch_.GetImages(0, -1, nullptr, 3, &validFirst_, &validLast_), RC_P3_INVALID);
  EXPECT_EQ(fetch_.GetImages(0, -1, output_.data(), 3, &validFirst_, &validLast_), RC_P4_INVALID);
  EXPECT_EQ(fetch_.GetImages(0, -1, output_.data(), 2, &validFirst_, &validLast_), RC_P1_INVALID);
  EXPECT_EQ(fetch_.GetImages(4, 3, output_.data(), 2, &validFirst_, &validLast_), RC_P2_INVALID);
  EXPECT_EQ(cursor, 0);
  EXPECT_EQ(validFirst_, 0);
  EXPECT_EQ(validLast_, 0);
  EXPECT_THAT(output_, Each(0xEE));
}

TEST_F(TenFrames, SizeIsComparedWithAProductOf32Bits)
{
  queue_.imageSizeBytes = std::int64_t{1} << 40;
  ByteFetch fetch(&queue_, 65536, 65536, 65600);
  int cursor = 0;
  EXPECT_EQ(fetch.GetNextOldestImage(output_.data(), 0x100000000UL, cursor), RC_P2_INVALID);
  EXPECT_EQ(fetch.GetNextOldestImage(output_.data(), 0, cursor), RC_SUCCESS);
  EXPECT_EQ(fetch.GetAcquiredData(output_.data(), 0), RC_SUCCESS);
  EXPECT_EQ(fetch.GetImages(1, 10, output_.data(), 0, &validFirst_, &validLast_), RC_SUCCESS);
  EXPECT_EQ(fetch.GetMostRecentImage(output_.data(), 0), RC_SUCCESS);
  EXPECT_THAT(output_, Each(0xEE));
}

TEST_F(TenFrames, OldestSkipsWhatWasOverwritten)
{
  int cursor = 0;
  EXPECT_EQ(fetch_.GetNextOldestImage(output_.data(), 2, cursor), RC_SUCCESS);
  EXPECT_EQ(cursor, 5);
  EXPECT_THAT(Bytes(output_.begin(), output_.begin() + 3), ElementsAre(5, 105, 0xEE));
  EXPECT_EQ(fetch_.GetNextOldestImage(output_.data(), 2, cursor), RC_SUCCESS);
  EXPECT_EQ(cursor, 6);
  EXPECT_EQ(output_[0], 6);
}

TEST_F(TenFrames, OldestMovesOnPastAFrameLostMeanwhile)
{
  queue_.frames.erase(7);
  int cursor = 6;
  EXPECT_EQ(fetch_.GetNextOldestImage(output_.data(), 2, cursor), RC_SUCCESS);
  EXPECT_EQ(cursor, 7);
  EXPECT_THAT(output_, Each(0xEE));
}

TEST_F(TenFrames, CursorStopsAtItsHighestNumber)
{
  constexpr int kMax = std::numeric_limits<int>::max();
  queue_.maximum = std::int64_t{kMax} + 100;
  queue_.minimum = std::int64_t{kMax} + 50;
  int cursor = kMax - 1;
  EXPECT_EQ(fetch_.GetNextOldestImage(output_.data(), 2, cursor), RC_SUCCESS);
  EXPECT_EQ(cursor, kMax);
  EXPECT_EQ(fetch_.GetNextOldestImage(output_.data(), 2, cursor), RC_NO_NEW_DATA);
  EXPECT_EQ(cursor, kMax);
}

TEST_F(TenFrames, AcquiredDataKeepsThePlacesOfLostFramesAndIncludesNewOnes)
{
  queue_.onGetImage = [this](std::int64_t image) {
    if (image == 10 && queue_.maximum == 10) queue_.Push({11, 111});
  };
  EXPECT_EQ(fetch_.GetAcquiredData(output_.data(), 2), RC_SUCCESS);
  EXPECT_THAT(Bytes(output_.begin(), output_.begin() + 8), Each(0xEE));
  EXPECT_THAT(Bytes(output_.begin() + 8, output_.begin() + 23),
              ElementsAre(5, 105, 6, 106, 7, 107, 8, 108, 9, 109, 10, 110, 11, 111, 0xEE));
}

TEST_F(TenFrames, MostRecentIsCopiedAgainWhenTheCameraMayHaveReachedIt)
{
  queue_.isIntact = [this](std::int64_t image) {
    if (image == 10) queue_.Push({11, 111});
    return image == 11;
  };
  EXPECT_EQ(fetch_.GetMostRecentImage(output_.data(), 2), RC_SUCCESS);
  EXPECT_THAT(Bytes(output_.begin(), output_.begin() + 3), ElementsAre(11, 111, 0xEE));
  EXPECT_EQ(queue_.referencesTaken, 2);
}

TEST_F(TenFrames, MostRecentGivesUpAfterThreeTries)
{
  queue_.isIntact = [](std::int64_t) { return false; };
  EXPECT_EQ(fetch_.GetMostRecentImage(output_.data(), 2), RC_SUCCESS);
  EXPECT_EQ(output_[0], 10);
  EXPECT_EQ(queue_.referencesTaken, 3);
  output_.assign(40, 0xEE);
  queue_.frames.clear();
  EXPECT_EQ(fetch_.GetMostRecentImage(output_.data(), 2), RC_FRAME_UNAVAILABLE);
  EXPECT_THAT(output_, Each(0xEE));
}

TEST_F(TenFrames, FramesBeyondTheHighestNumberOfTheCursorAreAcquiredAsAllOthers)
{
  constexpr std::int64_t kNumber = std::int64_t{1} << 31;
  queue_.maximum = kNumber - 1;
  queue_.Push({33, 44});
  EXPECT_EQ(fetch_.GetMostRecentImage(output_.data(), 2), RC_SUCCESS);
  EXPECT_EQ(output_[0], 33);
  EXPECT_EQ(fetch_.GetImages(kNumber, kNumber, output_.data() + 2, 2, &validFirst_, &validLast_), RC_SUCCESS);
  EXPECT_EQ(validFirst_, kNumber);
  EXPECT_EQ(output_[2], 33);
  EXPECT_EQ(queue_.referencesTaken, 2);
}

TEST_F(TenFrames, IntactImageIsOneThatTheQueueVouchesForAfterTheCopy)
{
  queue_.ticks[6] = 606;
  long long ticks = -1;
  EXPECT_EQ(fetch_.GetIntactImage(6, output_.data(), 2, &ticks), RC_SUCCESS);
  EXPECT_EQ(ticks, 606);
  EXPECT_THAT(Bytes(output_.begin(), output_.begin() + 3), ElementsAre(6, 106, 0xEE));
  EXPECT_EQ(fetch_.GetIntactImage(7, output_.data(), 2, &ticks), RC_SUCCESS);
  EXPECT_EQ(ticks, 0) << "a frame without a clock value";
  EXPECT_EQ(fetch_.GetIntactImage(8, output_.data(), 2, nullptr), RC_SUCCESS);

  for (const int intactLooks : {0, 1}) {
    ticks = -1;
    queue_.isIntact = [looks = 0, intactLooks](std::int64_t) mutable { return looks++ < intactLooks; };
    EXPECT_EQ(fetch_.GetIntactImage(6, output_.data(), 2, &ticks), RC_NO_NEW_DATA) << intactLooks;
    EXPECT_EQ(ticks, 0);
  }
  queue_.isIntact = [](std::int64_t) { return true; };
  for (const long gone : {4L, 11L, std::numeric_limits<long>::max()})
    EXPECT_EQ(fetch_.GetIntactImage(gone, output_.data(), 2, &ticks), RC_NO_NEW_DATA);
  EXPECT_EQ(fetch_.GetIntactImage(0, nullptr, 3, &ticks), RC_P1_INVALID);
  EXPECT_EQ(fetch_.GetIntactImage(6, nullptr, 3, &ticks), RC_P2_INVALID);
  EXPECT_EQ(fetch_.GetIntactImage(6, output_.data(), 3, &ticks), RC_P3_INVALID);
  ByteFetch larger(&queue_, 3, 1, 3);
  EXPECT_EQ(larger.GetIntactImage(6, output_.data(), 3, &ticks), RC_NO_NEW_DATA) << "not of this image area";
  EXPECT_EQ(ByteFetch(nullptr, 2, 1, 2).GetIntactImage(1, output_.data(), 2, &ticks), RC_NO_NEW_DATA);
}

// Every queue of a camera has the same ring, and only that of the new run learns the new size and number of frames.
TEST(FetchImage, AFrameOfARunThatHasBegunMeanwhileIsNotTakenForOneOfTheRunBefore)
{
  TCircularBuffer ring;
  TDispatchQueue_Ignore queue(&ring);
  ASSERT_EQ(ring.Allocate(4000, 2), 0);
  queue.Initialise(4000);
  ByteFetch fetch(&queue, 1000, 4, 1000);

  ASSERT_EQ(ring.Allocate(8, 1), 0);
  ring.Reset();
  ASSERT_EQ(queue.Dispatch(ring.GetBuffer(1), 8), 0);
  Bytes output(4000, 0xEE);
  int cursor = 0;
  EXPECT_EQ(fetch.GetNextOldestImage(output.data(), 4000, cursor), RC_SUCCESS);
  EXPECT_EQ(fetch.GetAcquiredData(output.data(), 4000), RC_ACQUIRING);
  EXPECT_EQ(fetch.GetMostRecentImage(output.data(), 4000), RC_SUCCESS);
  EXPECT_EQ(fetch.GetImages(1, 1, output.data(), 4000, nullptr, nullptr), RC_SUCCESS);
  EXPECT_THAT(output, Each(0xEE));

  // The size fits, but there is room for the one image of the run before only.
  ASSERT_EQ(ring.Allocate(4000, 1), 0);
  ring.Reset();
  ByteFetch fetchAgain(&queue, 1000, 4, 1000);
  ASSERT_EQ(queue.Dispatch(ring.GetBuffer(1), 4000), 0);
  EXPECT_EQ(fetchAgain.GetAcquiredData(output.data(), 4000), RC_ACQUIRING) << "it began after the look at the run";
  EXPECT_THAT(output, Each(0xEE));
}

TEST_F(TenFrames, ImagesCopiesTheFirstFrameOfTheRangeToItsPlace)
{
  EXPECT_EQ(fetch_.GetImages(6, 8, output_.data(), 2, &validFirst_, &validLast_), RC_SUCCESS);
  EXPECT_EQ(validFirst_, 6);
  EXPECT_EQ(validLast_, 8);
  EXPECT_THAT(Bytes(output_.begin(), output_.begin() + 3), ElementsAre(6, 106, 0xEE));

  EXPECT_EQ(fetch_.GetImages(4, 6, output_.data(), 2, &validFirst_, &validLast_), RC_SUCCESS);
  EXPECT_EQ(validFirst_, 5);
  EXPECT_EQ(validLast_, 6);
  EXPECT_THAT(Bytes(output_.begin() + 2, output_.begin() + 5), ElementsAre(5, 105, 0xEE));
}

TEST_F(TenFrames, ImagesThatAreNotThereAreNoNewData)
{
  constexpr long kBeyond = (1L << 32) + 6;
  EXPECT_EQ(fetch_.GetImages(1, 4, output_.data(), 2, &validFirst_, &validLast_), RC_NO_NEW_DATA);
  EXPECT_EQ(fetch_.GetImages(11, 99, output_.data(), 2, &validFirst_, &validLast_), RC_NO_NEW_DATA);
  EXPECT_EQ(fetch_.GetImages(kBeyond, kBeyond, output_.data(), 2, &validFirst_, &validLast_), RC_NO_NEW_DATA);
  EXPECT_EQ(validFirst_, 0);
  EXPECT_EQ(validLast_, 0);
  EXPECT_THAT(output_, Each(0xEE));
}

TEST_F(TenFrames, ImagesLooksOnlyAtTheNumbersTheQueueHas)
{
  int asked = 0;
  queue_.onGetImage = [&asked](std::int64_t) { ++asked; };
  EXPECT_EQ(fetch_.GetImages(5, std::numeric_limits<long>::max(), output_.data(), 2, nullptr, nullptr),
            RC_SUCCESS);
  EXPECT_EQ(asked, 6);
  EXPECT_EQ(output_[0], 5);
}
