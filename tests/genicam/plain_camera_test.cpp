// SPDX-License-Identifier: MIT
// Runs of a camera that was made from the published protocol alone, what is lost on the way, and cameras that do not keep
// to their description.
#include "tests/genicam/GenICamTest.h"

#include <cstring>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using TArguments = std::vector<std::string>;
constexpr TArea kArea = {11, 21, 334, 101};

class PlainCamera : public GenICamRun
{
protected:
  unsigned int OpenPlain(const TArguments& arguments = {}, const std::string& more = "")
  {
    TakeLog();
    Serve("127.0.0.1", arguments, VXMCD_TEST_PLAIN_CAMERA);
    Attach("127.0.0.1", more);
    char directory[] = "";
    return Initialize(directory);
  }
  void CloseIt()
  {
    ShutDown();
    Kill("127.0.0.1");
  }
  static unsigned int StartSeries(int frames)
  {
    SetRate(100);
    SetSeries(frames);
    return StartAcquisition();
  }
  static void ExpectLog(const std::string& text)
  {
    const std::string log = TakeLog();
    EXPECT_NE(log.find(text), std::string::npos) << text << ", in: " << log;
  }
};

struct TStreamCase
{
  TArguments arguments;
  const wchar_t* encoding;
  int bits;
  TArea area = kArea;
  long long fewestLost = 0;
  long long mostLost = 3; ///< a busy machine may lose packets
};

class PlainCameraStream : public PlainCamera, public testing::WithParamInterface<TStreamCase>
{
};

TEST_P(PlainCameraStream, GivesEveryPixelAndTime)
{
  constexpr int kFrames = 12;
  const TStreamCase& param = GetParam();
  ASSERT_EQ(OpenPlain(param.arguments), RC_SUCCESS);
  SetArea(param.area);
  SetEncoding(param.encoding);
  ASSERT_EQ(SetMetaData(1), RC_SUCCESS);
  double seconds = 0.0;
  long long lost = 0;
  // Where packets are sent again too late, the machine is busy.
  for (int attempt = 0; attempt == 0 || (attempt < 3 && lost > param.mostLost); ++attempt) {
    ASSERT_EQ(StartSeries(kFrames), RC_SUCCESS);
    seconds = SecondsOf([] { ASSERT_TRUE(WaitUntilIdle(20.0)); });
    EXPECT_EQ(Status(), static_cast<int>(RC_IDLE));
    std::uint64_t before = 0;
    lost = 0;
    for (long number = 1; number <= kFrames; ++number) {
      const std::uint64_t frame = FrameOf(Image(number, param.area), param.area, param.bits);
      ASSERT_NE(frame, 0U);
      for (; before != 0 && FrameAfter(before) != frame; before = FrameAfter(before)) ++lost;
      before = frame;
    }
    EXPECT_EQ(Int(L"FramesLost"), lost);
  }
  EXPECT_GE(lost, param.fewestLost);
  EXPECT_LE(lost, param.mostLost);
  unsigned int count = 0;
  long long first = 0;
  long long last = 0;
  EXPECT_EQ(vxsys_GetRawMetaDataInfo(&count, &first, 0), RC_SUCCESS);
  EXPECT_EQ(vxsys_GetRawMetaDataInfo(&count, &last, kFrames - 1), RC_SUCCESS);
  // In ns, of which the clock of the camera counts every eighth. On a busy machine the frames come later, and nearer to each
  // other.
  EXPECT_GT(static_cast<double>(last - first), 10e6 * static_cast<double>(kFrames - 1 + lost) / 5);
  EXPECT_LT(static_cast<double>(last - first), 1e9 * seconds);
}

