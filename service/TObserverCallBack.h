// SPDX-License-Identifier: MIT
// A callback of the application as an observer.
#pragma once

#include "utility/TObserver.h"

#include <cstdint>

/// Calls an application's function after changes, with the context that belongs to it. Owned by the camera's list of
/// observers; borrows the context. May be deleted while its function runs.
class TObserverCallBack final : public TObserver
{
public:
  using TFunction = std::uint32_t (*)(void* context);

  TObserverCallBack(TFunction callback, void* context) : callback_(callback), context_(context) {}

  /// Calls the function and returns what it returns; 0 without one.
  unsigned int DoUpdate() override { return callback_ ? callback_(context_) : 0; }
  /// The context, which identifies the callback.
  void* GetObserver() const { return context_; }

private:
  TFunction callback_;
  void* context_;
};
