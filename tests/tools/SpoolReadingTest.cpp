// SPDX-License-Identifier: MIT
// Reading of spooled runs: every encoding and layout to the last bit, and directories that are damaged or lie.
#include "tests/support/TScratchDirectory.h"
#include "tests/tools/ImageFixtures.h"
#include "tests/tools/SpoolFixture.h"
#include "tools/ImageData.h"
#include "tools/TRunConversion.h"

#include <filesystem>
#include <sys/stat.h>

namespace vxtool {
namespace {

namespace fs = std::filesystem;

class SpoolReading : public ::testing::Test
{
protected:
  std::string Directory() const { return directory_.Path("run"); }

  // Converts the run in the directory.
  void Convert(TConversionSettings settings = {})
  {
    TRunDescription run;
    ASSERT_TRUE(run.Read(Directory())) << run.Error();
    ASSERT_TRUE(run.Layout()) << run.LayoutProblem();
    TRunIndex index;
    index.Read(Directory(), run.ImageLimit());
    damagedRecords_ = index.Damaged();
    written_ = KeepingWriter();
    TRunConversion conversion(
        run, index, settings, &written_, [] { return false; }, [](const TProgress&) {});
    EXPECT_EQ(conversion.Run(), RunEnd::Complete);
    counts_ = conversion.Counts();
    wrong_ = conversion.Wrong().Text();
    absent_ = conversion.Absent().Text();
    lost_ = conversion.RunCounts().lostInCamera;
    EXPECT_TRUE(counts_.AddsUp());
  }

  std::vector<long> NumbersWritten() const
  {
    std::vector<long> numbers;
    for (const TImageLabel& label : written_.labels) numbers.push_back(label.number);
    return numbers;
  }