// Frames are numbered from 65530 on where all 16 bits of the pixels tell them apart, elsewhere from 1 on.
INSTANTIATE_TEST_SUITE_P(
    All, PlainCameraStream,
    testing::Values(
        TStreamCase{{"formats=Mono8", "first=1", "padding=3"}, L"Mono8", 8},
        TStreamCase{{"formats=Mono16", "padding=6"}, L"Mono16", 16},
        TStreamCase{{"formats=Mono12p", "first=1"}, L"Mono12Packed", 12, {11, 21, 333, 101}},
        TStreamCase{{"formats=Mono12p", "first=1", "padding=5"}, L"Mono12", 12},
        TStreamCase{{"formats=Mono12Packed", "first=1"}, L"Mono12", 12, {11, 21, 333, 101}},
        TStreamCase{{"formats=Mono12Packed", "first=1", "padding=5"}, L"Mono12Packed", 12},
        TStreamCase{
            {"loseblock=3", "first=65533"}, L"Mono16", 16, kArea, 3, 9}, // the last one before the wrap too
        TStreamCase{{"losepacket=2"}, L"Mono16", 16, kArea, 0, 8}, // sent again; all of them lost would be 11
        TStreamCase{{"losepacket=3", "resend=0"}, L"Mono16", 16, kArea, 4, 9},
        TStreamCase{{"losepacket=3", "resend=2"}, L"Mono16", 16, kArea, 4, 9},
        TStreamCase{{"swap=2"}, L"Mono16", 16}, TStreamCase{{"cutimage=4"}, L"Mono16", 16, kArea, 3, 6},
        TStreamCase{{"smallimage=4"}, L"Mono16", 16, kArea, 3, 6},
        TStreamCase{{"grid=16"}, L"Mono16", 16}, // takes another area than it is asked for
        TStreamCase{{"edit=<pMax>MaxWidth</pMax>|<Max>2000</Max>"}, L"Mono16", 16, {1666, 21, 334, 101}}));

TEST_F(PlainCamera, WhatAnIncompleteFrameLacksIsZero)
{
  ASSERT_EQ(
      OpenPlain({"formats=Mono16", "first=1", "losepacket=2", "resend=0"}, "Incomplete = deliver\nPool = 13\n"),
      RC_SUCCESS);
  constexpr int kImages = 16;
  SetArea({0, 0, 128, 64});
  SetRate(100);
  ASSERT_EQ(SetAcquisitionMode(3), RC_SUCCESS);
  ASSERT_EQ(SetNumberAccumulations(2), RC_SUCCESS);
  ASSERT_EQ(SetNumberKinetics(kImages), RC_SUCCESS);
  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  ASSERT_TRUE(WaitUntilIdle(5.0));
  std::vector<int> sums(128UL * 64);
  for (long number = 1; number <= kImages; ++number) {
    long first = 0;
    long last = 0;
    ASSERT_EQ(GetImages(number, number, sums.data(), sums.size(), &first, &last), RC_SUCCESS);
    // Only odd frames have their end. A busy machine may lose others, so that a sum is of later ones, or of two of these.
    const auto pixel = [](std::uint64_t frame) { return static_cast<int>(TestPixel(127, 63, frame, 16)); };
    bool isFound = sums.back() == 0;
    for (auto frame = static_cast<std::uint64_t>(2 * number - 1); frame < 200; frame += 2) {
      isFound = isFound || sums.back() == pixel(frame);
      for (std::uint64_t next = frame + 2; next < frame + 8; next += 2)
        isFound = isFound || sums.back() == pixel(frame) + pixel(next);
    }
    EXPECT_TRUE(isFound) << number;
  }
}

