// SPDX-License-Identifier: MIT
// Reads a call trace.
#include "trace/TTraceFile.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>

using TraceFormat::kChunkBytes;
using TraceFormat::Kind;
using TraceFormat::TChunkHeader;
using TraceFormat::TFileHeader;
using TraceFormat::TRecordHeader;

namespace {

constexpr std::size_t kMaxFunctions = 4096;
constexpr std::size_t kNoCall = std::numeric_limits<std::size_t>::max();
// With less between them, two readings of the clocks say less of its rate than the file does.
constexpr std::uint64_t kMinClockNs = 100'000'000;

template <class T>
T ValueAt(std::span<const std::byte> bytes)
{
  T value{};
  if (!bytes.empty()) std::memcpy(&value, bytes.data(), std::min(bytes.size(), sizeof value));
  return value;
}

std::string Column(std::string& line)
{
  const std::size_t tab = line.find('\t');
  std::string column = line.substr(0, tab);
  line.erase(0, tab == std::string::npos ? tab : tab + 1);
  return column;
}

} // namespace

struct TTraceFile::TChunk
{
  TChunkHeader header;
  std::span<const std::byte> records;
};

std::string TTraceFile::Read(const std::string& path)
{
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) return "is a directory";
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  if (!file) return "cannot be opened";
  const std::streamoff size = file.tellg();
  if (size < 0) return "cannot be read";
  std::vector<std::byte> bytes(static_cast<std::size_t>(size));
  file.seekg(0);
  if (!file.read(reinterpret_cast<char*>(bytes.data()), size)) return "cannot be read";
  return Parse(std::move(bytes));
}

std::string TTraceFile::Parse(std::vector<std::byte> bytes)
{
  bytes_ = std::move(bytes);
  header_ = ValueAt<TFileHeader>(bytes_);
  if (bytes_.size() < sizeof header_ ||
      std::memcmp(header_.magic, TraceFormat::kFileMagic, sizeof header_.magic) != 0)
    return "is no call trace";
  if (header_.version != TraceFormat::kVersion)
    return "is a call trace of version " + std::to_string(header_.version) + ", and this program reads version " +
           std::to_string(TraceFormat::kVersion);
  if (header_.headerBytes % kChunkBytes != 0 || header_.headerBytes > bytes_.size() ||
      sizeof header_ + std::size_t{header_.textBytes} > header_.headerBytes ||
      !(header_.ticksPerSecond >= 1.0 && header_.ticksPerSecond <= 1e12))
    return "is damaged at its beginning";

  std::istringstream text(HeaderText());
  for (std::string line; std::getline(text, line);)
    if (!ParseFact(line)) return "is damaged at its beginning: \"" + line + "\"";
  ParseChunks();
  return "";
}

std::string TTraceFile::HeaderText() const
{
  return {reinterpret_cast<const char*>(bytes_.data()) + sizeof header_, header_.textBytes};
}

std::string TTraceFile::Fact(const std::string& key) const
{
  for (const auto& [name, value] : facts_)
    if (name == key) return value;
  return "";
}

bool TTraceFile::ParseFact(const std::string& line)
{
  std::string rest = line;
  const std::string key = Column(rest);
  if (key == "variable") {
    const std::string name = Column(rest);
    variables_.push_back({name, rest});
    return true;
  }
  if (key != "function") {
    facts_.emplace_back(key, rest);
    return true;
  }
  const std::string number = Column(rest);
  const bool isApi = Column(rest) == "api";
  const std::string name = Column(rest);
  std::size_t index = kMaxFunctions;
  std::from_chars(number.data(), number.data() + number.size(), index);
  const auto signature = TTraceSignature::Parse(rest);
  if (index >= kMaxFunctions || !signature) return false;
  if (functions_.size() <= index) functions_.resize(index + 1);
  functions_[index] = std::make_unique<TTraceFunction>(TTraceFunction{isApi, name, *signature});
  return true;
}

