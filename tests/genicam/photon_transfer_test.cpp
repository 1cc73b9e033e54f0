// SPDX-License-Identifier: MIT
// Images of a simulated sensor, sent by a GigE Vision camera: gain and read noise measured from what arrives are those that
// the sensor is configured to have.
#include "tests/genicam/GenICamTest.h"

#include <cmath>
#include <fstream>
#include <numeric>

namespace {

using TImages = std::vector<std::vector<unsigned short>>;

constexpr int kImages = 8;
constexpr int kSide = 256;
constexpr double kElectronsPerCount = 5.0; ///< of the model "TARN 1M" with gain 0
constexpr double kReadNoiseElectrons = 4.5;

class GenICamPhysics : public GenICamTest
{
protected:
  static TImages Take()
  {
    EXPECT_EQ(SetImage(1, 1, 129, 128 + kSide, 129, 128 + kSide), RC_SUCCESS);
    EXPECT_EQ(SetAcquisitionMode(3), RC_SUCCESS);
    EXPECT_EQ(SetNumberKinetics(kImages), RC_SUCCESS);
    EXPECT_EQ(StartAcquisition(), RC_SUCCESS);
    int status = RC_ACQUIRING;
    for (int attempt = 0; status == RC_ACQUIRING && attempt < 200; ++attempt) {
      WaitForAcquisitionTimeOut(50);
      GetStatus(&status);
    }
    TImages images(kImages, std::vector<unsigned short>(kSide * kSide));
    for (auto& image : images) EXPECT_EQ(GetOldestImage16(image.data(), image.size()), RC_SUCCESS);
    return images;
  }

  /// Images that the simulated sensor makes, taken from a camera that sends them.
  TImages Relay(const std::string& scene, float exposure)
  {
    const std::string file = testing::TempDir() + "genicam_photon_transfer.raw";
    char directory[] = "";
    ShutDown();
    VXSIM_Configure(("[Simulator]\nCameras=1\n[Camera0]\nModel=TARN 1M\nClock=free\n" + scene).c_str());
    EXPECT_EQ(Initialize(directory), RC_SUCCESS);
    EXPECT_EQ(SetPreAmpGain(0), RC_SUCCESS);
    EXPECT_EQ(SetExposureTime(exposure), RC_SUCCESS);
    std::ofstream stream(file, std::ios::binary);
    for (const auto& image : Take())
      stream.write(reinterpret_cast<const char*>(image.data()), static_cast<std::streamsize>(image.size() * 2));
    stream.close();
    ShutDown();
    Open({"formats=Mono16", "images=" + file});
    EXPECT_EQ(SetKineticCycleTime(0.01F), RC_SUCCESS);
    TImages images = Take();
    ShutDown();
    Kill("127.0.0.1");
    std::remove(file.c_str());
    return images;
  }

  static double Mean(const std::vector<unsigned short>& image)
  {
    return std::accumulate(image.begin(), image.end(), 0.0) / static_cast<double>(image.size());
  }
  static double Mean(const TImages& images)
  {
    double sum = 0.0;
    for (const auto& image : images) sum += Mean(image);
    return sum / kImages;
  }
  /// Variance in time of a pixel, over pairs of images.
  static double Variance(const TImages& images)
  {
    double squares = 0.0;
    for (std::size_t pair = 0; pair < kImages; pair += 2) {
      const double shift = Mean(images[pair]) - Mean(images[pair + 1]);
      for (std::size_t pixel = 0; pixel < images[pair].size(); ++pixel) {
        const double difference = images[pair][pixel] - images[pair + 1][pixel] - shift;
        squares += difference * difference;
      }
    }
    return squares / (kImages * kSide * kSide);
  }
};

TEST_F(GenICamPhysics, PhotonTransferShowsGainAndReadNoise)
{
  const TImages dark = Relay("Scene=dark\n", 1e-4F);
  EXPECT_NEAR(std::sqrt(Variance(dark)) * kElectronsPerCount, kReadNoiseElectrons, 0.02 * kReadNoiseElectrons);
  const TImages lit = Relay("Scene=flat\nPhotonsPerSecond=10000000\n", 4.5e-4F);
  const double gain = (Mean(lit) - Mean(dark)) / (Variance(lit) - Variance(dark));
  EXPECT_NEAR(gain, kElectronsPerCount, 0.02 * kElectronsPerCount);
}

} // namespace
