// SPDX-License-Identifier: MIT
// The output files: what is written can be read back by others, also when the run or the disk ends early.
#include "tests/support/TScratchDirectory.h"
#include "tests/tools/FileReaders.h"
#include "tests/tools/ImageFixtures.h"
#include "tools/TFitsCubeWriter.h"
#include "tools/TPngPreviewWriter.h"
#include "tools/TTiffStackWriter.h"

#include <algorithm>
#include <fcntl.h>
#include <fstream>
#include <memory>
#include <unistd.h>

namespace vxtool {
namespace {

constexpr std::size_t kTiffPixels = 4096; // where they begin

TImageShape Shape(int width, int height, PixelDepth depth)
{
  TImageShape shape;
  shape.width = width;
  shape.height = height;
  shape.depth = depth;
  return shape;
}

TImageLabel Label(long number)
{
  TImageLabel label;
  label.number = number;
  label.ticks = number * 100;
  return label;
}

TFrameCounts Counts(long delivered, long overwritten)
{
  TFrameCounts counts;
  counts.delivered = delivered;
  counts.overwritten = overwritten;
  counts.lostInCamera = 0;
  return counts;
}

// Writes images 1 to count; the number that the writer took.
long WriteImages(IImageWriter& writer, const TImageShape& shape, long count)
{
  long taken = 0;
  for (long number = 1; number <= count; ++number)
    if (writer.Write(TestImage(shape, number), Label(number))) ++taken;
  return taken;
}

class ImageWriter : public ::testing::Test
{
protected:
  TScratchDirectory directory_;
};

class ImageWriterOfDepth : public ImageWriter, public ::testing::WithParamInterface<PixelDepth>
{
};

TEST_P(ImageWriterOfDepth, TiffStackReadsBackWithTrueCountAndWithoutGaps)
{
  const TImageShape shape = Shape(37, 11, GetParam());
  const std::string path = directory_.Path("stack.tif");
  TTiffStackWriter writer(TTiffStackWriter::Reach::Classic);
  ASSERT_TRUE(writer.Open(path, false, shape, TestFacts(20))) << writer.Error();
  ASSERT_EQ(WriteImages(writer, shape, 7), 7); // fewer than planned, as after an abort
  ASSERT_TRUE(writer.Close(Counts(9, 2))) << writer.Error();

  const TTiffPages file = ReadTiff(path);
  EXPECT_EQ(file.problem, "");
  EXPECT_FALSE(file.isBigTiff);
  EXPECT_EQ(file.bits, static_cast<int>(GetParam()));
  EXPECT_EQ(file.sampleFormat, GetParam() == PixelDepth::Bits32 ? 2 : 1);
  ASSERT_EQ(file.pages.size(), 7u);
  for (std::size_t page = 0; page < 7; ++page) {
    EXPECT_EQ(file.pages[page], TestImage(shape, static_cast<long>(page) + 1)) << "page " << page;
    EXPECT_EQ(file.offsets[page], file.offsets[0] + page * shape.Bytes()) << "time series readers want no gaps";
  }
  EXPECT_EQ(file.firstDescription.rfind("ImageJ=", 0), 0u);
  EXPECT_NE(file.firstDescription.find("\nimages=7\nframes=7\n"), std::string::npos) << file.firstDescription;
  EXPECT_NE(file.firstDescription.find("\noverwritten=2\n"), std::string::npos) << file.firstDescription;
}

TEST_P(ImageWriterOfDepth, FitsCubeReadsBackAndIsCleanAfterAbort)
{
  const TImageShape shape = Shape(401, 331, GetParam()); // larger than one piece
  const std::string path = directory_.Path("cube.fits");
  TFitsCubeWriter writer;
  ASSERT_TRUE(writer.Open(path, false, shape, TestFacts(20))) << writer.Error();
  std::vector<std::byte> expected;
  for (const long number : {1L, 2L, 5L}) {
    const std::vector<std::byte> image = TestImage(shape, number);
    expected.insert(expected.end(), image.begin(), image.end());
    TImageLabel label = Label(number);
    if (number == 2) label.ticks.reset();
    label.hostNanoseconds = 1'700'000'000'000'000'000 + number * 250'000'000;
    ASSERT_TRUE(writer.Write(image, label)) << writer.Error();
  }
  EXPECT_EQ(ReadFits(path, GetParam()).images, 3) << "also when the program is killed now";
  ASSERT_TRUE(writer.Close(Counts(5, 2))) << writer.Error();

  EXPECT_EQ(FitsVerify(path), "");
  const TFitsCube cube = ReadFits(path, GetParam());
  EXPECT_EQ(cube.status, 0);
  EXPECT_EQ(cube.images, 3);
  EXPECT_EQ(cube.bitpix, GetParam() == PixelDepth::Bits16 ? 20 : static_cast<int>(GetParam()));
  EXPECT_EQ(cube.pixels, expected);
  EXPECT_EQ(cube.numbers, (std::vector<long long>{1, 2, 5}));
  EXPECT_EQ(cube.ticks, (std::vector<long long>{100, -1, 500}));
  EXPECT_EQ(cube.seconds, (std::vector<double>{0.0, 0.25, 1.0}));
  EXPECT_EQ(cube.dateObs, "2023-11-14T22:13:20.240000") << "an exposure before the image came";
  EXPECT_EQ(cube.dateEnd, "2023-11-14T22:13:21.250000");
  EXPECT_DOUBLE_EQ(cube.exposure, 0.01);
  EXPECT_EQ(cube.overwritten, 2);
}

INSTANTIATE_TEST_SUITE_P(Depths, ImageWriterOfDepth,
                         ::testing::Values(PixelDepth::Bits8, PixelDepth::Bits16, PixelDepth::Bits32),
                         [](const auto& depth) { return "Bits" + std::to_string(static_cast<int>(depth.param)); });

// Each program reads these images as they were written.
void ExpectImages(const char* program, const std::string& path, const TImageShape& shape, long count,
                  const std::vector<long>& numbers)
{
  const TReadImages read = ReadWith(program, path, numbers);
  EXPECT_EQ(read.images, count) << program;
  std::vector<std::byte> expected;
  for (const long number : numbers) {
    const std::vector<std::byte> image = TestImage(shape, number);
    expected.insert(expected.end(), image.begin(), image.end());
  }
  EXPECT_TRUE(read.pixels == expected) << program;
}

TEST_F(ImageWriter, TiffAboveFourGigabytesIsReadToItsEnd)
{
  const TImageShape shape = Shape(2048, 1024, PixelDepth::Bits16); // 4 MiB
  const long count = 1100;
  const std::vector<long> shown = {1, 1050, count}; // the second one is beyond 4 GB, too
  const std::string path = directory_.Path("large.tif");
  TTiffStackWriter writer(TTiffStackWriter::Reach::Classic);
  ASSERT_TRUE(writer.Open(path, false, shape, TestFacts(0))) << writer.Error();
  const int file = open(path.c_str(), O_RDWR | O_CLOEXEC);
  const std::vector<std::byte> blank(shape.Bytes());
  for (long number = 1; number <= count; ++number) {
    const bool isShown = std::find(shown.begin(), shown.end(), number) != shown.end();
    ASSERT_TRUE(writer.Write(isShown ? TestImage(shape, number) : blank, Label(number))) << writer.Error();
    // Zeros become a hole again, so that the file takes little of the disk.
    const auto start = static_cast<off_t>(kTiffPixels + static_cast<std::size_t>(number - 1) * shape.Bytes());
    if (!isShown)
      fallocate(file, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, start, static_cast<off_t>(shape.Bytes()));
  }
  close(file);
  EXPECT_NE(writer.Note().find("above 4 GB"), std::string::npos);
  EXPECT_GT(ReadWith(kTifffile, path, {1}).images, 1) << "also when the program is killed now";
  ASSERT_TRUE(writer.Close(Counts(count, 0))) << writer.Error();

  ExpectImages(kImageJ, path, shape, count, shown);
  ExpectImages(kTifffile, path, shape, count, shown);
  const TTiffPages pages = ReadTiff(path);
  EXPECT_EQ(pages.problem, "") << "other programs read the first image";
  ASSERT_EQ(pages.pages.size(), 1u);
  const std::size_t key = pages.firstDescription.find("\nlabels_at=");
  ASSERT_NE(key, std::string::npos) << pages.firstDescription;
  std::ifstream stream(path);
  stream.seekg(std::stoll(pages.firstDescription.substr(key + 11)));
  std::string line;
  long lines = 0;
  for (; std::getline(stream, line); ++lines)
    EXPECT_EQ(line, "image=" + std::to_string(lines + 1) + " ticks=" + std::to_string(100 * (lines + 1)));
  EXPECT_EQ(lines, count);
}

TEST_F(ImageWriter, BigTiffHasAPageForEachImage)
{
  const TImageShape small = Shape(5, 3, PixelDepth::Bits16);
  TTiffStackWriter writer(TTiffStackWriter::Reach::Big);
  ASSERT_TRUE(writer.Open(directory_.Path("big.tif"), false, small, TestFacts(1'000'000'000)));
  EXPECT_EQ(writer.Note(), "");
  ASSERT_EQ(WriteImages(writer, small, 1500), 1500);
  ASSERT_TRUE(writer.Close(Counts(1500, 0)));
  const TTiffPages file = ReadTiff(directory_.Path("big.tif"));
  EXPECT_EQ(file.problem, "");
  EXPECT_TRUE(file.isBigTiff);
  ASSERT_EQ(file.pages.size(), 1500u);
  EXPECT_EQ(file.pages.back(), TestImage(small, 1500));
  ExpectImages(kTifffile, directory_.Path("big.tif"), small, 1500, {1, 1500});
}

TEST_F(ImageWriter, LongListsOfTracksAreKeptInBothFormats)
{
  TRunFacts facts = TestFacts(2);
  facts.readout.gain = "x10";
  facts.readout.gainFactor = 10.0;
  facts.sensorCelsius = -59.95;
  facts.targetCelsius = -60.0;
  for (int row = 10'000; row < 10'800; row += 2) facts.area.tracks.push_back({row, row + 1});
  const std::string tracks = TracksText(facts.area.tracks);
  ASSERT_GT(tracks.size(), 4096u);
  const TImageShape shape = Shape(16, static_cast<int>(facts.area.tracks.size()), PixelDepth::Bits16);

  TTiffStackWriter stack(TTiffStackWriter::Reach::Classic);
  ASSERT_TRUE(stack.Open(directory_.Path("tracks.tif"), false, shape, facts));
  ASSERT_EQ(WriteImages(stack, shape, 2), 2);
  ASSERT_TRUE(stack.Close(Counts(2, 0)));
  const TTiffPages file = ReadTiff(directory_.Path("tracks.tif"));
  EXPECT_EQ(file.problem, "");
  ASSERT_EQ(file.pages.size(), 2u);
  EXPECT_EQ(file.pages[0], TestImage(shape, 1));
  EXPECT_NE(file.firstDescription.find("\ntracks=" + tracks + "\nsensor_C=-59.95\n"), std::string::npos);
  EXPECT_NE(file.firstDescription.find("\nlost_in_camera=0\n"), std::string::npos) << "the last line";

  TFitsCubeWriter writer;
  ASSERT_TRUE(writer.Open(directory_.Path("tracks.fits"), false, shape, facts));
  ASSERT_EQ(WriteImages(writer, shape, 2), 2);
  ASSERT_TRUE(writer.Close(Counts(2, 0))) << writer.Error();
  EXPECT_EQ(FitsVerify(directory_.Path("tracks.fits")), "");
  const TFitsCube cube = ReadFits(directory_.Path("tracks.fits"), PixelDepth::Bits16);
  EXPECT_EQ(cube.status, 0);
  EXPECT_EQ(cube.tracks, tracks);
  EXPECT_DOUBLE_EQ(cube.sensorCelsius, -59.95);
}

TEST(RunFacts, APixelHasASizeWhereItsBinningIsKnown)
{
  TRunFacts facts;
  facts.pixelWidthMicrometres = facts.pixelHeightMicrometres = 6.5;
  EXPECT_FALSE(facts.ImagePixelWidth() || facts.ImagePixelHeight())
      << "of a recording that does not tell its area";
  facts.area.width = facts.area.height = 8;
  facts.area.horizontalBinning = 2;
  facts.area.verticalBinning = 4;
  EXPECT_EQ(facts.ImagePixelWidth(), 13.0);
  EXPECT_EQ(facts.ImagePixelHeight(), 26.0);
  facts.area.tracks = {{1, 3}, {5, 8}};
  EXPECT_EQ(facts.ImagePixelWidth(), 13.0);
  EXPECT_FALSE(facts.ImagePixelHeight());
}

TEST_F(ImageWriter, FilesWithoutAnImageAreRemovedAndWrongSizesRefused)
{
  const TImageShape shape = Shape(16, 8, PixelDepth::Bits16);
  const std::string path = directory_.Path("file");
  std::unique_ptr<IImageWriter> writers[] = {std::make_unique<TTiffStackWriter>(TTiffStackWriter::Reach::Classic),
                                             std::make_unique<TFitsCubeWriter>(),
                                             std::make_unique<TPngPreviewWriter>()};
  for (auto& writer : writers) {
    ASSERT_TRUE(writer->Open(path, false, shape, TestFacts(1))) << writer->Error();
    EXPECT_FALSE(writer->Write(std::vector<std::byte>(7), Label(1)));
    EXPECT_FALSE(writer->Close(Counts(0, 0)));
    EXPECT_FALSE(std::filesystem::exists(path)) << "a file without an image is not valid";
  }
}

TEST_F(ImageWriter, FileHasOneWriterAndFailureToCloseItIsReported)
{
  const int next = dup(STDIN_FILENO); // the number of the descriptor that comes next
  close(next);
  TOutputFile file;
  ASSERT_TRUE(file.Create(directory_.Path("file"), false));
  TOutputFile other;
  EXPECT_FALSE(other.Create(directory_.Path("file"), true)) << "two would mix their images";
  other.Discard();
  EXPECT_TRUE(std::filesystem::exists(directory_.Path("file")));
  ASSERT_EQ(close(next), 0); // as a file system does that finds out too late that nothing fits
  EXPECT_FALSE(file.Close());
  EXPECT_NE(file.Error().find("cannot be closed"), std::string::npos) << file.Error();
}

TEST_F(ImageWriter, PreviewShowsFaintAndBrightThings)
{
  const TImageShape shape = Shape(100, 80, PixelDepth::Bits16);
  std::vector<unsigned short> sky(shape.Pixels(), 100);
  for (std::size_t index = 0; index < sky.size(); ++index)
    sky[index] = static_cast<unsigned short>(100 + index % 7);
  for (std::size_t index = 0; index < 40; ++index) sky[200 * index] = 60000; // stars
  sky[4321] = 2000;                                                          // a faint one
  TPngPreviewWriter writer;
  ASSERT_TRUE(writer.Open(directory_.Path("sky.png"), false, shape, TestFacts(1)));
  ASSERT_TRUE(writer.Write(std::as_bytes(std::span(sky)), Label(1))) << writer.Error();
  ASSERT_TRUE(writer.Close(Counts(1, 0))) << writer.Error();

  const TPngPicture picture = ReadPng(directory_.Path("sky.png"));
  ASSERT_EQ(picture.width, 100u);
  ASSERT_EQ(picture.height, 80u);
  EXPECT_EQ(picture.grey[200], 255);
  EXPECT_LT(picture.grey[50], 30) << "background";
  EXPECT_GT(picture.grey[4321], 60) << "the faint star is 3 % of the bright ones, and still seen";
}

} // namespace
} // namespace vxtool
