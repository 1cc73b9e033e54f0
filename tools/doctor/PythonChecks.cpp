// SPDX-License-Identifier: MIT
// Python: whether the package is there, complete, and finds the same library.
#include "tools/doctor/Checks.h"
#include "tools/Messages.h"
#include "tools/Versions.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <sstream>

namespace vxtool {

namespace {

// Prints a line for each: the interpreter, NumPy's version or "", what became of the package, and the library's file.
constexpr const char* kProgram = "python3 -c '\n"
                                 "import sys\n"
                                 "print(sys.executable)\n"
                                 "try:\n"
                                 "    import numpy\n"
                                 "    print(numpy.__version__)\n"
                                 "except ImportError:\n"
                                 "    print()\n"
                                 "try:\n"
                                 "    import vxmcd, vxmcd._library\n"
                                 "    library = vxmcd._library.load()\n"
                                 "    print(\"loaded\")\n"
                                 "    print(library._name)\n"
                                 "except ModuleNotFoundError as error:\n"
                                 "    print(\"missing \" + str(error.name))\n"
                                 "except Exception as error:\n"
                                 "    print(str(error).splitlines()[0])\n"
                                 "' 2>/dev/null";

struct TClosePipe
{
  void operator()(std::FILE* pipe) const { pclose(pipe); }
};

std::vector<std::string> LinesOf(const char* program)
{
  std::string text;
  const std::unique_ptr<std::FILE, TClosePipe> pipe(popen(program, "re"));
  std::array<char, 4096> piece;
  while (pipe && std::fgets(piece.data(), piece.size(), pipe.get())) text += piece.data();
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

bool IsSameFile(const std::string& first, const std::string& second)
{
  std::error_code error;
  return std::filesystem::equivalent(first, second, error) && !error;
}

} // namespace

void CheckPython(TFindings& findings)
{
  const std::vector<std::string> lines = LinesOf(kProgram);
  if (lines.size() < 3) return findings.Right("there is no python3, or it does not start");
  const std::string& interpreter = lines[0];
  const std::string& numpy = lines[1];
  const std::string& package = lines[2];
  if (package == "missing vxmcd") return findings.Right(interpreter + " has no package vxmcd");
  if (numpy.empty())
    return findings.Problem(interpreter + " has the package vxmcd, and no NumPy", "apt install python3-numpy");
  if (package != "loaded")
    return findings.Problem(interpreter + ": the package vxmcd does not work: " + package,
                            "python3 -c 'import vxmcd; vxmcd.cameras()' says all of it");
  const std::string ours = LibraryFile();
  const std::string theirs = lines.size() > 3 ? lines[3] : "";
  if (theirs.find('/') != std::string::npos && !IsSameFile(ours, theirs))
    return findings.Warn(interpreter + ": the package vxmcd uses " + theirs + ", and this program " + ours,
                         "export VXMCD_LIBRARY=" + ours);
  findings.Right(interpreter + " with NumPy " + numpy + ": the package vxmcd uses " +
                 (theirs.empty() ? ours : theirs));
}

} // namespace vxtool
