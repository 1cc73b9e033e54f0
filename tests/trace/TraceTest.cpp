// SPDX-License-Identifier: MIT
// What is in the trace of a program, however it ends and whatever happens to its file.
#include "tests/support/TScratchDirectory.h"
#include "trace/TTraceFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr int kCallsOfAThread = 20'000; // of the program

/// How the traced program ended.
struct TEnding
{
  int status = -1;
  std::string errors; ///< what it said on standard error
};

class Trace : public ::testing::Test
{
protected:
  std::string Path(const std::string& name = "trace.vxtr") const { return scratch_.Path(name); }

  /// Starts the program with the trace in Path(); @p options follow the file's name.
  pid_t Start(const std::vector<std::string>& arguments, const std::string& options = "",
              rlim_t fileLimit = 0) const
  {
    const pid_t child = fork();
    if (child != 0) return child;
    const int errors = open(Path("errors").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    dup2(errors, STDERR_FILENO);
    const rlimit limit{fileLimit, fileLimit};
    if (fileLimit != 0) setrlimit(RLIMIT_FSIZE, &limit);
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    setenv("VXMCD_TRACE", (Path() + options).c_str(), 1);
    setenv("HOME", scratch_.Directory().c_str(), 1);
    std::vector<char*> words = {const_cast<char*>(TRACED_PROGRAM)};
    for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    execv(TRACED_PROGRAM, words.data());
    _exit(127);
  }

  TEnding EndOf(pid_t process) const
  {
    TEnding ending;
    waitpid(process, &ending.status, 0);
    ending.errors = TextOf(Path("errors"));
    return ending;
  }

  TEnding Run(const std::vector<std::string>& arguments, const std::string& options = "",
              rlim_t fileLimit = 0) const
  {
    return EndOf(Start(arguments, options, fileLimit));
  }

  /// Waits until the trace has calls.
  void AwaitTrace() const
  {
    for (TTraceFile file; !std::filesystem::exists(Path()) || !file.Read(Path()).empty() || file.Calls().empty();
         file = TTraceFile())
      std::this_thread::yield();
  }

  TTraceFile Read(const std::string& name = "trace.vxtr") const
  {
    TTraceFile file;
    EXPECT_EQ(file.Read(Path(name)), "");
    return file;
  }

  /// The arguments of the calls that say which they are, in their order.
  static std::vector<std::int64_t> Numbers(const TTraceFile& file, std::uint32_t thread = 0)
  {
    std::vector<std::int64_t> numbers;
    for (const TTraceCall& call : file.Calls())
      if (call.function->name == "IsAmplifierAvailable" && (thread == 0 || call.thread == thread))
        numbers.push_back(call.Values()[0].whole);
    return numbers;
  }

  static std::vector<std::int64_t> Range(std::int64_t count)
  {
    std::vector<std::int64_t> range(static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < range.size(); ++i) range[i] = static_cast<std::int64_t>(i);
    return range;
  }

  TScratchDirectory scratch_;
};

} // namespace

