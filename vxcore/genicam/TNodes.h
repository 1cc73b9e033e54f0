// SPDX-License-Identifier: MIT
// The features that a camera's own description has, by their GenICam names.
#pragma once

#include "vxcore/genicam/aravis.h"

#include <chrono>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <string>
#include <vector>

namespace vxgenicam {

/// The limits of a number; an increment of 0 means any value between them.
struct TLimits
{
  double minimum = 0.0;
  double maximum = 0.0;
  double increment = 0.0;
};

/// The nearest whole number; of what an integer cannot be, the nearest that it can. Descriptions without a limit have the
/// greatest integer, which as a floating-point number is one more.
inline long long RoundToInteger(double value)
{
  constexpr double kEnd = 9223372036854775808.0;
  if (std::isnan(value)) return 0;
  if (value >= kEnd) return std::numeric_limits<long long>::max();
  return value < -kEnd ? std::numeric_limits<long long>::min() : std::llround(value);
}

/// Reads and writes the nodes of a camera's description. What a description claims is not trusted: a node of another
/// kind than the standard gives its name is used by the kind it has, and a write outside the limits is refused here, since
/// Aravis' own check fails on descriptions that are valid. Operations answer `VX_` codes and write outputs only on
/// success. Owned by TGenICamCamera, borrows the device; used under its lock.
class TNodes final
{
public:
  explicit TNodes(ArvDevice* device) : device_(device) {}
  /// A question that is not answered takes seconds, and few features ask only one: for a second nothing more is asked then,
  /// and until the end of the opening nothing at all.
  bool IsSilent() const { return TClock::now() < silentUntil_; }
  void EndSilence() { silentUntil_ = {}; }
  /// False when the camera has not answered all questions so far.
  bool EndOpening();

  /// Whether the camera has the node and implements it.
  bool Has(const std::string& name) const;
  /// The first name that it has, "" for none.
  std::string FirstOf(std::initializer_list<const char*> names) const;
  bool IsReadable(const std::string& name) const;
  bool IsWritable(const std::string& name) const;
  /// Whether it is an integer or a float.
  bool IsNumber(const std::string& name) const;

  // Integer and float nodes alike.
  int GetNumber(const std::string& name, double& value) const;
  int GetLimits(const std::string& name, TLimits& limits) const;
  /// Writes the number, to an integer node the nearest whole one.
  int SetNumber(const std::string& name, double value);

  int GetInteger(const std::string& name, long long& value) const;
  int SetInteger(const std::string& name, long long value);

  int GetSwitch(const std::string& name, bool& value) const;
  /// Writes a boolean node, "On" or "Off" to an enumeration, 1 or 0 to a number.
  int SetSwitch(const std::string& name, bool value);

  /// Of an enumeration the entry's name, else the text.
  int GetText(const std::string& name, std::string& text) const;
  int SetText(const std::string& name, const std::string& text);
  /// Whether an enumeration has the entry and offers it now.
  bool HasEntry(const std::string& name, const std::string& entry) const;
  std::vector<std::string> Entries(const std::string& name) const;

  int Execute(const std::string& name);

private:
  ArvGcNode* Find(const std::string& name) const;
  ArvGcAccessMode AccessOf(const std::string& name) const;

  using TClock = std::chrono::steady_clock;

  bool IsSet(const TError& error) const;
  int CodeOfMissing() const;
  int CodeOf(const TError& error) const { return IsSet(error) ? error.Code() : 0; }

  ArvDevice* device_;
  bool isOpening_ = true;
  mutable TClock::time_point silentUntil_{};
};

} // namespace vxgenicam
