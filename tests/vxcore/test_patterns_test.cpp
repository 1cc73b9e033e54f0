// SPDX-License-Identifier: MIT
// Frames of the simulated cameras: names of scenes and test patterns.
#include "tests/vxcore/rendered_frames.h"
#include "vxcore/simulated/imaging/TCounterPattern.h"

#include <algorithm>
#include <gmock/gmock.h>

using namespace vxsim;

TEST(CounterPattern, SeesEveryKindOfDamage)
{
  for (const std::size_t size : {std::size_t{64}, std::size_t{65}, std::size_t{128}, std::size_t{20011}}) {
    const TCounterPattern::TKey key{5, 2, 1000, 0xDEADBEEF};
    TBytes frame(size);
    TCounterPattern::Fill(frame, key);
    const auto sound = TCounterPattern::Verify(frame, key);
    EXPECT_TRUE(sound);
    EXPECT_EQ(sound.head.slot, 0xDEADBEEFu);
    EXPECT_EQ(sound.tail, sound.head);

    EXPECT_EQ(TCounterPattern::Verify(frame, {5, 2, 1001, 0}).fault, EFrameFault::WrongFrame);
    EXPECT_EQ(TCounterPattern::Verify(frame, {5, 3, 1000, 0}).fault, EFrameFault::WrongRun);
    EXPECT_EQ(TCounterPattern::Verify(frame, {6, 2, 1000, 0}).fault, EFrameFault::WrongRun);
    EXPECT_EQ(TCounterPattern::Verify(std::span(frame).first(size - 8), key).fault, EFrameFault::Truncated);

    TBytes other(size);
    TCounterPattern::Fill(other, {5, 2, 1001, 0xDEADBEEF});
    for (const std::size_t tear : {size / 2, size - 33, size - 24}) {
      TBytes torn = other;
      std::copy_n(frame.begin(), std::max(tear, std::size_t{32}), torn.begin());
      EXPECT_EQ(TCounterPattern::VerifyAny(torn).fault, EFrameFault::Torn) << size << " torn at " << tear;
    }
    TBytes shortFrame(size, 0);
    std::copy_n(frame.begin(), size - 16, shortFrame.begin());
    EXPECT_EQ(TCounterPattern::Verify(shortFrame, key).fault, EFrameFault::Torn);
    std::fill(shortFrame.begin() + static_cast<std::ptrdiff_t>(std::max(size / 2, std::size_t{32})),
              shortFrame.end(), static_cast<unsigned char>(0));
    EXPECT_EQ(TCounterPattern::Verify(shortFrame, key).fault, EFrameFault::Truncated);

    EXPECT_EQ(TCounterPattern::VerifyAny(TBytes(size, 0)).fault, EFrameFault::NotStamped);
    for (std::size_t at = 0; at < size; at += 1 + size / 97) { // any single bit
      TBytes damaged = frame;
      damaged[at] ^= 0x10;
      const auto result = TCounterPattern::Verify(damaged, key);
      EXPECT_FALSE(result) << at;
      if (at < 32 || at >= size - 32) continue;
      EXPECT_EQ(result.badByteOffset, at);
    }
  }
}

TEST(CounterPattern, StampOnlyLeavesTheBodyAndSmallAreasDegrade)
{
  TBytes frame(100, 0x77);
  const TCounterPattern::TKey key{1, 1, 4, 9};
  TCounterPattern::Fill(frame, key, TCounterPattern::EBody::Any);
  EXPECT_EQ(TBytes(frame.begin() + 32, frame.end() - 32), TBytes(36, 0x77));
  EXPECT_TRUE(TCounterPattern::Verify(frame, key, TCounterPattern::EBody::Any));
  EXPECT_EQ(TCounterPattern::Verify(frame, key).fault, EFrameFault::Corrupt);

  for (const std::size_t size :
       {std::size_t{1}, std::size_t{7}, std::size_t{31}, std::size_t{32}, std::size_t{63}}) {
    TBytes small(size);
    TCounterPattern::Fill(small, key);
    EXPECT_TRUE(TCounterPattern::Verify(small, key)) << size;
    EXPECT_FALSE(TCounterPattern::Verify(small, {1, 1, 5, 9})) << size;
    EXPECT_EQ(bool(TCounterPattern::VerifyAny(small)), size >= 32) << size;
  }
  TCounterPattern::Fill({}, key);
}
