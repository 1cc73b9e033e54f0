// SPDX-License-Identifier: MIT
// A test chart: bar groups, a Siemens star, a grey wedge and frame marks.
#include "vxcore/simulated/imaging/TResolutionChartScene.h"

#include <algorithm>
#include <cmath>

namespace vxsim {
namespace {

// Places and sizes are in shares of the chart's side.
constexpr double kStarRadius = 0.2;
constexpr int kStarSpokes = 36;
constexpr double kFrameLine = 0.004;
constexpr double kFrameInset = 0.03;
constexpr int kWedgeSteps = 11;
constexpr double kMaxBar = 0.0115;
constexpr int kElementsPerColumn = 9;
constexpr int kBarColumns = 3;
constexpr double kFullInk = 0.96;

double Overlap(double from, double to, double pixel)
{
  return std::max(0.0, std::min(to, pixel + 1.0) - std::max(from, pixel));
}

} // namespace

TResolutionChartScene::TResolutionChartScene(const TSensorSettings& sensor, const TSceneSettings& scene)
    : widthPixels_(sensor.widthPixels),
      heightPixels_(sensor.heightPixels),
      sidePixels_(std::min(widthPixels_, heightPixels_)),
      originX_((widthPixels_ - sidePixels_) / 2.0),
      originY_((heightPixels_ - sidePixels_) / 2.0),
      groundPhotonsPerSecond_(scene.flatPhotonsPerSecond)
{
  AddFrame();
  AddBarGroup(0.065, kFullInk);
  patches_.push_back({0.728, 0.115, 0.948, 0.66, kFullInk});
  AddBarGroup(0.736, 0.0);
  AddGreyWedge();
}

void TResolutionChartScene::AddFrame()
{
  const double inset = kFrameInset;
  const double far = 1.0 - inset;
  const double line = kFrameLine;
  const auto add = [this](double left, double top, double right, double bottom) {
    patches_.push_back({left, top, right, bottom, kFullInk});
  };
  add(inset, inset, far, inset + line);
  add(inset, far - line, far, far);
  add(inset, inset + line, inset + line, far - line);
  add(far - line, inset + line, far, far - line);
  for (const double x : {inset + 0.02, far - 0.06})
    for (const double y : {inset + 0.02, far - 0.06}) {
      add(x, y, x + 0.02, y + 0.02); // a checker of two squares marks each corner
      add(x + 0.02, y + 0.02, x + 0.04, y + 0.04);
    }
}

/// Three upright and three level bars, each five bars long.
void TResolutionChartScene::AddBars(double left, double top, double bar, double ink)
{
  const double length = 5.0 * bar;
  for (int i = 0; i < 3; ++i) {
    const double across = 2.0 * i * bar;
    patches_.push_back({left + across, top, left + across + bar, top + length, ink});
    const double beside = left + 7.0 * bar;
    patches_.push_back({beside, top + across, beside + length, top + across + bar, ink});
  }
}

/// Columns of bars that become finer.
void TResolutionChartScene::AddBarGroup(double left, double ink)
{
  double bar = kMaxBar;
  for (int column = 0; column < kBarColumns; ++column) {
    double top = 0.13;
    const double widest = bar;
    for (int element = 0; element < kElementsPerColumn; ++element) {
      AddBars(left, top, bar, ink);
      top += 7.5 * bar;
      bar /= std::exp2(1.0 / 6.0);
    }
    left += 13.2 * widest;
  }
}

void TResolutionChartScene::AddGreyWedge()
{
  constexpr double kLeft = 0.15;
  constexpr double kStep = 0.7 / kWedgeSteps;
  for (int step = 0; step < kWedgeSteps; ++step) {
    const double left = kLeft + step * kStep;
    patches_.push_back({left, 0.80, left + kStep, 0.88, kFullInk * step / (kWedgeSteps - 1.0)});
  }
}

void TResolutionChartScene::PrintPatches(int row, int left, std::span<float> values) const
{
  const int end = left + static_cast<int>(values.size());
  for (const TPatch& patch : patches_) {
    const double down = Overlap(originY_ + patch.top * sidePixels_, originY_ + patch.bottom * sidePixels_, row);
    if (down <= 0.0) continue;
    const double from = originX_ + patch.left * sidePixels_;
    const double to = originX_ + patch.right * sidePixels_;
    const int last = std::min(end, static_cast<int>(std::ceil(to)));
    for (int column = std::max(left, static_cast<int>(std::floor(from))); column < last; ++column) {
      float& value = values[static_cast<std::size_t>(column - left)];
      const double printed = groundPhotonsPerSecond_ * (1.0 - patch.ink);
      value += static_cast<float>((printed - value) * down * Overlap(from, to, column));
    }
  }
}

void TResolutionChartScene::PrintStar(int row, int left, std::span<float> values) const
{
  const double radius = kStarRadius * sidePixels_;
  const double centreX = originX_ + 0.5 * sidePixels_;
  const double y = row + 0.5 - (originY_ + 0.43 * sidePixels_);
  if (std::abs(y) > radius + 1.0) return;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const double x = left + static_cast<double>(i) + 0.5 - centreX;
    const double distance = std::hypot(x, y);
    if (distance > radius + 0.5) continue;
    // The wave's height over its slope is how far the nearest edge is; within half a pixel the edge is grey.
    const double wave = std::sin(kStarSpokes * std::atan2(y, x));
    const double slopePerPixel = kStarSpokes / std::max(distance, 1.0);
    const double spoke = std::clamp(0.5 + wave / slopePerPixel, 0.0, 1.0);
    const double inside = std::clamp(radius + 0.5 - distance, 0.0, 1.0);
    values[i] *= static_cast<float>(1.0 - kFullInk * spoke * inside);
  }
}

void TResolutionChartScene::BackgroundRow(int row, int left, std::span<float> photonsPerSecond) const
{
  std::fill(photonsPerSecond.begin(), photonsPerSecond.end(), static_cast<float>(groundPhotonsPerSecond_));
  PrintPatches(row, left, photonsPerSecond);
  PrintStar(row, left, photonsPerSecond);
}

} // namespace vxsim
