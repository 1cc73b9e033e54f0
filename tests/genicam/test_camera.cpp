// SPDX-License-Identifier: MIT
// A GigE Vision camera with a description and pixels of ours, on what Aravis simulates of the protocol:
//   genicam_test_camera ADDRESS SERIAL [formats=A,B] [without=A,B] [increment=N] [version=TEXT] [images=FILE]
// It prints "ready", and runs until it is killed or its parent ends. `images` has 16-bit pixels, one frame after the other,
// of the size that is asked for.
#include "tests/genicam/camera_description.h"
#include "tests/genicam/test_pattern.h"

#include <arv.h>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sys/prctl.h>
#include <unistd.h>

namespace {

constexpr guint32 kWidth = ARV_FAKE_CAMERA_REGISTER_WIDTH;

struct TCamera
{
  ArvFakeCamera* camera = nullptr;
  std::vector<char> images;

  guint32 Register(guint32 address) const
  {
    guint32 value = 0;
    arv_fake_camera_read_register(camera, address, &value);
    return value;
  }
};

void FillPacked(unsigned char* to, std::size_t group, std::uint32_t first, std::uint32_t second, bool isLowFirst)
{
  unsigned char* const at = to + 3 * group;
  at[0] = static_cast<unsigned char>(isLowFirst ? first : first >> 4);
  at[1] = static_cast<unsigned char>((second & 15) << 4 | (isLowFirst ? first >> 8 : first & 15));
  at[2] = static_cast<unsigned char>(second >> 4);
}

/// Within this call the buffer knows neither its size nor its format.
void Fill(ArvBuffer* buffer, void* data, guint32, guint32, ArvPixelFormat format)
{
  const TCamera& camera = *static_cast<const TCamera*>(data);
  const guint32 width = camera.Register(kWidth);
  const guint32 height = camera.Register(ARV_FAKE_CAMERA_REGISTER_HEIGHT);
  const guint32 left = camera.Register(ARV_FAKE_CAMERA_REGISTER_X_OFFSET);
  const guint32 top = camera.Register(ARV_FAKE_CAMERA_REGISTER_Y_OFFSET);
  const std::uint64_t frame = arv_buffer_get_frame_id(buffer);
  const int sentBits = static_cast<int>(format >> 16 & 0xFF);
  const int bits = format == Pfnc::kMono10   ? 10
                   : format == Pfnc::kMono12 ? 12
                   : format == Pfnc::kMono14 ? 14
                                             : sentBits;
  std::size_t size = 0;
  auto* const to = static_cast<unsigned char*>(const_cast<void*>(arv_buffer_get_data(buffer, &size)));
  const std::size_t needed = (static_cast<std::size_t>(width) * height * static_cast<unsigned>(sentBits)) / 8;
  if (!camera.images.empty()) {
    const std::size_t frames = camera.images.size() / needed;
    if (frames > 0) std::memcpy(to, camera.images.data() + (frame - 1) % frames * needed, needed);
    return;
  }
  std::uint32_t first = 0;
  for (std::size_t index = 0; index < static_cast<std::size_t>(width) * height; ++index) {
    const auto x = static_cast<std::uint32_t>(index % width + left);
    const auto y = static_cast<std::uint32_t>(index / width + top);
    const std::uint32_t value = TestPixel(x, y, frame, bits);
    if (sentBits == 8)
      to[index] = static_cast<unsigned char>(value);
    else if (sentBits == 16) {
      to[2 * index] = static_cast<unsigned char>(value);
      to[2 * index + 1] = static_cast<unsigned char>(value >> 8);
    } else if (index % 2 == 0)
      first = value;
    else
      FillPacked(to, index / 2, first, value, format == Pfnc::kMono12p);
  }
}

std::vector<std::string> Split(const std::string& text)
{
  std::vector<std::string> pieces;
  std::size_t start = 0;
  while (start <= text.size()) {
    const std::size_t end = std::min(text.find(',', start), text.size());
    pieces.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return pieces;
}

} // namespace

int main(int argc, char** argv)
{
  if (argc < 3) return 2;
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  TCameraTraits traits;
  TCamera camera;
  std::string version = "26.11.21.7";
  for (int index = 3; index < argc; ++index) {
    const std::string argument = argv[index];
    const std::size_t equals = argument.find('=');
    const std::string key = argument.substr(0, equals);
    const std::string value = equals == std::string::npos ? "" : argument.substr(equals + 1);
    if (key == "formats")
      traits.formats = Split(value);
    else if (key == "without") {
      const std::vector<std::string> names = Split(value);
      traits.without.insert(names.begin(), names.end());
    } else if (key == "increment")
      traits.increment = std::atoi(value.c_str());
    else if (key == "version")
      version = value;
    else if (key == "images") {
      std::ifstream file(value, std::ios::binary);
      camera.images.assign(std::istreambuf_iterator<char>(file), {});
    } else
      return 2;
  }

  char path[] = "/tmp/genicam_test_camera.XXXXXX";
  const int descriptor = mkstemp(path);
  const std::string description = CameraDescription(traits);
  if (descriptor < 0 ||
      write(descriptor, description.data(), description.size()) != static_cast<ssize_t>(description.size()))
    return 3;
  close(descriptor);
  ArvGvFakeCamera* const served = arv_gv_fake_camera_new_full(argv[1], argv[2], path);
  unlink(path);
  if (!served || !arv_gv_fake_camera_is_running(served)) return 4;
  camera.camera = arv_gv_fake_camera_get_fake_camera(served);
  arv_fake_camera_set_trigger_frequency(camera.camera, 1000.0);
  char text[32] = "";
  std::strncpy(text, version.c_str(), sizeof text - 1);
  arv_fake_camera_write_memory(camera.camera, 0x88, sizeof text, text);
  for (const auto& [address, value] :
       {std::pair(0x408U, 25U), {0x414U, 6U}, {0x418U, 5000U}, {0x41CU, 100'000'000U}, {0x404U, 100U}})
    arv_fake_camera_write_register(camera.camera, address, value);
  arv_fake_camera_set_fill_pattern(camera.camera, Fill, &camera);
  std::puts("ready");
  std::fflush(stdout);
  while (true) pause();
}
