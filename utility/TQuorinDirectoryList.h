// SPDX-License-Identifier: MIT
// The names in a directory.
#pragma once

#include "utility/TQuorinFilePath.h"

#include <cstdint>
#include <memory>

namespace QuorinUtility {

/// The names in a directory, "." and ".." included, or those of them that contain a text; in the order in which
/// the system gives them. Shows what was there at the last enumeration; a directory that cannot be read has no
/// names. One object belongs to one thread at a time. Only a lack of memory makes it throw.
class TQuorinDirectoryList final
{
public:
  /// Where in a name the text is looked for.
  enum eStringLocation
  {
    Anywhere
  };

  /// Enumerates at once.
  /// @param filter  text that the names contain; null for all names
  TQuorinDirectoryList(TQuorinFilePath directory, const char* filter, eStringLocation location);
  ~TQuorinDirectoryList();
  TQuorinDirectoryList(const TQuorinDirectoryList&) = delete;
  TQuorinDirectoryList& operator=(const TQuorinDirectoryList&) = delete;

  /// Reads the directory again. Names returned before are no longer valid.
  void Reenumerate();

  int GetNumberItems() const { return itemCount_; }
  /// Valid until the next enumeration; null for an index that has no name.
  const char* GetItem(int index) const;

  /// The process's working directory with a separator at its end; "./" when it is unknown, as when it was
  /// deleted.
  static TQuorinFilePath GetCurrentDir();

private:
  using TText = std::unique_ptr<char[]>;

  bool IsListed(const char* name) const;

  TQuorinFilePath directory_;
  TText filter_;
  [[maybe_unused]] eStringLocation location_; // kept as given; a name matches wherever it contains the text
  std::int32_t itemCount_ = 0;
  std::unique_ptr<TText[]> items_;
};

} // namespace QuorinUtility
