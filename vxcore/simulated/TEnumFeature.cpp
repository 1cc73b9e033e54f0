// SPDX-License-Identifier: MIT
// Enumerated feature of a simulated camera.
#include "vxcore/simulated/TEnumFeature.h"

namespace vxsim {

TEnumFeature::TEnumFeature(TFeatureAccess access, uint64_t& revision, TChoice& choice,
                           std::function<bool(int)> available, std::function<void()> chosen,
                           std::function<void()> refresh)
    : TFeature(std::move(access), revision),
      choice_(choice),
      available_(std::move(available)),
      chosen_(std::move(chosen)),
      refresh_(std::move(refresh))
{
}

int TEnumFeature::SetIndex(int index)
{
  if (!choice_.Has(index)) return VX_ERR_INDEX_NOT_IMPLEMENTED;
  if (const int code = CheckWrite(); code != VX_SUCCESS) return code;
  if (!CanChoose(index)) return VX_ERR_INDEX_NOT_AVAILABLE;
  choice_.Choose(index);
  if (chosen_) chosen_();
  Changed();
  return VX_SUCCESS;
}

int TEnumFeature::SetText(std::wstring_view text)
{
  const int index = choice_.Find(text);
  return index < 0 ? VX_ERR_STRING_NOT_AVAILABLE : SetIndex(index);
}

int TEnumFeature::GetIndex(int& index) const
{
  if (const int code = CheckRead(); code != VX_SUCCESS) return code;
  if (refresh_) refresh_();
  index = choice_.Index();
  return VX_SUCCESS;
}

int TEnumFeature::GetCount(int& count) const
{
  count = static_cast<int>(choice_.Texts().size());
  return VX_SUCCESS;
}

int TEnumFeature::GetTextByIndex(int index, std::wstring_view& text) const
{
  if (!choice_.Has(index)) return VX_ERR_INDEX_NOT_IMPLEMENTED;
  text = choice_.TextAt(index);
  return VX_SUCCESS;
}

int TEnumFeature::IsIndexAvailable(int index, bool& available) const
{
  available = choice_.Has(index) && CanChoose(index);
  return VX_SUCCESS;
}

int TEnumFeature::IsIndexImplemented(int index, bool& implemented) const
{
  implemented = choice_.Has(index);
  return VX_SUCCESS;
}

bool TEnumFeature::CanChoose(int index) const
{
  return !available_ || available_(index);
}

} // namespace vxsim
