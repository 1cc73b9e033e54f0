// SPDX-License-Identifier: MIT
// Trigger modes as features of the standard names.
#include "vxcore/genicam/TTriggerMode.h"

#include "vxcore.h"

#include <algorithm>
#include <utility>

namespace vxgenicam {

namespace {

constexpr const char* kSelector = "TriggerSelector";
constexpr const char* kMode = "TriggerMode";
constexpr const char* kSource = "TriggerSource";
constexpr const char* kActivation = "TriggerActivation";
constexpr const char* kExposureMode = "ExposureMode";
constexpr const char* kFrameStart = "FrameStart";

} // namespace

TTriggerMode::TTriggerMode(TNodes& nodes, std::string line) : nodes_(nodes), line_(std::move(line)) {}

std::vector<std::wstring> TTriggerMode::Texts()
{
  return {L"Internal", L"Software", L"External", L"External Start", L"External Exposure"};
}

/// The entry of the selector for the trigger that starts a whole run, "" when the camera has none.
std::string TTriggerMode::RunStartSelector() const
{
  for (const char* entry : {"AcquisitionStart", "FrameBurstStart"})
    if (nodes_.HasEntry(kSelector, entry)) return entry;
  return "";
}

std::string TTriggerMode::Line() const
{
  if (!line_.empty()) return nodes_.HasEntry(kSource, line_) ? line_ : "";
  const std::vector<std::string> sources = nodes_.Entries(kSource);
  const auto first = std::ranges::find_if(sources, [](const std::string& one) { return one.starts_with("Line"); });
  return first == sources.end() ? "" : *first;
}

bool TTriggerMode::IsAvailable(int mode) const
{
  if (mode == Internal) return true;
  // A camera without a selector has one trigger only, that of a frame.
  const bool hasFrameStart =
      nodes_.Has(kMode) && (!nodes_.Has(kSelector) || nodes_.HasEntry(kSelector, kFrameStart));
  switch (mode) {
  case Software:
    return hasFrameStart && nodes_.HasEntry(kSource, "Software") && nodes_.Has("TriggerSoftware");
  case External:
    return hasFrameStart && !Line().empty();
  case ExternalStart:
    return nodes_.Has(kMode) && !RunStartSelector().empty() && !Line().empty();
  case ExternalExposure:
    return hasFrameStart && !Line().empty() && nodes_.HasEntry(kExposureMode, "TriggerWidth");
  default:
    return false;
  }
}

int TTriggerMode::SwitchOffAll()
{
  if (!nodes_.Has(kMode)) return nodes_.IsSilent() ? VX_ERR_COMMUNICATION : VX_SUCCESS;
  const std::vector<std::string> selectors = nodes_.Entries(kSelector);
  for (const std::string& selector : selectors) {
    const int chosen = nodes_.SetText(kSelector, selector);
    if (chosen == VX_ERR_COMMUNICATION) return chosen;
    if (chosen != VX_SUCCESS) continue; // it cannot be on
    if (const int code = nodes_.SetText(kMode, "Off"); code != VX_SUCCESS) return code;
  }
  return selectors.empty() ? nodes_.SetText(kMode, "Off") : VX_SUCCESS;
}

int TTriggerMode::Set(int mode)
{
  if (!IsAvailable(mode)) return VX_ERR_INDEX_NOT_AVAILABLE;
  if (const int code = SwitchOffAll(); code != VX_SUCCESS) return code;
  mode_ = Internal;
  const bool isWidth = mode == ExternalExposure;
  std::vector<std::pair<const char*, std::string>> steps;
  if (mode != Internal) {
    if (nodes_.Has(kSelector))
      steps.emplace_back(kSelector, mode == ExternalStart ? RunStartSelector() : kFrameStart);
    steps.emplace_back(kSource, mode == Software ? "Software" : Line());
    const bool hasEdge = nodes_.HasEntry(kActivation, "RisingEdge");
    if (mode != Software && (hasEdge || (isWidth && nodes_.HasEntry(kActivation, "LevelHigh"))))
      steps.emplace_back(kActivation, hasEdge ? "RisingEdge" : "LevelHigh");
    steps.emplace_back(kMode, "On");
  }
  if (nodes_.Has(kExposureMode) && (isWidth || nodes_.HasEntry(kExposureMode, "Timed")))
    steps.emplace_back(kExposureMode, isWidth ? "TriggerWidth" : "Timed");
  for (const auto& [node, text] : steps) {
    std::string present;
    if (nodes_.GetText(node, present) == VX_SUCCESS && present == text) continue; // it may be read-only
    if (const int code = nodes_.SetText(node, text); code != VX_SUCCESS) {
      SwitchOffAll(); // not half of it
      return code;
    }
  }
  mode_ = mode;
  return VX_SUCCESS;
}

} // namespace vxgenicam
