// SPDX-License-Identifier: MIT
// The options of the command convert.
#include "tools/ConvertOptions.h"

#include "tools/ArgumentForms.h"
#include "tools/OptionKinds.h"
#include "tools/OutputOptions.h"

namespace vxtool {

namespace {

constexpr int kMaxChunkImages = 1'000'000;

const TFormats kFormats = {{{"tiff", FileFormat::Tiff},
                            {"bigtiff", FileFormat::BigTiff},
                            {"fits", FileFormat::Fits},
                            {"raw", FileFormat::Raw},
                            {"omezarr", FileFormat::OmeZarr},
                            {"png", FileFormat::Png}},
                           {{".tif", FileFormat::Tiff},
                            {".tiff", FileFormat::Tiff},
                            {".fits", FileFormat::Fits},
                            {".fit", FileFormat::Fits},
                            {".fts", FileFormat::Fits},
                            {".raw", FileFormat::Raw},
                            {".zarr", FileFormat::OmeZarr},
                            {".png", FileFormat::Png}},
                           ".tif, .tiff, .fits, .raw, .ome.zarr or .png"};

} // namespace

void AddConvertOptions(CLI::App& app, TConvertOptions& options, TConvertGiven& given)
{
  app.add_option("directory", options.directory,
                 "Directory of a recorded run, or a .raw file with its .json beside it")
      ->required()
      ->type_name("DIRECTORY");
  AddText(app, "-o,--output", options.output.file,
          "File for the images: .tif, .tiff (stack), .fits (cube), .raw (pixels, with a .json beside them), "
          ".ome.zarr (a directory with an array) or .png (a picture of each)",
          kFileNameForm)
      ->type_name("FILE");
  AddWord(app, "--format", options.output.format, kFormats.words,
          "Format of the output file, if its name does not say it; bigtiff is for TIFF files above 4 GB that "
          "other programs than ImageJ and tifffile are to read");
  AddForm(
      app, "--compression",
      [&options](const std::string& text) { return ParseCompression(text, options.output.compression.emplace()); },
      "zstd, lz4 or none, with a level from 1 to 9 as in zstd:3,",
      "Of .ome.zarr: zstd, lz4 (faster, less) or none, with a level from 1 to 9 as in zstd:3; default: zstd:1")
      ->type_name("CODEC[:LEVEL]");
  app.add_option("--chunk", options.output.chunkImages,
                 "Of .ome.zarr: images in a file; default: as many as have 8 MiB, at least 1")
      ->transform(WholeNumber(1, kMaxChunkImages))
      ->type_name("N");
  AddText(app, "--preview", options.output.preview, "Picture of the last image", kFileNameForm)
      ->type_name("FILE.png");
  AddForm(
      app, "--images", [&options](const std::string& text) { return ParseImageNumbers(text, options.images); },
      "a list of numbers from 1, for example 10-20,30,", "Images to take, for example 10-20,30; default: all")
      ->type_name("NUMBERS");
  app.add_option("-b,--bits", given.bits,
                 "Bits of a pixel in the output: 8, 16 or 32; default: as many as the run has")
      ->check(OneOf({"8", "16", "32"}));
  app.add_flag("--verify", options.isVerify, "Compare every image with its checksum; no output is needed");
  app.add_flag("--salvage", options.isSalvage,
               "Take what can be had of a run that was not finished, without a checksum too");
  app.add_flag("--keep-damaged", options.keepsDamaged,
               "Take images whose checksum is wrong, with --salvage also those without one");
  AddImageFileOptions(app, options.output, app.option_defaults()->get_group());
  app.add_flag("--overwrite", options.output.overwrite, "Replace files that exist");
  app.add_flag("-q,--quiet", options.isQuiet, "Print errors and warnings only");
}

std::string CompleteConvert(TConvertOptions& options, const TConvertGiven& given)
{
  if (given.bits) options.depth = static_cast<PixelDepth>(*given.bits);
  if (options.output.IsEmpty() && !options.isVerify) return "--output: is needed, or --preview or --verify";
  if (std::string why = CompleteOutput(options.output, kFormats); !why.empty()) return why;
  const bool isZarr = options.output.format == FileFormat::OmeZarr;
  if (options.output.compression && !isZarr) return "--compression: only .ome.zarr is compressed";
  if (options.output.chunkImages && !isZarr) return "--chunk: only .ome.zarr has chunks";
  return options.output.isFileForEach && isZarr ? "--each: .ome.zarr is for all images; give --chunk 1" : "";
}

} // namespace vxtool
