// SPDX-License-Identifier: MIT
// Libraries that are there, elsewhere, nowhere, or no libraries.
#include "utility/TQuorinDynamicLoader.h"

#include "tests/support/TScratchWorkingDirectory.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/auxv.h>
#include <sys/wait.h>
#include <unistd.h>

using QuorinUtility::TQuorinDynamicLoader;
using QuorinUtility::TQuorinFilePath;

namespace {

class DynamicLoader : public ::testing::Test
{
protected:
  /// Puts a library with the symbol "GetConfiguration" where @p name says, in the working directory.
  void PutLibrary(const std::string& name) const { here_.Copy(VXMCD_TEST_PLUGINS "/libvxconf_regcam.so", name); }

  const TScratchWorkingDirectory here_;
};

TEST_F(DynamicLoader, OpensWhatIsInTheWorkingDirectory)
{
  PutLibrary("libhere.so");
  TQuorinDynamicLoader loader("libhere.so", nullptr, false);
  EXPECT_EQ(loader.GetFunction("GetConfiguration"), nullptr) << "not open yet";
  EXPECT_EQ(loader.GetFunction("malloc"), nullptr) << "nor is the program looked through";
  ASSERT_EQ(loader.Open(), 0) << loader.GetErrorMessage();
  EXPECT_EQ(loader.Open(), 0);
  EXPECT_NE(loader.GetFunction("GetConfiguration"), nullptr);
  EXPECT_EQ(loader.GetFunction("GetNothing"), nullptr);
  EXPECT_EQ(loader.GetFunction(nullptr), nullptr);
  EXPECT_STREQ(loader.GetErrorMessage(), "No Error");

  EXPECT_EQ(loader.Close(), 0);
  EXPECT_EQ(loader.Close(), 0);
  EXPECT_EQ(loader.Open(), 0) << "open for good, but of no use";
  EXPECT_EQ(loader.GetFunction("GetConfiguration"), nullptr);
}

TEST_F(DynamicLoader, PrefersTheDirectoryAndFallsBackToTheSystem)
{
  here_.MakeDirectory("plugins");
  PutLibrary("plugins/libthere.so");
  const TQuorinFilePath directory("plugins");
  TQuorinDynamicLoader there("libthere.so", &directory, true);
  EXPECT_EQ(there.Open(), 0) << there.GetErrorMessage();
  there.Close();

  here_.MakePipe("libm.so.6"); // where nobody looks for it
  TQuorinDynamicLoader ofTheSystem("libm.so.6", &directory, false);
  ASSERT_EQ(ofTheSystem.Open(), 0) << ofTheSystem.GetErrorMessage();
  EXPECT_NE(ofTheSystem.GetFunction("cosf"), nullptr);
  ofTheSystem.Close();

  TQuorinDynamicLoader onlyThere("libm.so.6", &directory, true);
  EXPECT_EQ(onlyThere.Open(), 1);
  EXPECT_STREQ(onlyThere.GetErrorMessage(), "No Error");
  EXPECT_EQ(onlyThere.Close(), 0);
}

TEST_F(DynamicLoader, TakesAnAbsoluteNameAsItIs)
{
  const std::string full = std::filesystem::current_path() / "libthere.so";
  PutLibrary("libthere.so");
  std::filesystem::create_directories("." + std::filesystem::current_path().string());
  std::ofstream("." + full) << "a copy of the whole tree, in the working directory";
  TQuorinDynamicLoader loader(full.c_str(), nullptr, false);
  EXPECT_EQ(loader.Open(), 0) << loader.GetErrorMessage();
  loader.Close();
}

TEST_F(DynamicLoader, KeepsWhatTheLoaderSaysOfAFailure)
{
  TQuorinDynamicLoader nowhere("libnowhere-at-all.so", nullptr, false);
  EXPECT_EQ(nowhere.Open(), 2);
  EXPECT_NE(std::strstr(nowhere.GetErrorMessage(), "libnowhere-at-all.so"), nullptr) << nowhere.GetErrorMessage();
  EXPECT_EQ(nowhere.updateErrorMessage(), 0);
  EXPECT_STREQ(nowhere.GetErrorMessage(), "No Error") << "the loader's error is reported once";

  here_.WriteFile("libtext.so", "no library");
  TQuorinDynamicLoader text("libtext.so", nullptr, false);
  EXPECT_EQ(text.Open(), 2);
  EXPECT_NE(std::strstr(text.GetErrorMessage(), "./libtext.so"), nullptr) << text.GetErrorMessage();

  const std::string longName = std::string(250, 'x') + ".so";
  TQuorinDynamicLoader longNamed(longName.c_str(), nullptr, false);
  EXPECT_EQ(longNamed.Open(), 2);
  EXPECT_EQ(std::strlen(longNamed.GetErrorMessage()), 255u);

  // A failure is not for good.
  PutLibrary("libnowhere-at-all.so");
  EXPECT_EQ(nowhere.Open(), 0);
  nowhere.Close();
}

/// Runs one test of this program again, in a process whose user has fewer rights than the process.
/// @return what waitpid() reports of its end
int RunAsPrivileged(const char* test)
{
  const std::string filter = std::string("--gtest_filter=") + test;
  const pid_t child = ::fork();
  if (child == 0) {
    constexpr uid_t kNobody = 65534;
    if (::setresuid(kNobody, 0, 0) == 0)
      ::execl("/proc/self/exe", "utility_test", filter.c_str(), static_cast<char*>(nullptr));
    ::_exit(127);
  }
  int status = -1;
  ::waitpid(child, &status, 0);
  return status;
}

TEST_F(DynamicLoader, OpensNothingFromADirectoryForAPrivilegedProcess)
{
  if (!::getauxval(AT_SECURE)) {
    if (::geteuid() != 0) GTEST_SKIP() << "only the administrator can start such a process";
    EXPECT_EQ(RunAsPrivileged("DynamicLoader.OpensNothingFromADirectoryForAPrivilegedProcess"), 0);
    return;
  }
  std::filesystem::permissions(".", std::filesystem::perms::all); // the user's directory
  PutLibrary("libhere.so");
  const std::string full = std::filesystem::current_path() / "libhere.so";
  for (const char* const name : {"libhere.so", full.c_str()}) {
    TQuorinDynamicLoader loader(name, nullptr, false);
    EXPECT_EQ(loader.Open(), 2) << name;
    EXPECT_NE(std::strstr(loader.GetErrorMessage(), "more rights than its user"), nullptr)
        << loader.GetErrorMessage();
    EXPECT_EQ(loader.GetFunction("GetConfiguration"), nullptr);
  }
  TQuorinDynamicLoader ofTheSystem("libm.so.6", nullptr, false);
  EXPECT_EQ(ofTheSystem.Open(), 0) << ofTheSystem.GetErrorMessage();
  ofTheSystem.Close();
}

TEST_F(DynamicLoader, NeitherWaitsForAPipeNorOpensADirectory)
{
  here_.MakePipe("libpipe.so");
  here_.MakeDirectory("libdirectory.so");
  for (const char* const name : {"libpipe.so", "libdirectory.so", "/dev/zero"}) {
    TQuorinDynamicLoader loader(name, nullptr, false);
    EXPECT_EQ(loader.Open(), 2) << name;
    EXPECT_STRNE(loader.GetErrorMessage(), "No Error") << name;
  }
}

} // namespace
