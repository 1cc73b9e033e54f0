// SPDX-License-Identifier: MIT
// Names of sections or keys in a caller's buffer.
#include "ini/TProfileNameList.h"

TProfileNameList::TProfileNameList(char* buffer, unsigned int size) : buffer_(buffer), limit_(size - 2) {}

bool TProfileNameList::Add(const char* name)
{
  for (; *name; ++name) {
    if (!Store(*name)) return false;
  }
  return Store('\0');
}

unsigned int TProfileNameList::Finish()
{
  if (isCut_) return limit_;
  buffer_[position_] = '\0';
  return position_ - 1;
}

bool TProfileNameList::Store(char character)
{
  if (position_ >= limit_) {
    buffer_[limit_] = '\0';
    buffer_[limit_ + 1] = '\0';
    isCut_ = true;
    return false;
  }
  buffer_[position_++] = character;
  return true;
}
