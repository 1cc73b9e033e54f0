// SPDX-License-Identifier: MIT
// A GigE Vision camera made from the published protocol alone, so that a misreading which the receiver shared with a sender
// of its own library would show:
//   genicam_plain_camera ADDRESS SERIAL [KEY=VALUE]...
// It prints "ready", and runs until it is killed or its parent ends. Its description is CameraDescription(); registers are
// memory. Keys: see kNumbers below; formats=A,B and without=A,B as test_camera.cpp has them; edit=FROM|TO changes every
// FROM of the description, cut=N keeps N bytes of it.
//
// From the protocol are: all numbers in network byte order; the control packets on port 3956, with a key, flags, a command,
// a length and a request number that is not 0, and answers with a status and the same number; the registers of kVersion to
// kStreamAddress; the packets of a block: 0 the leader, from 1 the payload, the last one the trailer; block numbers of 16
// bits without 0; packet sizes that count the 28 bytes of IP and UDP; resend requests answered by the same packet again or
// by one without payload and with a status; a control channel that is lost when its owner is silent too long.
#include "tests/genicam/camera_description.h"
#include "tests/genicam/test_pattern.h"

#include <algorithm>
#include <arpa/inet.h>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <map>
#include <netinet/in.h>
#include <poll.h>
#include <sstream>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using TClock = std::chrono::steady_clock;
using TBytes = std::vector<unsigned char>;

// Registers of the protocol.
constexpr std::uint32_t kVersion = 0x0000;
constexpr std::uint32_t kDeviceMode = 0x0004; ///< big-endian, UTF-8
constexpr std::uint32_t kMacHigh = 0x0008;
constexpr std::uint32_t kOwnAddress = 0x0024;
constexpr std::uint32_t kSubnetMask = 0x0034;
constexpr std::uint32_t kVendorName = 0x0048; ///< 32 bytes, as the model's and the version's
constexpr std::uint32_t kModelName = 0x0068;
constexpr std::uint32_t kDeviceVersion = 0x0088;
constexpr std::uint32_t kSerialNumber = 0x00D8; ///< 16 bytes
constexpr std::uint32_t kFirstUrl = 0x0200;
constexpr std::uint32_t kStreamChannels = 0x0904;
constexpr std::uint32_t kCapability = 0x0934;
constexpr std::uint32_t kHeartbeatTimeout = 0x0938; ///< ms
constexpr std::uint32_t kTickFrequencyHigh = 0x093C;
constexpr std::uint32_t kTickFrequencyLow = 0x0940;
constexpr std::uint32_t kTimestampControl = 0x0944; ///< 1 sets to 0, 2 latches
constexpr std::uint32_t kTimestampHigh = 0x0948;
constexpr std::uint32_t kTimestampLow = 0x094C;
constexpr std::uint32_t kControlPrivilege = 0x0A00; ///< 1 exclusive, 2 control
constexpr std::uint32_t kStreamPort = 0x0D00;
constexpr std::uint32_t kPacketSize = 0x0D04; ///< low half; top bit: send a test packet; next: do not fragment
constexpr std::uint32_t kPacketDelay = 0x0D08;
constexpr std::uint32_t kStreamAddress = 0x0D18;

// Registers of the description.
constexpr std::uint32_t kWidth = 0x100;
constexpr std::uint32_t kHeight = 0x104;
constexpr std::uint32_t kAcquisition = 0x124;
constexpr std::uint32_t kPixelFormat = 0x128;
constexpr std::uint32_t kLeft = 0x130;
constexpr std::uint32_t kTop = 0x134;
constexpr std::uint32_t kFramePeriod = 0x138;
constexpr std::uint32_t kDescription = 0x10000;

constexpr std::uint16_t kUnknownCommand = 0x8001;
constexpr std::uint16_t kInvalidAddress = 0x8003;
constexpr std::uint16_t kAccessDenied = 0x8006;
constexpr std::uint16_t kPacketUnavailable = 0x800C;

constexpr std::size_t kIpAndUdpBytes = 28;
constexpr std::size_t kStreamHeaderBytes = 8;

