// SPDX-License-Identifier: MIT
// JSON of Zarr 2 and OME-Zarr 0.4.
#include "tools/ZarrMetadata.h"

#include "tools/BloscChunk.h"

#include <cmath>

namespace vxtool {

namespace {

// An axis and its scale: a size without a unit where it is not known.
struct TAxis
{
  const char* name;
  const char* type;
  const char* unit;
  std::optional<double> scale;
  bool isHalved = false; // from level to level
  bool isExtra = false;  // of length 1, for programs that expect five axes
};

std::vector<TAxis> Axes(const TZarrOptions& options, const TRunFacts& facts = {})
{
  std::vector<TAxis> axes = {
      {"t", "time", "second", facts.cycleSeconds > 0.0 ? std::optional(facts.cycleSeconds) : std::nullopt},
      {"c", "channel", "", std::nullopt, false, true},
      {"z", "space", "", std::nullopt, false, true},
      {"y", "space", "micrometer", facts.ImagePixelHeight(), true},
      {"x", "space", "micrometer", facts.ImagePixelWidth(), true}};
  if (!options.hasFiveAxes) std::erase_if(axes, [](const TAxis& axis) { return axis.isExtra; });
  return axes;
}

// Where pixels of this level are, relative to those of the first one. A pixel is where its middle is.
Json TransformationsJson(const std::vector<TAxis>& axes, int level)
{
  const double pixels = std::ldexp(1.0, level);
  Json scale = Json::array();
  Json translation = Json::array();
  for (const TAxis& axis : axes) {
    const double size = axis.scale.value_or(1.0);
    scale.push_back(axis.isHalved ? size * pixels : size);
    translation.push_back(axis.isHalved ? size * (pixels - 1.0) / 2.0 : 0.0);
  }
  Json transformations = Json::array({{{"type", "scale"}, {"scale", scale}}});
  if (level > 0) transformations.push_back({{"type", "translation"}, {"translation", translation}});
  return transformations;
}

const char* PixelType(PixelDepth depth)
{
  return depth == PixelDepth::Bits32 ? "<i4" : depth == PixelDepth::Bits8 ? "|u1" : "<u2";
}

Json MultiscalesJson(const std::string& name, const TRunFacts& facts, const TZarrOptions& options)
{
  const std::vector<TAxis> axes = Axes(options, facts);
  Json axesJson = Json::array();
  for (const TAxis& axis : axes) {
    Json one = {{"name", axis.name}, {"type", axis.type}};
    if (axis.scale) one["unit"] = axis.unit;
    axesJson.push_back(one);
  }
  Json datasets = Json::array();
  for (int level = 0; level <= options.pyramidLevels; ++level)
    datasets.push_back(
        {{"path", std::to_string(level)}, {"coordinateTransformations", TransformationsJson(axes, level)}});
  Json image = {{"version", "0.4"}, {"name", name}, {"axes", axesJson}, {"datasets", datasets}};
  if (options.pyramidLevels > 0) image["type"] = "mean";
  return Json::array({image});
}

} // namespace

// Without a fill value, because readers may take pixels of that value for missing ones.
Json ZarrArrayJson(const Json& shape, const Json& chunks, const char* type, const Json& compressor)
{
  return {{"zarr_format", 2}, {"shape", shape},           {"chunks", chunks},
          {"dtype", type},    {"compressor", compressor}, {"fill_value", nullptr},
          {"order", "C"},     {"filters", nullptr},       {"dimension_separator", "/"}};
}

Json ZarrImagesJson(const TImageShape& shape, std::size_t images, std::size_t chunkImages,
                    const TZarrOptions& options)
{
  Json compressor;
  if (options.compression.codec != Codec::None) {
    const TBloscChunk blosc(options.compression, shape.depth, options.threads);
    compressor = {{"id", "blosc"},
                  {"cname", blosc.codec},
                  {"clevel", blosc.level},
                  {"shuffle", blosc.shuffle},
                  {"blocksize", 0}};
  }
  const auto sizes = [&](std::size_t first) {
    return options.hasFiveAxes ? Json::array({first, 1, 1, shape.height, shape.width})
                               : Json::array({first, shape.height, shape.width});
  };
  return ZarrArrayJson(sizes(images), sizes(chunkImages), PixelType(shape.depth), compressor);
}

Json ZarrDimensionsJson(const TZarrOptions& options)
{
  Json names = Json::array();
  for (const TAxis& axis : Axes(options)) names.push_back(axis.name);
  return {{"_ARRAY_DIMENSIONS", names}};
}

std::string ZarrChunkName(std::size_t chunk, const TZarrOptions& options)
{
  return std::to_string(chunk) + (options.hasFiveAxes ? "/0/0/0/0" : "/0/0");
}

Json ZarrDescription(const std::string& name, const TRunFacts& facts, const TImageShape& shape,
                     const TDisplayWindow& window, const TZarrOptions& options)
{
  const Json range = {{"min", TDisplayWindow::Least(shape.depth)},
                      {"max", TDisplayWindow::Most(shape.depth)},
                      {"start", window.Start(shape.depth)},
                      {"end", window.End(shape.depth)}};
  const Json channel = {{"label", facts.camera.empty() ? "camera" : facts.camera},
                        {"color", "FFFFFF"},
                        {"active", true},
                        {"window", range}};
  return {{"multiscales", MultiscalesJson(name, facts, options)},
          {"omero", {{"channels", Json::array({channel})}, {"rdefs", {{"model", "greyscale"}}}}}};
}

} // namespace vxtool