void TTraceFile::ParseChunks()
{
  std::vector<TChunk> chunks;
  const std::span<const std::byte> whole(bytes_);
  usedBytes_ = header_.headerBytes;
  for (std::size_t at = header_.headerBytes; at + kChunkBytes <= whole.size(); at += kChunkBytes) {
    const auto chunk = whole.subspan(at, kChunkBytes);
    const auto header = ValueAt<TChunkHeader>(chunk);
    if (header.magic != TraceFormat::kChunkMagic) continue;
    chunks.push_back({header, chunk.subspan(sizeof header)});
    usedBytes_ = at + kChunkBytes;
  }
  std::stable_sort(chunks.begin(), chunks.end(),
                   [](const TChunk& a, const TChunk& b) { return a.header.number < b.header.number; });
  if (!chunks.empty() && chunks.back().header.number > chunks.size())
    droppedChunks_ = chunks.back().header.number - chunks.size();
  MeasureClock(chunks);

  std::uint64_t expected = 1;
  for (const TChunk& chunk : chunks) {
    if (chunk.header.number != expected)
      for (TThreadState& state : states_) {
        state.uncertain.insert(state.uncertain.end(), state.open.begin(), state.open.end());
        state.open.clear();
      }
    expected = chunk.header.number + 1;
    TThreadState* thread = &ThreadOf(chunk.header.systemThread);
    ParseRecords(chunk, thread);
  }
  for (TThreadState& state : states_) {
    threads_.push_back({state.number, state.system});
    for (const std::size_t call : state.uncertain) calls_[call].state = CallState::Unknown;
  }
  states_.clear();
  std::stable_sort(calls_.begin(), calls_.end(),
                   [](const TTraceCall& a, const TTraceCall& b) { return a.beginSeconds < b.beginSeconds; });
  std::stable_sort(frames_.begin(), frames_.end(),
                   [](const TFrames& a, const TFrames& b) { return a.seconds < b.seconds; });
  std::stable_sort(pixels_.begin(), pixels_.end(),
                   [](const TPixelRecord& a, const TPixelRecord& b) { return a.seconds < b.seconds; });
}

std::vector<std::vector<std::byte>> TTraceFile::ImagesOf(const TTraceCall& call) const
{
  std::vector<std::vector<std::byte>> images;
  const TTraceValue array = call.Value("array");
  const TraceFormat::TPixels& copied = array.pixels;
  if (array.kind != TTraceValue::Kind::Pixels || copied.images == 0 || copied.bytes > bytes_.size())
    return images; // more than the trace can have
  auto part = std::lower_bound(pixels_.begin(), pixels_.end(), call.beginSeconds,
                               [](const TPixelRecord& one, double seconds) { return one.seconds < seconds; });
  for (; part != pixels_.end() && part->seconds <= call.endSeconds; ++part) {
    const auto header = ValueAt<TraceFormat::TPixelPart>(part->contents);
    if (part->thread != call.thread || part->contents.size() < sizeof header) continue;
    const auto bytes = part->contents.subspan(sizeof header);
    // All images of a call have the same size.
    const std::uint64_t imageBytes = copied.bytes / copied.images;
    if (header.bytes > bytes.size() || header.image == 0 || header.image > copied.images ||
        header.offset > imageBytes || header.bytes > imageBytes - header.offset || header.image > pixels_.size())
      continue;
    if (images.size() < header.image) images.resize(header.image);
    std::vector<std::byte>& image = images[header.image - 1];
    if (image.empty()) image.resize(static_cast<std::size_t>(imageBytes));
    std::copy_n(bytes.begin(), header.bytes, image.begin() + static_cast<std::ptrdiff_t>(header.offset));
  }
  return images;
}

