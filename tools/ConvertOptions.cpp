// SPDX-License-Identifier: MIT
// The options of the command convert.
#include "tools/ConvertOptions.h"

#include "tools/ArgumentForms.h"
#include "tools/OptionKinds.h"
#include "tools/OutputOptions.h"

#include <algorithm>

namespace vxtool {

namespace {

constexpr int kMaxChunkImages = 1'000'000;
constexpr int kMaxPyramidLevels = 20; // more than images of any size have
constexpr int kMaxThreads = 256;      // of Blosc

const TWords<bool> kAxes = {{"tyx", false}, {"tczyx", true}};

const TFormats kFormats = {{{"tiff", FileFormat::Tiff},
                            {"bigtiff", FileFormat::BigTiff},
                            {"fits", FileFormat::Fits},
                            {"raw", FileFormat::Raw},
                            {"omezarr", FileFormat::OmeZarr},
                            {"hdf5", FileFormat::Hdf5},
                            {"png", FileFormat::Png}},
                           {{".tif", FileFormat::Tiff},
                            {".tiff", FileFormat::Tiff},
                            {".fits", FileFormat::Fits},
                            {".fit", FileFormat::Fits},
                            {".fts", FileFormat::Fits},
                            {".raw", FileFormat::Raw},
                            {".zarr", FileFormat::OmeZarr},
                            {".h5", FileFormat::Hdf5},
                            {".hdf5", FileFormat::Hdf5},
                            {".png", FileFormat::Png}},
                           ".tif, .tiff, .fits, .raw, .ome.zarr, .h5 or .png"};

// Which codecs a format has; empty for one that is not compressed.
std::vector<Codec> CodecsOf(const std::optional<FileFormat>& format)
{
  if (format == FileFormat::OmeZarr) return {Codec::Zstd, Codec::Lz4, Codec::None};
  if (format == FileFormat::Hdf5) return {Codec::Gzip, Codec::BloscZstd, Codec::None};
  return {};
}

// What of the options is for another format, "" for nothing.
std::string WhyNotInFormat(const TOutputOptions& output)
{
  const bool isZarr = output.format == FileFormat::OmeZarr;
  const bool isHdf5 = output.format == FileFormat::Hdf5;
  const char* const name = isZarr ? ".ome.zarr" : ".h5";
#ifndef VXTOOL_HAS_HDF5
  if (isHdf5) return "--output: this program was built without HDF5 (the package libhdf5-dev)";
#endif
  if (output.compression) {
    const std::vector<Codec> codecs = CodecsOf(output.format);
    if (codecs.empty()) return "--compression: only .ome.zarr and .h5 are compressed";
    if (std::find(codecs.begin(), codecs.end(), output.compression->codec) == codecs.end())
      return std::string("--compression: ") + name + " has " + (isZarr ? "zstd, lz4" : "gzip, blosc-zstd") +
             " or none";
  }
  if ((output.pyramidLevels || output.hasFiveAxes) && !isZarr)
    return std::string(output.pyramidLevels ? "--pyramid" : "--axes") + ": is for .ome.zarr";
  const Codec codec = output.compression.value_or(TCompression{isZarr ? Codec::Zstd : Codec::None}).codec;
  if (output.threads && !((isZarr && codec != Codec::None) || codec == Codec::BloscZstd))
    return "--threads: is for .ome.zarr, and for .h5 with --compression blosc-zstd";
  if (output.chunkImages && !isZarr) return "--chunk: only .ome.zarr has chunks of several images";
  if (!output.isFileForEach || (!isZarr && !isHdf5)) return "";
  return std::string("--each: ") + name + " is for all images" + (isZarr ? "; give --chunk 1" : "");
}

} // namespace

void AddConvertOptions(CLI::App& app, TConvertOptions& options, TConvertGiven& given)
{
  app.add_option("directory", options.directory,
                 "Directory of a recorded run, or a .raw file with its .json beside it")
      ->required()
      ->type_name("DIRECTORY");
  AddText(app, "-o,--output", options.output.file,
          "File for the images: .tif, .tiff (stack), .fits (cube), .raw (pixels, with a .json beside them), "
          ".ome.zarr (a directory with an array), .h5 (HDF5, an array) or .png (a picture of each)",
          kFileNameForm)
      ->type_name("FILE");
  AddWord(app, "--format", options.output.format, kFormats.words,
          "Format of the output file, if its name does not say it; bigtiff is for TIFF files above 4 GB that "
          "other programs than ImageJ and tifffile are to read");
  AddForm(
      app, "--compression",
      [&options](const std::string& text) { return ParseCompression(text, options.output.compression.emplace()); },
      "zstd, lz4, gzip, blosc-zstd or none, with a level from 1 to 9 as in zstd:3,",
      "Of .ome.zarr: zstd, lz4 (faster, less) or none; default: zstd. Of .h5: gzip, blosc-zstd (many times as "
      "fast; readers need a filter for it) or none; default: none. With a level from 1 to 9, as in zstd:3; "
      "default: 1")
      ->type_name("CODEC[:LEVEL]");
  app.add_option("--chunk", options.output.chunkImages,
                 "Of .ome.zarr: images in a file; default: as many as have 8 MiB, at least 1")
      ->transform(WholeNumber(1, kMaxChunkImages))
      ->type_name("N");
  app.add_option(
         "--pyramid", options.output.pyramidLevels,
         "Of .ome.zarr: so many further arrays, each with half the columns and rows of the one before, as means; "
         "default: 0")
      ->transform(WholeNumber(0, kMaxPyramidLevels))
      ->type_name("LEVELS");
  AddWord(app, "--axes", options.output.hasFiveAxes, kAxes,
          "Of .ome.zarr: tczyx, for programs that expect a channel and z; default: tyx");
  app.add_option("--threads", options.output.threads,
                 "Of .ome.zarr, and of .h5 with blosc-zstd: threads that compress a chunk; default: 2")
      ->transform(WholeNumber(1, kMaxThreads))
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
  app.add_flag("--follow", options.isFollowed,
               "Convert a run that is still being recorded: take images as they come, until it has ended");
  AddSeconds(app, "--timeout", given.timeout,
             "With --follow: end when nothing was added to the run for this long; default: 60");
  AddImageFileOptions(app, options.output, app.option_defaults()->get_group());
  app.add_flag("--overwrite", options.output.overwrite, "Replace files that exist");
  app.add_flag("-q,--quiet", options.isQuiet, "Print errors and warnings only");
}

std::string CompleteConvert(TConvertOptions& options, const TConvertGiven& given)
{
  if (given.bits) options.depth = static_cast<PixelDepth>(*given.bits);
  if (given.timeout && !options.isFollowed) return "--timeout: is for --follow";
  options.patienceSeconds = given.timeout.value_or(options.patienceSeconds);
  if (options.output.IsEmpty() && !options.isVerify) return "--output: is needed, or --preview or --verify";
  if (std::string why = CompleteOutput(options.output, kFormats); !why.empty()) return why;
  return WhyNotInFormat(options.output);
}

} // namespace vxtool
