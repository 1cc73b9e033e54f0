// SPDX-License-Identifier: MIT
// Finds Python and the package, and becomes the program.
#include "tools/TLiveCommand.h"

#include "tools/Environment.h"
#include "tools/Versions.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <spawn.h>
#include <string_view>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace vxtool {

namespace {

namespace fs = std::filesystem;

constexpr const char* kProgram = "vxmcd.live";
constexpr int kParents = 4; // of a program in the build directory of a source tree
// Finding a module is quick, importing NumPy is not.
constexpr const char* kCheck = "import importlib.util as u, sys; "
                               "sys.exit(not all(u.find_spec(name) for name in ('numpy', 'aiohttp')))";

bool HasLiveView(const fs::path& directory)
{
  std::error_code error;
  return fs::is_regular_file(directory / "vxmcd" / "live" / "__main__.py", error);
}

std::vector<char*> Pointers(std::vector<std::string>& words)
{
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  return pointers;
}

bool HasModules(const std::string& python)
{
  std::vector<std::string> words = {python, "-c", kCheck};
  pid_t child = 0;
  if (posix_spawnp(&child, python.c_str(), nullptr, nullptr, Pointers(words).data(), environ) != 0) return false;
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// This environment, with other values of some variables.
std::vector<std::string> EnvironmentWith(const std::vector<std::pair<std::string, std::string>>& values)
{
  std::vector<std::string> environment;
  for (char** entry = environ; *entry; ++entry) {
    const std::string text = *entry;
    const bool isReplaced = std::any_of(values.begin(), values.end(), [&](const auto& variable) {
      return text.starts_with(variable.first + "=");
    });
    if (!isReplaced) environment.push_back(text);
  }
  for (const auto& [name, value] : values) environment.emplace_back(name).append("=").append(value);
  return environment;
}

} // namespace

fs::path TLiveCommand::PackageDirectory() const
{
  const fs::path bin = fs::path(ProgramFile()).parent_path();
  if (fs::path installed = bin.parent_path() / "lib" / "python3" / "dist-packages"; HasLiveView(installed))
    return installed;
  fs::path parent = bin;
  for (int level = 0; level < kParents; ++level, parent = parent.parent_path())
    if (fs::path source = parent / "python"; HasLiveView(source)) return source;
  return "";
}

std::string TLiveCommand::Python() const
{
  const std::string beside = (fs::path(ProgramFile()).parent_path() / "python3").string();
  for (const std::string& python : {beside, std::string("/usr/bin/python3"), std::string("python3")})
    if (HasModules(python)) return python;
  return "";
}

ExitCode TLiveCommand::Run()
{
  const std::string python = Python();
  if (python.empty())
    return Fail(ExitCode::Usage, "live: needs packages of Python: apt install python3-aiohttp python3-numpy");
  std::vector<std::pair<std::string, std::string>> variables = {
      {"PYTHONSAFEPATH", "1"}, // modules of the working directory are not ours
      {"VXMCD_LIBRARY", LibraryFile()},
      {"VXMCD_TOOL", ProgramFile()}}; // makes the files of snapshots
  if (const std::string directory = PackageDirectory().string(); !directory.empty()) {
    const std::string others = Variable("PYTHONPATH");
    variables.emplace_back("PYTHONPATH", directory + (others.empty() ? "" : ":" + others));
  }
  std::vector<std::string> environment = EnvironmentWith(variables);
  std::vector<std::string> words = {python, "-m", kProgram, "--camera=" + std::to_string(camera_)};
  words.insert(words.end(), arguments_.begin(), arguments_.end());
  // An interpreter that is loading its modules answers Ctrl-C with a traceback. The program unblocks it, before it
  // opens a camera.
  sigset_t interrupt;
  sigemptyset(&interrupt);
  sigaddset(&interrupt, SIGINT);
  pthread_sigmask(SIG_BLOCK, &interrupt, nullptr);
  execvpe(python.c_str(), Pointers(words).data(), Pointers(environment).data());
  return Fail(ExitCode::Usage, "live: " + python + ": " + std::generic_category().message(errno));
}

} // namespace vxtool
