// SPDX-License-Identifier: MIT
// Several images in one file: where they are, when the file is open, and how wrong use is reported.
#include "features/TSDK3Exception.h"
#include "spool/TRandomAccessMultiImageSpooler.h"
#include "tests/spool/TMemorySpooler.h"

#include <array>
#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

namespace {

constexpr unsigned int kImagesPerFile = 10;
constexpr std::uint64_t kImageSize = 1000;

/// Makes images as long as it is allowed to.
class TFailingSpooler final : public TRandomAccessMultiImageSpooler
{
public:
  using TRandomAccessMultiImageSpooler::TRandomAccessMultiImageSpooler;
  IImage* CreateOffsetMultiImage(IImage* file, std::uint64_t size, unsigned int position) override
  {
    if (fails) throw std::bad_alloc();
    return TRandomAccessMultiImageSpooler::CreateOffsetMultiImage(file, size, position);
  }
  bool fails = false;
};

class MultiImageSpooler : public testing::Test
{
protected:
  void SetUp() override { spooler_.SetImageSizeBytes(kImageSize); }

  IImage* Open(unsigned int index)
  {
    IImage* image = nullptr;
    EXPECT_EQ(spooler_.OpenImage(index, 6, image), 0);
    return image;
  }

  /// Where in its file an image lies.
  std::ptrdiff_t OffsetOf(unsigned int index)
  {
    IImage* const image = Open(index);
    unsigned char* place = nullptr;
    EXPECT_EQ(image->Lock(place), 0);
    const std::ptrdiff_t offset = place - files_.images.at(index / kImagesPerFile).bytes.data();
    EXPECT_EQ(image->Unlock(), 0);
    EXPECT_EQ(spooler_.CloseImage(image), 0);
    return offset;
  }

  TMemorySpooler files_;
  TFailingSpooler spooler_{&files_, kImagesPerFile};
};

} // namespace

TEST_F(MultiImageSpooler, PutsEachImageAtItsPlaceInItsFile)
{
  EXPECT_EQ(files_.sizeBytes, 10000u);
  EXPECT_EQ(OffsetOf(23), 3000);
  EXPECT_EQ(OffsetOf(0), 0);
  EXPECT_EQ(OffsetOf(9), 9000);
  EXPECT_EQ(OffsetOf(10), 0);
  EXPECT_THAT(files_.modes, testing::Each(6));
  EXPECT_EQ(files_.images.size(), 3u);
  EXPECT_EQ(files_.images.at(2).closed, 1);
}

TEST_F(MultiImageSpooler, KeepsAFileOpenUntilItsLastImageIsClosedInWhateverOrder)
{
  IImage* const other = Open(30);
  for (const std::array<unsigned int, 3>& order : {std::array{0u, 1u, 2u}, {2u, 1u, 0u}, {1u, 2u, 0u}}) {
    const std::array<IImage*, 3> images{Open(20), Open(25), Open(29)};
    for (const unsigned int i : order) {
      EXPECT_TRUE(files_.images.at(2).isOpen);
      EXPECT_EQ(spooler_.CloseImage(images[i]), 0);
    }
    EXPECT_FALSE(files_.images.at(2).isOpen);
  }
  EXPECT_EQ(files_.images.at(2).opened, 3);
  EXPECT_EQ(files_.images.at(2).closed, 3);
  EXPECT_TRUE(files_.images.at(3).isOpen);
  EXPECT_EQ(spooler_.CloseImage(other), 0);
}

TEST_F(MultiImageSpooler, RefusesImagesThatAreNotOpenHereAndClosesWhatIsOpenWhenItIsDestroyed)
{
  TMemoryImage stranger;
  {
    TRandomAccessMultiImageSpooler spooler(&files_, 2);
    spooler.SetImageSizeBytes(1);
    IImage* image = nullptr;
    for (const unsigned int index : {0u, 1u, 2u}) EXPECT_EQ(spooler.OpenImage(index, 6, image), 0);
    for (IImage* const other : {static_cast<IImage*>(&stranger), static_cast<IImage*>(nullptr)})
      EXPECT_EQ(spooler.CloseImage(other), 1);
    EXPECT_EQ(spooler.CloseImage(image), 0);
    EXPECT_EQ(spooler.CloseImage(image), 1);
    EXPECT_EQ(files_.OpenImages(), 1);
  }
  EXPECT_EQ(files_.OpenImages(), 0);
  EXPECT_EQ(files_.images.at(0).closed, 1);
}

