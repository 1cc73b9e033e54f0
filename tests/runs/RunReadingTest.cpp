// SPDX-License-Identifier: MIT
// Reading of recorded runs: every encoding and layout to the last bit, and directories that are damaged or wrong.
#include "runs/checksum.h"
#include "runs/TRunDescription.h"
#include "runs/TRunImages.h"
#include "runs/TRunIndex.h"
#include "tests/support/TMadeRun.h"
#include "tests/support/TScratchDirectory.h"

#include <climits>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;

using Numbers = std::vector<std::uint64_t>;

class RunReading : public ::testing::Test
{
protected:
  std::string Directory() const { return directory_.Path("run"); }
  std::string Path(const std::string& name) const { return Directory() + "/" + name; }
  std::string ImageFile(int file) const { return Path(RunFormat::ImageFileName(file)); }

  /// The numbers in the index, from 0.
  Numbers ReadIndex(std::int64_t imageLimit)
  {
    TRunIndex index;
    isIndexRead_ = index.Read(Directory(), imageLimit);
    damagedRecords_ = index.Damaged();
    Numbers numbers;
    for (std::int64_t image = index.NextAt(0); image != INT64_MAX; image = index.NextAt(image + 1))
      numbers.push_back(index.Find(image)->number);
    EXPECT_EQ(index.Count(), static_cast<std::int64_t>(numbers.size()));
    return numbers;
  }

  /// Images that salvage would take, from 0.
  static std::vector<std::int64_t> UsedPlaces(TRunImages& images, bool takesUnreadable)
  {
    std::vector<std::int64_t> used;
    for (std::int64_t image = 0; (image = images.NextUsed(image, takesUnreadable)) != TRunImages::kNoImage;
         ++image)
      used.push_back(image);
    return used;
  }

  TScratchDirectory directory_;
  bool isIndexRead_ = false;
  std::int64_t damagedRecords_ = 0;
};

struct TLayoutCase
{
  const char* encoding;
  int width;
  int rowPadding;
  int tail;
  bool hasMetadata;
  int imagesPerFile;
  PixelDepth depth;
};

class RunLayouts : public RunReading, public ::testing::WithParamInterface<TLayoutCase>
{
};

TEST_P(RunLayouts, EveryImageComesBackBitForBit)
{
  const TLayoutCase& c = GetParam();
  TMadeRun made;
  made.encoding = c.encoding;
  made.width = c.width;
  made.height = 5;
  made.rowPadding = c.rowPadding;
  made.tail = c.tail;
  made.hasMetadata = c.hasMetadata;
  made.imagesPerFile = c.imagesPerFile;
  made.Write(Directory(), {3, 1, 2, 7, 6, 5, 4});
  TRunDescription run;
  ASSERT_TRUE(run.Read(Directory())) << run.Error();
  ASSERT_TRUE(run.Layout()) << run.LayoutProblem();
  EXPECT_TRUE(run.Notes().empty());
  TRunIndex index;
  ASSERT_TRUE(index.Read(Directory(), run.ImageLimit())) << index.Error();
  ASSERT_EQ(index.Count(), 7);
  TRunImages images(Directory(), run.Values().imagesPerFile, run.Values().imageBytes);
  std::vector<std::byte> frame;
  for (std::int64_t image = 0; image < 7; ++image) {
    const long number = static_cast<long>(image) + 1;
    ASSERT_TRUE(images.ReadImage(image, frame)) << images.Error();
    EXPECT_EQ(index.Find(image)->checksum, Checksum(frame.data(), frame.size()));
    EXPECT_EQ(index.Find(image)->hostTimeNs, 1'700'000'000'000'000'000 + number);
    EXPECT_EQ(FrameTicks(frame), c.hasMetadata ? std::optional<long long>(made.Ticks(number)) : std::nullopt);
    const std::vector<std::byte> expected = made.Pixels(number, c.depth);
    std::vector<std::byte> pixels(expected.size());
    const long clipped = DecodeFrame(frame, *run.Layout(), c.depth, pixels);
    EXPECT_EQ(pixels, expected) << "image " << number;
    long tooLarge = 0;
    for (int pixel = 0; pixel < made.width * made.height; ++pixel)
      tooLarge += std::int64_t{made.Pixel(number, pixel)} >> static_cast<int>(c.depth) != 0 ? 1 : 0;
    EXPECT_EQ(clipped, tooLarge);
    if (!IsPlainFrame(*run.Layout(), c.depth)) continue;
    frame.resize(expected.size());
    EXPECT_EQ(frame, expected) << "a plain frame begins with its pixels";
  }
}

