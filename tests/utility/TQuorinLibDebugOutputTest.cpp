// SPDX-License-Identifier: MIT
// The diagnostic log: its switch, its lines, and what it must leave alone.
#include "utility/TQuorinLibDebugOutput.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>
#include <vector>

using QuorinUtility::TQuorinLibDebugOutput;
using testing::HasSubstr;

namespace {

class QuorinLibDebugOutput : public testing::Test
{
protected:
  void SetUp() override { std::filesystem::remove_all(path_); }
  void TearDown() override
  {
    TQuorinLibDebugOutput::Configure(nullptr);
    std::filesystem::remove_all(path_);
  }

  bool LogToFile(const std::string& level) const
  {
    return TQuorinLibDebugOutput::Configure((level + ":" + path_).c_str());
  }

  std::vector<std::string> Lines() const
  {
    std::ifstream file(path_);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
  }

  const std::string path_ = testing::TempDir() + "vxmcd_log_" + std::to_string(getpid());
};

void LogEverySeverity()
{
  for (const auto severity : {TQuorinLibDebugOutput::Error, TQuorinLibDebugOutput::Warning,
                              TQuorinLibDebugOutput::Info, TQuorinLibDebugOutput::Debug})
    TQuorinLibDebugOutput::Output("x.cpp", 1, "f", severity, "severity %d", static_cast<int>(severity));
}

/// Runs one test of this program under a setting of the log; returns its standard error.
std::string RunUnder(const std::string& setting, const std::string& test)
{
  const std::string self = std::filesystem::read_symlink("/proc/self/exe");
  const std::string command =
      "VXMCD_LOG='" + setting + "' '" + self + "' --gtest_filter=" + test + " 2>&1 >/dev/null";
  std::string text;
  FILE* pipe = popen(command.c_str(), "r");
  if (!pipe) return "popen failed";
  for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) text += static_cast<char>(c);
  pclose(pipe);
  return text;
}

constexpr const char* kTestThatLogsAnError = "QuorinWorkThread.CreationFailureIsKnownAndNotJoined";

} // namespace

TEST_F(QuorinLibDebugOutput, WritesItsLevelAndTheMoreSevereOnes)
{
  std::size_t expected = 0;
  for (const char* level : {"error", "warning", "info", "debug"}) {
    ASSERT_TRUE(LogToFile(level));
    const std::size_t before = Lines().size();
    LogEverySeverity();
    EXPECT_EQ(Lines().size() - before, ++expected) << level; // appended to what is there
  }
  ASSERT_TRUE(TQuorinLibDebugOutput::Configure("off"));
  LogEverySeverity();
  EXPECT_EQ(Lines().size(), 10u);
}

TEST_F(QuorinLibDebugOutput, LineHasTimeThreadLevelPlaceAndText)
{
  ASSERT_TRUE(LogToFile("info"));
  TQuorinLibDebugOutput::Output("/some/where/x.cpp", 7, "Open", "cannot open \"%s\"\n", "a\nb");
  TQuorinLibDebugOutput::OutputText("x.cpp", 8, "Open", TQuorinLibDebugOutput::Info, "100%s ready");
  TQuorinLibDebugOutput::OutputText(nullptr, 9, nullptr, TQuorinLibDebugOutput::Warning, nullptr);
  TQuorinLibDebugOutput::Output("x.cpp", 10, "f", "%s", std::string(5000, 'x').c_str());
  const std::vector<std::string> lines = Lines();
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_THAT(lines[0],
              testing::MatchesRegex("[0-9]+-[0-9]+-[0-9]+T[0-9]+:[0-9]+:[0-9]+\\.[0-9]+Z " +
                                    std::to_string(gettid()) + " error x\\.cpp:7 Open cannot open \"a b\""));
  EXPECT_THAT(lines[1], HasSubstr(" info x.cpp:8 Open 100%s ready"));
  EXPECT_THAT(lines[2], HasSubstr(" warning ?:9 ? "));
  EXPECT_THAT(lines[3], testing::EndsWith("xxx..."));
}

TEST_F(QuorinLibDebugOutput, FailingToWriteLeavesErrnoAlone)
{
  ASSERT_TRUE(TQuorinLibDebugOutput::Configure("error:/dev/full"));
  errno = ENOENT;
  TQuorinLibDebugOutput::Output("x.cpp", 1, "f", "no room for this");
  EXPECT_EQ(errno, ENOENT);
}

TEST_F(QuorinLibDebugOutput, SettingOfNoUseIsReportedOnceAndLeavesTheLogOff)
{
  for (const char* setting : {"loud", "error:", ":stderr", "error:/nonexistent/directory/log", "Error"}) {
    testing::internal::CaptureStderr();
    EXPECT_FALSE(TQuorinLibDebugOutput::Configure(setting));
    LogEverySeverity();
    const std::string text = testing::internal::GetCapturedStderr();
    EXPECT_THAT(text, testing::StartsWith("vxmcd: VXMCD_LOG")) << setting;
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
  }
}

TEST_F(QuorinLibDebugOutput, EnvironmentSwitchesItWhenTheProgramStarts)
{
  EXPECT_EQ(RunUnder("error:" + path_, kTestThatLogsAnError), "");
  ASSERT_EQ(Lines().size(), 1u);
  EXPECT_THAT(Lines()[0], HasSubstr("cannot create thread unmade"));
  EXPECT_THAT(RunUnder("warning", kTestThatLogsAnError), HasSubstr("cannot create thread unmade"));
  EXPECT_THAT(RunUnder("verbose", kTestThatLogsAnError),
              testing::StartsWith("vxmcd: VXMCD_LOG=\"verbose\" is not"));
  EXPECT_EQ(RunUnder("", kTestThatLogsAnError), "");
}

TEST_F(QuorinLibDebugOutput, LinesOfSeveralThreadsStayWhole)
{
  ASSERT_TRUE(LogToFile("debug"));
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([] {
      for (int j = 0; j < 200; ++j)
        TQuorinLibDebugOutput::Output("x.cpp", 1, "f", TQuorinLibDebugOutput::Debug, "<%s>",
                                      std::string(300, 'x').c_str());
    });
  ASSERT_TRUE(LogToFile("debug")); // may be switched while others write
  for (std::thread& thread : threads) thread.join();
  const std::vector<std::string> lines = Lines();
  EXPECT_FALSE(lines.empty());
  for (const std::string& line : lines) EXPECT_THAT(line, testing::EndsWith(" f <" + std::string(300, 'x') + ">"));
}
