// SPDX-License-Identifier: MIT
// Libraries: which are loaded, and which others a program may get.
#include "tools/doctor/Checks.h"
#include "tools/Environment.h"
#include "tools/Versions.h"

#include <filesystem>
#include <set>
#include <sstream>

namespace vxtool {

namespace {

namespace fs = std::filesystem;

constexpr const char* kPathVariable = "LD_LIBRARY_PATH";
constexpr const char* kPlugin = "libvxcore-genicam.so";

std::vector<std::string> PathVariableDirectories()
{
  std::vector<std::string> directories;
  std::istringstream text(Variable(kPathVariable));
  for (std::string directory; std::getline(text, directory, ':');)
    directories.push_back(directory.empty() ? "." : directory);
  return directories;
}

bool IsIn(const fs::path& directory, const std::string& file)
{
  std::error_code error;
  return fs::equivalent(directory, fs::path(file).parent_path(), error) && !error;
}

/// The directory that holds the program's own one; "" when it cannot be told.
std::string ProgramPrefix()
{
  return fs::path(ProgramFile()).parent_path().parent_path();
}

/// By which rule the loader found a file.
std::string RuleFor(const std::string& file)
{
  for (const std::string& directory : PathVariableDirectories())
    if (IsIn(directory, file)) return std::string("by ") + kPathVariable;
  const std::string program = ProgramPrefix();
  if (!program.empty() && program != "/usr" && file.starts_with(program + "/")) return "beside the program";
  return "in the system's library directories";
}

/// Where this program and others may get their libraries from.
std::vector<fs::path> UsualDirectories(const std::string& loaded)
{
  std::vector<fs::path> directories;
  for (const std::string& directory : PathVariableDirectories()) directories.emplace_back(directory);
  directories.push_back(fs::path(loaded).parent_path());
  for (const std::string& prefix : {ProgramPrefix(), std::string("/usr/local"), std::string("/usr")}) {
    directories.emplace_back(prefix + "/lib");
    directories.emplace_back(prefix + "/lib/" + VXTOOL_MULTIARCH);
  }
  return directories;
}

/// The files behind all links that have the name, the loaded one among them.
std::set<std::string> CopiesOf(const std::string& name, const std::string& loaded)
{
  std::set<std::string> copies = {loaded};
  for (const fs::path& directory : UsualDirectories(loaded)) {
    std::error_code error;
    const fs::path file = fs::canonical(directory / name, error);
    if (!error) copies.insert(file.string());
  }
  return copies;
}

void CheckCopies(TFindings& findings, const TLoadedLibrary& library)
{
  const std::set<std::string> copies = CopiesOf(library.name + ".so.3", library.file);
  if (copies.size() == 1) return;
  std::string others;
  for (const std::string& copy : copies)
    if (copy != library.file) others += (others.empty() ? "" : ", ") + copy;
  findings.Warn("there are several copies of " + library.name + "; this program uses " + library.file +
                    ", another may use " + others,
                "remove those that you do not want; `ldd PROGRAM | grep " + library.name +
                    "` says which one a program uses");
}

void CheckPlugin(TFindings& findings, const std::string& core)
{
  std::error_code error;
  const fs::path file = fs::path(core).parent_path() / kPlugin;
  if (fs::exists(file, error)) return findings.Right("real cameras: " + file.string());
  if (Variable("VXCORE_GENICAM").empty())
    return findings.Right(std::string("real cameras: ") + kPlugin + " is not installed");
  findings.Problem(std::string("VXCORE_GENICAM names cameras, and ") + kPlugin + " is not beside " + core,
                   "apt install libvxcore-genicam");
}

} // namespace

void CheckLibraries(TFindings& findings)
{
  const std::vector<TLoadedLibrary> libraries = LoadedLibraries();
  for (const TLoadedLibrary& library : libraries) {
    if (library.file.empty()) {
      findings.Problem("the file of " + library.name + " cannot be told", "install it again");
      continue;
    }
    const std::string build = library.buildId.empty() ? "" : ", build " + library.buildId;
    findings.Right(library.name + " " + library.version + build + ": " + library.file + ", found " +
                   RuleFor(library.file));
    CheckCopies(findings, library);
  }
  const TLoadedLibrary& flat = libraries.front();
  if (!flat.version.starts_with(VXTOOL_VERSION))
    findings.Problem("the program is of version " VXTOOL_VERSION ", and " + flat.file + " of version " +
                         flat.version,
                     "install both from one release");
  CheckPlugin(findings, libraries.back().file);
}

} // namespace vxtool
