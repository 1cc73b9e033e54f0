// SPDX-License-Identifier: MIT
// Values of a column.
#include "tools/ImageColumns.h"

namespace vxtool {

std::vector<std::int64_t> TImageColumn::Of(const std::vector<TImageLabel>& labels) const
{
  std::vector<std::int64_t> values;
  values.reserve(labels.size());
  for (const TImageLabel& label : labels) values.push_back(value(label));
  return values;
}

} // namespace vxtool
