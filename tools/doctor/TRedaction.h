// SPDX-License-Identifier: MIT
// Leaves names out of a text that goes to somebody else.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace vxtool {

/// Replaces names by the same words everywhere, so that texts still agree with each other. One thread.
class TRedaction final
{
public:
  /// Knows the user's name and directory and the machine's name.
  static TRedaction OfThisMachine();
  /// @p name becomes @p word from now on; names of one or two letters stay, they are parts of other words.
  void Hide(const std::string& name, const std::string& word);
  std::string Apply(std::string text) const;

private:
  std::vector<std::pair<std::string, std::string>> words_; ///< names, the longest first, and what stands for them
};

} // namespace vxtool
