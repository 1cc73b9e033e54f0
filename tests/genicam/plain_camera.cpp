// SPDX-License-Identifier: MIT
// A GigE Vision camera made from the published protocol alone, so that a misreading which the receiver shared with a sender
// of its own library would show:
//   genicam_plain_camera ADDRESS SERIAL [KEY=VALUE]...
// It prints "ready", and runs until it is killed or its parent ends. Its description is CameraDescription(); registers are
// memory. Keys: those of numbers, below; formats=A,B and without=A,B as test_camera.cpp has them; edit=FROM|TO, which changes
// every FROM of the description.
//
// From the protocol are: numbers in network byte order; control packets on port 3956 with a key, flags, a command, a length
// and a request number, and answers with a status and the same number; the registers of FillBootstrap() and those named in
// front of it; the packets of a block: 0 the leader, then the payload, at last the trailer; block numbers of 16 bits without
// 0; packet sizes that count the 28 bytes of IP and UDP; resend requests, answered by the same packet or by one without
// payload and with a status; a controlling program that loses control when it is silent too long.
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
using std::chrono::milliseconds;

/// What the camera does, and does wrong. Of "every" 3, the third, sixth, ... block has the fault.
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): set by main()
std::map<std::string, std::uint32_t> numbers = {
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
    {"answers", 0},         ///< so many control packets are answered; 0: all
    {"negative", 0},        ///< the address of a register that has -20
    {"testpackets", 0},     ///< 1: has the command for them
    {"cut", 0},             ///< keeps so many bytes of the description
};

bool IsTurn(const char* fault, std::uint32_t block)
{
  const std::uint32_t every = numbers.at(fault);
  return every > 0 && block % every == 0;
}

// Registers of the protocol that the camera acts on.
constexpr std::uint32_t kHeartbeatTimeout = 0x0938; ///< ms
constexpr std::uint32_t kTimestampControl = 0x0944; ///< 1 sets to 0, 2 latches
constexpr std::uint32_t kTimestamp = 0x0948;        ///< 64 bits
constexpr std::uint32_t kControlPrivilege = 0x0A00; ///< 1 exclusive, 2 control
constexpr std::uint32_t kStreamPort = 0x0D00;
constexpr std::uint32_t kPacketSize = 0x0D04; ///< low half; top bit: send a test packet; next: do not fragment
constexpr std::uint32_t kStreamAddress = 0x0D18;
// Those of the description.
constexpr std::uint32_t kWidth = 0x100;
constexpr std::uint32_t kHeight = 0x104;
constexpr std::uint32_t kAcquisition = 0x124;
constexpr std::uint32_t kPixelFormat = 0x128;
constexpr std::uint32_t kLeft = 0x130;
constexpr std::uint32_t kTop = 0x134;
constexpr std::uint32_t kFramePeriod = 0x138;

constexpr std::uint16_t kUnknownCommand = 0x8001;
constexpr std::uint16_t kInvalidAddress = 0x8003;
constexpr std::uint16_t kAccessDenied = 0x8006;
constexpr std::uint16_t kPacketUnavailable = 0x800C;

void Put(TBytes& bytes, std::uint32_t value, int size = 4)
{
  while (size-- > 0) bytes.push_back(static_cast<unsigned char>(value >> 8 * size));
}

/// Memory that is read and written in registers.
class TMemory
{
public:
  TMemory() : bytes_(0x40000) {}