TEST_F(MultiImageSpooler, ReturnsFailuresOfTheFileAndRecordsNothing)
{
  IImage* image = nullptr;
  files_.openResult = [](unsigned int) { return 28; };
  EXPECT_EQ(spooler_.OpenImage(7, 6, image), 28);
  files_.openResult = [](unsigned int) -> int { throw std::bad_alloc(); };
  EXPECT_THROW(spooler_.OpenImage(7, 6, image), std::bad_alloc);
  files_.openResult = [](unsigned int) { return 0; };
  EXPECT_EQ(image, nullptr);
  image = Open(7);
  EXPECT_EQ(files_.modes.size(), 3u);
  files_.result = 5;
  EXPECT_EQ(spooler_.CloseImage(image), 5);
  EXPECT_EQ(files_.OpenImages(), 0);
  EXPECT_EQ(spooler_.SetImageSizeBytes(1), 5);
  EXPECT_EQ(spooler_.SetPath(L"p"), 5);
  EXPECT_EQ(spooler_.SetStem(L"s"), 5);
  EXPECT_EQ(spooler_.Remove(), 5);
}

TEST_F(MultiImageSpooler, ClosesTheFileOfAnImageThatCannotBeMade)
{
  IImage* image = nullptr;
  spooler_.fails = true;
  EXPECT_THROW(spooler_.OpenImage(7, 6, image), std::bad_alloc);
  EXPECT_EQ(files_.OpenImages(), 0);
  spooler_.fails = false;
  IImage* const first = Open(6);
  spooler_.fails = true;
  EXPECT_THROW(spooler_.OpenImage(7, 6, image), std::bad_alloc);
  EXPECT_TRUE(files_.images.at(0).isOpen) << "image 6 is in it";
  EXPECT_EQ(spooler_.CloseImage(first), 0);
  EXPECT_EQ(files_.OpenImages(), 0);
  EXPECT_EQ(files_.images.at(0).closed, 2);
}

TEST_F(MultiImageSpooler, CountsBytesIn64Bits)
{
  constexpr std::uint64_t kGiB = std::uint64_t{1} << 30;
  EXPECT_EQ(spooler_.SetImageSizeBytes(8 * kGiB), 0);
  EXPECT_EQ(files_.sizeBytes, 80 * kGiB);
  EXPECT_EQ(spooler_.SetImageSizeBytes(std::numeric_limits<std::uint64_t>::max() / 9), 1);
  EXPECT_EQ(files_.sizeBytes, 80 * kGiB);
}

TEST(SerialMultiImage, LocksOnePlaceAfterTheOtherAndUnlocksTheFileOnce)
{
  TMemoryImage file;
  file.bytes.resize(300);
  TSerialMultiImage serial(&file, 100, 3);
  unsigned char* place = nullptr;
  file.lockResult = [] { return 13; };
  EXPECT_EQ(serial.Lock(place), 13);
  file.lockResult = [] { return 0; };
  for (const int offset : {0, 100, 200}) {
    EXPECT_EQ(serial.Lock(place), 0);
    EXPECT_EQ(place - file.bytes.data(), offset);
  }
  EXPECT_THROW(serial.Lock(place), TSDK3Exception);
  EXPECT_EQ(file.locks, 1);

  file.unlockResult = 7;
  EXPECT_EQ(serial.Unlock(), 0);
  EXPECT_EQ(serial.Unlock(), 0);
  EXPECT_EQ(file.unlocks, 0);
  EXPECT_EQ(serial.Unlock(), 7);
  EXPECT_THROW(serial.Unlock(), TSDK3Exception);
  EXPECT_EQ(file.unlocks, 1);
  EXPECT_EQ(serial.ForceUnlock(), 7);
  EXPECT_EQ(file.unlocks, 2);
}

TEST(MultiImage, ThrowsForWrongUse)
{
  TMemorySpooler files;
  TMemoryImage file;
  EXPECT_THROW(TRandomAccessMultiImageSpooler(nullptr, 1), TSDK3Exception);
  EXPECT_THROW(TRandomAccessMultiImageSpooler(&files, 0), TSDK3Exception);
  EXPECT_THROW(TSerialMultiImage(nullptr, 1, 1), TSDK3Exception);
  EXPECT_THROW(TSerialMultiImage(&file, 0, 1), TSDK3Exception);
  EXPECT_THROW(TSerialMultiImage(&file, 1, 0), TSDK3Exception);
  EXPECT_THROW(TOffsetMultiImage(nullptr, 1, 1), TSDK3Exception);
  EXPECT_THROW(TOffsetMultiImage(&file, 0, 1), TSDK3Exception);
}
