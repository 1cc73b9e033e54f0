// SPDX-License-Identifier: MIT
// Receiver of change notifications.
#pragma once

/// Is notified of changes of the subjects (TSubject) that it is registered with, on the thread that makes the change.
class TObserver
{
public:
  virtual ~TObserver() = default;
  virtual unsigned int DoUpdate() = 0;
};
