// SPDX-License-Identifier: MIT
// Opening cameras by their addresses.
#include "vxcore/genicam/device_opening.h"

#include "vxcore.h"
#include "vxcore/genicam/log.h"

#include <algorithm>
#include <arpa/inet.h>
#include <chrono>
#include <mutex>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <string_view>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace vxgenicam {

namespace {

constexpr in_port_t kControlPort = 3956; ///< of GVCP, the control protocol of GigE Vision
constexpr std::string_view kUsb = "usb:";
constexpr std::string_view kFake = "Fake_";
constexpr std::size_t kMostNameLength = 15; ///< of a camera that Aravis simulates
// Names of Aravis, of interfaces and of protocols alike.
constexpr const char* kGigEVision = "GigEVision";
constexpr const char* kUsb3Vision = "USB3Vision";

/// Lists and opens one at a time: Aravis has one list of devices, and reads descriptions without a lock.
std::mutex& ListMutex()
{
  static std::mutex mutex;
  return mutex;
}

/// How this machine reaches a camera.
struct TRoute
{
  sockaddr_in address{};
  std::string camera; ///< addresses as numbers
  std::string own;
  int mtu = 0; ///< of the network between, 0: unknown
};

std::string TextOf(const sockaddr_in& address)
{
  char text[INET_ADDRSTRLEN] = "";
  return inet_ntop(AF_INET, &address.sin_addr, text, sizeof text) ? text : "";
}

/// Sends nothing to the camera; a name is looked up. None, with a message, when no network leads there.
std::optional<TRoute> RouteTo(const std::string& host, std::string& error)
{
  addrinfo hints{};
  hints.ai_family = AF_INET; // all that GigE Vision has
  hints.ai_socktype = SOCK_DGRAM;
  addrinfo* found = nullptr;
  const int failure = getaddrinfo(host.c_str(), nullptr, &hints, &found);
  if (failure != 0 || !found) {
    error = std::string("is neither an address nor the name of a host: ") + gai_strerror(failure);
    return std::nullopt;
  }
  sockaddr_in address = *reinterpret_cast<const sockaddr_in*>(found->ai_addr);
  freeaddrinfo(found);
  address.sin_port = htons(kControlPort);

  const int descriptor = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  sockaddr_in own{};
  socklen_t length = sizeof own;
  const bool isReached = descriptor >= 0 &&
                         connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
                         getsockname(descriptor, reinterpret_cast<sockaddr*>(&own), &length) == 0;
  TRoute route{address, TextOf(address), TextOf(own)};
  length = sizeof route.mtu;
  if (isReached && getsockopt(descriptor, IPPROTO_IP, IP_MTU, &route.mtu, &length) != 0) route.mtu = 0;
  if (descriptor >= 0) close(descriptor);
  if (isReached) return route;
  error = "no network of this machine leads there";
  return std::nullopt;
}

/// Whether a camera answers a question for a register, whoever controls it. Asks as often and for as long as Aravis does.
bool Answers(const TRoute& route)
{
  constexpr unsigned char kReadVersion[] = {0x42, 0x01, 0x00, 0x80, 0x00, 0x04,
                                            0x00, 0x01, 0x00, 0x00, 0x00, 0x00};
  constexpr int kAttempts = 5;
  constexpr std::chrono::milliseconds kAttempt(500);
  const int descriptor = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  bool hasAnswered = false;
  if (descriptor >= 0 &&
      connect(descriptor, reinterpret_cast<const sockaddr*>(&route.address), sizeof route.address) == 0)
    for (int attempt = 0; attempt < kAttempts && !hasAnswered; ++attempt) {
      const auto end = std::chrono::steady_clock::now() + kAttempt;
      send(descriptor, kReadVersion, sizeof kReadVersion, 0);
      pollfd answer{descriptor, POLLIN, 0};
      poll(&answer, 1, static_cast<int>(kAttempt.count()));
      unsigned char bytes[64];
      hasAnswered = recv(descriptor, bytes, sizeof bytes, MSG_DONTWAIT) > 0;
      if (!hasAnswered) std::this_thread::sleep_until(end); // when nothing listens there, that is known at once
    }
  if (descriptor >= 0) close(descriptor);
  return hasAnswered;
}

TObject<ArvDevice> OpenOnNetwork(const std::string& host, TError& failure, std::string& error)
{
  const std::optional<TRoute> route = RouteTo(host, error);
  // Waiting for a camera that is switched off does not delay the opening of others.
  if (!route || !Answers(*route)) return nullptr;
  const std::lock_guard lock(ListMutex());
  const TObject<GInetAddress> ownAddress(g_inet_address_new_from_string(route->own.c_str()));
  const TObject<GInetAddress> cameraAddress(g_inet_address_new_from_string(route->camera.c_str()));
  TObject<ArvDevice> device(arv_gv_device_new(ownAddress.get(), cameraAddress.get(), failure.Out()));
  if (failure.IsSet()) device.reset();
  return device;
}

std::string UsbIdentifierOf(const std::string& serial)
{
  arv_disable_interface(kGigEVision); // a list of the USB buses alone: nothing leaves the machine
  arv_enable_interface(kUsb3Vision);
  arv_update_device_list();
  for (unsigned int index = 0; index < arv_get_n_devices(); ++index) {
    const char* protocol = arv_get_device_protocol(index);
    const char* number = arv_get_device_serial_nbr(index);
    if (protocol && number && std::string_view(protocol) == kUsb3Vision && serial == number)
      return arv_get_device_id(index);
  }
  return "";
}

} // namespace

