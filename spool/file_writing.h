// SPDX-License-Identifier: MIT
// Writing to files without surprises.
#pragma once

#include <cstddef>
#include <cstdint>

/// Writes all bytes, however often the system call has to be repeated. Returns 0, or the errno value of the write
/// that failed.
int WriteAll(int descriptor, const void* data, std::size_t size, std::uint64_t offset);

/// Whether an errno value says that the file system has no such operation, rather than that it failed.
bool IsUnsupported(int error);

/// EFBIG when a file of @p size bytes is beyond the process's limit for the size of files, else 0. Asked
/// beforehand, since going beyond it may end the process by a signal.
int CheckFileSizeLimit(std::uint64_t size);
