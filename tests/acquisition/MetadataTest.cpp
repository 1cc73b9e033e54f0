// SPDX-License-Identifier: MIT
// Chunks at the end of a frame, well-formed and not, and the queue that copies timestamps aside.
#include "acquisition/TCircularBuffer.h"
#include "acquisition/TDispatchQueue_Ignore.h"
#include "acquisition/TMetadataParser.h"
#include "acquisition/TMetadataXerox.h"
#include "acquisition/TTimestampRepository.h"
#include "features/TSDK3Exception.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

namespace {

using TBytes = std::vector<unsigned char>;

void Append(TBytes& frame, std::uint32_t value)
{
  unsigned char bytes[4];
  std::memcpy(bytes, &value, 4);
  frame.insert(frame.end(), bytes, bytes + 4);
}

void AppendChunk(TBytes& frame, std::uint32_t cid, const TBytes& data)
{
  frame.insert(frame.end(), data.begin(), data.end());
  Append(frame, cid);
  Append(frame, static_cast<std::uint32_t>(data.size()) + 4);
}

TBytes TickBytes(std::int64_t ticks)
{
  TBytes bytes(8);
  std::memcpy(bytes.data(), &ticks, 8);
  return bytes;
}

std::ptrdiff_t Locate(TBytes& frame, std::uint32_t cid)
{
  const unsigned char* const location = TMetadataParser().GetMetadataLocation(
      frame.data() + frame.size(), static_cast<std::int64_t>(frame.size()), cid);
  return location ? location - frame.data() : -1;
}

TEST(MetadataParser, FindsAChunkBehindPixelsAndInFrontOfAnother)
{
  TBytes frame(100, 9);
  AppendChunk(frame, 1, TickBytes(123));
  EXPECT_EQ(Locate(frame, 1), 100);

  AppendChunk(frame, 7, TBytes(16, 5));
  EXPECT_EQ(Locate(frame, 1), 100);
  EXPECT_EQ(Locate(frame, 7), 116);

  TBytes bare;
  AppendChunk(bare, 1, {});
  EXPECT_EQ(Locate(bare, 1), 0);

  const TMetadataParser parser;
  unsigned char* const end = frame.data() + frame.size();
  const auto size = static_cast<std::int64_t>(frame.size());
  EXPECT_EQ(parser.GetCIDLocation(end, size, 1) - frame.data(), 108);
  EXPECT_EQ(parser.GetLengthLocation(end, size, 1) - frame.data(), 112);
}

TEST(MetadataParser, OnlyTheEndMarkAndTheEndOfTheFrameEndTheSearch)
{
  TBytes marked(100, 9);
  AppendChunk(marked, 1, TickBytes(123));
  AppendChunk(marked, 0, TBytes(4, 0));
  EXPECT_EQ(Locate(marked, 1), -1);

  // A length that does not even cover the identifier leads into the chunk's own fields.
  for (std::uint32_t length = 0; length < 4; ++length) {
    TBytes frame(100, 9);
    AppendChunk(frame, 1, TickBytes(123));
    frame.insert(frame.end(), length, 5);
    Append(frame, length);
    EXPECT_EQ(Locate(frame, 1), 100) << "behind a length of " << length;
  }
}

TEST(MetadataParser, StaysInsideTheFrameWhateverTheLengthsSay)
{
  for (const std::uint32_t length :
       {0u, 3u, 12u, 117u, 0x7FFFFFFFu, 0xFFFFFFF0u, 0xFFFFFFFBu, 0xFFFFFFFCu, 0xFFFFFFFFu})
    for (const std::uint32_t cid : {1u, 7u}) {
      TBytes frame(104, 0xFF);
      Append(frame, cid);
      Append(frame, length);
      const std::ptrdiff_t found = Locate(frame, 1);
      if (cid == 1 && length == 12)
        EXPECT_EQ(found, 96);
      else
        EXPECT_EQ(found, -1) << "length " << length << " cid " << cid;
    }
  for (std::size_t size = 0; size < 8; ++size) {
    TBytes frame(size + 1, 1);
    EXPECT_EQ(TMetadataParser().GetMetadataLocation(frame.data() + size, static_cast<std::int64_t>(size), 1),
              nullptr);
  }
  TBytes inner(20, 0xFF);
  Append(inner, 1);
  Append(inner, 30);
  AppendChunk(inner, 7, TBytes(40, 5));
  EXPECT_EQ(Locate(inner, 1), -1) << "longer than what lies before it, and shorter than the frame";
}

TEST(MetadataParser, SurvivesRandomFrames)
{
  std::mt19937 random(42);
  for (int round = 0; round < 20000; ++round) {
    TBytes frame(random() % 64 + 1);
    // Small values make chains of plausible chunks likely.
    for (unsigned char& byte : frame) byte = static_cast<unsigned char>(random() % 4 == 0 ? random() % 24 : 0);
    const std::ptrdiff_t found = Locate(frame, 1);
    if (found >= 0) {
      EXPECT_LE(static_cast<std::size_t>(found) + 8, frame.size());
    }
  }
}

TEST(MetadataParser, ThrowsForNoFrame)
{
  try {
    TMetadataParser().searchForChunkStartLocation(nullptr, 100, 1);
    FAIL() << "nothing was thrown";
  } catch (const TSDK3Exception& exception) {
    EXPECT_STREQ(exception.what(), "TMetadataParser: Error _puc_value is NULL");
  }
}

class MetadataXerox : public ::testing::Test
{
protected:
  void SetUp() override
  {
    ASSERT_EQ(ring_.Allocate(kFrameBytes, 4), 0);
    ring_.Reset();
    xerox_.Initialise(kFrameBytes);
  }

