// SPDX-License-Identifier: MIT
// Lets several threads use a camera each.
#pragma once

namespace vxtool {

/// For its lifetime, calls of the library that this thread makes act on one camera: the library has one current camera in a
/// process, so threads take turns. One of the same camera may be made within another; keep waits out of it.
class TCameraTurn final
{
public:
  /// @param handle  of the camera
  explicit TCameraTurn(long handle);
  ~TCameraTurn();
  TCameraTurn(const TCameraTurn&) = delete;
  TCameraTurn& operator=(const TCameraTurn&) = delete;

  /// The library's answer. Unless it is #RC_SUCCESS another camera is the current one: then make no call.
  unsigned int Code() const { return code_; }

private:
  unsigned int code_;
};

} // namespace vxtool
