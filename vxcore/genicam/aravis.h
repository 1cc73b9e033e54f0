// SPDX-License-Identifier: MIT
// Aravis, and owners of its objects, memory and errors.
#pragma once

#include <arv.h>

#include <memory>
#include <string>

namespace vxgenicam {

struct TUnref
{
  void operator()(gpointer object) const { g_object_unref(object); }
};
struct TFree
{
  void operator()(gpointer memory) const { g_free(memory); }
};

/// Owns one reference to a GObject.
template <typename Object>
using TObject = std::unique_ptr<Object, TUnref>;
/// Owns memory of GLib.
template <typename Type>
using TMemory = std::unique_ptr<Type, TFree>;

/// The error of a call into Aravis.
class TError final
{
public:
  TError() = default;
  ~TError() { g_clear_error(&error_); }
  TError(const TError&) = delete;
  TError& operator=(const TError&) = delete;
  /// The argument of the call.
  GError** Out()
  {
    g_clear_error(&error_);
    return &error_;
  }

  bool IsSet() const { return error_ != nullptr; }
  std::string Text() const { return error_ ? error_->message : ""; }
  /// The `VX_` code that the calls of vxcore.h answer for it; #VX_SUCCESS without an error.
  int Code() const;
  /// Whether the camera has not answered, for which Aravis waits some seconds.
  bool IsTimeout() const;

private:
  GError* error_ = nullptr;
};

} // namespace vxgenicam