  // Puts a frame that ends with `tail` into the next slot and dispatches it as `sizeBytes` long.
  void Dispatch(const TBytes& tail, int sizeBytes = kFrameBytes)
  {
    unsigned char* const slot = ring_.GetBuffer(ring_.GetMaxImageIndex() % 4 + 1);
    std::memset(slot, 0xEE, kFrameBytes);
    std::copy(tail.begin(), tail.end(), slot + kFrameBytes - tail.size());
    EXPECT_EQ(xerox_.Dispatch(slot, sizeBytes), 0);
  }

  static constexpr int kFrameBytes = 256;
  TCircularBuffer ring_;
  TDispatchQueue_Ignore queue_{&ring_};
  TTimestampRepository repository_{10};
  TMetadataXerox xerox_{&queue_, &repository_};
};

TEST_F(MetadataXerox, StoresTheTimestampAndPassesTheFrameOn)
{
  TBytes tail;
  AppendChunk(tail, 1, TickBytes(0x123456789ABCLL));
  Dispatch(tail);
  std::int64_t ticks = 0;
  ASSERT_EQ(repository_.GetTimestamp(0, ticks), 0);
  EXPECT_EQ(ticks, 0x123456789ABCLL);
  EXPECT_EQ(xerox_.GetMaximumImageAvailable(), 1);
  EXPECT_EQ(xerox_.GetImage(1), ring_.GetBuffer(1));
}

TEST_F(MetadataXerox, PassesFramesWithoutATimestampOnAllTheSame)
{
  TBytes shortTimestamp;
  AppendChunk(shortTimestamp, 1, TBytes(4, 1));
  Dispatch({});
  Dispatch(shortTimestamp);
  Dispatch({}, -5);
  EXPECT_EQ(repository_.Throughput(), 0u);
  EXPECT_EQ(xerox_.GetMaximumImageAvailable(), 3);

  EXPECT_EQ(xerox_.Dispatch(nullptr, 0), 0);
  EXPECT_EQ(xerox_.GetMaximumImageAvailable(), 3);
}

} // namespace