  bool Has(std::size_t address, std::size_t size) const { return address + size <= bytes_.size(); }
  const unsigned char* At(std::uint32_t address) const { return bytes_.data() + address; }
  std::uint32_t operator[](std::uint32_t address) const
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
  if (format == Pfnc::kMono12Packed) { // the low four bits of both pixels share the middle byte
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
  std::uint32_t waiting = 0;
  std::uint32_t count = 0;
  for (const std::uint32_t pixel : pixels) {
    waiting |= pixel << count;
    for (count += format >> 16 & 0xFF; count >= 8; count -= 8, waiting >>= 8) Put(bytes, waiting, 1);
  }
  if (count > 0) Put(bytes, waiting, 1);
  return bytes;
}

int SocketAt(const sockaddr_in& own)
{
  const int descriptor = socket(AF_INET, SOCK_DGRAM, 0);
  if (bind(descriptor, reinterpret_cast<const sockaddr*>(&own), sizeof own) != 0) std::exit(4);
  return descriptor;
}

/// The stream channel, GVSP.
class TStream
{
public:
  TStream(TMemory& memory, sockaddr_in own) : memory_(memory), socket_((own.sin_port = 0, SocketAt(own))) {}

  std::uint64_t Ticks() const
  {
    return static_cast<std::uint64_t>(std::chrono::duration<double>(TClock::now() - clockStart_).count() *
                                      numbers.at("ticks"));
  }
  void ResetTicks() { clockStart_ = TClock::now(); }
  std::uint32_t Blocks() const { return blocks_; }

  void SendTestPacket() { Send(TBytes((memory_[kPacketSize] & 0xFFFF) - kIpAndUdpBytes)); }

  void SendBlock()
  {
    const std::uint32_t block = ++blocks_;
    if (IsTurn("ticksback", block)) ResetTicks();
    sent_.push_back({nextId_, Packets(nextId_, block)});
    if (sent_.size() > 4) sent_.pop_front();
    if (++nextId_ == 0) ++nextId_;
    if (IsTurn("loseblock", block)) return;
    std::vector<TBytes> packets = sent_.back().packets;
    if (IsTurn("losepacket", block)) packets.erase(packets.end() - 2);
    for (std::size_t index = 1; index < packets.size() && IsTurn("swap", block); index += 2)
      packets[index - 1].swap(packets[index]);
    for (const TBytes& packet : packets) Send(packet);
  }

  void Resend(std::uint16_t id, std::uint32_t first, std::uint32_t last)
  {
    const auto found = std::find_if(sent_.begin(), sent_.end(), [id](const TBlock& one) { return one.id == id; });
    if (found == sent_.end() || numbers.at("resend") == 0) return;
    for (std::uint32_t index = first; index <= last && index < found->packets.size(); ++index) {
      TBytes packet = found->packets[index];
      if (numbers.at("resend") == 2) {
        packet.resize(kHeaderBytes);
        packet[0] = kPacketUnavailable >> 8;
        packet[1] = kPacketUnavailable & 0xFF;
      }
      Send(packet);
    }
  }

private:
  static constexpr std::size_t kIpAndUdpBytes = 28;
  static constexpr std::size_t kHeaderBytes = 8;

  struct TBlock
  {
    std::uint16_t id;
    std::vector<TBytes> packets;
  };

  void Send(const TBytes& packet)
  {
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(static_cast<in_port_t>(memory_[kStreamPort]));
    to.sin_addr.s_addr = htonl(memory_[kStreamAddress]);
    const int whether = (memory_[kPacketSize] & 0x40000000) != 0 ? IP_PMTUDISC_DO : IP_PMTUDISC_DONT;
    setsockopt(socket_, IPPROTO_IP, IP_MTU_DISCOVER, &whether, sizeof whether);
    // What is too large for the network is lost.
    sendto(socket_, packet.data(), packet.size(), 0, reinterpret_cast<const sockaddr*>(&to), sizeof to);
  }

  static TBytes Packet(std::uint16_t id, std::uint32_t kind, std::size_t index)
  {
    TBytes packet;
    Put(packet, id); // above it is the status, 0
    Put(packet, kind << 24 | static_cast<std::uint32_t>(index));
    return packet;
  }

