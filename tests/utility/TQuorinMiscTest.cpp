// SPDX-License-Identifier: MIT
// Bounded strings, sleeping under signals, and UTF-8.
#include "utility/TQuorinMisc.h"

#include "tests/utility/SystemCalls.h"
#include "utility/utf8.h"

#include <atomic>
#include <csignal>
#include <gtest/gtest.h>
#include <pthread.h>
#include <string>

using QuorinUtility::TQuorinMisc;

TEST(QuorinMisc, CopiesAtMostSizeLessOneAndTerminates)
{
  char buffer[] = "########";
  EXPECT_EQ(TQuorinMisc::strncpy(buffer, "abcdef", 4), buffer);
  EXPECT_EQ(std::string(buffer, sizeof buffer), std::string("abc\0####\0", 9));
  EXPECT_STREQ(TQuorinMisc::strncpy(buffer, "abc", sizeof buffer), "abc");
  const char unterminated[] = {'x', 'y', 'z'};
  EXPECT_STREQ(TQuorinMisc::strncpy(buffer, unterminated, 4), "xyz");
  EXPECT_STREQ(TQuorinMisc::strncpy(buffer, "left alone", 0), "xyz");
  EXPECT_STREQ(TQuorinMisc::strncpy(buffer, nullptr, 4), "");
}

TEST(QuorinMisc, FormatsWithinTheBufferAndTerminates)
{
  char text[] = "########";
  EXPECT_EQ(TQuorinMisc::snprintf(text, 4, "%d", 12345), 5);
  EXPECT_EQ(std::string(text, sizeof text), std::string("123\0####\0", 9));
  EXPECT_EQ(TQuorinMisc::snprintf(text, sizeof text, "%dx%d", 4, 4), 3);
  EXPECT_STREQ(text, "4x4");

  wchar_t wide[] = L"########";
  EXPECT_EQ(TQuorinMisc::snwprintf(wide, 8, L"%dx%d", 16, 16), 5);
  EXPECT_STREQ(wide, L"16x16");
  EXPECT_EQ(TQuorinMisc::snwprintf(wide, 4, L"%d", 12345), -1);
  EXPECT_EQ(wide[3], L'\0');
  EXPECT_EQ(wide[8], L'\0');
  EXPECT_EQ(TQuorinMisc::snwprintf(wide, 8, L"ab%s", "\xff\xfe"), -1); // no such multibyte text
  EXPECT_LE(std::wstring(wide), L"ab");
}

TEST(QuorinMisc, SleepLastsItsTimeWhateverSignalsArrive)
{
  static std::atomic<int> handled{0};
  struct sigaction action = {};
  struct sigaction before = {};
  action.sa_handler = [](int) { ++handled; };
  sigaction(SIGUSR1, &action, &before);
  std::atomic<bool> awake{false};
  std::thread disturber([&, sleeper = pthread_self()] {
    while (!awake) {
      pthread_kill(sleeper, SIGUSR1);
      std::this_thread::sleep_for(std::chrono::milliseconds(1)); // a rate of signals, waits for nothing
    }
  });
  const auto begin = std::chrono::steady_clock::now();
  TQuorinMisc::Sleep(60);
  const auto slept = std::chrono::steady_clock::now() - begin;
  awake = true;
  disturber.join();
  sigaction(SIGUSR1, &before, nullptr);
  EXPECT_GE(slept, std::chrono::milliseconds(60));
  EXPECT_GT(handled, 0);
}

TEST(Utf8, OfEveryLengthIsReadBackAndBrokenBytesAreMarked)
{
  const std::wstring text = L"a\u00B5\u20AC\U0001F52C";
  EXPECT_EQ(ToUtf8(text), "a\xC2\xB5\xE2\x82\xAC\xF0\x9F\x94\xAC");
  EXPECT_EQ(FromUtf8(ToUtf8(text)), text);
  EXPECT_EQ(ToUtf8(std::wstring(1, static_cast<wchar_t>(0xD800))), "\xEF\xBF\xBD");
  // Latin-1, too long, cut off, a surrogate.
  for (const char* bytes : {"\xB5", "\xC0\x80", "\xE2\x82", "\xED\xA0\x80"})
    EXPECT_EQ(FromUtf8(std::string(bytes) + "b"), std::wstring(std::string_view(bytes).size(), L'?') + L"b");
}
