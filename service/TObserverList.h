// SPDX-License-Identifier: MIT
// The callbacks that an application has registered for a camera's potentiometers.
#pragma once

#include "service/TObserverCallBack.h"

#include <list>
#include <memory>

class TSubject;

/// Owns the callbacks that are registered with a subject. Owned by the camera's record; borrows the subject, which
/// must outlive its use. Not synchronised. Callbacks may register and unregister, themselves included, while they
/// are notified.
class TObserverList final
{
public:
  explicit TObserverList(TSubject* subject) : subject_(subject) {}

  /// Registers a callback, even when the subject is full and will not call it.
  void Register(TObserverCallBack::TFunction callback, void* context);
  /// Deletes every callback with this context.
  void Unregister(const void* context);

private:
  std::list<std::unique_ptr<TObserverCallBack>> callbacks_;
  TSubject* subject_;
};
