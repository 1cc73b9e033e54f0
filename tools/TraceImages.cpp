// SPDX-License-Identifier: MIT
// Writes the images of a trace.
#include "tools/TraceImages.h"

#include "tools/TraceText.h"

#include <cstdio>
#include <filesystem>
#include <fstream>

namespace vxtool {

ExitCode WriteTraceImages(const TTraceOptions& options)
{
  TTraceFile file;
  if (!ReadTrace(file, options.file)) return ExitCode::InputError;
  std::error_code error;
  std::filesystem::create_directories(options.other, error);
  if (error) return Fail(ExitCode::OutputError, options.other + ": cannot be made: " + error.message());
  unsigned int written = 0;
  for (const TTraceCall& call : file.Calls()) {
    if (!call.function->isApi || !call.function->signature.HasPixels()) continue;
    for (const auto& image : file.ImagesOf(call)) {
      if (image.empty()) continue;
      char number[16];
      std::snprintf(number, sizeof number, "%06u", ++written);
      const std::string path = options.other + "/" + number + "-" + call.function->name + ".raw";
      if (std::filesystem::exists(path, error)) return Fail(ExitCode::OutputError, path + ": exists");
      std::ofstream output(path, std::ios::binary);
      output.write(reinterpret_cast<const char*>(image.data()), static_cast<std::streamsize>(image.size()));
      if (!output.flush()) return Fail(ExitCode::OutputError, path + ": cannot be written");
    }
  }
  if (written == 0) return Fail(ExitCode::InputError, options.file + ": has no images; see record --store-pixels");
  Say(std::to_string(written) + " images");
  return ExitCode::Success;
}

} // namespace vxtool
