// SPDX-License-Identifier: MIT
// Leaves names and paths out of what goes to somebody else.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace vxtool {

/// Replaces names, serial numbers and paths by words such as <path1>, the same word for the same text everywhere, so that
/// texts and traces still agree with each other. What is learned from one text is replaced in all that follow: learn from
/// all of them first. Paths of the system itself stay, such as those in /usr. One thread.
class TRedaction final
{
public:
  /// Knows the names of user and machine, the home directory, and the paths in the environment.
  static TRedaction OfThisMachine();

  /// A name is replaced where it stands alone, by a word of this kind. Names of one or two characters stay, since they are
  /// parts of other words.
  void Hide(const std::string& name, const std::string& kind);
  /// A serial number is replaced where the text says that it is one; elsewhere the same digits may be a size.
  void HideSerialNumber(long long number);
  /// Takes the names of users out of paths, as another machine has them, and serial numbers and addresses of cameras out of
  /// configurations.
  void Learn(std::string_view text);
  /// A list of real cameras, as a configuration has it: addresses and serial numbers with commas between.
  void LearnDevices(const std::string& devices);
  /// A whole path, which may have spaces and need not have a slash.
  void LearnPath(const std::string& path);

  std::string Text(const std::string& text);
  /// What stands for a whole text of this kind.
  std::string Word(const std::string& text, const std::string& kind);
  /// What stands for a whole path.
  std::string Path(const std::string& path);

  /// What was replaced, by what; for the user, not for the one who gets the text.
  const std::map<std::string, std::string>& Words() const { return words_; }

private:
  void LearnUsers(std::string_view path);
  std::size_t EndOfPath(std::string_view text, std::size_t begin) const;
  std::string WithoutPaths(std::string_view text);
  void ReplaceNames(std::string& text);
  void ReplaceSerialNumbers(std::string& text);

  std::string home_;
  std::map<std::string, std::string> words_;
  std::map<std::string, int> counts_; ///< of the words of a kind
  struct TName
  {
    std::string name;
    std::string kind;
  };
  std::vector<TName> names_;         ///< the longest first
  std::vector<std::string> paths_;   ///< that may have spaces, the longest first
  std::vector<std::string> serials_; ///< digits
};

} // namespace vxtool
