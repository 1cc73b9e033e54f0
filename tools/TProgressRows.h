// SPDX-License-Identifier: MIT
// Shows the progress of several cameras.
#pragma once

#include <cstddef>
#include <cstdio>
#include <mutex>
#include <string>
#include <vector>

namespace vxtool {

/// On a terminal a row for each camera, which is rewritten in place, and messages above the rows; elsewhere, and on a terminal
/// that is too low for them, lines below each other. Borrows the stream. Thread-safe.
class TProgressRows final
{
public:
  /// @param names  of the cameras; each text of a row stands behind its name
  TProgressRows(std::FILE* stream, bool isTerminal, std::vector<std::string> names);

  void Show(std::size_t row, const std::string& text);
  /// Takes a row away, until it is shown again.
  void Remove(std::size_t row);
  /// Writes to any stream without mixing it with the rows.
  /// @return  whether it was written
  bool Write(std::FILE* stream, const std::string& text);
  const std::string& Name(std::size_t row) const { return names_[row]; }

private:
  void GoToFirst();
  void Erase();
  void Draw();

  std::mutex mutex_;
  std::FILE* const stream_;
  const bool isTerminal_;
  const std::vector<std::string> names_;
  std::vector<std::string> texts_; // guarded by mutex_; "": there is no row
  std::size_t drawnRows_ = 0;      // guarded by mutex_
};

/// What of a text fits into a line of the terminal; all of it when its width is not known.
std::string FittingText(std::FILE* terminal, const std::string& text);

} // namespace vxtool