INSTANTIATE_TEST_SUITE_P(Layouts, RunLayouts,
                         ::testing::Values(TLayoutCase{"Mono8", 7, 0, 0, true, 3, PixelDepth::Bits8},
                                           TLayoutCase{"Mono8", 1, 3, 5, false, 1, PixelDepth::Bits16},
                                           TLayoutCase{"Mono8", 9, 7, 0, true, 100, PixelDepth::Bits32},
                                           TLayoutCase{"Mono12", 5, 6, 0, true, 1, PixelDepth::Bits16},
                                           TLayoutCase{"Mono12", 5, 0, 3, true, 7, PixelDepth::Bits32},
                                           TLayoutCase{"Mono12Packed", 6, 0, 0, true, 2, PixelDepth::Bits16},
                                           TLayoutCase{"Mono12Packed", 7, 0, 0, false, 2, PixelDepth::Bits16},
                                           TLayoutCase{"Mono12Packed", 1, 1, 9, true, 4, PixelDepth::Bits32},
                                           TLayoutCase{"Mono12Packed", 33, 14, 0, true, 1, PixelDepth::Bits32},
                                           TLayoutCase{"Mono16", 640, 16, 0, true, 3, PixelDepth::Bits16},
                                           TLayoutCase{"Mono16", 3, 1, 0, true, 3, PixelDepth::Bits32},
                                           TLayoutCase{"Mono32", 5, 4, 2, true, 3, PixelDepth::Bits32},
                                           TLayoutCase{"Mono32", 5, 2, 0, true, 3, PixelDepth::Bits8},
                                           TLayoutCase{"Mono32", 5, 0, 0, true, 3, PixelDepth::Bits16}));

TEST_F(RunReading, RecordsThatAreDamagedRepeatedTornOrImpossibleDoNotCount)
{
  TMadeRun made;
  made.images = 9;
  made.Write(Directory(), {2, 1, 4, 9, 9, 5, 6});
  const std::string path = Path(RunFormat::kIndexName);
  std::string index = TextOf(path);
  index[32 * 2 + 9] ^= 1;                                // the record of image 4
  PutFileBytes(path, index.substr(0, index.size() - 5)); // that of image 6 is torn
  EXPECT_EQ(ReadIndex(20), (Numbers{0, 1, 4, 8}));
  EXPECT_TRUE(isIndexRead_);
  EXPECT_EQ(damagedRecords_, 3);
  EXPECT_EQ(ReadIndex(8), (Numbers{0, 1, 4}));
  fs::resize_file(path, INT64_C(1) << 36); // holes take no time
  EXPECT_EQ(ReadIndex(INT_MAX), (Numbers{0, 1, 4, 8}));
  EXPECT_EQ(damagedRecords_, (INT64_C(1) << 31) - 4);
  fs::remove(path);
  EXPECT_EQ(ReadIndex(20), Numbers());
  EXPECT_FALSE(isIndexRead_);
}

TEST_F(RunReading, PlacesThatWereNeverWrittenAreReported)
{
  TMadeRun made;
  made.images = 5;
  made.imagesPerFile = 2; // 0 1 | 2 3 | 4 and a place
  made.hasMetadata = false;
  made.Write(Directory());
  const auto size = static_cast<std::int64_t>(made.Frame(1).size());
  std::string bytes = TextOf(ImageFile(0));
  bytes.replace(static_cast<std::size_t>(size), static_cast<std::size_t>(size), static_cast<std::size_t>(size),
                '\0');
  PutFileBytes(ImageFile(0), bytes); // image 1
  using Images = std::vector<std::int64_t>;
  {
    TRunImages images(Directory(), 2, size);
    EXPECT_EQ(UsedPlaces(images, false), (Images{0, 2, 3, 4}));
  }
  fs::remove(ImageFile(1));
  fs::resize_file(ImageFile(2), static_cast<std::uintmax_t>(2 * size - 1));
  TRunImages images(Directory(), 2, size);
  EXPECT_EQ(UsedPlaces(images, false), (Images{0, 4}));
  EXPECT_EQ(UsedPlaces(images, true), (Images{0, 2, 3, 4, 5})) << "what cannot be read may have been an image";
  std::vector<std::byte> frame;
  EXPECT_FALSE(images.ReadImage(2, frame));
  EXPECT_NE(images.Error().find("is missing"), std::string::npos) << images.Error();
  EXPECT_EQ(images.UnreadableEnd(), 4);
  EXPECT_FALSE(images.ReadImage(5, frame));
  EXPECT_NE(images.Error().find("is too short"), std::string::npos) << images.Error();
  EXPECT_TRUE(images.ReadImage(4, frame));
}

