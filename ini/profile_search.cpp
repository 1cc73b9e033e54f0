// SPDX-License-Identifier: MIT
// The steps of a search through a profile file, character by character.
#include "ini/profile_search.h"

namespace {

/// The next character (0 to 255) or EOF. Only one call uses the stream, so no character needs a lock.
int Next(std::FILE* stream)
{
  return ::getc_unlocked(stream); // NOLINT(concurrency-mt-unsafe)
}

bool ReadName(std::FILE* stream, int end, TProfileText& name)
{
  name.Clear();
  for (int c = Next(stream); c != EOF; c = Next(stream)) {
    if (c == end) return true;
    if (c != ' ') name.Append(c);
  }
  return false;
}

char LowerCase(char c)
{
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Ignores the case of A to Z and of no other letter, in every locale.
bool IsSameName(const char* left, const char* right)
{
  while (*left && LowerCase(*left) == LowerCase(*right)) {
    ++left;
    ++right;
  }
  return LowerCase(*left) == LowerCase(*right);
}

} // namespace

bool NextSection(std::FILE* stream, TProfileText& name)
{
  for (int c = Next(stream); c != EOF; c = Next(stream)) {
    if (c == ';') SkipLine(stream);
    if (c == '[') return ReadName(stream, ']', name);
  }
  return false;
}

int SearchForSection(std::FILE* stream, const char* section)
{
  TProfileText name;
  while (NextSection(stream, name)) {
    if (IsSameName(name.Text(), section)) return kProfileFound;
  }
  return kProfileNotFound;
}

int MoveToNextKey(std::FILE* stream)
{
  for (int c = Next(stream); c != EOF; c = Next(stream)) {
    if (c == ';') {
      SkipLine(stream);
    } else if (c != ' ' && c != '\r' && c != '\n') {
      std::ungetc(c, stream);
      return c == '[' ? kProfileNoMoreKeys : kProfileFound;
    }
  }
  return kProfileNoMoreKeys;
}

bool ReadKeyName(std::FILE* stream, TProfileText& name)
{
  return ReadName(stream, '=', name);
}

int SearchForKey(std::FILE* stream, const char* key)
{
  TProfileText name;
  while (MoveToNextKey(stream) == kProfileFound && ReadKeyName(stream, name)) {
    if (IsSameName(name.Text(), key)) return kProfileFound;
    SkipLine(stream);
  }
  return kProfileNotFound;
}

bool ReadValue(std::FILE* stream, TProfileText& value)
{
  value.Clear();
  for (int c = Next(stream); c != EOF; c = Next(stream)) {
    if (c == '\r' || c == '\n' || c == ';') return true;
    if (c != '"' && c != '\'' && c != ' ') value.Append(c);
  }
  return false;
}

void SkipLine(std::FILE* stream)
{
  for (int c = Next(stream); c != EOF && c != '\n'; c = Next(stream)) {
  }
}