/// What the camera does, and does wrong. Of "every" 3, the third, sixth, ... block has the fault.
std::map<std::string, long long> kNumbers =
    {                           // NOLINT(cppcoreguidelines-avoid-non-const-global-variables): set by main()
        {"increment", 1},       ///< of the image area, as described
        {"grid", 1},            ///< what is written to the area is lowered to a multiple of this, silently
        {"first", 65530},       ///< number of the first block
        {"ticks", 125'000'000}, ///< of a second
        {"ticksback", 0},       ///< every: the clock begins again
        {"padding", 0},         ///< bytes behind each row
        {"loseblock", 0},       ///< every: not sent
        {"losepacket", 0},      ///< every: without its last payload packet
        {"resend", 1},          ///< requests are: 0 ignored, 1 answered, 2 answered with "unavailable"
        {"swap", 0},            ///< every: neighbouring packets change places
        {"cutimage", 0},        ///< every: half of the rows that the leader names
        {"smallimage", 0},      ///< every: leader and payload have half of the rows
        {"mute", 0},            ///< after so many blocks control packets are not answered, and blocks go on
        {"negative", 0},        ///< the address of a register that has -20
        {"testpackets", 0},     ///< 1: has the command for them
        {"cut", 0}};

bool IsTurn(const char* fault, long long block)
{
  const long long every = kNumbers.at(fault);
  return every > 0 && block % every == 0;
}

void Put(TBytes& bytes, std::uint32_t value, int size)
{
  for (int shift = 8 * (size - 1); shift >= 0; shift -= 8)
    bytes.push_back(static_cast<unsigned char>(value >> shift));
}

/// Memory that is read and written in registers.
class TMemory
{
public:
  TMemory() : bytes_(0x40000) {}

  bool Has(std::size_t address, std::size_t size) const { return address + size <= bytes_.size(); }
  const unsigned char* At(std::uint32_t address) const { return bytes_.data() + address; }
  std::uint32_t Get(std::uint32_t address) const
  {
    std::uint32_t value = 0;
    std::memcpy(&value, At(address), sizeof value);
    return ntohl(value);
  }
  void Set(std::uint32_t address, std::uint32_t value)
  {
    value = htonl(value);
    Copy(address, &value, sizeof value);
  }
  void Copy(std::uint32_t address, const void* from, std::size_t size)
  {
    std::memcpy(bytes_.data() + address, from, size);
  }
  void SetText(std::uint32_t address, const std::string& text) { Copy(address, text.c_str(), text.size() + 1); }

private:
  TBytes bytes_;
};

TBytes Encode(const std::vector<std::uint32_t>& pixels, std::uint32_t format)
{
  TBytes bytes;
  if (format == 0x010C0006) { // Mono12Packed: the low four bits of both pixels share the middle byte
    for (std::size_t index = 0; index < pixels.size(); index += 2) {
      const bool hasSecond = index + 1 < pixels.size();
      const std::uint32_t second = hasSecond ? pixels[index + 1] : 0;
      Put(bytes, pixels[index] >> 4, 1);
      Put(bytes, (second & 15) << 4 | (pixels[index] & 15), 1);
      if (hasSecond) Put(bytes, second >> 4, 1);
    }
    return bytes;
  }
  // All others are bits from the lowest on: Mono8, Mono12p, and 16 bits little-endian.
  const std::uint32_t bits = format >> 16 & 0xFF;
  std::uint32_t waiting = 0;
  std::uint32_t count = 0;
  for (const std::uint32_t pixel : pixels) {
    waiting |= pixel << count;
    for (count += bits; count >= 8; count -= 8, waiting >>= 8) Put(bytes, waiting, 1);
  }
  if (count > 0) Put(bytes, waiting, 1);
  return bytes;
}

/// The stream channel.
class TStream
{
public:
  explicit TStream(TMemory& memory, const sockaddr_in& own) : memory_(memory)
  {
    sockaddr_in address = own;
    address.sin_port = 0;
    if (bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) std::exit(4);
  }

  std::uint64_t Ticks() const
  {
    const double seconds = std::chrono::duration<double>(TClock::now() - clockStart_).count();
    return static_cast<std::uint64_t>(seconds * static_cast<double>(kNumbers.at("ticks")));
  }
  void ResetTicks() { clockStart_ = TClock::now(); }
  long long Blocks() const { return blocks_; }

  void SendTestPacket() { Send(TBytes((memory_.Get(kPacketSize) & 0xFFFF) - kIpAndUdpBytes)); }

