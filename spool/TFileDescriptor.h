// SPDX-License-Identifier: MIT
// An open file.
#pragma once

#include <unistd.h>
#include <utility>

/// Owns a file descriptor, or none (-1). Reentrant.
class TFileDescriptor final
{
public:
  TFileDescriptor() = default;
  explicit TFileDescriptor(int descriptor) : descriptor_(descriptor) {}
  TFileDescriptor(TFileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  TFileDescriptor& operator=(TFileDescriptor&& other) noexcept
  {
    if (this != &other) {
      Close();
      descriptor_ = std::exchange(other.descriptor_, -1);
    }
    return *this;
  }
  ~TFileDescriptor() { Close(); }

  int Get() const { return descriptor_; }
  bool IsOpen() const { return descriptor_ >= 0; }

  /// Returns what close() says, 0 when nothing was open.
  int Close() { return descriptor_ < 0 ? 0 : close(std::exchange(descriptor_, -1)); }

private:
  int descriptor_ = -1;
};
