// SPDX-License-Identifier: MIT
// Runs a program and records its calls.
#include "tools/TTraceRecordCommand.h"

#include "tools/Messages.h"
#include "tools/TraceText.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <set>
#include <sys/file.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace vxtool {

namespace {

constexpr const char* kVariable = "VXMCD_TRACE";
constexpr const char* kSuffix = ".part";
constexpr int kCannotRun = 127; // as a shell has it
constexpr int kSignalled = 128;

volatile std::sig_atomic_t runningProcess = 0;

void PassOn(int signal)
{
  if (runningProcess != 0) kill(static_cast<pid_t>(runningProcess), signal);
}

/// Signals during a run are the program's: those of the terminal reach it anyway, and others are passed on.
class TSignalsOfProgram final
{
public:
  TSignalsOfProgram()
  {
    struct sigaction action
    {
    };
    action.sa_flags = SA_RESTART;
    for (TOld& old : old_) {
      action.sa_handler = old.signal == SIGINT || old.signal == SIGQUIT ? SIG_IGN : PassOn;
      sigaction(old.signal, &action, &old.action);
    }
  }
  ~TSignalsOfProgram() { Restore(); }
  TSignalsOfProgram(const TSignalsOfProgram&) = delete;
  TSignalsOfProgram& operator=(const TSignalsOfProgram&) = delete;

  void Restore()
  {
    for (const TOld& old : old_) sigaction(old.signal, &old.action, nullptr);
  }

private:
  struct TOld
  {
    int signal;
    struct sigaction action;
  };
  TOld old_[4] = {{SIGINT, {}}, {SIGQUIT, {}}, {SIGTERM, {}}, {SIGHUP, {}}};
};

std::string ErrorText(int error)
{
  return std::generic_category().message(error);
}

// Percent signs have a meaning in the variable.
std::string Escaped(const std::string& path)
{
  std::string escaped;
  for (const char c : path) escaped += c == '%' ? std::string("%%") : std::string(1, c);
  return escaped;
}

bool IsTrace(const std::string& path)
{
  std::ifstream file(path, std::ios::binary);
  char magic[sizeof TraceFormat::kFileMagic] = {};
  file.read(magic, sizeof magic);
  return file && std::equal(std::begin(magic), std::end(magic), std::begin(TraceFormat::kFileMagic));
}

// A process may go on in the background, and write what is here read and cut.
bool IsWritten(const std::string& path)
{
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return false;
  const bool isFree = flock(file, LOCK_SH | LOCK_NB) == 0;
  close(file);
  return !isFree;
}

std::string Summary(const TTraceFile& file)
{
  const auto count = [&](auto condition) {
    return std::count_if(file.Calls().begin(), file.Calls().end(), condition);
  };
  const auto isOfProgram = [](const TTraceCall& call) { return call.function->isApi && call.depth == 0; };
  std::set<std::uint32_t> threads; // of the program
  for (const TTraceCall& call : file.Calls())
    if (isOfProgram(call)) threads.insert(call.thread);
  const auto failed = count([&](const TTraceCall& call) { return isOfProgram(call) && call.HasFailed(); });
  std::string text = CountText(count(isOfProgram), "call") + " of " + file.Fact("program") + " in " +
                     CountText(static_cast<long long>(threads.size()), "thread") + ", " + std::to_string(failed) +
                     " failed";
  const auto open =
      count([&](const TTraceCall& call) { return isOfProgram(call) && call.state == CallState::Open; });
  if (open > 0) text += ", " + std::to_string(open) + " did not return";
  if (file.DroppedChunks() > 0) text += "; the middle was dropped, see --limit";
  return text;
}

} // namespace

ExitCode TTraceRecordCommand::Run()
{
  const std::string name = options_.output.empty()
                               ? std::filesystem::path(options_.program.front()).filename().string() + ".vxtr"
                               : options_.output;
  if (name.find(',') != std::string::npos)
    return Fail(ExitCode::Usage, "--output: " + name + ": the name of a trace cannot have a comma");
  std::error_code error;
  file_ = std::filesystem::absolute(name, error).string();
  if (std::filesystem::exists(file_, error) && !IsTrace(file_))
    return Fail(ExitCode::OutputError, name + ": exists and is no trace");
  if (access(std::filesystem::path(file_).parent_path().c_str(), W_OK) != 0)
    return Fail(ExitCode::OutputError, name + ": cannot be written: " + ErrorText(errno));

  for (const std::string& part : Parts())
    if (!IsWritten(part)) std::filesystem::remove(part, error); // of an earlier run that was killed
  const int status = RunProgram();
  if (status < 0) return static_cast<ExitCode>(kCannotRun);
  Finish(Parts());
  return static_cast<ExitCode>(status);
}