  void SendBlock()
  {
    const long long block = ++blocks_;
    const std::uint16_t id = nextId_;
    nextId_ = nextId_ == 0xFFFF ? 1 : static_cast<std::uint16_t>(nextId_ + 1);
    if (IsTurn("ticksback", block)) ResetTicks();
    sent_.push_back({id, Packets(id, block)});
    if (sent_.size() > 4) sent_.pop_front();
    if (IsTurn("loseblock", block)) return;
    std::vector<TBytes> packets = sent_.back().packets;
    if (IsTurn("losepacket", block)) packets.erase(packets.end() - 2);
    if (IsTurn("swap", block))
      for (std::size_t index = 0; index + 1 < packets.size(); index += 2) packets[index].swap(packets[index + 1]);
    for (const TBytes& packet : packets) Send(packet);
  }

  void Resend(std::uint16_t id, std::uint32_t first, std::uint32_t last)
  {
    if (kNumbers.at("resend") == 0) return;
    const auto found = std::find_if(sent_.begin(), sent_.end(), [id](const TBlock& one) { return one.id == id; });
    if (found == sent_.end()) return;
    for (std::uint32_t index = first; index <= last && index < found->packets.size(); ++index) {
      TBytes packet = found->packets[index];
      if (kNumbers.at("resend") == 2) {
        packet.resize(kStreamHeaderBytes);
        packet[0] = kPacketUnavailable >> 8;
        packet[1] = kPacketUnavailable & 0xFF;
      }
      Send(packet);
    }
  }

private:
  struct TBlock
  {
    std::uint16_t id;
    std::vector<TBytes> packets;
  };

  void Send(const TBytes& packet)
  {
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(static_cast<in_port_t>(memory_.Get(kStreamPort)));
    to.sin_addr.s_addr = htonl(memory_.Get(kStreamAddress));
    const int whether = (memory_.Get(kPacketSize) & 0x40000000) != 0 ? IP_PMTUDISC_DO : IP_PMTUDISC_DONT;
    setsockopt(socket_, IPPROTO_IP, IP_MTU_DISCOVER, &whether, sizeof whether);
    // What is too large for the network is lost.
    sendto(socket_, packet.data(), packet.size(), 0, reinterpret_cast<const sockaddr*>(&to), sizeof to);
  }

  static void AddHeader(TBytes& packet, std::uint16_t id, std::uint32_t kind, std::size_t index)
  {
    Put(packet, 0, 2); // status
    Put(packet, id, 2);
    Put(packet, kind << 24 | static_cast<std::uint32_t>(index), 4);
  }

  TBytes Image(std::uint16_t id, std::uint32_t height) const
  {
    constexpr int kMostBits = 16;
    const std::uint32_t width = memory_.Get(kWidth);
    const std::uint32_t format = memory_.Get(kPixelFormat);
    const auto padding = static_cast<std::size_t>(kNumbers.at("padding"));
    const int bits = format == 0x01080001 ? 8 : format == 0x01100007 ? kMostBits : 12;
    TBytes image;
    std::vector<std::uint32_t> pixels;
    for (std::uint32_t y = 0; y < height; ++y) {
      for (std::uint32_t x = 0; x < width; ++x)
        pixels.push_back(TestPixel(memory_.Get(kLeft) + x, memory_.Get(kTop) + y, id, bits));
      if (padding == 0) continue; // rows follow each other without a gap, even within a byte
      const TBytes row = Encode(pixels, format);
      image.insert(image.end(), row.begin(), row.end());
      image.resize(image.size() + padding, 0xEE);
      pixels.clear();
    }
    return padding == 0 ? Encode(pixels, format) : image;
  }