  TBytes Image(std::uint16_t id, std::uint32_t height) const
  {
    const std::uint32_t format = memory_[kPixelFormat];
    const int bits = format == Pfnc::kMono8 ? 8 : format == Pfnc::kMono16 ? 16 : 12;
    TBytes image;
    std::vector<std::uint32_t> pixels;
    for (std::uint32_t y = 0; y < height; ++y) {
      for (std::uint32_t x = 0; x < memory_[kWidth]; ++x)
        pixels.push_back(TestPixel(memory_[kLeft] + x, memory_[kTop] + y, id, bits));
      if (numbers.at("padding") == 0) continue; // rows follow each other without a gap, even within a byte
      const TBytes row = Encode(pixels, format);
      image.insert(image.end(), row.begin(), row.end());
      image.resize(image.size() + numbers.at("padding"), 0xEE);
      pixels.clear();
    }
    return image.empty() ? Encode(pixels, format) : image;
  }

  std::vector<TBytes> Packets(std::uint16_t id, std::uint32_t block) const
  {
    constexpr std::uint32_t kImage = 1;
    const std::uint32_t named = memory_[kHeight] / (IsTurn("smallimage", block) ? 2 : 1);
    const std::uint32_t height = named / (IsTurn("cutimage", block) ? 2 : 1);
    const std::uint64_t ticks = Ticks();
    std::vector<TBytes> packets = {Packet(id, 1, 0)};
    for (const std::uint32_t value : {kImage, static_cast<std::uint32_t>(ticks >> 32),
                                      static_cast<std::uint32_t>(ticks), memory_[kPixelFormat], memory_[kWidth],
                                      named, memory_[kLeft], memory_[kTop], numbers.at("padding") << 16})
      Put(packets[0], value);
    const TBytes image = Image(id, height);
    const std::size_t most = (memory_[kPacketSize] & 0xFFFF) - kIpAndUdpBytes - kHeaderBytes;
    for (std::size_t start = 0; start < image.size(); start += most) {
      TBytes& packet = packets.emplace_back(Packet(id, 3, packets.size()));
      packet.insert(packet.end(), image.data() + start, image.data() + std::min(start + most, image.size()));
    }
    TBytes& trailer = packets.emplace_back(Packet(id, 2, packets.size()));
    Put(trailer, kImage);
    Put(trailer, height);
    return packets;
  }

  TMemory& memory_;
  const int socket_;
  TClock::time_point clockStart_ = TClock::now();
  std::uint16_t nextId_ = static_cast<std::uint16_t>(numbers.at("first"));
  std::uint32_t blocks_ = 0;
  std::deque<TBlock> sent_;
};

/// The control channel, GVCP.
class TControl
{
public:
  TControl(TMemory& memory, TStream& stream, const sockaddr_in& own)
      : memory_(memory), stream_(stream), socket_(SocketAt(own))
  {
  }

  /// Answers what comes within a time.
  void Serve(milliseconds time)
  {
    const std::uint32_t most = numbers.at("answers");
    const bool isMute =
        (numbers.at("mute") > 0 && stream_.Blocks() >= numbers.at("mute")) || (most > 0 && answers_ == most);
    pollfd one{socket_, POLLIN, 0};
    if (poll(&one, 1, static_cast<int>(time.count())) == 1) {
      TBytes in(600);
      sockaddr_in from{};
      socklen_t length = sizeof from;
      auto* const peer = reinterpret_cast<sockaddr*>(&from);
      const ssize_t size = recvfrom(socket_, in.data(), in.size(), 0, peer, &length);
      if (size < 8 || in[0] != 0x42 || isMute) return;
      in.resize(static_cast<std::size_t>(size));
      ++answers_;
      const TBytes answer = Answer(in, from);
      if ((in[1] & 1) != 0) sendto(socket_, answer.data(), answer.size(), 0, peer, length);
    }
    const bool isOwned = memory_[kControlPrivilege] != 0;
    if (!isOwned || isMute || TClock::now() - lastHeard_ < milliseconds(memory_[kHeartbeatTimeout])) return;
    memory_.Set(kControlPrivilege, 0);
    memory_.Set(kAcquisition, 0);
  }

private:
  bool IsOwner(const sockaddr_in& from) const
  {
    return memory_[kControlPrivilege] != 0 && from.sin_port == owner_.sin_port &&
           from.sin_addr.s_addr == owner_.sin_addr.s_addr;
  }