TEST_F(Trace, IsWholeHoweverTheProgramEnds)
{
  const std::map<std::string, int> ways = {{"calls", 0}, {"_exit", 0}, {"abort", SIGABRT}, {"crash", SIGSEGV}};
  for (const auto& [way, signal] : ways) {
    SCOPED_TRACE(way);
    const TEnding ending = Run({way, "3000"});
#ifndef VXMCD_SANITIZED
    EXPECT_EQ(WIFSIGNALED(ending.status) ? WTERMSIG(ending.status) : 0, signal);
#endif
    const TTraceFile file = Read();
    EXPECT_EQ(Numbers(file), Range(3000));
    const TTraceCall& last = file.Calls().back();
    EXPECT_EQ(last.state, way == "crash" ? CallState::Open : CallState::Ended);
    EXPECT_EQ(last.function->name, way == "crash" ? "GetVersionInfo" : "IsAmplifierAvailable");
    EXPECT_EQ(last.Code(), way == "crash" ? 0U : 20075U); // no camera is open
  }
  const TTraceFile file = Read();
  EXPECT_EQ(file.Fact("program"), "traced_program");
  EXPECT_THAT(file.Fact("feature_library"), HasSubstr("libvxcore.so.3"));
  struct stat status
  {
  };
  ASSERT_EQ(stat(Path().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(Trace, HasEverythingUpToAKill)
{
  std::mt19937 random(7);
  for (int i = 0; i < 12; ++i) {
    const pid_t process = Start({"forever"});
    AwaitTrace();
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 5000));
    kill(process, SIGKILL);
    EndOf(process);
    const TTraceFile file = Read();
    std::filesystem::remove(Path());
    ASSERT_FALSE(file.Calls().empty());
    for (const auto& thread : file.Threads()) {
      const auto numbers = Numbers(file, thread.number);
      EXPECT_EQ(numbers, Range(static_cast<std::int64_t>(numbers.size())));
    }
    std::map<std::uint32_t, int> open;
    for (const TTraceCall& call : file.Calls()) open[call.thread] += call.state == CallState::Open ? 1 : 0;
    for (const auto& [thread, count] : open) EXPECT_LE(count, 1) << thread;
  }
}

TEST_F(Trace, KeepsTheCallsOfThreadsApart)
{
  Run({"threads", "8"}, ",api");
  const TTraceFile file = Read();
  ASSERT_EQ(file.Threads().size(), 8U);
  EXPECT_EQ(file.Calls().size(), 8U * kCallsOfAThread);
  EXPECT_EQ(file.DroppedCalls(), 0U);
  for (const auto& thread : file.Threads()) {
    auto numbers = Numbers(file, thread.number);
    const std::int64_t first = numbers.empty() ? 0 : numbers.front();
    EXPECT_EQ(first % kCallsOfAThread, 0);
    for (std::int64_t& number : numbers) number -= first;
    EXPECT_EQ(numbers, Range(kCallsOfAThread));
  }
}

TEST_F(Trace, KeepsBeginningAndEndWithinItsLimit)
{
  constexpr int kCalls = 100'000; // about 6 MB
  const auto expectEnds = [](const TTraceFile& file) {
    const auto numbers = Numbers(file);
    ASSERT_FALSE(numbers.empty());
    EXPECT_LT(numbers.size(), std::size_t{kCalls});
    EXPECT_GT(file.DroppedChunks(), 0U);
    EXPECT_EQ(std::vector(numbers.begin(), numbers.begin() + 1000), Range(1000));
    EXPECT_EQ(numbers.back(), kCalls - 1);
    EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
    for (const TTraceCall& call : file.Calls()) EXPECT_NE(call.state, CallState::Open);
  };
  const TEnding limited = Run({"calls", std::to_string(kCalls)}, ",limit=2M");
  EXPECT_EQ(limited.errors, "");
  expectEnds(Read());
  EXPECT_LT(std::filesystem::file_size(Path()), 3U << 20);

  // The system does not let the file grow: an answer for the trace, and nothing that the program notices.
  const TEnding refused = Run({"calls", std::to_string(kCalls)}, "", 4 << 20);
  EXPECT_EQ(refused.status, 0);
  EXPECT_THAT(refused.errors,
              HasSubstr("cannot grow: File too large; from here on the trace drops its oldest calls"));
  expectEnds(Read());

  const TEnding hopeless = Run({"calls", std::to_string(kCalls)}, "", 1 << 20);
  EXPECT_EQ(hopeless.status, 0);
  EXPECT_THAT(hopeless.errors, HasSubstr("cannot be written: File too large; the trace stays off\n"));
}

// Calls begin in one chunk and end in another, and one call goes on during all others.
TEST_F(Trace, JoinsNoCallsAcrossDroppedChunks)
{
  constexpr int kCalls = 4000;
  Run({"inside", TRACED_POTS, std::to_string(kCalls)});
  TTraceFile file = Read();
  std::vector<std::byte> whole = file.Bytes();
  whole.resize(file.UsedBytes());
  constexpr std::size_t kChunk = TraceFormat::kChunkBytes;
  ASSERT_GT(whole.size(), 10 * kChunk);
  std::swap_ranges(whole.end() - kChunk, whole.end(), whole.end() - 2 * kChunk); // as in a file at its limit
  for (std::size_t dropped = whole.size() - 3 * kChunk; dropped > 2 * kChunk; dropped -= kChunk) {
    std::vector<std::byte> rest = whole;
    std::fill_n(rest.begin() + static_cast<std::ptrdiff_t>(dropped), sizeof(TraceFormat::TChunkHeader),
                std::byte{0});
    TTraceFile read;
    ASSERT_EQ(read.Parse(std::move(rest)), "");
    EXPECT_EQ(read.DroppedChunks(), 1U);
    EXPECT_EQ(Numbers(read).back(), kCalls - 1);
    const auto isWhole = [](const TTraceCall& call) { return call.HasBegin() && call.state == CallState::Ended; };
    const auto& calls = read.Calls();
    for (auto call = calls.begin(); call != calls.end(); ++call) {
      EXPECT_NE(call->state, CallState::Open);
      EXPECT_TRUE(call->function->name != "vxsys_CameraPotsLoadFile" || isWhole(*call));
      if (call->function->name != "IsCoolerOn" || !isWhole(*call)) continue;
      ASSERT_GT(calls.end() - call, 2);
      EXPECT_TRUE(isWhole(call[1]) && isWhole(call[2])) << "what it called, at " << call->beginSeconds;
    }
  }
}

TEST_F(Trace, IsOfOneProcess)
{
  EXPECT_EQ(Run({"fork"}).errors, "");
  EXPECT_THAT(Numbers(Read()), ElementsAre(1, 3, 4));

  const pid_t parent = Start({"fork"}, "-%p");
  EndOf(parent);
  std::vector<std::vector<std::int64_t>> numbers;
  for (const auto& entry : std::filesystem::directory_iterator(scratch_.Directory())) {
    const std::string name = entry.path().filename();
    if (!name.starts_with("trace.vxtr-")) continue;
    const TTraceFile file = Read(name);
    EXPECT_EQ(name, "trace.vxtr-" + std::to_string(file.Process()));
    numbers.push_back(Numbers(file));
  }
  std::sort(numbers.begin(), numbers.end());
  EXPECT_THAT(numbers, ElementsAre(ElementsAre(1, 3, 4), ElementsAre(2)));
}

TEST_F(Trace, CountsTheCallsOfASignalHandlerThatItCannotRecord)
{
  const TEnding ending = Run({"signals"});
  EXPECT_EQ(ending.status, 0);
  const TTraceFile file = Read();
  auto numbers = Numbers(file);
  const auto ofHandler = std::erase(numbers, -1);
  EXPECT_EQ(numbers, Range(kCallsOfAThread));
  EXPECT_GT(ofHandler + file.DroppedCalls(), 0U);
}

TEST_F(Trace, SaysThatAnExceptionLeftACall)
{
  Run({"throw", TRACED_POTS});
  const TTraceFile file = Read();
  const auto load = std::find_if(file.Calls().begin(), file.Calls().end(), [](const TTraceCall& call) {
    return call.function->name == "vxsys_CameraPotsLoadFile";
  });
  ASSERT_NE(load, file.Calls().end());
  EXPECT_EQ(load->state, CallState::Thrown);
  EXPECT_EQ(file.Calls().back().depth, 0U);
}

TEST_F(Trace, NamesNoHomeDirectory)
{
  Run({"home", scratch_.Directory() + "/images"});
  const TTraceFile file = Read();
  EXPECT_EQ(file.Calls().back().Value("path").Text(), "\"~/images\"");
  EXPECT_EQ(TextOf(Path()).find(scratch_.Directory()), std::string::npos);
  Run({"home", scratch_.Directory() + "-of-another/images"});
  EXPECT_EQ(Read().Calls().back().Value("path").text, scratch_.Directory() + "-of-another/images");
}

TEST_F(Trace, RefusesWhatItCannotUse)
{
  scratch_.File("precious", "trace.vxtr");
  EXPECT_THAT(Run({"calls", "1"}).errors, HasSubstr("exists and is no trace; the trace stays off\n"));
  EXPECT_EQ(TextOf(Path()), "precious");
  std::filesystem::remove(Path());

  const std::map<std::string, std::string> wrong = {
      {",nonsense", "\"nonsense\" is none of frames, api, core"},
      {",limit=4", "\"limit=4\" is no size from 1M"},
      {",api,core", "has both api and core"},
      {"/no/such/folder", "cannot be opened"},
  };
  for (const auto& [options, said] : wrong) {
    const TEnding ending = Run({"calls", "1"}, options);
    EXPECT_EQ(ending.status, 0);
    EXPECT_THAT(ending.errors, HasSubstr(said));
    EXPECT_FALSE(std::filesystem::exists(Path()));
  }

  const pid_t first = Start({"forever"});
  AwaitTrace();
  EXPECT_THAT(Run({"calls", "1"}).errors, HasSubstr("is being written by another process; the trace stays off\n"));
  kill(first, SIGKILL);
  EndOf(first);
}

// Any bytes give a trace or an error; what is read of a damaged file stays inside of it, which the sanitizers watch.
TEST_F(Trace, ReadsDamagedFiles)
{
  Run({"image"}, ",pixels=store,registers");
  TTraceFile file = Read();
  std::vector<std::byte> whole = file.Bytes();
  whole.resize(file.UsedBytes());
  std::mt19937 random(11);
  for (int i = 0; i < TRACE_FUZZ_ROUNDS; ++i) {
    std::vector<std::byte> damaged = whole;
    // Most damage goes to the records, which are behind the long table of functions.
    const std::size_t begin = i % 4 == 0 ? 0 : 64 * 1024;
    const std::size_t length = i % 4 == 0 ? 4096 : 16 * 1024;
    for (unsigned int count = random() % 16; count-- > 0;) {
      const std::size_t at = (begin + random() % length) % damaged.size();
      damaged[at] = static_cast<std::byte>(random() % 4 == 0 ? 0xFF : random());
    }
    if (i % 8 == 0) damaged.resize(random() % damaged.size());
    TTraceFile read;
    if (!read.Parse(std::move(damaged)).empty()) continue;
    for (const TTraceCall& call : read.Calls()) {
      std::string text = call.Result().Text();
      for (const TTraceValue& value : call.Values()) text += value.Text();
      EXPECT_FALSE(text.empty());
      for (const auto& image : read.ImagesOf(call)) EXPECT_LE(image.size(), whole.size());
    }
  }
}