  TScratchDirectory directory_;
  KeepingWriter written_;
  TConversionCounts counts_;
  std::int64_t damagedRecords_ = 0;
  std::string wrong_;
  std::string absent_;
  std::optional<long> lost_;
};

using Numbers = std::vector<long>;

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

void PrintTo(const TLayoutCase& value, std::ostream* stream)
{
  *stream << value.encoding << " " << value.width << "+" << value.rowPadding << "+" << value.tail
          << (value.hasMetadata ? " with metadata, " : ", ") << value.imagesPerFile << " a file";
}

class SpoolLayout : public SpoolReading, public ::testing::WithParamInterface<TLayoutCase>
{
};

TEST_P(SpoolLayout, EveryImageComesBackBitForBit)
{
  const TLayoutCase& c = GetParam();
  TMadeRun run;
  run.encoding = c.encoding;
  run.width = c.width;
  run.height = 5;
  run.rowPadding = c.rowPadding;
  run.tail = c.tail;
  run.hasMetadata = c.hasMetadata;
  run.imagesPerFile = c.imagesPerFile;
  run.Write(Directory(), {3, 1, 2, 7, 6, 5, 4});
  TConversionSettings settings;
  settings.depth = c.depth;
  Convert(settings);
  EXPECT_EQ(counts_.right, 7);
  ASSERT_EQ(NumbersWritten(), (Numbers{1, 2, 3, 4, 5, 6, 7}));
  for (std::size_t image = 0; image < 7; ++image) {
    const long number = static_cast<long>(image) + 1;
    EXPECT_EQ(written_.images[image], run.Pixels(number, c.depth)) << "image " << number;
    const TImageLabel& label = written_.labels[image];
    EXPECT_EQ(label.ticks, c.hasMetadata ? std::optional<long long>(run.Ticks(number)) : std::nullopt);
    EXPECT_EQ(label.hostNanoseconds, 1'700'000'000'000'000'000 + number);
    EXPECT_EQ(label.check, ImageCheck::Right);
  }
  EXPECT_EQ(counts_.cut > 0, c.encoding == std::string("Mono32") && c.depth == PixelDepth::Bits16);
  EXPECT_EQ(lost_, c.hasMetadata ? std::optional<long>(0) : std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(Layouts, SpoolLayout,
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
                                           TLayoutCase{"Mono32", 5, 0, 0, true, 3, PixelDepth::Bits16}));

TEST_F(SpoolReading, FlippedBitAndMissingFileAreFoundAndLeftOut)
{
  TMadeRun run;
  run.imagesPerFile = 2; // 1 2 | 3 4 | 5 6 | 7
  run.Write(Directory());
  const std::string first = Directory() + "/" + RunFormat::ImageFileName(0);
  std::string bytes = TextOf(first);
  bytes[run.Frame(1).size() + 11] ^= 0x10; // image 2
  PutFileBytes(first, bytes);
  fs::remove(Directory() + "/" + RunFormat::ImageFileName(1));
  const std::string last = Directory() + "/" + RunFormat::ImageFileName(3);
  PutFileBytes(last, TextOf(last).substr(0, run.Frame(7).size() - 1));
  Convert();
  EXPECT_EQ(NumbersWritten(), (Numbers{1, 5, 6}));
  EXPECT_EQ(wrong_, "2");
  EXPECT_EQ(absent_, "3-4,7");
  EXPECT_EQ(counts_.unreadable, 3);
  EXPECT_EQ(written_.images[1], run.Pixels(5, PixelDepth::Bits16));
  EXPECT_EQ(lost_, std::nullopt) << "gaps of ours would look like frames lost in the camera";

  TConversionSettings damaged;
  damaged.keepsDamaged = true;
  damaged.images = TNumberRanges({{5, 5}, {2, 3}});
  Convert(damaged);
  EXPECT_EQ(NumbersWritten(), (Numbers{2, 5}));
  EXPECT_EQ(written_.labels[0].check, ImageCheck::Wrong);
  EXPECT_EQ(counts_.asked, 3);
}

TEST_F(SpoolReading, KilledRunGivesTheImagesThatItsIndexVouchesFor)
{
  TMadeRun run;
  run.state = "recording";
  run.images = 9;
  run.imagesExpected = 20;
  run.Write(Directory(), {2, 1, 4, 9, 9, 5, 6});
  const std::string path = Directory() + "/" + RunFormat::kIndexName;
  std::string index = TextOf(path);
  index[32 * 2 + 9] ^= 1;                                // the record of image 4
  PutFileBytes(path, index.substr(0, index.size() - 5)); // that of image 6 is torn
  Convert();
  EXPECT_EQ(NumbersWritten(), (Numbers{1, 2, 5, 9}));
  EXPECT_EQ(absent_, "3-4,6-8");
  EXPECT_EQ(damagedRecords_, 3) << "one damaged, one repeated, one torn";
  TConversionSettings salvage;
  salvage.isSalvage = true;
  Convert(salvage);
  EXPECT_EQ(NumbersWritten(), (Numbers{1, 2, 5, 9})) << "the others may be torn";
  EXPECT_EQ(counts_.unrecordedData, 5);
  PutFileBytes(path, index.substr(0, 64)); // as after a power failure
  Convert(salvage);
  EXPECT_EQ(NumbersWritten(), (Numbers{1, 2}));
  EXPECT_EQ(absent_, "3-9") << "images behind the index are missing";
  EXPECT_EQ(counts_.unrecordedData, 7);
  salvage.keepsDamaged = true;
  Convert(salvage);
  EXPECT_EQ(counts_.right, 2);
  EXPECT_EQ(counts_.unchecked, 7);
  salvage.isSalvage = false;
  Convert(salvage);
  EXPECT_EQ(counts_.asked, 2);
  PutFileBytes(path, index.substr(32, 96)); // images 1 and 9
  Convert(salvage);
  EXPECT_EQ(absent_, "2-8");
  salvage.isSalvage = true;
  salvage.keepsDamaged = false;
  PutFileBytes(path, "");
  Convert(salvage);
  EXPECT_EQ(counts_.unchecked, 9) << "an index without a record is as good as none";

  fs::remove(path);
  Convert(salvage);
  EXPECT_EQ(NumbersWritten(), (Numbers{1, 2, 3, 4, 5, 6, 7, 8, 9}));
  EXPECT_EQ(counts_.unchecked, 9);
  EXPECT_EQ(written_.labels[8].check, ImageCheck::Unchecked);
  EXPECT_EQ(written_.images[8], run.Pixels(9, PixelDepth::Bits16));
  fs::create_directory(path); // in place of the file
  Convert(salvage);
  EXPECT_EQ(counts_.unchecked, 9);
}

TEST_F(SpoolReading, SalvageWithoutIndexLeavesOutPlacesThatWereNeverWritten)
{
  TMadeRun run;
  run.state = "recording";
  run.images = 5;
  run.imagesPerFile = 2; // 1 2 | 3 4 | 5 and a place
  run.imagesExpected = 1000;
  run.hasMetadata = false;
  run.Write(Directory());
  fs::remove(Directory() + "/" + RunFormat::kIndexName);
  const std::string file = Directory() + "/" + RunFormat::ImageFileName(0);
  std::string bytes = TextOf(file);
  const std::size_t size = run.Frame(1).size();
  bytes.replace(size, size, size, '\0'); // image 2
  PutFileBytes(file, bytes);
  TConversionSettings salvage;
  salvage.isSalvage = true;
  Convert(salvage);
  EXPECT_EQ(NumbersWritten(), (Numbers{1, 3, 4, 5}));
  EXPECT_EQ(absent_, "2") << "a gap, while 6 is a place that was never reached";
  fs::resize_file(Directory() + "/" + RunFormat::ImageFileName(2), 2 * size - 1);
  Convert(salvage);
  EXPECT_EQ(absent_, "2,6") << "what cannot be read may have been an image";
}

TEST_F(SpoolReading, IndexDecidesWhichImagesAnEndedRunHas)
{
  for (const char* state : {"aborted", "failed", "complete"}) {
    TMadeRun run;
    run.state = state;
    run.imagesPerFile = 100; // 93 places are never reached
    run.imagesExpected = 1000;
    run.Write(Directory(), {1, 2, 3, 5, 6, 7});
    TConversionSettings salvage;
    salvage.isSalvage = true;
    Convert(salvage);
    EXPECT_EQ(NumbersWritten(), (Numbers{1, 2, 3, 5, 6, 7})) << state;
    EXPECT_EQ(absent_, "4") << state;
    EXPECT_EQ(counts_.unrecorded, 1) << state;
  }
}

TEST_F(SpoolReading, FilesBeyondAllImagesAreNotFollowed)
{
  TMadeRun run;
  run.state = "recording";
  run.extra = "[multiimage]\nImagesPerFile = 2147483647\n";
  run.Write(Directory());
  PutFileBytes(Directory() + "/" + RunFormat::ImageFileName(9'999'999'999), "?");
  const TRunImages files(Directory(), INT_MAX, static_cast<std::int64_t>(run.Frame(1).size()));
  EXPECT_EQ(files.Count(), 2) << "without those that would begin behind the last number";
  EXPECT_EQ(files.End(), INT64_C(2) * INT_MAX);
}

TEST_F(SpoolReading, PlacesForBillionsOfImagesAreNotLookedAtOneByOne)
{
  TMadeRun run;
  run.encoding = "Mono8";
  run.width = run.height = 1;
  run.hasMetadata = false;
  run.state = "aborted";
  run.images = run.imagesPerFile = 3;
  run.extra = "[multiimage]\nImagesPerFile = 2147483647\n[run]\nImagesExpected = 2147483647\n";
  run.Write(Directory());
  fs::resize_file(Directory() + "/" + RunFormat::ImageFileName(0), INT_MAX); // holds no data
  const std::string index = Directory() + "/" + RunFormat::kIndexName;
  fs::resize_file(index, INT64_C(1) << 36); // neither
  TConversionSettings salvage;
  salvage.isSalvage = true;
  Convert(salvage);
  EXPECT_EQ(counts_.right, 3);
  EXPECT_EQ(damagedRecords_, (INT64_C(1) << 31) - 3);
  EXPECT_EQ(counts_.asked, 3);
  fs::remove(index);
  Convert(salvage);
  EXPECT_EQ(NumbersWritten(), (Numbers{1, 2, 3}));
  EXPECT_EQ(counts_.asked, 3);
  run.extra += "ImagesWritten = 2147483647\n";
  run.Write(Directory());
  Convert();
  EXPECT_EQ(absent_, "4-2147483647");
}

TEST_F(SpoolReading, CompleteRunThatHasLostItsIndexIsReadUnchecked)
{
  TMadeRun run;
  run.Write(Directory());
  fs::remove(Directory() + "/" + RunFormat::kIndexName);
  Convert();
  EXPECT_EQ(counts_.unchecked, 7);
  EXPECT_EQ(counts_.Missing(), 0);
}

TEST_F(SpoolReading, FramesLostInTheCameraShowInTheClocks)
{
  TMadeRun run;
  run.Write(Directory());
  TConversionSettings some;
  some.images = TNumberRanges({{1, 2}, {5, 7}});
  Convert(some);
  EXPECT_EQ(lost_, std::nullopt) << "not every image was looked at";
  some.images = TNumberRanges({{2, 6}});
  Convert(some);
  EXPECT_EQ(lost_, 0);
}

TEST_F(SpoolReading, DescriptionIsReadIntoFactsForTheFiles)
{
  TMadeRun made;
  made.Write(Directory());
  TRunDescription run;
  ASSERT_TRUE(run.Read(Directory()));
  EXPECT_TRUE(run.Notes().empty());
  const TRunFacts facts = FactsOf(run);
  EXPECT_EQ(facts.camera, "TRELLIS CMOS");
  EXPECT_EQ(facts.serial, 101);
  EXPECT_EQ(facts.startUtc, "2026-01-31T12:34:56.789012345");
  EXPECT_EQ(facts.trigger, "internal");
  EXPECT_DOUBLE_EQ(facts.exposureSeconds, 0.0125);
  EXPECT_DOUBLE_EQ(facts.cycleSeconds, 0.025);
  EXPECT_EQ(facts.area.left, 11);
  EXPECT_EQ(facts.area.width, 12);
  EXPECT_EQ(facts.area.height, 16);
  EXPECT_EQ(facts.area.verticalBinning, 4);
}

struct TLie
{
  const char* line; // put behind the description, in place of what it said
  bool isReadable;  // the run can be read at all
  bool isDecodable; // and its images decoded
};

void PrintTo(const TLie& value, std::ostream* stream)
{
  *stream << ::testing::PrintToString(value.line);
}

class SpoolLies : public SpoolReading, public ::testing::WithParamInterface<TLie>
{
};

TEST_P(SpoolLies, AreSeenThrough)
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
  TRunConversion conversion(
      run, index, {}, nullptr, [] { return false; }, [](const TProgress&) {});
  EXPECT_EQ(conversion.Run(), RunEnd::Complete);
  EXPECT_TRUE(conversion.Counts().AddsUp());
  EXPECT_GE(conversion.Counts().right + conversion.Counts().Missing(), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Lies, SpoolLies,
    ::testing::Values(
        TLie{"[multiimage]\nImagesPerFile = 0\n", false, false},
        TLie{"[multiimage]\nImagesPerFile = 99999999999999999999\n", false, false},
        TLie{"[data]\nImageSize = -5\n", false, false}, TLie{"[data]\nImageSize = 8e6\n", false, false},
        TLie{"[data]\nImageSize =\n", false, false}, TLie{"[run]\nFormat = 2\n", false, false},
        TLie{"[data]\nImageSize = 2000000000\n", true, true},
        TLie{"[multiimage]\nImagesPerFile = 2147483647\n", true, true},
        TLie{"[data]\nImageSize = 47\n", true, false}, TLie{"[image]\nWidth = 2147483648\n", true, false},
        TLie{"[image]\nWidth = 7\n", true, false}, TLie{"[image]\nHeight = 0\n", true, false},
        TLie{"[image]\nStride = 11\n", true, false}, TLie{"[image]\nStride = 2147483647\n", true, false},
        TLie{"[image]\nPixelEncoding = Mono10\n", true, false}, TLie{"[image]\nPixelEncoding =\n", true, false},
        TLie{"[run]\nImagesWritten = 9000000000000000000\n", true, true},
        TLie{"[run]\nImagesExpected = many\n", true, true}, TLie{"[run]\nImagesExpected = 3\n", true, true},
        TLie{"[run]\nState = \x1b[31mbroken\n", false, false}, TLie{"[run]\nState =\n", false, false},
        TLie{"[image]\nMetadata = TRUE\n", false, false}, TLie{"[image]\nMetadata =\n", true, true},
        TLie{"[acquisition]\nExposureTime = nan\nFrameRate = -inf\n", true, true},
        TLie{"[camera]\nSerialNumber = 99999999999999\nModel = \xff\xfe\n", true, true},
        TLie{"[run]\nStartTime = yesterday\n", true, true}));

TEST_F(SpoolReading, ThingsThatAreNoRunAreNamedAndNothingWaits)
{
  const std::string description = Directory() + "/" + RunFormat::kDescriptionName;
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
  for (const std::string& name :
       {std::string(RunFormat::kDescriptionName), std::string(RunFormat::kIndexName), RunFormat::ImageFileName(0)})
    fs::create_symlink(directory_.Path("elsewhere") + "/" + name, Directory() + "/" + name);
  ASSERT_EQ(mkfifo((Directory() + "/" + RunFormat::ImageFileName(1)).c_str(), 0600), 0);
  fs::create_directory(Directory() + "/" + RunFormat::ImageFileName(2));
  Convert();
  EXPECT_EQ(NumbersWritten(), (Numbers{1, 2, 3}));
  EXPECT_EQ(absent_, "4-7");
}

TEST(SpoolFileNames, AreTenDigitsAndNothingElse)
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
} // namespace vxtool
