// SPDX-License-Identifier: MIT
// Opening files to read them to their end or to replace them.
#pragma once

#include <cstdio>
#include <memory>

struct TFileCloser
{
  void operator()(std::FILE* file) const { std::fclose(file); }
};

/// An open file that closes itself; null for none.
using TOpenFile = std::unique_ptr<std::FILE, TFileCloser>;

/// Opens a file for reading. Only a regular file: a directory has no text, and a pipe or a device may never end.
/// Returns null for anything else, and never waits for a writer.
TOpenFile OpenRegularFile(const char* fileName);

/// Opens a file for writing, empty. Only a regular file, as above. Returns null, with errno set, for anything
/// else.
TOpenFile CreateRegularFile(const char* fileName);