  std::vector<TBytes> Packets(std::uint16_t id, long long block) const
  {
    constexpr std::uint32_t kLeader = 1;
    constexpr std::uint32_t kTrailer = 2;
    constexpr std::uint32_t kPayload = 3;
    constexpr std::uint32_t kImage = 1;
    const std::uint32_t named = memory_.Get(kHeight) / (IsTurn("smallimage", block) ? 2 : 1);
    const std::uint32_t height = named / (IsTurn("cutimage", block) ? 2 : 1);
    const std::uint64_t ticks = Ticks();
    std::vector<TBytes> packets(1);
    AddHeader(packets[0], id, kLeader, 0);
    for (const std::uint32_t value :
         {kImage, static_cast<std::uint32_t>(ticks >> 32), static_cast<std::uint32_t>(ticks),
          memory_.Get(kPixelFormat), memory_.Get(kWidth), named, memory_.Get(kLeft), memory_.Get(kTop),
          static_cast<std::uint32_t>(kNumbers.at("padding")) << 16})
      Put(packets[0], value, 4);
    const TBytes image = Image(id, height);
    const std::size_t most = (memory_.Get(kPacketSize) & 0xFFFF) - kIpAndUdpBytes - kStreamHeaderBytes;
    for (std::size_t start = 0; start < image.size(); start += most) {
      TBytes packet;
      AddHeader(packet, id, kPayload, packets.size());
      packet.insert(packet.end(), image.begin() + static_cast<std::ptrdiff_t>(start),
                    image.begin() + static_cast<std::ptrdiff_t>(std::min(start + most, image.size())));
      packets.push_back(std::move(packet));
    }
    TBytes trailer;
    AddHeader(trailer, id, kTrailer, packets.size());
    Put(trailer, kImage, 4);
    Put(trailer, height, 4);
    packets.push_back(std::move(trailer));
    return packets;
  }

  TMemory& memory_;
  const int socket_ = socket(AF_INET, SOCK_DGRAM, 0);
  TClock::time_point clockStart_ = TClock::now();
  std::uint16_t nextId_ = static_cast<std::uint16_t>(kNumbers.at("first"));
  long long blocks_ = 0;
  std::deque<TBlock> sent_;
};

/// The control channel.
class TControl
{
public:
  TControl(TMemory& memory, TStream& stream, const sockaddr_in& own) : memory_(memory), stream_(stream)
  {
    if (bind(socket_, reinterpret_cast<const sockaddr*>(&own), sizeof own) != 0) std::exit(4);
  }

  /// Answers what comes within a time.
  void Serve(std::chrono::milliseconds time)
  {
    pollfd one{socket_, POLLIN, 0};
    if (poll(&one, 1, static_cast<int>(time.count())) != 1) return;
    unsigned char in[600];
    sockaddr_in from{};
    socklen_t length = sizeof from;
    const ssize_t size = recvfrom(socket_, in, sizeof in, 0, reinterpret_cast<sockaddr*>(&from), &length);
    if (size < 8 || in[0] != 0x42 || IsMute()) return;
    const TBytes answer = Answer(TBytes(in, in + size), from);
    if ((in[1] & 1) != 0 && !answer.empty())
      sendto(socket_, answer.data(), answer.size(), 0, reinterpret_cast<const sockaddr*>(&from), length);
  }

  void CheckHeartbeat()
  {
    const auto silence = TClock::now() - lastHeard_;
    if (memory_.Get(kControlPrivilege) == 0 || IsMute() ||
        silence < std::chrono::milliseconds(memory_.Get(kHeartbeatTimeout)))
      return;
    memory_.Set(kControlPrivilege, 0);
    memory_.Set(kAcquisition, 0);
  }

private:
  bool IsMute() const { return kNumbers.at("mute") > 0 && stream_.Blocks() >= kNumbers.at("mute"); }

  bool IsOwner(const sockaddr_in& from) const
  {
    return from.sin_port == owner_.sin_port && from.sin_addr.s_addr == owner_.sin_addr.s_addr;
  }