  TBytes Answer(const TBytes& in, const sockaddr_in& from)
  {
    const auto number = [&in](std::size_t at, int size = 4) {
      std::uint32_t value = 0;
      for (; size > 0 && at < in.size(); --size) value = value << 8 | in[at++];
      return value;
    };
    const std::uint32_t address = number(8);
    const std::uint32_t command = number(2, 2);
    std::uint16_t status = 0;
    TBytes body;
    if (IsOwner(from)) lastHeard_ = TClock::now();
    if (command == 0x40) // PACKETRESEND; in front of the block's number is the channel's
      stream_.Resend(static_cast<std::uint16_t>(address), number(12) & 0xFFFFFF, number(16) & 0xFFFFFF);
    else if (command == 0x80) // READREG
      for (std::size_t at = 8; at + 4 <= in.size(); at += 4) {
        if (!memory_.Has(number(at), 4)) status = kInvalidAddress;
        Put(body, status == 0 ? memory_[number(at)] : 0);
      }
    else if (command == 0x82) { // WRITEREG; the answer counts those that were written
      std::uint32_t written = 0;
      for (std::size_t at = 8; at + 8 <= in.size() && status == 0; at += 8) {
        status = Write(number(at), number(at + 4), from);
        written += status == 0 ? 1 : 0;
      }
      Put(body, written);
    } else if (!memory_.Has(address, in.size()))
      status = kInvalidAddress;
    else if (command == 0x84) { // READMEM
      Put(body, address);
      body.insert(body.end(), memory_.At(address), memory_.At(address) + number(14, 2));
    } else if (command == 0x86) { // WRITEMEM
      status = IsOwner(from) ? 0 : kAccessDenied;
      if (status == 0) memory_.Copy(address, in.data() + 12, in.size() - 12);
      Put(body, static_cast<std::uint32_t>(in.size() - 12));
    } else
      status = kUnknownCommand;
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
    const bool takesControl = address == kControlPrivilege && memory_[kControlPrivilege] == 0;
    if (!takesControl && !IsOwner(from)) return kAccessDenied;
    if (!memory_.Has(address, 4)) return kInvalidAddress;
    if (takesControl) {
      owner_ = from;
      lastHeard_ = TClock::now();
    }
    if (address == kWidth || address == kHeight || address == kLeft || address == kTop)
      value -= value % numbers.at("grid");
    if (address == kTimestampControl && value == 1) stream_.ResetTicks();
    if (address == kTimestampControl && value == 2) {
      const std::uint64_t ticks = stream_.Ticks();
      memory_.Set(kTimestamp, static_cast<std::uint32_t>(ticks >> 32));
      memory_.Set(kTimestamp + 4, static_cast<std::uint32_t>(ticks));
    }
    memory_.Set(address, address == kPacketSize ? value & 0x4000FFFF : value);
    if (address == kPacketSize && (value & 0x80000000) != 0) stream_.SendTestPacket();
    return 0;
  }