void TTraceFile::ParseRecords(const TChunk& chunk, TThreadState*& thread)
{
  std::span<const std::byte> rest = chunk.records;
  while (rest.size() >= sizeof(TRecordHeader)) {
    const auto header = ValueAt<TRecordHeader>(rest);
    if (header.size < sizeof header || header.size > rest.size() || header.size % 8 != 0) return;
    const auto contents = rest.subspan(sizeof header, header.size - sizeof header);
    if (header.kind == Kind::Thread)
      thread = &ThreadOf(static_cast<std::uint32_t>(ValueAt<std::uint64_t>(contents)));
    else
      AddRecord(header, contents, *thread);
    rest = rest.subspan(header.size);
  }
}

void TTraceFile::AddRecord(const TRecordHeader& header, std::span<const std::byte> contents, TThreadState& thread)
{
  if (header.kind == Kind::Frames) {
    frames_.push_back({thread.number, SecondsOf(header.ticks), ValueAt<TraceFormat::TFrameCounts>(contents)});
    return;
  }
  if (header.kind == Kind::Dropped) {
    droppedCalls_ += ValueAt<std::uint64_t>(contents);
    return;
  }
  if (header.kind == Kind::Pixels) {
    pixels_.push_back({thread.number, SecondsOf(header.ticks), contents});
    return;
  }
  if (header.function >= functions_.size() || !functions_[header.function]) return;
  const TTraceFunction* const function = functions_[header.function].get();
  const double time = SecondsOf(header.ticks);
  if (header.kind == Kind::Begin) {
    thread.open.push_back(calls_.size());
    calls_.push_back(
        {function, thread.number, header.depth, header.call, CallState::Open, time, 0.0, contents, {}});
    return;
  }
  if (header.kind != Kind::End && header.kind != Kind::Thrown) return;
  std::size_t index = TakeCall(thread.open, *function, header.call);
  if (index == kNoCall) index = TakeCall(thread.uncertain, *function, header.call);
  if (index == kNoCall) {
    index = calls_.size();
    calls_.push_back({function, thread.number, header.depth, header.call, CallState::Open, time, 0.0, {}, {}});
  }
  TTraceCall& call = calls_[index];
  call.state = header.kind == Kind::End ? CallState::Ended : CallState::Thrown;
  call.endSeconds = time;
  call.outputs = contents;
}

// Calls inside of it have ended, too, where that was dropped.
std::size_t TTraceFile::TakeCall(std::vector<std::size_t>& calls, const TTraceFunction& function,
                                 std::uint16_t number)
{
  const auto found = std::find_if(calls.rbegin(), calls.rend(), [&](std::size_t call) {
    return calls_[call].function == &function && calls_[call].number == number;
  });
  if (found == calls.rend()) return kNoCall;
  const std::size_t call = *found;
  for (auto inner = found.base(); inner != calls.end(); ++inner) calls_[*inner].state = CallState::Unknown;
  calls.erase(found.base() - 1, calls.end());
  return call;
}

TTraceFile::TThreadState& TTraceFile::ThreadOf(std::uint32_t system)
{
  for (TThreadState& state : states_)
    if (state.system == system) return state;
  states_.push_back({static_cast<std::uint32_t>(states_.size() + 1), system, {}, {}});
  return states_.back();
}

void TTraceFile::MeasureClock(const std::vector<TChunk>& chunks)
{
  secondsPerTick_ = 1.0 / header_.ticksPerSecond;
  if (chunks.empty()) return;
  const TChunkHeader& last = chunks.back().header;
  if (last.monotonicNs < header_.startMonotonicNs + kMinClockNs || last.ticks <= header_.startTicks) return;
  const double measured = static_cast<double>(last.monotonicNs - header_.startMonotonicNs) * 1e-9 /
                          static_cast<double>(last.ticks - header_.startTicks);
  // Unless the clock has jumped, the two rates are almost the same.
  if (std::abs(measured * header_.ticksPerSecond - 1.0) < 0.01) secondsPerTick_ = measured;
}

double TTraceFile::SecondsOf(std::uint64_t ticks) const
{
  return static_cast<double>(static_cast<std::int64_t>(ticks - header_.startTicks)) * secondsPerTick_;
}
