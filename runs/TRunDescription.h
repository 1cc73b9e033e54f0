// SPDX-License-Identifier: MIT
// What the directory of a recorded run says about the run.
#pragma once

#include "runs/frame_decoding.h"
#include "runs/run_format.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// The values of the description's keys. What the file does not say is empty or nothing.
struct TRunValues
{
  std::int64_t imagesPerFile = 0;
  std::int64_t imageBytes = 0;
  RunFormat::State state = RunFormat::State::kRecording;
  std::optional<std::int64_t> imagesExpected;
  std::int64_t imagesWritten = 0;
  std::optional<std::int64_t> method;
  std::string library;
  std::string startTime;
  std::string firstFrameTime;
  std::optional<std::int64_t> firstFrameTick;
  std::optional<std::int64_t> ticksPerSecond;
  std::string failure;
  std::optional<std::int64_t> width;
  std::optional<std::int64_t> height;
  std::optional<std::int64_t> stride;
  std::string encoding;
  bool hasMetadata = false;
  std::string layout; ///< "Image" or the like; "Track" for strips of rows
  std::optional<std::int64_t> left;
  std::optional<std::int64_t> top;
  std::optional<std::int64_t> horizontalBinning;
  std::optional<std::int64_t> verticalBinning;
  std::optional<double> exposureSeconds;
  std::optional<double> frameRate;
  std::optional<std::int64_t> accumulations;
  std::string trigger; ///< the camera's word for it
  std::optional<double> readoutSeconds;
  std::string readoutRate; ///< the camera's words for these two
  std::string gain;
  bool isCoolerOn = false;
  std::optional<double> sensorCelsius;
  std::optional<double> targetCelsius;
  std::optional<double> pixelWidthMicrometres;
  std::optional<double> pixelHeightMicrometres;
  std::string model;
  std::string serial;
};

/// Reads the description of a run and checks it. Numbers that cannot be true are treated as missing, with a note.
/// One thread at a time.
class TRunDescription final
{
public:
  /// False with Error() set when there is no description, or one without what is needed to find an image.
  bool Read(const std::string& directory);

  const std::string& Directory() const { return directory_; }
  const TRunValues& Values() const { return values_; }
  const std::string& Error() const { return error_; }
  /// Whether Read() failed because there is no description.
  bool IsMissing() const { return isMissing_; }
  /// What is odd about the description, a line each.
  const std::vector<std::string>& Notes() const { return notes_; }

  /// How to decode an image; nothing when the description lacks it, and LayoutProblem() says why.
  const std::optional<TFrameLayout>& Layout() const { return layout_; }
  const std::string& LayoutProblem() const { return layoutProblem_; }
  /// The numbers of images, from 0, are below this.
  std::int64_t ImageLimit() const;

private:
  bool Fail(const std::string& message);
  bool ReadText(const std::string& path, std::string& text);
  void FindLayout();

  std::string directory_;
  TRunValues values_;
  std::string error_;
  bool isMissing_ = false;
  std::vector<std::string> notes_;
  std::optional<TFrameLayout> layout_;
  std::string layoutProblem_;
};