int TTraceRecordCommand::RunProgram() const
{
  std::vector<char*> words;
  for (const std::string& word : options_.program) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  int report[2];
  if (pipe2(report, O_CLOEXEC) != 0) {
    Say(options_.program.front() + ": cannot be run: " + ErrorText(errno));
    return -1;
  }
  TSignalsOfProgram signals;
  const pid_t process = fork();
  if (process == 0) {
    signals.Restore();
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the child has one thread
    setenv(kVariable, (Escaped(file_) + ".%p" + kSuffix + options_.recorderOptions).c_str(), 1);
    execvp(words.front(), words.data());
    const int error = errno;
    [[maybe_unused]] const ssize_t written = write(report[1], &error, sizeof error);
    _exit(kCannotRun);
  }
  runningProcess = process;
  int error = process < 0 ? errno : 0;
  close(report[1]);
  if (process > 0) [[maybe_unused]]
    const ssize_t size = read(report[0], &error, sizeof error);
  close(report[0]);
  int status = 0;
  while (process > 0 && waitpid(process, &status, 0) < 0 && errno == EINTR) {
  }
  runningProcess = 0;
  if (error != 0) {
    Say(options_.program.front() + ": cannot be run: " + ErrorText(error));
    return -1;
  }
  if (!WIFSIGNALED(status)) return WEXITSTATUS(status);
  const char* const name = sigdescr_np(WTERMSIG(status));
  Say(options_.program.front() + ": ended by signal " + std::to_string(WTERMSIG(status)) +
      (name ? std::string(", ") + name : ""));
  return kSignalled + WTERMSIG(status);
}

// The files that the processes have made.
std::vector<std::string> TTraceRecordCommand::Parts() const
{
  const std::filesystem::path path(file_);
  const std::string begin = path.filename().string() + ".";
  std::vector<std::string> parts;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(path.parent_path(), error)) {
    const std::string name = entry.path().filename().string();
    if (!name.starts_with(begin) || !name.ends_with(kSuffix)) continue;
    const std::string number = name.substr(begin.size(), name.size() - begin.size() - std::string(kSuffix).size());
    if (!number.empty() && number.find_first_not_of("0123456789") == std::string::npos)
      parts.push_back(entry.path().string());
  }
  return parts;
}

// The first one has the name that was asked for; "name-2.vxtr" is the next one.
std::string TTraceRecordCommand::NameOf(std::size_t index) const
{
  if (index == 0) return file_;
  std::filesystem::path path(file_);
  return path.replace_filename(path.stem().string() + "-" + std::to_string(index + 1) + path.extension().string())
      .string();
}

void TTraceRecordCommand::Finish(const std::vector<std::string>& parts) const
{
  struct TTrace
  {
    std::string part;
    std::uint64_t start;
    std::string summary;
  };
  std::vector<TTrace> traces;
  for (const std::string& part : parts) {
    TTraceFile file;
    if (IsWritten(part)) {
      Say(part + ": a process still writes it");
    } else if (ReadTrace(file, part)) {
      if (truncate(part.c_str(), static_cast<off_t>(file.UsedBytes())) != 0) Say(part + ": " + ErrorText(errno));
      traces.push_back({part, file.StartUtcNs(), Summary(file)});
    }
  }
  if (parts.empty())
    Say(options_.program.front() + ": made no trace: it has not loaded libvxmcd.so.3, or one without call traces");
  std::sort(traces.begin(), traces.end(), [](const TTrace& a, const TTrace& b) { return a.start < b.start; });
  std::size_t index = 0;
  for (const TTrace& trace : traces) {
    std::error_code error;
    std::string name = NameOf(index++);
    while (std::filesystem::exists(name, error) && !IsTrace(name)) name = NameOf(index++);
    std::filesystem::rename(trace.part, name, error);
    if (error) Say(name + ": " + error.message());
    Say((error ? trace.part : std::filesystem::proximate(name, error).string()) + ": " + trace.summary);
  }
}

} // namespace vxtool
