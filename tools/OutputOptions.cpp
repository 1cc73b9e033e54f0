// SPDX-License-Identifier: MIT
// Options for the files that images are written to.
#include "tools/OutputOptions.h"

#include "tools/Messages.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace vxtool {

void AddImageFileOptions(CLI::App& app, TOutputOptions& output, const std::string& group)
{
  app.add_flag("--each", output.isFileForEach,
               "One file for each image: FILE.fits becomes FILE-0000001.fits for image 1")
      ->group(group);
  std::vector<std::string> types;
  for (const TImageType& type : kImageTypes) types.emplace_back(type.word);
  app.add_option("--image-type", output.imageType, "What the images show, for the file")
      ->check(OneOf(types))
      ->group(group);
}

std::string FilesText(const TOutputOptions& output, long images)
{
  if (!output.isFileForEach && (output.format != FileFormat::Png || images == 1)) return output.file;
  const std::filesystem::path path(output.file);
  return (path.parent_path() / (path.stem().string() + "-*" + path.extension().string())).string();
}

std::string CompleteOutput(TOutputOptions& output, const TFormats& formats)
{
  for (const auto& [option, file] : {std::pair("--output", output.file), std::pair("--preview", output.preview)})
    if (file == "-")
      return option +
             (": " + RefusedText(file, "the formats cannot be written to standard output, since what stands "
                                       "at their beginning is known at the end; the name of a file is"));
  if (output.file.empty())
    return output.format               ? "--format: there is no --output"
           : output.isFileForEach      ? "--each: there is no --output"
           : !output.imageType.empty() ? "--image-type: there is no --output that it could be put into"
                                       : "";
  if (output.file == output.preview) return "--preview: is the file of --output";
  if (output.format) return "";
  const std::string name = output.file.substr(0, output.file.find_last_not_of('/') + 1);
  const std::size_t dot = name.rfind('.');
  std::string suffix = dot == std::string::npos ? "" : name.substr(dot);
  std::transform(suffix.begin(), suffix.end(), suffix.begin(), [](unsigned char c) { return std::tolower(c); });
  const auto found = formats.suffixes.find(suffix);
  const bool isDirectory = name != output.file;
  if (found == formats.suffixes.end() || (isDirectory && found->second != FileFormat::OmeZarr))
    return "--output: the name must end in " + formats.suffixText + ", or --format must be given";
  output.format = found->second;
  return "";
}

} // namespace vxtool