  TBytes Answer(const TBytes& in, const sockaddr_in& from)
  {
    const auto number = [&in](std::size_t at, int size) {
      std::uint32_t value = 0;
      for (int index = 0; index < size && at < in.size(); ++index) value = value << 8 | in[at++];
      return value;
    };
    const std::uint32_t command = number(2, 2);
    const bool isOwned = memory_.Get(kControlPrivilege) != 0;
    if (isOwned && IsOwner(from)) lastHeard_ = TClock::now();
    std::uint16_t status = 0;
    TBytes body;
    switch (command) {
    case 0x0040: // resend; the first half of the body is the channel
      stream_.Resend(static_cast<std::uint16_t>(number(10, 2)), number(12, 4) & 0xFFFFFF,
                     number(16, 4) & 0xFFFFFF);
      return {};
    case 0x0080: // read registers
      for (std::size_t at = 8; at + 4 <= in.size(); at += 4) {
        if (!memory_.Has(number(at, 4), 4)) status = kInvalidAddress;
        Put(body, status == 0 ? memory_.Get(number(at, 4)) : 0, 4);
      }
      break;
    case 0x0082: { // write registers; the answer counts those that were written
      std::uint32_t written = 0;
      for (std::size_t at = 8; at + 8 <= in.size() && status == 0; at += 8) {
        status = Write(number(at, 4), number(at + 4, 4), from);
        written += status == 0 ? 1 : 0;
      }
      Put(body, written, 4);
      break;
    }
    case 0x0084: { // read memory
      const std::uint32_t address = number(8, 4);
      const std::uint32_t size = number(14, 2);
      if (!memory_.Has(address, size)) {
        status = kInvalidAddress;
        break;
      }
      Put(body, address, 4);
      body.insert(body.end(), memory_.At(address), memory_.At(address) + size);
      break;
    }
    case 0x0086: // write memory
      status = !isOwned || !IsOwner(from)             ? kAccessDenied
               : memory_.Has(number(8, 4), in.size()) ? 0
                                                      : kInvalidAddress;
      if (status == 0) memory_.Copy(number(8, 4), in.data() + 12, in.size() - 12);
      Put(body, static_cast<std::uint32_t>(in.size() - 12), 4);
      break;
    default:
      status = kUnknownCommand;
    }
    TBytes out;
    Put(out, status, 2);
    Put(out, command + 1, 2);
    Put(out, static_cast<std::uint32_t>(body.size()), 2);
    Put(out, number(6, 2), 2);
    out.insert(out.end(), body.begin(), body.end());
    return out;
  }

  std::uint16_t Write(std::uint32_t address, std::uint32_t value, const sockaddr_in& from)
  {
    const bool isOwned = memory_.Get(kControlPrivilege) != 0;
    if (isOwned ? !IsOwner(from) : address != kControlPrivilege) return kAccessDenied;
    if (!memory_.Has(address, 4)) return kInvalidAddress;
    if (address == kControlPrivilege) owner_ = from;
    if (address == kControlPrivilege) lastHeard_ = TClock::now();
    if (address == kWidth || address == kHeight || address == kLeft || address == kTop)
      value -= value % static_cast<std::uint32_t>(kNumbers.at("grid"));
    if (address == kTimestampControl && (value & 1) != 0) stream_.ResetTicks();
    if (address == kTimestampControl && (value & 2) != 0) {
      const std::uint64_t ticks = stream_.Ticks();
      memory_.Set(kTimestampHigh, static_cast<std::uint32_t>(ticks >> 32));
      memory_.Set(kTimestampLow, static_cast<std::uint32_t>(ticks));
    }
    memory_.Set(address, address == kPacketSize ? value & 0x4000FFFF : value);
    if (address == kPacketSize && (value & 0x80000000) != 0) stream_.SendTestPacket();
    return 0;
  }

  TMemory& memory_;
  TStream& stream_;
  const int socket_ = socket(AF_INET, SOCK_DGRAM, 0);
  sockaddr_in owner_{};
  TClock::time_point lastHeard_;
};

void ReplaceAll(std::string& text, const std::string& from, const std::string& to)
{
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
}

