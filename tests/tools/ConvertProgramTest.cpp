// SPDX-License-Identifier: MIT
// The program on directories of recorded runs: files of every format, exit codes, salvage, full disks, Ctrl-C.
#include "runs/TRunDescription.h"
#include "tests/support/TMadeRun.h"
#include "tests/tools/FileReaders.h"
#include "tests/tools/ProgramRunner.h"

#include <nlohmann/json.hpp>

namespace vxtool {
namespace {

namespace fs = std::filesystem;

class ConvertProgram : public ToolProgram
{
protected:
  std::string Directory() const { return directory_.Path("run"); }

  // Runs the command with --json; its line and its exit code.
  nlohmann::json Convert(std::vector<std::string> options, int exitCode)
  {
    options.insert(options.begin(), {"convert", Directory(), "--json"});
    outcome_ = Run(options);
    EXPECT_EQ(outcome_.exitCode, exitCode) << outcome_.output << outcome_.errors;
    const auto json = nlohmann::json::parse(outcome_.output, nullptr, false);
    return json.is_discarded() ? nlohmann::json::object() : json;
  }
  // What it says when it does nothing.
  std::string ErrorOf(std::vector<std::string> options, int exitCode)
  {
    options.insert(options.begin(), {"convert", Directory()});
    outcome_ = Run(options);
    EXPECT_EQ(outcome_.exitCode, exitCode) << outcome_.output << outcome_.errors;
    return outcome_.errors;
  }

