// SPDX-License-Identifier: MIT
// Which word was meant.
#pragma once

#include <string>
#include <vector>

namespace vxtool {

/// The candidate that a misspelt word is nearest to, by letters that are missing, wrong, too many or exchanged with
/// their neighbour, or that it is the beginning of; "" when none is near. The first one when several are as near.
std::string NearestWord(const std::string& word, const std::vector<std::string>& candidates);

} // namespace vxtool
