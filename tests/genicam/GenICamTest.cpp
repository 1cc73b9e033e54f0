// SPDX-License-Identifier: MIT
// Test cameras as processes, in a network namespace of the test program.
#include "tests/genicam/GenICamTest.h"

#include "tests/support/OwnNetwork.h"

#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// NOLINTBEGIN(cppcoreguidelines-avoid-non-const-global-variables): set once by main()
std::string noNetwork;
std::string logFile;
// NOLINTEND(cppcoreguidelines-avoid-non-const-global-variables)

} // namespace

const std::string& WhyNoNetwork()
{
  return noNetwork;
}

std::string TakeLog()
{
  std::ifstream file(logFile);
  std::string text(std::istreambuf_iterator<char>(file), {});
  std::filesystem::resize_file(logFile, 0);
  return text;
}

void GenICamTest::TearDown()
{
  ShutDown();
  SetCurrentCamera(101);
  VXSIM_Configure(nullptr);
  while (!cameras_.empty()) Kill(cameras_.begin()->first);
}

void GenICamTest::Serve(const std::string& address, const std::vector<std::string>& arguments, const char* program)
{
  std::vector<std::string> words = {program, address, "SIM1"};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  argv.reserve(words.size() + 1);
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  int pipes[2];
  ASSERT_EQ(pipe(pipes), 0);
  const pid_t pid = fork();
  ASSERT_GE(pid, 0);
  if (pid == 0) {
    dup2(pipes[1], STDOUT_FILENO);
    close(pipes[0]);
    execv(argv[0], argv.data());
    _exit(127);
  }
  close(pipes[1]);
  cameras_[address] = pid;
  char answer[8] = "";
  EXPECT_EQ(read(pipes[0], answer, 5), 5) << "the test camera does not start";
  close(pipes[0]);
}

void GenICamTest::Kill(const std::string& address)
{
  kill(cameras_.at(address), SIGKILL);
  waitpid(cameras_.at(address), nullptr, 0);
  cameras_.erase(address);
}

void GenICamTest::Attach(const std::string& devices, const std::string& more)
{
  const std::string text = "[Backends]\nSimulator = off\n[GenICam]\nDevices = " + devices + "\n" + more;
  ASSERT_EQ(VXSIM_Configure(text.c_str()), VX_SUCCESS) << VXSIM_GetLastError();
}

void GenICamTest::Open(const std::vector<std::string>& arguments, const std::string& more)
{
  ASSERT_NO_FATAL_FAILURE(Serve("127.0.0.1", arguments));
  ASSERT_NO_FATAL_FAILURE(Attach("127.0.0.1", more));
  char directory[] = "";
  ASSERT_EQ(Initialize(directory), RC_SUCCESS);
}

std::uint64_t FrameOf(const std::vector<unsigned short>& pixels, const TArea& area, int bits)
{
  constexpr std::uint64_t kMaxFrames = 65536; // frame numbers have 16 bits, and those of Aravis begin near the end
  const auto pixel = [&area, bits](int x, int y, std::uint64_t n) {
    return TestPixel(static_cast<std::uint32_t>(area.left + x), static_cast<std::uint32_t>(area.top + y), n, bits);
  };
  std::uint64_t frame = 1;
  while (frame < kMaxFrames && (pixel(0, 0, frame) != pixels[0] || pixel(1, 0, frame) != pixels[1])) ++frame;
  std::size_t wrong = 0;
  for (int y = 0; y < area.height; ++y)
    for (int x = 0; x < area.width; ++x)
      if (pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(area.width) +
                 static_cast<std::size_t>(x)] != pixel(x, y, frame))
        ++wrong;
  EXPECT_EQ(wrong, 0U) << "of " << pixels.size() << " pixels";
  return wrong == 0 ? frame : 0;
}

int main(int argc, char** argv)
{
  testing::InitGoogleTest(&argc, argv);
  noNetwork = EnterOwnNetwork();
  logFile = testing::TempDir() + "genicam_test." + std::to_string(getpid());
  std::ofstream(logFile).close();
  setenv("VXMCD_LOG", ("warning:" + logFile).c_str(), 1); // the backend reads it when it is loaded
  const int result = RUN_ALL_TESTS();
  std::filesystem::remove(logFile);
  return result;
}
