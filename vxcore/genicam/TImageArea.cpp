// SPDX-License-Identifier: MIT
// Image areas, written in an order that the camera accepts in every step.
#include "vxcore/genicam/TImageArea.h"

#include "vxcore.h"
#include "vxcore/genicam/log.h"

#include <algorithm>
#include <cmath>

namespace vxgenicam {

namespace {

constexpr long long kMaxSide = 1'000'000;

/// The greatest value of the grid of limits that is not above @p value; at least the minimum.
double DownTo(double value, const TLimits& limits)
{
  if (limits.increment <= 0.0) return std::clamp(value, limits.minimum, limits.maximum);
  const double steps = std::floor((std::min(value, limits.maximum) - limits.minimum) / limits.increment);
  return limits.minimum + std::max(0.0, steps) * limits.increment;
}

/// The least value of the grid that is not below @p value; at most the maximum.
double UpTo(double value, const TLimits& limits)
{
  if (limits.increment <= 0.0) return std::clamp(value, limits.minimum, limits.maximum);
  const double steps = std::ceil((std::max(value, limits.minimum) - limits.minimum) / limits.increment);
  const double up = limits.minimum + steps * limits.increment;
  return up <= limits.maximum ? up : DownTo(limits.maximum, limits);
}

} // namespace

TImageArea::TImageArea(TNodes& nodes, const TFeatureMap& map) : nodes_(nodes)
{
  axes_[Horizontal].offset = map.SourceOf("AOILeft", nodes);
  axes_[Horizontal].length = map.SourceOf("AOIWidth", nodes);
  axes_[Horizontal].binning = map.SourceOf("AOIHBin", nodes);
  axes_[Vertical].offset = map.SourceOf("AOITop", nodes);
  axes_[Vertical].length = map.SourceOf("AOIHeight", nodes);
  axes_[Vertical].binning = map.SourceOf("AOIVBin", nodes);
  const TSource sensors[] = {map.SourceOf("SensorWidth", nodes), map.SourceOf("SensorHeight", nodes)};
  for (const EAxis axis : {Horizontal, Vertical}) {
    TAxis& one = axes_[axis];
    const std::string& known = sensors[axis] ? sensors[axis].node : one.length.node;
    if (nodes_.GetInteger(known, one.sensor) != VX_SUCCESS || one.sensor < 1 || one.sensor > kMaxSide) {
      TLimits limits;
      nodes_.GetLimits(one.length.node, limits);
      Log(ELog::Warning, "%s: the size of the sensor is unknown or impossible (%lld)", known.c_str(), one.sensor);
      one.sensor = std::clamp(RoundToInteger(limits.maximum), 1LL, kMaxSide);
    }
    one.side = one.sensor;
  }
}

int TImageArea::Reset()
{
  int first = VX_SUCCESS;
  for (const EAxis axis : {Horizontal, Vertical}) {
    TAxis whole = axes_[axis];
    if (whole.binning && nodes_.IsWritable(whole.binning.node)) nodes_.SetInteger(whole.binning.node, 1);
    if (whole.offset && nodes_.IsWritable(whole.offset.node)) nodes_.SetInteger(whole.offset.node, 0);
    // Sensors have pixels that are in no image, at their edges.
    TLimits limits;
    if (nodes_.GetLimits(whole.length.node, limits) == VX_SUCCESS)
      whole.sensor = std::clamp(RoundToInteger(limits.maximum), 1LL, whole.sensor);
    if (whole.sensor < axes_[axis].sensor)
      Log(ELog::Warning, "%s: images have at most %lld of the sensor's %lld pixels", whole.length.node.c_str(),
          whole.sensor, axes_[axis].sensor);
    whole.bin = 1;
    whole.start = 1;
    whole.side = whole.sensor;
    const int code = Write(whole);
    if (first == VX_SUCCESS) first = code;
    if (code == VX_SUCCESS) axes_[axis] = whole;
  }
  return first;
}

long long TImageArea::MaxBin(EAxis axis) const
{
  TLimits limits;
  if (!HasBinning(axis) || nodes_.GetLimits(axes_[axis].binning.node, limits) != VX_SUCCESS) return 1;
  return std::max(1LL, std::min(RoundToInteger(limits.maximum), axes_[axis].sensor));
}

int TImageArea::SetStart(EAxis axis, long long start)
{
  TAxis changed = axes_[axis];
  if (start < 1 || start > changed.sensor) return VX_ERR_OUT_OF_RANGE;
  changed.start = start;
  if (changed.First() + changed.side > MaxSide(axis)) return VX_ERR_OUT_OF_RANGE;
  return Change(axis, changed);
}

int TImageArea::SetSide(EAxis axis, long long side)
{
  TAxis changed = axes_[axis];
  if (side < 1 || side > MaxSide(axis)) return VX_ERR_OUT_OF_RANGE;
  changed.side = side;
  if (changed.First() + side > MaxSide(axis)) changed.start = (MaxSide(axis) - side) * changed.bin + 1;
  return Change(axis, changed);
}

int TImageArea::SetBin(EAxis axis, long long bin)
{
  TAxis changed = axes_[axis];
  if (!changed.binning) return bin == 1 ? VX_SUCCESS : VX_ERR_OUT_OF_RANGE;
  if (bin < 1 || bin > MaxBin(axis)) return VX_ERR_OUT_OF_RANGE;
  if (const int code = nodes_.SetInteger(changed.binning.node, bin); code != VX_SUCCESS) return code;
  long long set = bin;
  nodes_.GetInteger(changed.binning.node, set); // a camera may take another one than it was asked for
  changed.bin = std::max(1LL, set);
  axes_[axis].bin = changed.bin;
  changed.side = std::min(changed.side, MaxSide(axis));
  if (changed.First() + changed.side > MaxSide(axis)) changed.start = 1;
  axes_[axis] = changed;
  if (const int code = Write(changed); code != VX_SUCCESS) return code;
  return set == bin ? VX_SUCCESS : VX_ERR_OUT_OF_RANGE;
}

int TImageArea::ReadShape(EPixelFormat format, TFrameShape& shape, TCrop& crop) const
{
  std::size_t sides[2] = {};
  std::size_t starts[2] = {};
  for (const EAxis axis : {Horizontal, Vertical}) {
    const TAxis& one = axes_[axis];
    long long length = 0;
    long long first = 0;
    if (const int code = ReadSent(one, first, length); code != VX_SUCCESS) return code;
    // The image is not within what the camera sends: it has changed its area by itself.
    if (length < 1 || first < 0 || first + one.side > length) return VX_ERR_START_REFUSED;
    sides[axis] = static_cast<std::size_t>(length);
    starts[axis] = static_cast<std::size_t>(first);
  }
  shape = {format, sides[Horizontal], sides[Vertical], 0};
  crop = {starts[Horizontal], starts[Vertical], static_cast<std::size_t>(axes_[Horizontal].side),
          static_cast<std::size_t>(axes_[Vertical].side)};
  return VX_SUCCESS;
}

/// Makes the camera send at least the area. An offset is lowered before the length grows, and raised after it has
/// shrunk, so that the camera never has an area beyond its sensor.
int TImageArea::Write(const TAxis& axis)
{
  const bool hasOffset = axis.offset && nodes_.IsWritable(axis.offset.node);
  const bool hasLength = nodes_.IsWritable(axis.length.node);
  double offset = 0.0;
  if (hasOffset) {
    double present = 0.0;
    TLimits limits;
    if (const int code = nodes_.GetNumber(axis.offset.node, present); code != VX_SUCCESS) return code;
    if (const int code = nodes_.GetLimits(axis.offset.node, limits); code != VX_SUCCESS) return code;
    // Its maximum is that of the present length; the grid goes on beyond it.
    limits.maximum = static_cast<double>(axis.sensor);
    offset = DownTo(static_cast<double>(axis.First()), limits);
    if (offset < present) {
      if (const int code = nodes_.SetNumber(axis.offset.node, offset); code != VX_SUCCESS) return code;
    }
  }
  if (hasLength) {
    TLimits limits;
    if (const int code = nodes_.GetLimits(axis.length.node, limits); code != VX_SUCCESS) return code;
    const double needed = static_cast<double>(axis.First() + axis.side) - offset;
    if (const int code = nodes_.SetNumber(axis.length.node, UpTo(needed, limits)); code != VX_SUCCESS) return code;
  }
  if (hasOffset) {
    if (const int code = nodes_.SetNumber(axis.offset.node, offset); code != VX_SUCCESS) return code;
  }
  return Cover(axis);
}

/// Makes the camera send the area where it took other numbers than it was asked for.
int TImageArea::Cover(const TAxis& axis)
{
  constexpr int kMaxTries = 8;
  long long first = 0;
  long long length = 0;
  for (int power = 0; power < kMaxTries; ++power) {
    if (const int code = ReadSent(axis, first, length); code != VX_SUCCESS) return code;
    if (first >= 0 && first + axis.side <= length) return VX_SUCCESS;
    TLimits limits;
    if (!nodes_.IsWritable(axis.length.node) || nodes_.GetLimits(axis.length.node, limits) != VX_SUCCESS) break;
    const double more = static_cast<double>(first + axis.side + (1LL << power));
    if (first < 0 || nodes_.SetNumber(axis.length.node, UpTo(more, limits)) != VX_SUCCESS) break;
  }
  Log(ELog::Error, "%s: the camera takes an area of %lld pixels, of which the image begins at %lld, for %lld",
      axis.length.node.c_str(), length, first, axis.side);
  return VX_ERR_OUT_OF_RANGE;
}

/// The length that the camera sends, and where the image begins within it.
int TImageArea::ReadSent(const TAxis& axis, long long& first, long long& length) const
{
  long long offset = 0;
  if (const int code = nodes_.GetInteger(axis.length.node, length); code != VX_SUCCESS) return code;
  if (axis.offset && nodes_.GetInteger(axis.offset.node, offset) != VX_SUCCESS) offset = 0;
  first = axis.First() - offset;
  return VX_SUCCESS;
}

int TImageArea::Change(EAxis axis, const TAxis& changed)
{
  const int code = Write(changed);
  if (code == VX_SUCCESS)
    axes_[axis] = changed;
  else
    Write(axes_[axis]); // back to what was
  return code;
}

} // namespace vxgenicam
