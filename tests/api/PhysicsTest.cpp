// SPDX-License-Identifier: MIT
// What the cameras are configured to be is measured again from their images: gain, read noise, dark current, and the
// sums of binning and accumulation.
#include "vxcore_simulator.h"
#include "vxmcd.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <numeric>
#include <string>
#include <vector>

namespace {

using TImage = std::vector<int>;

constexpr int kBaseline = 100;
constexpr int kModeSeries = 3;
constexpr int kReadImage = 4;

/// A camera without wall time.
std::string CameraText(const std::string& model, const std::string& keys)
{
  return "[Simulator]\nCameras=1\n[Camera0]\nModel=" + model + "\nClock=free\n" + keys;
}

/// Begins with no camera, opens one configured afresh, and closes it.
class Physics : public testing::Test
{
protected:
  void TearDown() override { Close(); }

  static void Open(const std::string& configuration)
  {
    Close();
    ASSERT_EQ(VXSIM_Configure(configuration.c_str()), VX_SUCCESS) << VXSIM_GetLastError();
    ASSERT_EQ(SetCurrentCamera(101), RC_SUCCESS);
    ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
    ASSERT_EQ(SetReadMode(kReadImage), RC_SUCCESS);
  }

  static void Close() { ShutDown(); }

  /// The pixels of the images of one run, of @p size pixels each.
  static std::vector<TImage> Take(size_t size, int images = 1, int accumulations = 1)
  {
    EXPECT_EQ(SetNumberAccumulations(accumulations), RC_SUCCESS);
    EXPECT_EQ(SetNumberKinetics(images), RC_SUCCESS);
    EXPECT_EQ(SetAcquisitionMode(kModeSeries), RC_SUCCESS);
    EXPECT_EQ(StartAcquisition(), RC_SUCCESS);
    int status = RC_ACQUIRING;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (status == RC_ACQUIRING && std::chrono::steady_clock::now() < deadline) {
      WaitForAcquisitionTimeOut(5); // in vain when the last image came before
      GetStatus(&status);
    }
    TImage all(size * static_cast<size_t>(images));
    EXPECT_EQ(GetAcquiredData(all.data(), size), RC_SUCCESS);
    std::vector<TImage> taken;
    for (auto image = all.begin(); image != all.end(); image += static_cast<long>(size)) {
      taken.emplace_back(image, image + static_cast<long>(size));
    }
    return taken;
  }

  static double Mean(const TImage& image)
  {
    return std::accumulate(image.begin(), image.end(), 0.0) / static_cast<double>(image.size());
  }
  static double Mean(const std::vector<TImage>& images)
  {
    double sum = 0.0;
    for (const TImage& image : images) sum += Mean(image);
    return sum / static_cast<double>(images.size());
  }

