// SPDX-License-Identifier: MIT
// Taking images: which encoding gives which pixels, which image is given, and the codes on the way.
#include "tests/support/SimulatedCameraTest.h"

namespace {

constexpr int kWidth = 16;
constexpr int kHeight = 8;
constexpr unsigned long kSize = kWidth * kHeight;

class Retrieval : public SimulatedCameraTest
{
protected:
  void SetUp() override
  {
    SimulatedCameraTest::SetUp();
    Open(kWidth, kHeight);
    SetAcquisitionMode(5);
  }

  void Start(const wchar_t* encoding = L"Mono16")
  {
    ASSERT_EQ(VX_SetEnumString(CoreHandle(), L"PixelEncoding", encoding), VX_SUCCESS);
    ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  }

  std::vector<unsigned char> bytes_ = std::vector<unsigned char>(kSize * 8);
  std::vector<unsigned short> words_ = std::vector<unsigned short>(kSize * 8);
  std::vector<int> ints_ = std::vector<int>(kSize * 8);
};

TEST_F(Retrieval, EveryEncodingGivesItsPixels)
{
  struct TCase
  {
    const wchar_t* encoding;
    unsigned int code8;
    unsigned short word;
    int pixel;
  };
  // Frames of bytes 0x21: what they are as pixels of each encoding.
  const TCase cases[] = {{L"Mono8", RC_SUCCESS, 0x21, 0x21},
                         {L"Mono12", RC_NOT_SUPPORTED, 0x2121, 0x2121},
                         {L"Mono12Packed", RC_NOT_SUPPORTED, 0x211, 0x211},
                         {L"Mono16", RC_NOT_SUPPORTED, 0x2121, 0x2121},
                         {L"Mono32", RC_NOT_SUPPORTED, 0x2121, 0x21212121}};
  int tried = 0;
  for (const TCase& c : cases) {
    if (VX_SetEnumString(CoreHandle(), L"PixelEncoding", c.encoding) != VX_SUCCESS) continue;
    ++tried;
    Start(c.encoding);
    PushFrames(1, 0x21);
    EXPECT_EQ(GetMostRecentImage8(bytes_.data(), kSize), c.code8) << tried;
    if (c.code8 == RC_SUCCESS) {
      EXPECT_EQ(bytes_[kSize - 1], 0x21);
    }
    EXPECT_EQ(GetMostRecentImage16(words_.data(), kSize), RC_SUCCESS);
    EXPECT_EQ(words_[0], c.word) << tried;
    EXPECT_EQ(words_[kSize], 0) << "nothing behind the image";
    EXPECT_EQ(GetMostRecentImage(ints_.data(), kSize), RC_SUCCESS);
    EXPECT_EQ(ints_[0], c.pixel) << tried;
    AbortAcquisition();
  }
  EXPECT_GE(tried, 3) << "the camera offers too few encodings for this test";
}

TEST_F(Retrieval, OldestImagesComeOneByOneAndStartBeginsAgain)
{
  Start();
  EXPECT_EQ(GetOldestImage16(words_.data(), kSize), RC_NO_NEW_DATA);
  PushFrames(3);
  for (unsigned short image = 1; image <= 3; ++image) {
    ASSERT_EQ(GetOldestImage16(words_.data(), kSize), RC_SUCCESS);
    EXPECT_EQ(words_[0], image * 0x0101);
  }
  EXPECT_EQ(GetOldestImage16(words_.data(), kSize), RC_NO_NEW_DATA);
  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  PushFrames(1, 9);
  ASSERT_EQ(GetOldestImage(ints_.data(), kSize), RC_SUCCESS);
  EXPECT_EQ(ints_[0], 0x0909);
}

TEST_F(Retrieval, MostRecentImageDoesNotMoveTheCursor)
{
  Start();
  EXPECT_EQ(GetMostRecentImage16(words_.data(), kSize), RC_NO_NEW_DATA);
  PushFrames(2);
  ASSERT_EQ(GetMostRecentImage16(words_.data(), kSize), RC_SUCCESS);
  EXPECT_EQ(words_[0], 0x0202);
  ASSERT_EQ(GetOldestImage16(words_.data(), kSize), RC_SUCCESS);
  EXPECT_EQ(words_[0], 0x0101);
}

TEST_F(Retrieval, AllImagesOfAFinishedRunComeAtOnce)
{
  SetAcquisitionMode(3);
  SetNumberKinetics(4);
  Start();
  PushFrames(2);
  EXPECT_EQ(GetAcquiredData16(words_.data(), kSize), RC_ACQUIRING);
  PushFrames(2, 3);
  ASSERT_EQ(GetAcquiredData16(words_.data(), kSize), RC_SUCCESS) << "right after the last frame";
  for (unsigned short image = 0; image < 4; ++image) EXPECT_EQ(words_[image * kSize], (image + 1) * 0x0101);
  EXPECT_EQ(words_[4 * kSize], 0);
  EXPECT_EQ(GetAcquiredData16(nullptr, kSize), RC_P1_INVALID);
  EXPECT_EQ(GetAcquiredData16(words_.data(), kSize * 4), RC_P2_INVALID) << "the size is that of one image";
}

TEST_F(Retrieval, RangeGivesItsFirstImageAndReportsWhatIsThere)
{
  Start();
  PushFrames(5);
  long from = -1;
  long to = -1;
  ASSERT_EQ(GetImages16(3, 5, words_.data(), kSize, &from, &to), RC_SUCCESS);
  EXPECT_EQ(words_[0], 0x0303);
  EXPECT_EQ(words_[kSize], 0) << "one image is copied";
  EXPECT_EQ(from, 3);
  EXPECT_EQ(to, 5);

  EXPECT_EQ(GetImages16(6, 9, words_.data(), kSize, &from, &to), RC_NO_NEW_DATA);
  EXPECT_EQ(from, 0);
  EXPECT_EQ(to, 0);
  EXPECT_EQ(GetImages(0, 5, ints_.data(), kSize, &from, &to), RC_P1_INVALID);
  EXPECT_EQ(GetImages(4, 3, ints_.data(), kSize, &from, &to), RC_P2_INVALID);
  EXPECT_EQ(GetImages(0, 5, nullptr, kSize, &from, &to), RC_P3_INVALID);
  EXPECT_EQ(GetImages(0, 5, ints_.data(), kSize + 1, &from, &to), RC_P4_INVALID);
  EXPECT_EQ(GetImages16((1L << 32) + 1, (1L << 32) + 2, words_.data(), kSize, nullptr, nullptr), RC_NO_NEW_DATA);
}

TEST_F(Retrieval, CountersShowWhatTheRunHasDelivered)
{
  int first = 7;
  int last = 7;
  long total = 7;
  EXPECT_EQ(GetNumberAvailableImages(&first, &last), RC_NO_NEW_DATA) << "before any run";
  EXPECT_EQ(first, 0);
  EXPECT_EQ(GetTotalNumberImagesAcquired(&total), RC_SUCCESS);
  EXPECT_EQ(total, 0);
  EXPECT_EQ(GetNumberAvailableImages(nullptr, &last), RC_P1_INVALID);
  EXPECT_EQ(GetNumberAvailableImages(&first, nullptr), RC_P2_INVALID);

  Start();
  PushFrames(3);
  EXPECT_EQ(GetNumberAvailableImages(&first, &last), RC_SUCCESS);
  EXPECT_EQ(first, 1);
  EXPECT_EQ(last, 3);
  long untouched = 42;
  EXPECT_EQ(GetNumberNewImages(&untouched, &untouched), RC_SUCCESS);
  EXPECT_EQ(untouched, 42);
}

TEST_F(Retrieval, UnreadableOrUnknownEncodingIsNotSupported)
{
  Start();
  PushFrames(1);
  for (const char* rule : {"call VX_GetEnumerated feature PixelEncoding at 1 rc 3",
                           "call VX_GetEnumeratedString feature PixelEncoding at 1 rc 3",
                           "call VX_GetEnumeratedString feature PixelEncoding at 1 unterminated"}) {
    VXSIM_AddFault(rule);
    EXPECT_EQ(GetMostRecentImage16(words_.data(), kSize), RC_NOT_SUPPORTED) << rule;
    VXSIM_ClearFaults();
  }
  VXSIM_AddFault("call VX_GetInt feature AOIWidth at 1 rc 3");
  EXPECT_EQ(GetMostRecentImage16(words_.data(), kSize), RC_P2_INVALID)
      << "a width that cannot be read fits no size";
}

} // namespace
