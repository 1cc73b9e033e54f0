// SPDX-License-Identifier: MIT
// The callbacks that an application has registered for a camera's potentiometers.
#include "service/TObserverList.h"

#include "utility/TSubject.h"

void TObserverList::Register(TObserverCallBack::TFunction callback, void* context)
{
  callbacks_.push_back(std::make_unique<TObserverCallBack>(callback, context));
  subject_->RegisterObserver(callbacks_.back().get());
}

void TObserverList::Unregister(const void* context)
{
  callbacks_.remove_if([this, context](const std::unique_ptr<TObserverCallBack>& callback) {
    if (callback->GetObserver() != context) return false;
    subject_->RemoveObserver(callback.get());
    return true;
  });
}
