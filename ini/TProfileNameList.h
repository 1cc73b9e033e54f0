// SPDX-License-Identifier: MIT
// Names of sections or keys in a caller's buffer.
#pragma once

/// Writes names into a caller's buffer, a zero byte behind each and one more behind the last. The buffer is
/// borrowed and has room for 2 characters at least. Reentrant; never fails: a list that does not fit is cut.
class TProfileNameList final
{
public:
  TProfileNameList(char* buffer, unsigned int size);

  /// Appends a name and its zero byte. False when the list is full; the name is then cut and nothing can follow.
  bool Add(const char* name);

  /// Ends the list. Returns one less than the bytes before the last zero byte: callers rely on that count, also on
  /// that of an empty list, which has all bits set. For a list that was cut it is the buffer's size minus 2.
  unsigned int Finish();

private:
  bool Store(char character);

  char* buffer_;
  unsigned int limit_; // the last two bytes are for the zeros that end a list that is cut
  unsigned int position_ = 0;
  bool isCut_ = false;
};
