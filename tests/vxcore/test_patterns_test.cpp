// SPDX-License-Identifier: MIT
// Frames of the simulated cameras: names of scenes and test patterns.
#include "tests/vxcore/rendered_frames.h"
#include "vxcore/simulated/imaging/TCounterPattern.h"

#include <algorithm>
#include <gmock/gmock.h>

using namespace vxsim;

TEST(SceneNames, AreFoundHoweverTheyAreSpelled)
{
  ESceneKind kind = ESceneKind::Dark;
  EXPECT_TRUE(SceneFromName("Star-Field", kind));
  EXPECT_EQ(kind, ESceneKind::StarField);
  EXPECT_TRUE(SceneFromName("resolutionchart", kind));
  EXPECT_EQ(kind, ESceneKind::ResolutionChart);
  EXPECT_FALSE(SceneFromName("moon", kind));
  EXPECT_EQ(kind, ESceneKind::ResolutionChart);
}

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

TEST(CounterPattern, TellsATearInTheBodyFromDamage)
{
  TBytes frame(9000);
  TBytes other(9000);
  TCounterPattern::Fill(frame, {1, 1, 10, 0});
  TCounterPattern::Fill(other, {1, 1, 11, 0});
  std::copy_n(other.begin() + 4096, 2000, frame.begin() + 4096); // both stamps are right
  const auto torn = TCounterPattern::Verify(frame, {1, 1, 10, 0});
  EXPECT_EQ(torn.fault, EFrameFault::Torn);
  EXPECT_EQ(torn.badByteOffset, 4096u);
  TCounterPattern::Fill(frame, {1, 1, 10, 0});
  frame[5000] ^= 1;
  EXPECT_EQ(TCounterPattern::Verify(frame, {1, 1, 10, 0}).fault, EFrameFault::Corrupt);
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

TEST(CounterPattern, RendererStampsThePixelAreaAndNothingBehind)
{
  TFrameSettings settings = PlainSettings(64);
  settings.geometry.widthPixels = 8;
  settings.geometry.heightPixels = 4;
  settings.exposure.frameNumber = 77;
  settings.exposure.slot = 3;
  TFrameRenderer renderer;
  for (const auto kind : {ESceneKind::Counter, ESceneKind::Stamp}) {
    settings.scene.kind = kind;
    TBytes buffer(80, 0xEE);
    ASSERT_TRUE(renderer.Render(settings, buffer));
    EXPECT_TRUE(TCounterPattern::Verify(std::span(buffer).first(64), {1, 0, 77, 0}));
    EXPECT_EQ(TBytes(buffer.begin() + 64, buffer.end()), TBytes(16, 0xEE));
  }
}
