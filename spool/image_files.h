// SPDX-License-Identifier: MIT
// Which files of a directory have the images of a run.
#pragma once

#include <string>
#include <vector>

/// Appends the paths of all image files with that stem. Returns 0, or the errno value of what failed.
int FindImageFiles(const std::string& directory, const std::string& stem, std::vector<std::string>& paths);
