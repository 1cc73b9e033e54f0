// SPDX-License-Identifier: MIT
// Storage for objects that outlive every thread.
#pragma once

/// Storage for an object that outlives every thread of the process: constructed at load, never destroyed, so that
/// a program may end in the middle of a run.
template <class T>
union TNeverDestroyed
{
  TNeverDestroyed() : object() {}
  ~TNeverDestroyed() {}
  T object;
};