void FillBootstrap(TMemory& memory, const sockaddr_in& own, const std::string& serial,
                   const std::string& description)
{
  const auto ticks = static_cast<std::uint64_t>(kNumbers.at("ticks"));
  for (const auto& [address, value] : std::initializer_list<std::pair<std::uint32_t, std::uint32_t>>{
           {kVersion, 0x00010002}, // 1.2
           {kDeviceMode, 0x80000001},
           {kMacHigh, 0x0200},
           {kMacHigh + 4, 0x00000001}, // locally administered
           {kOwnAddress, ntohl(own.sin_addr.s_addr)},
           {kSubnetMask, 0xFF000000},
           {kStreamChannels, 1},
           {kCapability, 0x00000007}, // resends, memory writes, several registers at once
           {kHeartbeatTimeout, 3000},
           {kTickFrequencyHigh, static_cast<std::uint32_t>(ticks >> 32)},
           {kTickFrequencyLow, static_cast<std::uint32_t>(ticks)},
           {kPacketSize, 0x40000000 | 1400},
           {kPacketDelay, 0},
           {kWidth, 512},
           {kHeight, 512},
           {0x108, 1}, // binning
           {0x10C, 1},
           {0x118, 2048}, // sensor
           {0x11C, 2048},
           {0x120, 10'000}, // exposure
           {kPixelFormat, 0x01080001},
           {kFramePeriod, 40'000}})
    memory.Set(address, value);
  memory.SetText(kVendorName, "vxmcd");
  memory.SetText(kModelName, "Plain");
  memory.SetText(kDeviceVersion, "1.2.3");
  memory.SetText(kSerialNumber, serial);
  memory.SetText(kDescription, description);
  std::ostringstream url;
  url << "Local:camera.xml;" << std::hex << kDescription << ";" << description.size();
  memory.SetText(kFirstUrl, url.str());
}

std::vector<std::string> Split(const std::string& text)
{
  std::vector<std::string> pieces;
  std::istringstream rest(text);
  for (std::string piece; std::getline(rest, piece, ',');) pieces.push_back(piece);
  return pieces;
}

} // namespace

int main(int argc, char** argv)
{
  if (argc < 3) return 2;
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  TCameraTraits traits;
  traits.formats = {"Mono8", "Mono12Packed", "Mono12p", "Mono16"};
  std::vector<std::pair<std::string, std::string>> edits;
  for (int index = 3; index < argc; ++index) {
    const std::string argument = argv[index];
    const std::size_t equals = std::min(argument.find('='), argument.size() - 1);
    const std::string key = argument.substr(0, equals);
    const std::string value = argument.substr(equals + 1);
    const std::size_t bar = value.find('|');
    if (key == "formats")
      traits.formats = Split(value);
    else if (key == "without") {
      for (const std::string& name : Split(value)) traits.without.insert(name);
    } else if (key == "edit" && bar != std::string::npos)
      edits.emplace_back(value.substr(0, bar), value.substr(bar + 1));
    else if (kNumbers.count(key) > 0)
      kNumbers[key] = std::atoll(value.c_str());
    else
      return 2;
  }
  traits.increment = static_cast<int>(kNumbers["increment"]);
  std::string description = CameraDescription(traits);
  ReplaceAll(description, "/ 8</Formula>", "/ 8 + H * " + std::to_string(kNumbers["padding"]) + "</Formula>");
  if (kNumbers["testpackets"] > 0)
    ReplaceAll(
        description, "<Port ",
        "<Command Name=\"GevSCPSFireTestPacket\"><pValue>Fire</pValue><CommandValue>1</CommandValue></Command>"
        "<MaskedIntReg Name=\"Fire\"><Address>0xD04</Address><Length>4</Length><AccessMode>RW</AccessMode>"
        "<pPort>Device</pPort><Bit>0</Bit><Endianess>BigEndian</Endianess></MaskedIntReg><Port ");
  for (const auto& [from, to] : edits) ReplaceAll(description, from, to);
  if (kNumbers["cut"] > 0) description.resize(static_cast<std::size_t>(kNumbers["cut"]));

  sockaddr_in own{};
  own.sin_family = AF_INET;
  own.sin_port = htons(3956);
  if (inet_pton(AF_INET, argv[1], &own.sin_addr) != 1) return 2;
  TMemory memory;
  FillBootstrap(memory, own, argv[2], description);
  if (const auto address = static_cast<std::uint32_t>(kNumbers["negative"]))
    memory.Set(address, static_cast<std::uint32_t>(-20));
  TStream stream(memory, own);
  TControl control(memory, stream, own);
  std::puts("ready");
  std::fflush(stdout);
  for (TClock::time_point next = TClock::now();;) {
    const bool isStreaming = memory.Get(kAcquisition) == 1;
    const auto rest = std::chrono::duration_cast<std::chrono::milliseconds>(next - TClock::now());
    const bool isTime = isStreaming && next <= TClock::now();
    control.Serve(!isStreaming ? std::chrono::milliseconds(20) : std::max(rest, std::chrono::milliseconds(0)));
    control.CheckHeartbeat();
    if (!isStreaming) next = TClock::now();
    if (!isTime) continue;
    next += std::chrono::microseconds(memory.Get(kFramePeriod));
    if (memory.Get(kAcquisition) == 1) stream.SendBlock();
  }
}
