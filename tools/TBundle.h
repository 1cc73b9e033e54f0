// SPDX-License-Identifier: MIT
// A compressed archive of reports, to send to somebody.
#pragma once

#include "tools/TRedaction.h"
#include "trace/TTraceFile.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

struct archive;

namespace vxtool {

/// Makes a .tar.gz file that only its owner may read, and adds a list of its files with their SHA-256 at the end. Names,
/// paths and serial numbers are replaced, by the same words in all files. The file has its name only when Close() has
/// succeeded. One thread. Create() and Close() return false on failure; Error() says why.
class TBundle final
{
public:
  explicit TBundle(bool keepsNames) : keepsNames_(keepsNames), redaction_(TRedaction::OfThisMachine()) {}
  ~TBundle();
  TBundle(const TBundle&) = delete;
  TBundle& operator=(const TBundle&) = delete;

  /// An existing file is not replaced.
  bool Create(const std::string& path);
  /// For what is known to be somebody's business alone.
  TRedaction& Redaction() { return redaction_; }
  /// Adds a file; an empty one is left out.
  void Add(const std::string& name, std::string text);
  /// Adds a call trace. Why it cannot be read; "" when it can.
  std::string AddTrace(const std::string& name, const std::string& path);
  /// Writes what was added and manifest.json, and gives the file its name.
  bool Close();

  /// Says what is in it, and how to look through it.
  void SayContents() const;
  const std::string& Error() const { return error_; }

private:
  struct TEntry
  {
    std::string name;
    std::string text;
    std::unique_ptr<TTraceFile> trace; ///< in place of a text
  };

  bool Fail(const std::string& reason);
  bool FailToWrite();
  bool Write(const std::string& name, const std::string& text);
  void Redact();

  const bool keepsNames_;
  TRedaction redaction_;
  std::string path_;
  std::string temporary_;
  archive* archive_ = nullptr;
  std::vector<TEntry> entries_;
  std::string error_;
};

} // namespace vxtool
