// SPDX-License-Identifier: MIT
// Starts the tool, waits for it, reads what it said.
#include "tests/tools/ProgramRunner.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>

namespace vxtool {

namespace {

using Clock = std::chrono::steady_clock;
// How soon an interrupted program has ended, in seconds. A busy machine is allowed for; a run or a wait is not.
constexpr double kPrompt = 5.0;

} // namespace

bool HasGrownTo(const std::string& path, std::uintmax_t bytes)
{
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(path, error);
  return !error && size >= bytes;
}

void ToolProgram::Configure(const std::string& text)
{
  config_ = directory_.File(text, "cameras.ini");
}

pid_t ToolProgram::Launch(std::vector<std::string> arguments, rlim_t fileLimit)
{
  arguments.insert(arguments.begin(), VXTOOL_PROGRAM);
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  const std::string out = directory_.Path("out");
  const std::string err = directory_.Path("err");
  const pid_t child = fork();
  if (child != 0) return child;
  prctl(PR_SET_PDEATHSIG, SIGKILL); // a long recording without anybody to stop it fills the disk
  if (chdir(directory_.Directory().c_str()) != 0) _exit(127);
  setenv("VXCORE_CONFIG", config_.c_str(), 1);
  dup2(open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDOUT_FILENO);
  dup2(open(err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDERR_FILENO);
  if (errorTerminal_ >= 0) dup2(errorTerminal_, STDERR_FILENO);
  const rlimit limit = {fileLimit, fileLimit};
  if (fileLimit != RLIM_INFINITY) setrlimit(RLIMIT_FSIZE, &limit);
  execv(argv[0], argv.data());
  _exit(127);
}

TOutcome ToolProgram::Finish(pid_t child)
{
  TOutcome outcome;
  int status = 0;
  waitpid(child, &status, 0);
  outcome.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + status;
  outcome.output = TextOf(directory_.Path("out"));
  outcome.errors = TextOf(directory_.Path("err"));
  return outcome;
}

pid_t ToolProgram::LaunchUntil(std::vector<std::string> arguments, const std::function<bool()>& condition)
{
  const pid_t child = Launch(std::move(arguments));
  const auto deadline = Clock::now() + std::chrono::seconds(20);
  bool isTrue = condition();
  while (!isTrue && Clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(2)); // a pause between looks
    isTrue = condition();
  }
  EXPECT_TRUE(isTrue) << "what was waited for did not come: " << TextOf(directory_.Path("err"));
  return child;
}

TOutcome ToolProgram::Interrupt(pid_t child)
{
  const auto interrupted = Clock::now();
  kill(child, SIGINT);
  const TOutcome outcome = Finish(child);
  EXPECT_LT(std::chrono::duration<double>(Clock::now() - interrupted).count(), kPrompt);
  EXPECT_EQ(outcome.exitCode, 130) << outcome.errors;
  return outcome;
}

long ToolProgram::Count(const TOutcome& outcome, const std::string& key)
{
  const std::size_t at = outcome.output.find("\"" + key + "\":");
  EXPECT_NE(at, std::string::npos) << key << " in " << outcome.output << outcome.errors;
  return at == std::string::npos ? -1 : std::atol(outcome.output.c_str() + at + key.size() + 3);
}

void ToolProgram::ExpectCountsAddUp(const TOutcome& outcome)
{
  EXPECT_EQ(Count(outcome, "produced"), Count(outcome, "delivered") + Count(outcome, "lost_in_camera"));
  EXPECT_EQ(Count(outcome, "delivered"),
            Count(outcome, "fetched") + Count(outcome, "overwritten") + Count(outcome, "not_fetched"));
  EXPECT_EQ(Count(outcome, "fetched"), Count(outcome, "written") + Count(outcome, "not_written"));
}

} // namespace vxtool
