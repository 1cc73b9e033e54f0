// SPDX-License-Identifier: MIT
// Shared libraries that are loaded by name.
#pragma once

#include "utility/TQuorinFilePath.h"

#include <array>
#include <memory>

namespace QuorinUtility {

/// Opens one shared library by name, first in a directory and then, unless that is ruled out, through the system's
/// own search, and looks up its symbols. Owned by whoever needs the library, who closes it before destroying the
/// object: the destructor leaves it open. A process that has more rights than its user (a set-user-ID program) opens
/// nothing from a directory, only what the system's own search finds. One object belongs to one thread at a time.
/// Failures are answers, with the loader's text kept for GetErrorMessage(); nothing is thrown or logged.
class TQuorinDynamicLoader final
{
public:
  /// What Open() answers.
  enum EStatus
  {
    kOpen = 0,
    kNotInDirectory = 1,
    kRefused = 2,
  };

  static constexpr const char* NO_ERROR_MSG = "No Error";

  /// Opens nothing yet.
  /// @param library        the library's file name
  /// @param directory      where it is looked for first; null for "./"
  /// @param directoryOnly  whether it must be found there
  TQuorinDynamicLoader(TQuorinFilePath library, const TQuorinFilePath* directory, bool directoryOnly);
  ~TQuorinDynamicLoader() = default;
  TQuorinDynamicLoader(const TQuorinDynamicLoader&) = delete;
  TQuorinDynamicLoader& operator=(const TQuorinDynamicLoader&) = delete;

  /// Functions that the library needs of others are looked up when they are first called. Once open, it answers 0
  /// for good, also after Close(): a closed library is not opened again.
  int Open();
  /// The address of a symbol; null when there is none and while no library is open.
  void* GetFunction(const char* symbol) const;
  /// Returns 0, also when nothing is open.
  int Close();

  /// NO_ERROR_MSG or the loader's last error, 255 characters at most.
  const char* GetErrorMessage() const { return errorMessage_.data(); }
  /// Copies the loader's error of this thread. Returns 0.
  int updateErrorMessage();

private:
  void SetErrorMessage(const char* text);

  std::unique_ptr<TQuorinFilePath> library_;
  void* handle_ = nullptr;
  std::unique_ptr<TQuorinFilePath> directory_;
  bool directoryOnly_;
  std::array<char, 257> errorMessage_{};
  bool isClosed_ = false; // the handle stays as a mark, but is of no use any more
};

} // namespace QuorinUtility