  /// Variance in time of a pixel, over all pixels of pairs of images; what differs from pixel to pixel drops out.
  static double Variance(const std::vector<TImage>& images)
  {
    double squares = 0.0;
    double count = 0.0;
    for (size_t i = 0; i + 1 < images.size(); i += 2) {
      const double shift = Mean(images[i]) - Mean(images[i + 1]);
      for (size_t k = 0; k < images[i].size(); ++k) {
        const double difference = images[i][k] - images[i + 1][k] - shift;
        squares += difference * difference;
      }
      count += 2.0 * static_cast<double>(images[i].size());
    }
    return squares / count;
  }
};

/// How a gain is chosen, and what it is documented to be.
struct TGainMode
{
  const char* model;
  const char* name;
  int channel;
  int amplifier;
  int gain;
  double electronsPerCount;
  double readNoiseElectrons;
};

void PrintTo(const TGainMode& mode, std::ostream* out)
{
  *out << mode.model << " " << mode.name;
}

class PhotonTransfer : public Physics, public testing::WithParamInterface<TGainMode>
{
protected:
  void OpenInMode(const std::string& scene) const
  {
    Open(CameraText(GetParam().model, scene));
    ASSERT_EQ(SetADChannel(GetParam().channel), RC_SUCCESS);
    ASSERT_EQ(SetOutputAmplifier(GetParam().amplifier), RC_SUCCESS);
    ASSERT_EQ(SetPreAmpGain(GetParam().gain), RC_SUCCESS);
    ASSERT_EQ(SetImage(1, 1, 129, 384, 129, 384), RC_SUCCESS);
  }
  static constexpr size_t kPixels = size_t{256} * 256;
  static constexpr int kImages = 8;
};

TEST_P(PhotonTransfer, ShowsGainAndReadNoise)
{
  const TGainMode& mode = GetParam();
  OpenInMode("Scene=dark\n");
  ASSERT_EQ(SetExposureTime(1e-4f), RC_SUCCESS);
  const std::vector<TImage> dark = Take(kPixels, kImages);
  const double readNoise = std::sqrt(Variance(dark)) * mode.electronsPerCount;
  EXPECT_NEAR(readNoise, mode.readNoiseElectrons, 0.02 * mode.readNoiseElectrons);

  OpenInMode("Scene=flat\nPhotonsPerSecond=10000000\n");
  // From little light to half of the converter's range; the slope of variance over signal is the gain.
  const double mostElectrons = std::min(15000.0, 900.0 * mode.electronsPerCount);
  double signalSquares = 0.0;
  double products = 0.0;
  for (const double share : {0.1, 0.4, 0.7, 1.0}) {
    ASSERT_EQ(SetExposureTime(static_cast<float>(mostElectrons * share / 1e7)), RC_SUCCESS);
    const std::vector<TImage> lit = Take(kPixels, kImages);
    const double signal = Mean(lit) - Mean(dark);
    signalSquares += signal * signal;
    products += signal * (Variance(lit) - Variance(dark));
  }
  const double gain = signalSquares / products;
  EXPECT_NEAR(gain, mode.electronsPerCount, 0.02 * mode.electronsPerCount);
  RecordProperty("gainErrorPercent", std::to_string(100.0 * (gain / mode.electronsPerCount - 1.0)));
  RecordProperty("readNoiseErrorPercent", std::to_string(100.0 * (readNoise / mode.readNoiseElectrons - 1.0)));
}

INSTANTIATE_TEST_SUITE_P(EveryGain, PhotonTransfer,
                         testing::Values(TGainMode{"TRELLIS CMOS", "Low", 0, 0, 0, 15.0, 14.0},
                                         TGainMode{"TRELLIS CMOS", "High", 0, 1, 1, 0.6, 1.2},
                                         TGainMode{"TRELLIS CMOS", "Both", 1, 0, 2, 0.5, 1.3},
                                         TGainMode{"RQ512_LX", "1x", 0, 0, 0, 20.0, 18.0},
                                         TGainMode{"RQ512_LX", "2x", 0, 0, 1, 10.0, 18.0},
                                         TGainMode{"RQ512_LX", "10x", 0, 1, 2, 2.0, 2.0},
                                         TGainMode{"RQ512_LX", "30x", 0, 1, 3, 20.0 / 30.0, 2.0},
                                         TGainMode{"TARN 1M", "1.0", 0, 0, 0, 5.0, 4.5},
                                         TGainMode{"TARN 1M", "4.0", 0, 0, 1, 1.25, 4.5}),
                         [](const auto& mode) { return "Mode" + std::to_string(mode.index); });

TEST_F(Physics, ReadNoiseFallsWithTheReadoutRate)
{
  Open(CameraText("TRELLIS CMOS", "Scene=dark\n"));
  ASSERT_EQ(SetExposureTime(1e-4f), RC_SUCCESS);
  ASSERT_EQ(SetImage(1, 1, 1, 256, 1, 256), RC_SUCCESS);
  double noise[2] = {};
  for (const int speed : {0, 2}) { // 100 and 280 MHz
    ASSERT_EQ(SetHSSpeed(0, speed), RC_SUCCESS);
    noise[speed / 2] = std::sqrt(Variance(Take(256 * 256, 4)));
  }
  EXPECT_NEAR(noise[0] / noise[1], std::pow(100.0 / 280.0, 0.25), 0.02);
}

TEST_F(Physics, DarkSignalDoublesOverItsTemperatureStep)
{
  Open(CameraText("RQ512_LX", "Scene=dark\nDarkCurrent=400\nDarkDoubling=5\n"));
  ASSERT_EQ(SetOutputAmplifier(1), RC_SUCCESS);
  ASSERT_EQ(SetPreAmpGain(2), RC_SUCCESS);
  ASSERT_EQ(SetImage(1, 1, 1, 256, 1, 256), RC_SUCCESS);
  ASSERT_EQ(SetExposureTime(0.5f), RC_SUCCESS);
  ASSERT_EQ(CoolerON(), RC_SUCCESS);
  std::vector<double> signals;
  for (const int degrees : {10, 5, 0, -5}) {
    ASSERT_EQ(SetTemperature(degrees), RC_SUCCESS);
    float temperature = 0.0f;
    for (int i = 0; i < 100 && GetTemperatureF(&temperature) != RC_TEMP_STABILIZED; ++i)
      VXSIM_AdvanceTime(0, 10.0);
    ASSERT_EQ(GetTemperatureF(&temperature), RC_TEMP_STABILIZED);
    VXSIM_AdvanceTime(0, 1000.0);
    GetTemperatureF(&temperature);
    EXPECT_NEAR(temperature, static_cast<float>(degrees), 0.03f);
    signals.push_back(Mean(Take(256 * 256, 2)) - kBaseline);
  }
  for (size_t i = 1; i < signals.size(); ++i) EXPECT_NEAR(signals[i - 1] / signals[i], 2.0, 0.04) << i;

  int percent = -1;
  EXPECT_EQ(CoolerOFF(), RC_SUCCESS);
  float temperature = 0.0f;
  EXPECT_EQ(GetTemperatureF(&temperature), RC_TEMP_OFF);
  EXPECT_EQ(GetFIFOUsage(&percent), RC_SUCCESS);
}

TEST_F(Physics, AccumulationAddsSignalBaselineAndVariance)
{
  Open(CameraText("TRELLIS CMOS", "Scene=flat\nPhotonsPerSecond=100000\n"));
  ASSERT_EQ(SetImage(1, 1, 1, 256, 1, 256), RC_SUCCESS);
  ASSERT_EQ(SetExposureTime(0.01f), RC_SUCCESS);
  const std::vector<TImage> single = Take(256 * 256, 4);
  for (const int count : {4, 100}) { // the second sum exceeds 16 bits
    const std::vector<TImage> sum = Take(256 * 256, 4, count);
    EXPECT_NEAR(Mean(sum) / Mean(single), count, 0.002 * count);
    EXPECT_NEAR(Variance(sum) / Variance(single), count, 0.03 * count);
  }
}

TEST_F(Physics, BinningAddsSignalAndNoiseOnce)
{
  Open(CameraText("RQ512_LX", "Scene=flat\nPhotonsPerSecond=50000\nReadNoise=30\n"));
  ASSERT_EQ(SetOutputAmplifier(1), RC_SUCCESS);
  ASSERT_EQ(SetPreAmpGain(2), RC_SUCCESS);
  ASSERT_EQ(SetExposureTime(0.01f), RC_SUCCESS); // 450 electrons, 225 counts
  ASSERT_EQ(SetImage(1, 1, 1, 256, 1, 256), RC_SUCCESS);
  const std::vector<TImage> single = Take(256 * 256, 4);
  EXPECT_NEAR(Mean(single) - kBaseline, 225.0, 1.0);
  ASSERT_EQ(SetImage(4, 2, 1, 512, 1, 512), RC_SUCCESS);
  const std::vector<TImage> binned = Take(128 * 256, 8);
  EXPECT_NEAR((Mean(binned) - kBaseline) / (Mean(single) - kBaseline), 8.0, 0.04);
  EXPECT_NEAR(Variance(binned) / Variance(single), 8.0, 0.2);

  Open(CameraText("TARN 1M", "Scene=flat\nPhotonsPerSecond=10000\n"));
  ASSERT_EQ(SetExposureTime(0.01f), RC_SUCCESS);
  ASSERT_EQ(SetImage(1, 1, 1, 256, 1, 256), RC_SUCCESS);
  const double mean = Mean(Take(256 * 256)) - kBaseline;
  ASSERT_EQ(SetImage(4, 4, 1, 256, 1, 256), RC_SUCCESS); // this camera bins in squares only
  EXPECT_NEAR((Mean(Take(64 * 64)) - kBaseline) / mean, 16.0, 0.2);
}

} // namespace