  TOutcome outcome_;
};

TEST_F(ConvertProgram, EveryFormatHasImagesAndLabels)
{
  TMadeRun run;
  run.encoding = "Mono12Packed";
  run.width = 7;
  run.rowPadding = 3;
  run.extra = "[run]\nFirstFrameTime = 2026-01-31T12:34:57.012500000Z\nFirstFrameTick = 5100\n";
  run.Write(Directory());
  Convert({"-o", directory_.Path("a.tif")}, 0);
  const TTiffPages stack = ReadTiff(directory_.Path("a.tif"));
  EXPECT_EQ(stack.problem, "");
  EXPECT_EQ(stack.bits, 16);
  ASSERT_EQ(stack.pages.size(), 7u);
  EXPECT_EQ(stack.pages[6], run.Pixels(7, PixelDepth::Bits16));
  for (const char* line :
       {"\ncamera=TRELLIS CMOS\n", "\nstart_utc=2026-01-31T12:34:56.789012345\n", "\nserial=101\n",
        "\nexposure_s=0.0125\n", "\nfinterval=0.025\n", "\narea=11,21,14x16\nbinning=2x4\n",
        "\nimage=1\nticks=5100\nhost_ns=1700000000000000001\ncheck=right\n"})
    EXPECT_NE(stack.firstDescription.find(line), std::string::npos) << line << stack.firstDescription;

  Convert({"-o", directory_.Path("a.fits"), "--images", "6-7,2", "--bits", "32"}, 0);
  const TFitsCube cube = ReadFits(directory_.Path("a.fits"), PixelDepth::Bits32);
  EXPECT_EQ(cube.status, 0);
  EXPECT_EQ(cube.numbers, (std::vector<long long>{2, 6, 7}));
  EXPECT_EQ(cube.ticks, (std::vector<long long>{5200, 5600, 5700}));
  EXPECT_EQ(cube.hostTimes.back(), 1'700'000'000'000'000'007);
  EXPECT_EQ(cube.checks, (std::vector<long long>{1, 1, 1}));
  EXPECT_EQ(cube.dateObs, "2026-01-31T12:34:57.000001") << "of image 2, by the camera's clock";
  EXPECT_EQ(cube.seconds, (std::vector<double>{0.0, 4e-6, 5e-6}));
  Convert({"-o", directory_.Path("each.fits"), "--each", "--images", "6-7"}, 0);
  const TFitsCube seventh = ReadFits(directory_.Path("each-0000007.fits"), PixelDepth::Bits16);
  EXPECT_EQ(seventh.pixels, run.Pixels(7, PixelDepth::Bits16));
  EXPECT_EQ(seventh.dateObs, "2026-01-31T12:34:57.000006");
  Convert({"-o", directory_.Path("a.raw"), "--images", "3-4"}, 0);
  const std::string raw = TextOf(directory_.Path("a.raw"));
  std::vector<std::byte> pixels(raw.size());
  std::memcpy(pixels.data(), raw.data(), raw.size());
  std::vector<std::byte> expected = run.Pixels(3, PixelDepth::Bits16);
  const std::vector<std::byte> fourth = run.Pixels(4, PixelDepth::Bits16);
  expected.insert(expected.end(), fourth.begin(), fourth.end());
  EXPECT_EQ(pixels, expected);
  const auto description = nlohmann::json::parse(TextOf(directory_.Path("a.raw.json")));
  EXPECT_EQ(description["file"], "a.raw");
  EXPECT_EQ(description["complete"], true);
  EXPECT_EQ(description["images"], 2);
  EXPECT_EQ(description["pixel_type"], "uint16");
  EXPECT_EQ(description["image_width"], 7);
  EXPECT_EQ(description["frames"][1]["image"], 4);
  EXPECT_EQ(description["frames"][1]["ticks"], 5400);
  EXPECT_EQ(description["frames"][1]["check"], "right");
}

TEST_F(ConvertProgram, PicturesAreOneFileForEachImage)
{
  TMadeRun run;
  run.encoding = "Mono8";
  run.Write(Directory());
  const TOutcome written = Run({"convert", Directory(), "-o", directory_.Path("a.png"), "--images", "1,7"});
  EXPECT_NE(written.output.find(" 2  " + directory_.Path("a-*.png\n")), std::string::npos) << written.output;
  EXPECT_FALSE(fs::exists(directory_.Path("a.png")));
  EXPECT_EQ(ReadPng(directory_.Path("a-0000001.png")).grey.size(), 24u);
  EXPECT_NE(ReadPng(directory_.Path("a-0000001.png")).grey, ReadPng(directory_.Path("a-0000007.png")).grey);
  Convert({"-o", directory_.Path("b.png"), "--images", "7", "--preview", directory_.Path("c.png")}, 0);
  EXPECT_EQ(ReadPng(directory_.Path("b.png")).grey, ReadPng(directory_.Path("a-0000007.png")).grey);
  EXPECT_EQ(ReadPng(directory_.Path("c.png")).grey, ReadPng(directory_.Path("b.png")).grey);
}

TEST_F(ConvertProgram, VerifySaysWhatIsRightWrongAndMissing)
{
  TMadeRun run;
  run.Write(Directory());
  auto report = Convert({"--verify"}, 0);
  EXPECT_EQ(report["right"], 7);
  EXPECT_EQ(report["state"], "complete");

  const std::string first = Directory() + "/" + RunFormat::ImageFileName(0);
  std::string bytes = TextOf(first);
  bytes[5] ^= 4;
  PutFileBytes(first, bytes);
  fs::remove(Directory() + "/" + RunFormat::ImageFileName(2));
  report = Convert({"--verify"}, 5);
  EXPECT_EQ(report["right"], 5);
  EXPECT_EQ(report["wrong"], 1);
  EXPECT_EQ(report["wrong_images"], "1");
  EXPECT_EQ(report["unreadable"], 1);
  EXPECT_EQ(report["missing_images"], "7");
  EXPECT_NE(outcome_.errors.find(RunFormat::ImageFileName(2) + ": is missing"), std::string::npos)
      << outcome_.errors;

  EXPECT_TRUE(report["lost_in_camera"].is_null()) << "gaps of ours would look like frames lost in the camera";

  report = Convert({"-o", directory_.Path("a.raw"), "--keep-damaged", "--images", "5,1-2"}, 5);
  EXPECT_EQ(report["written"], 3);
  const auto frames = nlohmann::json::parse(TextOf(directory_.Path("a.raw.json")))["frames"];
  EXPECT_EQ(frames[0]["check"], "wrong");
  EXPECT_EQ(frames[2]["image"], 5);

  run.Write(Directory(), {1, 3, 7});
  EXPECT_EQ(Convert({"--verify", "--keep-damaged"}, 5)["missing_images"], "2,4-6");
  EXPECT_EQ(Convert({"--verify", "--salvage"}, 5)["unrecorded_data"], 4);
  fs::remove(Directory() + "/" + RunFormat::kIndexName);
  EXPECT_EQ(Convert({"-o", directory_.Path("b.raw")}, 0)["unchecked"], 7)
      << "the run is complete by its description";
  run.extra = "[run]\nImagesExpected = 2147483647\nImagesWritten = 2147483647\n";
  run.Write(Directory());
  EXPECT_EQ(Convert({"--verify"}, 5)["missing_images"], "8-2147483647") << "and that takes no time";

  run.extra = "[image]\nPixelEncoding = Mono99\n"; // cannot be decoded, but compared
  run.Write(Directory());
  EXPECT_EQ(Convert({"--verify"}, 0)["right"], 7);
  EXPECT_NE(ErrorOf({"-o", directory_.Path("b.tif")}, 6).find("Mono99"), std::string::npos);
  EXPECT_FALSE(fs::exists(directory_.Path("b.tif")));
}

TEST_F(ConvertProgram, KilledRunIsConvertedWithANoteAndSalvagedOnRequest)
{
  TMadeRun run;
  run.state = "recording";
  run.imagesExpected = 50;
  run.Write(Directory());
  EXPECT_EQ(Convert({"-o", directory_.Path("a.tif")}, 5)["written"], 7);
  EXPECT_NE(outcome_.errors.find("was killed"), std::string::npos) << outcome_.errors;
  EXPECT_EQ(Convert({"-o", directory_.Path("b.fits"), "--salvage"}, 0)["written"], 7);
  EXPECT_EQ(Convert({"--verify", "--images", "6-9"}, 5)["missing_images"], "8-9");
  EXPECT_NE(ErrorOf({"--verify", "--images", "51"}, 1).find("has 50 images"), std::string::npos);

  fs::resize_file(Directory() + "/" + RunFormat::kIndexName, 96); // a power failure took the rest
  EXPECT_EQ(Convert({"--verify", "--salvage"}, 5)["unrecorded_data"], 4);
  EXPECT_NE(outcome_.errors.find("4 images with data and without a record"), std::string::npos) << outcome_.errors;
  EXPECT_EQ(Convert({"-o", directory_.Path("s.raw"), "--salvage", "--keep-damaged"}, 0)["unchecked"], 4);

  fs::remove(Directory() + "/" + RunFormat::kIndexName);
  EXPECT_NE(ErrorOf({"-o", directory_.Path("c.fits")}, 6).find("--salvage"), std::string::npos);
  EXPECT_EQ(Convert({"--verify", "--salvage"}, 5)["unchecked"], 7) << "nothing was verified";
  const auto report = Convert({"-o", directory_.Path("c.fits"), "--salvage"}, 0);
  EXPECT_EQ(report["unchecked"], 7);
  EXPECT_EQ(report["asked"], 7) << "the last file has places for two more, never written";
  const TFitsCube cube = ReadFits(directory_.Path("c.fits"), PixelDepth::Bits16);
  EXPECT_EQ(cube.numbers.size(), 7u);
  EXPECT_EQ(cube.checks, (std::vector<long long>(7, 0)));

  for (const auto& [state, exitCode] : {std::pair{"aborted", 0}, std::pair{"failed", 5}}) {
    run.state = state;
    run.Write(Directory());
    Convert({"-o", directory_.Path("d.tif"), "--overwrite"}, exitCode);
    EXPECT_NE(outcome_.errors.find("the run is not complete: " + std::string(state)), std::string::npos);
    EXPECT_EQ(Convert({"-o", directory_.Path("d.tif"), "--overwrite", "--salvage"}, 0)["asked"], 7) << state;
  }
}

TEST_F(ConvertProgram, InfoDescribesARun)
{
  TMadeRun run;
  run.state = "failed";
  run.Write(Directory());
  const TOutcome text = Run({"info", Directory()});
  EXPECT_EQ(text.exitCode, 0) << text.errors;
  EXPECT_NE(text.output.find("failed: No space left on device"), std::string::npos) << text.output;
  EXPECT_NE(text.output.find("6x4 pixels, Mono16, 12 bytes a row"), std::string::npos) << text.output;
  const TOutcome json = Run({"info", Directory(), "--json"});
  const auto info = nlohmann::json::parse(json.output);
  EXPECT_EQ(info["images_in_index"], 7);
  EXPECT_EQ(info["image_files"], 3);
  EXPECT_EQ(info["pixel_encoding"], "Mono16");
  EXPECT_EQ(info["serial_text"], "VSC-00101");
  EXPECT_EQ(info["ticks_per_s"], 100000000);
  EXPECT_EQ(Run({"info", directory_.Path("nothing")}).exitCode, 6);
}

TEST_F(ConvertProgram, RawPixelsAreReadBackWithTheirDescription)
{
  TMadeRun run;
  run.Write(Directory());
  const std::string raw = directory_.Path("a.raw");
  Convert({"-o", raw}, 0);
  Convert({"-o", directory_.Path("direct.tif")}, 0);
  ASSERT_EQ(Run({"convert", raw, "-o", directory_.Path("a.tif"), "-q"}).exitCode, 0);
  const TTiffPages direct = ReadTiff(directory_.Path("direct.tif"));
  const TTiffPages stack = ReadTiff(directory_.Path("a.tif"));
  EXPECT_EQ(stack.pages, direct.pages);
  for (const char* key : {"camera=", "area=", "exposure_s=", "image=", "ticks=", "check="}) {
    const auto lineOf = [key](const std::string& text) {
      const std::size_t at = text.find("\n" + std::string(key));
      return at == std::string::npos ? "none" : text.substr(at, text.find('\n', at + 1) - at);
    };
    EXPECT_EQ(lineOf(stack.firstDescription), lineOf(direct.firstDescription));
  }
  EXPECT_EQ(Run({"convert", raw, "-o", raw, "--overwrite"}).exitCode, 4);
  EXPECT_EQ(Run({"convert", raw, "-o", "b.tif", "--images", "99"}).exitCode, 1);
  EXPECT_EQ(Run({"convert", raw, "--verify"}).exitCode, 1);
  const auto description = nlohmann::json::parse(TextOf(raw + ".json"));
  const std::vector<std::pair<const char*, nlohmann::json>> changes = {
      {"image_width", 1e300}, {"image_height", 4294967297}, {"pixel_type", "float"},
      {"area", "all"},        {"frames", {1, 2}},           {"frames", {{{"image", 0}}}}};
  for (const auto& [key, value] : changes) {
    auto wrong = description;
    wrong[key] = value;
    PutFileBytes(raw + ".json", wrong.dump());
    const TOutcome outcome = Run({"convert", raw, "-o", directory_.Path("b.tif")});
    EXPECT_EQ(outcome.exitCode, 6) << wrong.dump();
    EXPECT_NE(outcome.errors.find(key), std::string::npos) << outcome.errors;
  }
  for (const std::string& text : {std::string("[]"), std::string(50000, '[')}) {
    PutFileBytes(raw + ".json", text);
    EXPECT_EQ(Run({"convert", raw, "-o", directory_.Path("b.tif")}).exitCode, 6);
  }
  PutFileBytes(raw + ".json", description.dump());
  fs::resize_file(raw, fs::file_size(raw) - 1);
  EXPECT_EQ(Run({"convert", raw, "-o", directory_.Path("b.tif")}).exitCode, 6);
  EXPECT_FALSE(fs::exists(directory_.Path("b.tif")));
}

TEST_F(ConvertProgram, WhatCannotBeDoneIsRefusedBeforeAnythingIsTouched)
{
  TMadeRun run;
  run.Write(Directory());
  const std::string index = Directory() + "/" + RunFormat::kIndexName;
  const std::string before = TextOf(index);
  EXPECT_NE(ErrorOf({}, 1).find("--output"), std::string::npos);
  EXPECT_NE(ErrorOf({"-o", "a.jpg"}, 1).find(".png"), std::string::npos);
  EXPECT_NE(ErrorOf({"--verify", "--images", "0-3"}, 1).find("--images"), std::string::npos);
  EXPECT_NE(ErrorOf({"--verify", "--images", "3-1"}, 1).find("--images"), std::string::npos);
  EXPECT_NE(ErrorOf({"-o", directory_.Path("a.tif"), "--bits", "8"}, 1).find("Mono16"), std::string::npos);
  EXPECT_NE(ErrorOf({"-o", index, "--format", "raw", "--overwrite"}, 4).find("file of the run"),
            std::string::npos);
  fs::create_symlink(Directory() + "/" + RunFormat::ImageFileName(0), directory_.Path("link.tif"));
  EXPECT_NE(ErrorOf({"-o", directory_.Path("link.tif"), "--overwrite"}, 4).find("file of the run"),
            std::string::npos);
  EXPECT_EQ(TextOf(index), before);
  Convert({"--verify"}, 0);
  PutFileBytes(directory_.Path("a.raw.json"), "precious");
  EXPECT_NE(ErrorOf({"-o", directory_.Path("a.raw")}, 4).find("--overwrite"), std::string::npos);
  EXPECT_FALSE(fs::exists(directory_.Path("a.raw")));
  EXPECT_NE(ErrorOf({"-o", directory_.Path("no/such/a.png")}, 4).find("cannot be created"), std::string::npos);
  EXPECT_EQ(Run({"convert", directory_.Path("nothing"), "--verify"}).exitCode, 6);
}

class ConvertProgramFormats : public ConvertProgram, public ::testing::WithParamInterface<const char*>
{
protected:
  // Images that a reader finds in the file.
  long ImagesIn(const std::string& path) const
  {
    if (path.ends_with(".tif")) {
      const TTiffPages stack = ReadTiff(path);
      EXPECT_EQ(stack.problem, "");
      return static_cast<long>(stack.pages.size());
    }
    if (path.ends_with(".fits")) {
      const TFitsCube cube = ReadFits(path, PixelDepth::Bits16);
      EXPECT_EQ(cube.status, 0);
      return cube.images;
    }
#ifdef VXTOOL_H5DUMP
    if (path.ends_with(".h5")) {
      const std::string text = directory_.Path("h5dump");
      EXPECT_EQ(std::system((VXTOOL_H5DUMP " -H -d /entry/data/data " + path + " >" + text).c_str()), 0);
      const std::string sizes = TextOf(text);
      return std::stol(sizes.substr(sizes.find("SIMPLE { (") + 10));
    }
#endif
    const auto json = nlohmann::json::parse(TextOf(path + ".json"));
    EXPECT_EQ(json["complete"], true);
    EXPECT_EQ(json["images"].get<std::uintmax_t>() * json["image_bytes"].get<std::uintmax_t>(),
              fs::file_size(path));
    return json["images"].get<long>();
  }
};

TEST_P(ConvertProgramFormats, FullDiskIsReportedAndTheFileHasWhatFits)
{
  TMadeRun run;
  run.width = 256;
  run.height = 256;
  run.images = 20;
  run.Write(Directory());
  const std::string path = directory_.Path(GetParam());
  const TOutcome outcome = Run({"convert", Directory(), "--json", "-o", path}, 1'000'000);
  EXPECT_EQ(outcome.exitCode, 4) << outcome.errors;
  EXPECT_NE(outcome.errors.find(path + ": "), std::string::npos) << outcome.errors;
  EXPECT_NE(outcome.errors.find("File too large"), std::string::npos) << outcome.errors;
  const auto report = nlohmann::json::parse(outcome.output);
  EXPECT_EQ(report["outcome"], "failed");
  EXPECT_GE(report["written"], 5);
  EXPECT_EQ(ImagesIn(path), report["written"]);
}

TEST_P(ConvertProgramFormats, InterruptLeavesAFileWithTheImagesUpToThere)
{
  TMadeRun run;
  run.width = 1024;
  run.height = 1024;
  run.images = 2;
  run.imagesPerFile = 1;
  run.imagesExpected = 100'000;
  run.Write(Directory());
  // A long run at little cost: the same two files under many names, and an index that repeats their checksums.
  fs::create_directory(directory_.Path("long"));
  const std::string longRun = directory_.Path("long");
  fs::copy_file(Directory() + "/" + RunFormat::kDescriptionName, longRun + "/" + RunFormat::kDescriptionName);
  for (int file = 0; file < 4000; ++file)
    fs::create_hard_link(Directory() + "/" + RunFormat::ImageFileName(file % 2),
                         longRun + "/" + RunFormat::ImageFileName(file));
  const std::string path = directory_.Path(GetParam());
  const TOutcome outcome = Interrupt(LaunchUntil({"convert", longRun, "--json", "--salvage", "-o", path},
                                                 [&] { return HasGrownTo(path, 40'000'000); }));
  const auto report = nlohmann::json::parse(outcome.output);
  EXPECT_EQ(report["outcome"], "interrupted");
  EXPECT_EQ(report["written"].get<long>() + report["not_reached"].get<long>(), 4000);
  EXPECT_GE(report["written"], 3);
  EXPECT_EQ(ImagesIn(path), report["written"]);
}

INSTANTIATE_TEST_SUITE_P(Formats, ConvertProgramFormats, ::testing::Values("a.tif", "a.fits", "a.raw"));
#ifdef VXTOOL_H5DUMP
INSTANTIATE_TEST_SUITE_P(Hdf5, ConvertProgramFormats, ::testing::Values("a.h5"));
#endif

} // namespace
} // namespace vxtool
