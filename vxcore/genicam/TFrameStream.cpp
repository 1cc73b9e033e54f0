// SPDX-License-Identifier: MIT
// Streams of Aravis.
#include "vxcore/genicam/TFrameStream.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace vxgenicam {

namespace {

constexpr std::size_t kPoolBytes = 256UL * 1024 * 1024;
constexpr std::size_t kMinBuffers = 8;
constexpr std::size_t kMaxBuffers = 64;
constexpr int kReceiveBufferBytes = 16 * 1024 * 1024; ///< the system gives no more than net.core.rmem_max
constexpr guint kPacketTimeoutUs = 20'000;
constexpr guint kFrameRetentionUs = 100'000;

/// Whether this descriptor of the process is the UDP socket of that port.
bool IsSocketOfPort(int descriptor, in_port_t port)
{
  int kind = 0;
  socklen_t length = sizeof kind;
  if (getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &kind, &length) != 0 || kind != SOCK_DGRAM) return false;
  sockaddr_in address{};
  length = sizeof address;
  return getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &length) == 0 &&
         address.sin_family == AF_INET && ntohs(address.sin_port) == port;
}

/// Enlarges the receive buffer of the stream's socket now. Aravis does so when the first packet has come, and by then the
/// first frame may have overflowed the small buffer that sockets begin with.
void EnlargeReceiveBuffer(ArvGvStream* stream)
{
  const in_port_t port = arv_gv_stream_get_port(stream);
  DIR* const directory = opendir("/proc/self/fd");
  if (!directory) return;
  while (const dirent* entry = readdir(directory)) { // NOLINT(concurrency-mt-unsafe): a stream of our own
    const int descriptor = static_cast<int>(std::strtol(entry->d_name, nullptr, 10));
    if (descriptor > 2 && IsSocketOfPort(descriptor, port))
      setsockopt(descriptor, SOL_SOCKET, SO_RCVBUF, &kReceiveBufferBytes, sizeof kReceiveBufferBytes);
  }
  closedir(directory);
}

} // namespace

std::unique_ptr<TFrameStream> TFrameStream::Make(ArvDevice* device, const TStreamOptions& options,
                                                 std::size_t payloadBytes, TWakeUp& wakeUp, std::string& error)
{
  if (ARV_IS_GV_DEVICE(device))
    arv_gv_device_set_stream_options(ARV_GV_DEVICE(device), options.usesPacketSocket
                                                                ? ARV_GV_STREAM_OPTION_NONE
                                                                : ARV_GV_STREAM_OPTION_PACKET_SOCKET_DISABLED);
  TError failure;
  TObject<ArvStream> stream(arv_device_create_stream(device, OnStream, &wakeUp, failure.Out()));
  if (!stream) {
    error = failure.Text();
    return nullptr;
  }
  if (ARV_IS_GV_STREAM(stream.get())) {
    EnlargeReceiveBuffer(ARV_GV_STREAM(stream.get()));
    g_object_set(stream.get(), "socket-buffer", ARV_GV_STREAM_SOCKET_BUFFER_FIXED, "socket-buffer-size",
                 kReceiveBufferBytes, "packet-timeout", kPacketTimeoutUs, "frame-retention", kFrameRetentionUs,
                 "packet-resend", ARV_GV_STREAM_PACKET_RESEND_ALWAYS, nullptr);
  }
  const std::size_t bySize =
      std::clamp(kPoolBytes / std::max<std::size_t>(payloadBytes, 1), kMinBuffers, kMaxBuffers);
  const std::size_t buffers = options.poolFrames > 0 ? static_cast<std::size_t>(options.poolFrames) : bySize;
  for (std::size_t index = 0; index < buffers; ++index) {
    // Not by Aravis, which ends the program when there is no memory. Zeros, for frames that come incomplete.
    void* const memory = std::calloc(payloadBytes, 1);
    if (!memory) {
      error = "there is no memory for " + std::to_string(buffers) + " frames of " + std::to_string(payloadBytes) +
              " bytes";
      return nullptr;
    }
    arv_stream_push_buffer(stream.get(), arv_buffer_new_full(payloadBytes, memory, memory, std::free));
  }
  return std::unique_ptr<TFrameStream>(new TFrameStream(std::move(stream)));
}

void TFrameStream::OnStream(void* wakeUp, ArvStreamCallbackType type, ArvBuffer*)
{
  if (type == ARV_STREAM_CALLBACK_TYPE_BUFFER_DONE) static_cast<TWakeUp*>(wakeUp)->Wake();
}

ArvBuffer* TFrameStream::Take()
{
  return arv_stream_try_pop_buffer(stream_.get());
}

void TFrameStream::Return(ArvBuffer* buffer, bool clears)
{
  if (clears) {
    std::size_t bytes = 0;
    void* const pixels = const_cast<void*>(arv_buffer_get_data(buffer, &bytes));
    if (pixels) std::memset(pixels, 0, bytes);
  }
  arv_stream_push_buffer(stream_.get(), buffer);
}

} // namespace vxgenicam