TEST_F(RunReading, BinningMayHaveItsOwnKey)
{
  for (const auto& [text, expected] : {std::pair{"3x2", true}, std::pair{"3x", false}, std::pair{"0x2", false}}) {
    TMadeRun made;
    made.extra = std::string("[image]\nHBin =\nVBin =\nBinning = ") + text + "\n";
    made.Write(Directory());
    TRunDescription run;
    ASSERT_TRUE(run.Read(Directory())) << run.Error();
    EXPECT_EQ(run.Values().horizontalBinning, expected ? std::optional<std::int64_t>(3) : std::nullopt) << text;
    EXPECT_EQ(run.Values().verticalBinning, expected ? std::optional<std::int64_t>(2) : std::nullopt) << text;
  }
}

TEST_F(RunReading, PlacesForBillionsOfImagesAreNotLookedAtOneByOne)
{
  fs::create_directory(Directory());
  PutFileBytes(ImageFile(0), "abc");
  fs::resize_file(ImageFile(0), INT_MAX);          // has no data
  PutFileBytes(Path("spool_9999999999.dat"), "?"); // behind all numbers that an image can have
  TRunImages images(Directory(), INT_MAX, 1);
  EXPECT_EQ(images.Count(), 1);
  EXPECT_EQ(images.End(), INT_MAX);
  EXPECT_EQ(UsedPlaces(images, false), (std::vector<std::int64_t>{0, 1, 2}));
}

struct TWrongLine
{
  const char* line; // put behind the description, in place of what it said
  bool isReadable;  // the run can be read at all
  bool isDecodable; // and its images decoded
};

class WrongDescriptions : public RunReading, public ::testing::WithParamInterface<TWrongLine>
{
};