TObject<ArvDevice> OpenDevice(const std::string& address, int& code, std::string& error)
{
  TError failure;
  TObject<ArvDevice> device;
  TakeDescriptionError();
  if (address.starts_with(kFake)) {
    const std::lock_guard lock(ListMutex());
    const std::size_t length = address.size() - kFake.size();
    if (length > 0 && length <= kMostNameLength)
      device.reset(arv_fake_device_new(address.c_str() + kFake.size(), failure.Out()));
    else
      error = "the name of a simulated camera, Fake_1, has 1 to 15 characters behind Fake_";
  } else if (address.starts_with(kUsb)) {
    const std::lock_guard lock(ListMutex());
    const std::string serial = address.substr(kUsb.size());
    if (const std::string identifier = UsbIdentifierOf(serial); !identifier.empty())
      device.reset(arv_open_device(identifier.c_str(), failure.Out()));
    else
      error = "no USB camera with this serial number answers";
  } else
    device = OpenOnNetwork(address, failure, error);

  if (failure.IsSet()) {
    device.reset();
    error = failure.Text();
  }
  if (!device) {
    if (error.empty()) error = "no camera answers";
    // A program that has a camera for itself keeps others from reading, too.
    const int refusal = failure.Code();
    code = refusal == VX_ERR_NOT_WRITABLE || refusal == VX_ERR_DEVICE_IN_USE ? VX_ERR_DEVICE_IN_USE
                                                                             : VX_ERR_COMMUNICATION;
    return nullptr;
  }
  if (const std::string fault = TakeDescriptionError(); !fault.empty()) {
    error = "its description is not whole: " + fault;
    code = VX_ERR_COMMUNICATION;
    return nullptr;
  }
  if (ARV_IS_GV_DEVICE(device.get()) && !arv_gv_device_is_controller(ARV_GV_DEVICE(device.get()))) {
    error = "another program has the camera";
    code = VX_ERR_DEVICE_IN_USE;
    return nullptr;
  }
  code = VX_SUCCESS;
  return device;
}

std::optional<int> MaxPacketBytesFrom(const std::string& host)
{
  std::string error;
  const std::optional<TRoute> route = RouteTo(host, error);
  return route && route->mtu > 0 ? std::optional(route->mtu) : std::nullopt;
}

std::vector<std::string> DiscoverDevices()
{
  const std::lock_guard lock(ListMutex());
  arv_enable_interface(kGigEVision);
  arv_enable_interface(kUsb3Vision);
  arv_update_device_list();
  std::vector<std::string> addresses;
  for (unsigned int index = 0; index < arv_get_n_devices(); ++index) {
    const std::string_view protocol = arv_get_device_protocol(index);
    const char* const serial = arv_get_device_serial_nbr(index);
    if (protocol == kUsb3Vision)
      addresses.push_back(std::string(kUsb).append(serial ? serial : ""));
    else if (protocol == kGigEVision)
      addresses.emplace_back(arv_get_device_address(index));
  }
  std::ranges::sort(addresses); // the same cameras have the same numbers each time
  return addresses;
}

} // namespace vxgenicam