  TMemory& memory_;
  TStream& stream_;
  const int socket_;
  sockaddr_in owner_{};
  TClock::time_point lastHeard_;
  std::uint32_t answers_ = 0;
};

void FillBootstrap(TMemory& memory, const sockaddr_in& own, const std::string& serial,
                   const std::string& description)
{
  constexpr std::uint32_t kDescription = 0x10000;
  for (const auto& [address, value] : std::map<std::uint32_t, std::uint32_t>{
           {0x000, 0x00010002},                 // version 1.2
           {0x004, 0x80000001},                 // device mode: big-endian, UTF-8
           {0x008, 0x0200},                     // MAC address
           {0x00C, 1},                          //
           {0x024, ntohl(own.sin_addr.s_addr)}, // IP address
           {0x034, 0xFF000000},                 // subnet mask
           {0x904, 1},                          // stream channels
           {0x934, 7},                          // capability: resends, memory writes, several registers at once
           {kHeartbeatTimeout, 3000},
           {0x940, numbers.at("ticks")}, // tick frequency, low half
           {kPacketSize, 0x40000000 | 1400},
           {kWidth, 512},
           {kHeight, 512},
           {0x108, 1}, // binning
           {0x10C, 1},
           {0x118, 2048}, // sensor
           {0x11C, 2048},
           {0x120, 10'000}, // exposure
           {kPixelFormat, Pfnc::kMono8},
           {kFramePeriod, 40'000}})
    memory.Set(address, value);
  memory.SetText(0x048, "vxmcd"); // vendor
  memory.SetText(0x068, "Plain"); // model
  memory.SetText(0x088, "1.2.3"); // version
  memory.SetText(0x0D8, serial);
  memory.SetText(kDescription, description);
  std::ostringstream url;
  url << "Local:camera.xml;" << std::hex << kDescription << ";" << description.size();
  memory.SetText(0x200, url.str());
}

void ReplaceAll(std::string& text, const std::string& from, const std::string& to)
{
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
}

} // namespace

int main(int argc, char** argv)
{
  sockaddr_in own{};
  own.sin_family = AF_INET;
  own.sin_port = htons(3956);
  if (argc < 3 || inet_pton(AF_INET, argv[1], &own.sin_addr) != 1) return 2;
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  TCameraTraits traits;
  std::map<std::string, std::string> edits;
  for (int index = 3; index < argc; ++index) {
    std::istringstream argument(argv[index]);
    std::string key;
    std::getline(argument, key, '=');
    if (key == "formats")
      traits.formats.clear();
    else if (key == "edit") {
      std::string from;
      std::getline(argument, from, '|');
      std::getline(argument, edits[from], '\0');
    } else if (key != "without" && !(numbers.count(key) > 0 && argument >> numbers.at(key)))
      return 2;
    for (std::string name; std::getline(argument, name, ',');)
      if (key == "formats")
        traits.formats.push_back(name);
      else
        traits.without.insert(name);
  }
  traits.increment = static_cast<int>(numbers.at("increment"));
  std::string description = CameraDescription(traits);
  edits["/ 8</Formula>"] = "/ 8 + H * " + std::to_string(numbers.at("padding")) + "</Formula>";
  if (numbers.at("testpackets") > 0)
    edits["<Port "] =
        "<Command Name=\"GevSCPSFireTestPacket\"><pValue>Fire</pValue><CommandValue>1</CommandValue></Command>"
        "<MaskedIntReg Name=\"Fire\"><Address>0xD04</Address><Length>4</Length><AccessMode>RW</AccessMode>"
        "<pPort>Device</pPort><Bit>0</Bit><Endianess>BigEndian</Endianess></MaskedIntReg><Port ";
  for (const auto& [from, to] : edits) ReplaceAll(description, from, to);
  if (numbers.at("cut") > 0) description.resize(numbers.at("cut"));

  TMemory memory;
  FillBootstrap(memory, own, argv[2], description);
  if (numbers.at("negative") > 0) memory.Set(numbers.at("negative"), static_cast<std::uint32_t>(-20));
  TStream stream(memory, own);
  TControl control(memory, stream, own);
  std::puts("ready");
  std::fflush(stdout);
  for (TClock::time_point next = TClock::now();;) {
    const bool isStreaming = memory[kAcquisition] == 1;
    if (!isStreaming) next = TClock::now() + milliseconds(20);
    const auto rest = std::chrono::duration_cast<milliseconds>(next - TClock::now());
    control.Serve(std::max(rest, milliseconds(0)));
    if (!isStreaming || memory[kAcquisition] != 1 || TClock::now() < next) continue;
    next += std::chrono::microseconds(memory[kFramePeriod]);
    stream.SendBlock();
  }
}