TEST_P(WrongDescriptions, AreRefusedOrReadAsFarAsTheyAreRight)
{
  TMadeRun made;
  made.extra = GetParam().line;
  made.Write(Directory());
  TRunDescription run;
  EXPECT_EQ(run.Read(Directory()), GetParam().isReadable) << run.Error();
  EXPECT_EQ(run.Error().empty(), GetParam().isReadable);
  if (!GetParam().isReadable) return;
  EXPECT_EQ(run.Layout().has_value(), GetParam().isDecodable) << run.LayoutProblem();
  EXPECT_EQ(run.LayoutProblem().empty(), GetParam().isDecodable);
  TRunIndex index;
  EXPECT_TRUE(index.Read(Directory(), run.ImageLimit())) << index.Error();
  TRunImages images(Directory(), run.Values().imagesPerFile, run.Values().imageBytes);
  std::vector<std::byte> frame;
  for (const std::int64_t image : {std::int64_t{0}, std::int64_t{6}, run.ImageLimit() - 1})
    if (images.ReadImage(image, frame) && run.Layout()) {
      std::vector<std::byte> pixels(4U * static_cast<std::size_t>(run.Layout()->width) *
                                    static_cast<std::size_t>(run.Layout()->height));
      DecodeFrame(frame, *run.Layout(), PixelDepth::Bits32, pixels);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Lines, WrongDescriptions,
    ::testing::Values(
        TWrongLine{"[multiimage]\nImagesPerFile = 0\n", false, false},
        TWrongLine{"[multiimage]\nImagesPerFile = 99999999999999999999\n", false, false},
        TWrongLine{"[data]\nImageSize = -5\n", false, false},
        TWrongLine{"[data]\nImageSize = 8e6\n", false, false}, TWrongLine{"[data]\nImageSize =\n", false, false},
        TWrongLine{"[run]\nFormat = 2\n", false, false},
        TWrongLine{"[data]\nImageSize = 2000000000\n", true, true},
        TWrongLine{"[multiimage]\nImagesPerFile = 2147483647\n", true, true},
        TWrongLine{"[data]\nImageSize = 47\n", true, false},
        TWrongLine{"[image]\nWidth = 2147483648\n", true, false}, TWrongLine{"[image]\nWidth = 7\n", true, false},
        TWrongLine{"[image]\nHeight = 0\n", true, false}, TWrongLine{"[image]\nStride = 11\n", true, false},
        TWrongLine{"[image]\nStride = 2147483647\n", true, false},
        TWrongLine{"[image]\nPixelEncoding = Mono10\n", true, false},
        TWrongLine{"[image]\nPixelEncoding =\n", true, false},
        TWrongLine{"[run]\nImagesWritten = 9000000000000000000\n", true, true},
        TWrongLine{"[run]\nImagesExpected = many\n", true, true},
        TWrongLine{"[run]\nImagesExpected = 3\n", true, true},
        TWrongLine{"[run]\nState = \x1b[31mbroken\n", false, false}, TWrongLine{"[run]\nState =\n", false, false},
        TWrongLine{"[image]\nMetadata = TRUE\n", false, false}, TWrongLine{"[image]\nMetadata =\n", true, true},
        TWrongLine{"[acquisition]\nExposureTime = nan\nFrameRate = -inf\n", true, true},
        TWrongLine{"[camera]\nSerialNumber = 99999999999999\nModel = \xff\xfe\n", true, true},
        TWrongLine{"[run]\nStartTime = yesterday\n", true, true}));

TEST_F(RunReading, ThingsThatAreNoRunAreNamedAndNothingWaits)
{
  const std::string description = Path(RunFormat::kDescriptionName);
  const auto errorOf = [this] {
    TRunDescription run;
    EXPECT_FALSE(run.Read(Directory()));
    return run.Error();
  };
  EXPECT_NE(errorOf().find("is missing"), std::string::npos);
  TMadeRun made;
  made.Write(Directory());
  for (const std::string& text :
       {std::string(), std::string(2'000'000, 'x'), std::string("\0\xff[data\n=\n", 10)}) {
    PutFileBytes(description, text);
    EXPECT_NE(errorOf(), "");
  }
  fs::remove(description);
  fs::create_directory(description);
  EXPECT_NE(errorOf().find("is not a regular file"), std::string::npos);
  fs::remove(description);
  fs::create_symlink(description, description);
  EXPECT_NE(errorOf().find("cannot be opened"), std::string::npos);
  fs::remove(description);
  ASSERT_EQ(mkfifo(description.c_str(), 0600), 0);
  EXPECT_NE(errorOf().find("is not a regular file"), std::string::npos);

  // Links to regular files are as good as these; a pipe or a directory among the images is not read.
  made.Write(directory_.Path("elsewhere"));
  fs::remove_all(Directory());
  fs::create_directory(Directory());
  for (const std::string& name : {std::string(RunFormat::kDescriptionName), RunFormat::ImageFileName(0)})
    fs::create_symlink(directory_.Path("elsewhere") + "/" + name, Path(name));
  ASSERT_EQ(mkfifo(ImageFile(1).c_str(), 0600), 0);
  fs::create_directory(ImageFile(2));
  TRunDescription run;
  ASSERT_TRUE(run.Read(Directory())) << run.Error();
  TRunImages images(Directory(), run.Values().imagesPerFile, run.Values().imageBytes);
  std::vector<std::byte> frame;
  for (std::int64_t image = 0; image < 7; ++image) EXPECT_EQ(images.ReadImage(image, frame), image < 3) << image;
}

TEST(ImageFileNames, AreTenDigitsAndNothingElse)
{
  EXPECT_EQ(RunFormat::ImageFileName(7), "spool_0000000007.dat");
  EXPECT_EQ(RunFormat::ImageFileNumber("spool_0000000007.dat"), 7);
  EXPECT_EQ(RunFormat::ImageFileNumber("spool_9999999999.dat"), 9999999999);
  for (const char* other : {"spool_index.dat", "spool_007.dat", "spool_00000000070.dat", "spool_-000000007.dat",
                            "spool_0000000007.DAT", "spool_0000000007.dat.bak", "xspool_0000000007.dat", ""})
    EXPECT_EQ(RunFormat::ImageFileNumber(other), std::nullopt) << other;
}

TEST(FrameTicks, ComeFromWellFormedChunksOnly)
{
  TMadeRun run;
  run.hasMetadata = true;
  const std::vector<unsigned char> frame = run.Frame(3);
  const auto ticksWith = [&](std::size_t fromEnd, unsigned char value) {
    std::vector<unsigned char> changed = frame;
    changed[changed.size() - fromEnd] = value;
    return FrameTicks(std::as_bytes(std::span(changed)));
  };
  EXPECT_EQ(FrameTicks(std::as_bytes(std::span(frame))), run.Ticks(3));
  EXPECT_EQ(ticksWith(8, 0), std::nullopt) << "chunk 0 ends the search";
  EXPECT_EQ(ticksWith(8, 9), std::nullopt) << "other chunks are passed by";
  EXPECT_EQ(ticksWith(1, 0xFF), std::nullopt) << "longer than the frame";
  EXPECT_EQ(ticksWith(4, 3), std::nullopt) << "shorter than its identifier";
  EXPECT_EQ(ticksWith(4, 8), std::nullopt) << "no room for 64 bits";
  std::vector<unsigned char> longer = frame;
  longer.resize(frame.size() + 4); // a chunk of length 0
  EXPECT_EQ(FrameTicks(std::as_bytes(std::span(longer))), run.Ticks(3));
  for (std::size_t size = 0; size < 16; ++size)
    EXPECT_EQ(FrameTicks(std::as_bytes(std::span(frame)).last(size)), std::nullopt) << size;
}

} // namespace
