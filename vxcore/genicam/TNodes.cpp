// SPDX-License-Identifier: MIT
// Typed access to the nodes of a camera's description.
#include "vxcore/genicam/TNodes.h"

#include "vxcore.h"

#include <cmath>

namespace vxgenicam {

namespace {

constexpr std::chrono::seconds kSilence(1);
constexpr double kRounding = 1e-9; ///< of the last digit of limits that were converted on the way

bool IsWithin(double value, const TLimits& limits)
{
  const double slack = kRounding * std::fmax(std::fabs(limits.minimum), std::fabs(limits.maximum));
  return value >= limits.minimum - slack && value <= limits.maximum + slack;
}

} // namespace

bool TNodes::EndOpening()
{
  const bool hasAnswered = !IsSilent();
  isOpening_ = false;
  silentUntil_ = {};
  return hasAnswered;
}

bool TNodes::IsSet(const TError& error) const
{
  if (error.IsTimeout()) silentUntil_ = isOpening_ ? TClock::time_point::max() : TClock::now() + kSilence;
  return error.IsSet();
}

int TNodes::CodeOfMissing() const
{
  return IsSilent() ? VX_ERR_COMMUNICATION : VX_ERR_NOT_IMPLEMENTED;
}

ArvGcNode* TNodes::Find(const std::string& name) const
{
  return name.empty() || IsSilent() ? nullptr : arv_device_get_feature(device_, name.c_str());
}

bool TNodes::Has(const std::string& name) const
{
  ArvGcNode* node = Find(name);
  if (!node || !ARV_IS_GC_FEATURE_NODE(node)) return false;
  TError error;
  const bool isImplemented = arv_gc_feature_node_is_implemented(ARV_GC_FEATURE_NODE(node), error.Out()) != FALSE;
  return isImplemented && !IsSet(error);
}

std::string TNodes::FirstOf(std::initializer_list<const char*> names) const
{
  for (const char* name : names)
    if (Has(name)) return name;
  return "";
}

ArvGcAccessMode TNodes::AccessOf(const std::string& name) const
{
  ArvGcNode* node = Find(name);
  if (!node || !ARV_IS_GC_FEATURE_NODE(node)) return ARV_GC_ACCESS_MODE_UNDEFINED;
  TError error;
  if (!arv_gc_feature_node_is_available(ARV_GC_FEATURE_NODE(node), error.Out()) || IsSet(error))
    return ARV_GC_ACCESS_MODE_UNDEFINED;
  return arv_gc_feature_node_get_actual_access_mode(ARV_GC_FEATURE_NODE(node));
}

bool TNodes::IsReadable(const std::string& name) const
{
  const ArvGcAccessMode mode = AccessOf(name);
  return mode == ARV_GC_ACCESS_MODE_RO || mode == ARV_GC_ACCESS_MODE_RW;
}

bool TNodes::IsWritable(const std::string& name) const
{
  const ArvGcAccessMode mode = AccessOf(name);
  if (mode != ARV_GC_ACCESS_MODE_WO && mode != ARV_GC_ACCESS_MODE_RW) return false;
  TError error;
  return !arv_gc_feature_node_is_locked(ARV_GC_FEATURE_NODE(Find(name)), error.Out()) || IsSet(error);
}

bool TNodes::IsNumber(const std::string& name) const
{
  ArvGcNode* node = Find(name);
  return node && (ARV_IS_GC_FLOAT(node) || ARV_IS_GC_INTEGER(node));
}

int TNodes::GetNumber(const std::string& name, double& value) const
{
  ArvGcNode* node = Find(name);
  TError error;
  double read = 0.0;
  if (node && ARV_IS_GC_FLOAT(node))
    read = arv_gc_float_get_value(ARV_GC_FLOAT(node), error.Out());
  else if (node && ARV_IS_GC_INTEGER(node))
    read = static_cast<double>(arv_gc_integer_get_value(ARV_GC_INTEGER(node), error.Out()));
  else
    return node ? VX_ERR_WRONG_KIND : CodeOfMissing();
  if (IsSet(error)) return CodeOf(error);
  if (!std::isfinite(read)) return VX_ERR_NOT_AVAILABLE;
  value = read;
  return VX_SUCCESS;
}

int TNodes::GetLimits(const std::string& name, TLimits& limits) const
{
  ArvGcNode* node = Find(name);
  TError errors[3];
  TLimits read;
  if (node && ARV_IS_GC_FLOAT(node)) {
    read.minimum = arv_gc_float_get_min(ARV_GC_FLOAT(node), errors[0].Out());
    read.maximum = arv_gc_float_get_max(ARV_GC_FLOAT(node), errors[1].Out());
    read.increment = arv_gc_float_get_inc(ARV_GC_FLOAT(node), errors[2].Out());
    if (!(read.increment > G_MINDOUBLE)) read.increment = 0.0; // what Aravis has for "none"
  } else if (node && ARV_IS_GC_INTEGER(node)) {
    read.minimum = static_cast<double>(arv_gc_integer_get_min(ARV_GC_INTEGER(node), errors[0].Out()));
    read.maximum = static_cast<double>(arv_gc_integer_get_max(ARV_GC_INTEGER(node), errors[1].Out()));
    read.increment = static_cast<double>(arv_gc_integer_get_inc(ARV_GC_INTEGER(node), errors[2].Out()));
  } else
    return node ? VX_ERR_WRONG_KIND : CodeOfMissing();
  for (const TError& error : errors)
    if (IsSet(error)) return CodeOf(error);
  if (read.maximum < read.minimum) read.maximum = read.minimum;
  if (read.increment < 0.0) read.increment = 0.0;
  limits = read;
  return VX_SUCCESS;
}

int TNodes::SetNumber(const std::string& name, double value)
{
  if (!std::isfinite(value)) return VX_ERR_OUT_OF_RANGE;
  TLimits limits;
  if (const int code = GetLimits(name, limits); code != VX_SUCCESS) return code;
  if (!IsWithin(value, limits)) return VX_ERR_OUT_OF_RANGE;
  if (!IsWritable(name)) return IsSilent() ? VX_ERR_COMMUNICATION : VX_ERR_NOT_WRITABLE;
  ArvGcNode* node = Find(name);
  TError error;
  if (ARV_IS_GC_FLOAT(node))
    arv_gc_float_set_value(ARV_GC_FLOAT(node), value, error.Out());
  else
    arv_gc_integer_set_value(ARV_GC_INTEGER(node), RoundToInteger(value), error.Out());
  return CodeOf(error);
}

int TNodes::GetInteger(const std::string& name, long long& value) const
{
  ArvGcNode* node = Find(name);
  if (node && ARV_IS_GC_INTEGER(node)) {
    TError error;
    const long long read = arv_gc_integer_get_value(ARV_GC_INTEGER(node), error.Out());
    if (!IsSet(error)) value = read;
    return CodeOf(error);
  }
  double number = 0.0;
  const int code = GetNumber(name, number);
  if (code == VX_SUCCESS) value = RoundToInteger(number);
  return code;
}

int TNodes::SetInteger(const std::string& name, long long value)
{
  return SetNumber(name, static_cast<double>(value));
}

int TNodes::GetSwitch(const std::string& name, bool& value) const
{
  ArvGcNode* node = Find(name);
  if (!node) return CodeOfMissing();
  TError error;
  if (ARV_IS_GC_BOOLEAN(node)) {
    const bool read = arv_gc_boolean_get_value(ARV_GC_BOOLEAN(node), error.Out()) != FALSE;
    if (!IsSet(error)) value = read;
    return CodeOf(error);
  }
  std::string text;
  if (const int code = GetText(name, text); code != VX_SUCCESS) return code;
  value = text != "Off" && text != "False" && text != "0";
  return VX_SUCCESS;
}

int TNodes::SetSwitch(const std::string& name, bool value)
{
  ArvGcNode* node = Find(name);
  if (!node) return CodeOfMissing();
  if (ARV_IS_GC_ENUMERATION(node)) return SetText(name, value ? "On" : "Off");
  if (!ARV_IS_GC_BOOLEAN(node)) return SetNumber(name, value ? 1.0 : 0.0);
  if (!IsWritable(name)) return IsSilent() ? VX_ERR_COMMUNICATION : VX_ERR_NOT_WRITABLE;
  TError error;
  arv_gc_boolean_set_value(ARV_GC_BOOLEAN(node), value ? TRUE : FALSE, error.Out());
  return CodeOf(error);
}

int TNodes::GetText(const std::string& name, std::string& text) const
{
  ArvGcNode* node = Find(name);
  if (!node || !ARV_IS_GC_FEATURE_NODE(node)) return CodeOfMissing();
  TError error;
  const char* read = ARV_IS_GC_ENUMERATION(node)
                         ? arv_gc_enumeration_get_string_value(ARV_GC_ENUMERATION(node), error.Out())
                         : arv_gc_feature_node_get_value_as_string(ARV_GC_FEATURE_NODE(node), error.Out());
  if (IsSet(error)) return CodeOf(error);
  if (!read) return VX_ERR_NOT_AVAILABLE;
  text = read;
  return VX_SUCCESS;
}

int TNodes::SetText(const std::string& name, const std::string& text)
{
  ArvGcNode* node = Find(name);
  if (!node || !ARV_IS_GC_FEATURE_NODE(node)) return CodeOfMissing();
  if (ARV_IS_GC_ENUMERATION(node) && !HasEntry(name, text)) return VX_ERR_OUT_OF_RANGE;
  if (!IsWritable(name)) return IsSilent() ? VX_ERR_COMMUNICATION : VX_ERR_NOT_WRITABLE;
  TError error;
  if (ARV_IS_GC_ENUMERATION(node))
    arv_gc_enumeration_set_string_value(ARV_GC_ENUMERATION(node), text.c_str(), error.Out());
  else
    arv_gc_feature_node_set_value_from_string(ARV_GC_FEATURE_NODE(node), text.c_str(), error.Out());
  return CodeOf(error);
}

bool TNodes::HasEntry(const std::string& name, const std::string& entry) const
{
  ArvGcNode* node = Find(name);
  if (!node || !ARV_IS_GC_ENUMERATION(node)) return false;
  TError error;
  return arv_device_is_enumeration_entry_available(device_, name.c_str(), entry.c_str(), error.Out()) &&
         !IsSet(error);
}

std::vector<std::string> TNodes::Entries(const std::string& name) const
{
  ArvGcNode* node = Find(name);
  if (!node || !ARV_IS_GC_ENUMERATION(node)) return {};
  TError error;
  guint count = 0;
  const TMemory<const char*> entries(
      arv_gc_enumeration_dup_available_string_values(ARV_GC_ENUMERATION(node), &count, error.Out()));
  return IsSet(error) || !entries ? std::vector<std::string>()
                                  : std::vector<std::string>(entries.get(), entries.get() + count);
}

int TNodes::Execute(const std::string& name)
{
  ArvGcNode* node = Find(name);
  if (!node || !ARV_IS_GC_COMMAND(node)) return node ? VX_ERR_WRONG_KIND : CodeOfMissing();
  TError error;
  arv_gc_command_execute(ARV_GC_COMMAND(node), error.Out());
  return CodeOf(error);
}

} // namespace vxgenicam