TEST_F(PlainCamera, ClockOfTicksIsResetInNanoseconds)
{
  ASSERT_EQ(OpenPlain({"edit=TimestampLatch|GevTimestampControlLatch", "edit=TimestampValue|GevTimestampValue",
                       "edit=<Address>2376</Address><Length>4|<Address>2376</Address><Length>8",
                       "edit=<Max>4294967295</Max>|"}),
            RC_SUCCESS);
  SetArea(kArea);
  SetRate(100);
  ASSERT_EQ(SetMetaData(1), RC_SUCCESS);
  ASSERT_EQ(SetAcquisitionMode(5), RC_SUCCESS);
  usleep(200'000); // the camera's clock, which is not reset, is beyond it
  ASSERT_EQ(VX_Command(Handle(), L"TimestampClockReset"), VX_SUCCESS);
  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  for (int image = 0; image < 20; ++image) ASSERT_EQ(WaitForAcquisitionTimeOut(2000), RC_SUCCESS);
  unsigned int count = 0;
  long long ticks = 0;
  EXPECT_EQ(vxsys_GetRawMetaDataInfo(&count, &ticks, 0), RC_SUCCESS);
  EXPECT_NEAR(static_cast<double>(ticks), 50e6, 50e6);
  EXPECT_EQ(AbortAcquisition(), RC_SUCCESS);
}

TEST_F(PlainCamera, RunEndsWhenItCannotGoOn)
{
  const auto processorSeconds = [] {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
  };
  // Frames still come, but nothing that is said is answered.
  ASSERT_EQ(OpenPlain({"mute=10"}), RC_SUCCESS);
  SetArea(kArea);
  ASSERT_EQ(StartSeries(100'000), RC_SUCCESS);
  const double before = processorSeconds();
  EXPECT_TRUE(WaitUntilIdle(10.0));
  EXPECT_LT(processorSeconds() - before, 2.0);
  EXPECT_EQ(Status(), static_cast<int>(RC_STATUS_TIMED_OUT));
  ExpectLog("127.0.0.1: the camera does not answer any more");
  EXPECT_LT(SecondsOf([] { ShutDown(); }), 1.0);
  Kill("127.0.0.1");
  // The power fails, and is back at once.
  ASSERT_EQ(OpenPlain(), RC_SUCCESS);
  SetArea(kArea);
  ASSERT_EQ(StartSeries(100'000), RC_SUCCESS);
  ASSERT_EQ(WaitForAcquisitionTimeOut(2000), RC_SUCCESS);
  Kill("127.0.0.1");
  Serve("127.0.0.1", {}, VXMCD_TEST_PLAIN_CAMERA);
  EXPECT_TRUE(WaitUntilIdle(5.0));
  EXPECT_EQ(Status(), static_cast<int>(RC_STATUS_TIMED_OUT));
  CloseIt();
  ASSERT_EQ(OpenPlain(), RC_SUCCESS);
  SetArea(kArea);
  ASSERT_EQ(StartSeries(3), RC_SUCCESS);
  EXPECT_TRUE(WaitUntilIdle(5.0));
  EXPECT_EQ(Status(), static_cast<int>(RC_IDLE));
  // It is gone between two runs: the next one does not begin.
  Kill("127.0.0.1");
  EXPECT_EQ(StartAcquisition(), static_cast<unsigned int>(RC_FRAME_UNAVAILABLE));
}

TEST_F(PlainCamera, LogTellsWhereFramesMayBeKept)
{
  ASSERT_EQ(OpenPlain({"loseblock=1"}), RC_SUCCESS);
  SetArea(kArea);
  ASSERT_EQ(StartSeries(3), RC_SUCCESS);
  EXPECT_TRUE(WaitUntilIdle(5.0));
  EXPECT_EQ(Status(), static_cast<int>(RC_STATUS_TIMED_OUT));
  CloseIt();
  ExpectLog("does a firewall keep packets back?");
}

TEST_F(PlainCamera, PacketsFitTheNetwork)
{
  const int descriptor = socket(AF_INET, SOCK_DGRAM, 0);
  ifreq request{};
  std::strcpy(request.ifr_name, "lo");
  const auto setMtu = [&](int bytes) {
    request.ifr_mtu = bytes;
    ASSERT_EQ(ioctl(descriptor, SIOCSIFMTU, &request), 0);
  };
  setMtu(1000);
  ASSERT_EQ(OpenPlain({}, "PacketSize = 8000\n"), RC_SUCCESS);
  ExpectLog("packets of 8000 bytes (PacketSize) may be lost: the network's MTU is 1000");
  SetArea(kArea);
  ASSERT_EQ(StartSeries(3), RC_SUCCESS);
  EXPECT_TRUE(WaitUntilIdle(5.0));
  EXPECT_EQ(Status(), static_cast<int>(RC_STATUS_TIMED_OUT));
  CloseIt();
  ExpectLog("0 images came; are its packets larger than the network carries");
  for (const char* more : {"testpackets=0", "testpackets=1"}) {
    ASSERT_EQ(OpenPlain({more}, "PacketSize = auto\n"), RC_SUCCESS);
    SetArea(kArea);
    ASSERT_EQ(StartSeries(3), RC_SUCCESS);
    EXPECT_TRUE(WaitUntilIdle(5.0));
    EXPECT_EQ(Status(), static_cast<int>(RC_IDLE));
    CloseIt();
  }
  setMtu(65536);
  close(descriptor);
}

TEST_F(PlainCamera, WhatCannotBeIsRefusedWithTheReason)
{
  struct TCase
  {
    const char* argument;
    bool isOpened;
    const char* log;
  };
  for (const TCase& one : std::initializer_list<TCase>{
           {"cut=3000", false, "its description is not whole: AttValue"},
           {"edit=</RegisterDescription>|", false, "its description is not whole: Premature end of data"},
           {"cut=11", false, "127.0.0.1: the camera cannot be opened"},
           {"answers=60", false, "127.0.0.1: the camera cannot be opened: it has stopped answering"},
           {"edit=\"PixelFormat\"|\"Other\"", true, "its pixels are none of those that can be read"},
           {"formats=", true, "its pixels are none of those that can be read"},
           {"edit=\"Width\"|\"Other\"", true, "the size of its images cannot be read (2)"},
           {"edit=\"AcquisitionStart\"|\"Other\"", true, "it refuses the command (2)"},
           {"edit=<Formula>W * H|<Formula>1000000000 * W * H", true,
            "it announces frames of 8192000000000 bytes"}}) {
    SCOPED_TRACE(one.argument);
    const unsigned int code = OpenPlain({one.argument});
    EXPECT_EQ(code,
              one.isOpened ? static_cast<unsigned int>(RC_SUCCESS) : static_cast<unsigned int>(RC_NO_CAMERA));
    if (one.isOpened) {
      SetArea({0, 0, 128, 64});
      EXPECT_NE(StartSeries(3), static_cast<unsigned int>(RC_SUCCESS));
    }
    ExpectLog(one.log);
    CloseIt();
  }
  // No network leads there: nothing is waited for.
  TakeLog();
  Attach("10.1.2.3");
  char directory[] = "";
  EXPECT_LT(SecondsOf([&] { EXPECT_EQ(Initialize(directory), static_cast<unsigned int>(RC_NO_CAMERA)); }), 0.5);
  ExpectLog("10.1.2.3: the camera cannot be opened: no network of this machine leads there");
}

TEST_F(PlainCamera, WrongNumbersOfADescriptionAreBorne)
{
  for (const char* argument :
       {"edit=<Formula>W * H|<Formula>0 * W * H", "edit=<Formula>W * H|<Formula>-1 * W * H",
        "edit=<Formula>W * H|<Formula>1 / 0 * W * H", "edit=<Inc>1</Inc>|<Inc>-4</Inc>",
        "edit=<Min>10</Min>|<Min>20000</Min>", "edit=<pMax>MaxWidth</pMax>|<Max>9223372036854775807</Max>",
        "ticks=0", "ticksback=2", "negative=256", "negative=304"}) {
    SCOPED_TRACE(argument);
    ASSERT_EQ(OpenPlain({argument, "first=1"}), RC_SUCCESS);
    SetArea({8, 4, 128, 64});
    SetEncoding(L"Mono8");
    EXPECT_EQ(StartSeries(3), RC_SUCCESS);
    EXPECT_TRUE(WaitUntilIdle(5.0));
    EXPECT_NE(FrameOf(Image(3, {8, 4, 128, 64}), {8, 4, 128, 64}, 8), 0U);
    CloseIt();
  }
  ASSERT_EQ(OpenPlain({"negative=1032"}), RC_SUCCESS); // the temperature
  EXPECT_NEAR(Float(L"SensorTemperature"), -20.0, 1e-6);
  CloseIt();
  ASSERT_EQ(OpenPlain({"negative=284"}), RC_SUCCESS); // the sensor
  ExpectLog("SensorWidth: the size of the sensor is unknown or impossible (-20)");
}

} // namespace
