// SPDX-License-Identifier: MIT
// Options for the files that images are written to.
#pragma once

#include "tools/OptionKinds.h"
#include "tools/Options.h"

#include <map>
#include <string>

namespace vxtool {

/// The formats of a command, and the endings of names that stand for them.
struct TFormats
{
  TWords<FileFormat> words;
  std::map<std::string, FileFormat> suffixes;
  std::string suffixText; ///< for a message: ".tif or .fits"
};

/// What all commands that write images have in common.
void AddImageFileOptions(CLI::App& app, TOutputOptions& output, const std::string& group);
/// Finds the format of an output file by its name unless it was given. Returns what is wrong, "" for nothing.
std::string CompleteOutput(TOutputOptions& output, const TFormats& formats);
/// The output file as a report names it: "run-*.fits" when each of these images has its own.
std::string FilesText(const TOutputOptions& output, long images);

} // namespace vxtool
