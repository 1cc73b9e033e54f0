// SPDX-License-Identifier: MIT
// Someone who wants to hear of changes.
#pragma once

/// Is told of the changes of a TSubject that it is registered with, on the thread that makes the change.
class TObserver
{
public:
  virtual ~TObserver();
  virtual unsigned int DoUpdate() = 0;
};
