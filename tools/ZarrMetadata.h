// SPDX-License-Identifier: MIT
// The texts of an OME-Zarr directory: what its arrays are, and what they show.
#pragma once

#include "tools/Json.h"
#include "tools/Options.h"
#include "tools/TDisplayWindow.h"

namespace vxtool {

/// The format of an array, of numbers without gaps. @p compressor null for none.
Json ZarrArrayJson(const Json& shape, const Json& chunks, const char* type, const Json& compressor);
/// The array with images of one size.
Json ZarrImagesJson(const TImageShape& shape, std::size_t images, std::size_t chunkImages,
                    const TZarrOptions& options);
/// Names of its axes, for programs that do not know the description.
Json ZarrDimensionsJson(const TZarrOptions& options);
/// The file of a chunk in it: "7/0/0".
std::string ZarrChunkName(std::size_t chunk, const TZarrOptions& options);
/// "multiscales" and "omero" of the description.
Json ZarrDescription(const std::string& name, const TRunFacts& facts, const TImageShape& shape,
                     const TDisplayWindow& window, const TZarrOptions& options);

} // namespace vxtool
