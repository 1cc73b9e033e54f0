// SPDX-License-Identifier: MIT
// What the directory of a recorded run looks like: names, keys, index record, pixels and chunks of a frame.
// scripts/generate-interface makes the Python package's table and the tables of docs/file-formats.md of it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

/// The format of a recorded run, stated once for those who write one and those who read one. Numbers in files are
/// little-endian. The `meaning` texts are for the documentation, in Markdown.
namespace RunFormat {

inline constexpr int kVersion = 1;

inline constexpr const char* kDescriptionName = "acquisitionmetadata.ini";
inline constexpr const char* kIndexName = "spool_index.dat";

/// Image files: "spool_0000000007.dat".
inline constexpr const char* kImageFileStem = "spool";
inline constexpr const char* kImageFileExtension = ".dat";
inline constexpr int kImageFileDigits = 10;
std::string ImageFileName(std::int64_t number, const std::string& stem = kImageFileStem);
/// The number in such a name; nothing when it is the name of something else.
std::optional<std::int64_t> ImageFileNumber(const std::string& name, const std::string& stem = kImageFileStem);

/// A record of the index, as it is in the file. Checksums are those of Checksum().
struct TIndexRecord
{
  std::uint64_t number;             ///< of the image, from 0
  std::uint64_t checksum;           ///< of the whole image
  std::int64_t hostTimeNs;          ///< since 1970-01-01 UTC
  std::uint64_t recordChecksum = 0; ///< of the fields before it
};

struct TRecordField
{
  const char* name;
  std::size_t offset;
  bool isSigned; ///< all have 64 bits
  const char* meaning;
};

inline constexpr std::array<TRecordField, 4> kIndexRecordFields{{
    {"number", offsetof(TIndexRecord, number), false, "number of the image, from 0"},
    {"checksum", offsetof(TIndexRecord, checksum), false, "checksum of the `ImageSize` bytes of the image"},
    {"host_time", offsetof(TIndexRecord, hostTimeNs), true,
     "the host's clock when the image was accepted for writing, ns since 1970-01-01 UTC"},
    {"record_checksum", offsetof(TIndexRecord, recordChecksum), false, "checksum of the 24 bytes before"},
}};
inline constexpr std::size_t kCheckedRecordBytes = offsetof(TIndexRecord, recordChecksum);
static_assert(sizeof(TIndexRecord) == 32 && kCheckedRecordBytes == 24);
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__);

/// How far a run has come, in the order of kStateTexts.
enum class State
{
  kRecording, ///< also of a run that was killed
  kComplete,
  kAborted,
  kFailed
};
inline constexpr std::array<const char*, 4> kStateTexts = {"recording", "complete", "aborted", "failed"};
inline std::string StateText(State state)
{
  return kStateTexts[static_cast<std::size_t>(state)];
}
inline constexpr const char* kTrueText = "true";
inline constexpr const char* kFalseText = "false";

enum class Kind
{
  kInteger,
  kReal,
  kSwitch,
  kWord, ///< a name out of a list
  kText
};

/// A line of the description.
struct TKey
{
  const char* section;
  const char* name;
  Kind kind;
  const char* meaning;
};

inline constexpr const char* kMultiImageSection = "multiimage";
inline constexpr const char* kDataSection = "data";
inline constexpr const char* kRunSection = "run";
inline constexpr const char* kImageSection = "image";
inline constexpr const char* kAcquisitionSection = "acquisition";
inline constexpr const char* kCameraSection = "camera";

inline constexpr TKey kImagesPerFile{kMultiImageSection, "ImagesPerFile", Kind::kInteger, "images in a file"};
inline constexpr TKey kImageSize{kDataSection, "ImageSize", Kind::kInteger, "bytes of an image"};

inline constexpr TKey kFormat{kRunSection, "Format", Kind::kInteger, "1, the version of this layout"};
inline constexpr TKey kState{kRunSection, "State", Kind::kWord,
                             "`recording`, `complete`, `aborted` (by the program, or the camera delivered no more "
                             "images) or `failed`; the run of a program that was killed stays `recording`"};
inline constexpr TKey kCompleted{kRunSection, "Completed", Kind::kSwitch,
                                 "`true` when every image of the series is on disk"};
inline constexpr TKey kImagesExpected{kRunSection, "ImagesExpected", Kind::kInteger, "length of the series"};
inline constexpr TKey kImagesWritten{
    kRunSection, "ImagesWritten", Kind::kInteger,
    "images known to be on disk, with their records; final once the state is not `recording`"};
inline constexpr TKey kMethod{kRunSection, "Method", Kind::kInteger, "1 or 3, of `SetSpool()`"};
inline constexpr TKey kLibrary{kRunSection, "Library", Kind::kText, "version of the library"};
inline constexpr TKey kStartTime{kRunSection, "StartTime", Kind::kText,
                                 "the host's clock when the run was set up: `2026-01-31T12:34:56.789012345Z`"};
inline constexpr TKey kFirstFrameTime{kRunSection, "FirstFrameTime", Kind::kText,
                                      "the host's clock when the first frame arrived"};
inline constexpr TKey kFirstFrameTick{kRunSection, "FirstFrameTick", Kind::kInteger,
                                      "the camera's clock of the first frame, with metadata"};
inline constexpr TKey kTimestampFrequency{kRunSection, "TimestampFrequency", Kind::kInteger,
                                          "ticks of the camera's clock in a second"};
inline constexpr TKey kFailure{kRunSection, "Failure", Kind::kText, "with `failed`: what went wrong"};

inline constexpr TKey kWidth{kImageSection, "Width", Kind::kInteger, "pixels of a row"};
inline constexpr TKey kHeight{kImageSection, "Height", Kind::kInteger, "rows"};
inline constexpr TKey kStride{kImageSection, "Stride", Kind::kInteger, "bytes from row to row"};
inline constexpr TKey kPixelEncoding{kImageSection, "PixelEncoding", Kind::kWord, "see above"};
inline constexpr TKey kMetadata{kImageSection, "Metadata", Kind::kSwitch,
                                "whether chunks follow the pixels: `true` or `false`"};
inline constexpr TKey kLeft{kImageSection, "Left", Kind::kInteger, "first column on the sensor, from 1"};
inline constexpr TKey kTop{kImageSection, "Top", Kind::kInteger, "first row on the sensor, from 1"};
inline constexpr TKey kHBin{kImageSection, "HBin", Kind::kInteger, "columns of the sensor in one pixel"};
inline constexpr TKey kVBin{kImageSection, "VBin", Kind::kInteger, "rows of the sensor in one pixel"};
inline constexpr TKey kBinning{kImageSection, "Binning", Kind::kWord,
                               "both as one text (`2x2`), of cameras that name their binning"};
inline constexpr TKey kLayout{kImageSection, "Layout", Kind::kWord,
                              "`Image`; with `Track` a row of the image is a strip of rows of the sensor, and "
                              "`Top` and `VBin` are those of one "
                              "strip: where the others lie is not recorded"};

inline constexpr TKey kExposureTime{kAcquisitionSection, "ExposureTime", Kind::kReal, "s"};
inline constexpr TKey kFrameRate{kAcquisitionSection, "FrameRate", Kind::kReal, "Hz"};
inline constexpr TKey kAccumulateCount{kAcquisitionSection, "AccumulateCount", Kind::kInteger,
                                       "exposures added up to one image"};
inline constexpr TKey kTriggerMode{kAcquisitionSection, "TriggerMode", Kind::kWord, "the camera's word for it"};

inline constexpr TKey kReadoutTime{kAcquisitionSection, "ReadoutTime", Kind::kReal,
                                   "s from the end of an exposure until the sensor is read out"};
inline constexpr TKey kPixelReadoutRate{kAcquisitionSection, "PixelReadoutRate", Kind::kWord,
                                        "the camera's words for it, such as `200 MHz`"};
inline constexpr TKey kPreAmpGain{kAcquisitionSection, "PreAmpGain", Kind::kWord,
                                  "the camera's words for it, such as `10x` or `Gain 2 (11-bit)`"};
inline constexpr TKey kSensorCooling{kAcquisitionSection, "SensorCooling", Kind::kSwitch,
                                     "whether the cooler was on: `true` or `false`"};
inline constexpr TKey kSensorTemperature{kAcquisitionSection, "SensorTemperature", Kind::kReal,
                                         "degrees Celsius when the run was set up"};
inline constexpr TKey kTargetTemperature{kAcquisitionSection, "TargetSensorTemperature", Kind::kReal,
                                         "degrees Celsius, of the cooler"};

inline constexpr TKey kModel{kCameraSection, "Model", Kind::kText, "which camera"};
inline constexpr TKey kSerialNumber{kCameraSection, "SerialNumber", Kind::kText, "which one of its model"};
inline constexpr TKey kPixelWidth{kCameraSection, "PixelWidth", Kind::kReal, "um, of a pixel of the sensor"};
inline constexpr TKey kPixelHeight{kCameraSection, "PixelHeight", Kind::kReal, "um, of a pixel of the sensor"};

/// All keys, by section.
inline constexpr std::array kKeys = {kImagesPerFile,
                                     kImageSize,
                                     kFormat,
                                     kState,
                                     kCompleted,
                                     kImagesExpected,
                                     kImagesWritten,
                                     kMethod,
                                     kLibrary,
                                     kStartTime,
                                     kFirstFrameTime,
                                     kFirstFrameTick,
                                     kTimestampFrequency,
                                     kFailure,
                                     kWidth,
                                     kHeight,
                                     kStride,
                                     kPixelEncoding,
                                     kMetadata,
                                     kLeft,
                                     kTop,
                                     kHBin,
                                     kVBin,
                                     kBinning,
                                     kLayout,
                                     kExposureTime,
                                     kFrameRate,
                                     kAccumulateCount,
                                     kTriggerMode,
                                     kReadoutTime,
                                     kPixelReadoutRate,
                                     kPreAmpGain,
                                     kSensorCooling,
                                     kSensorTemperature,
                                     kTargetTemperature,
                                     kModel,
                                     kSerialNumber,
                                     kPixelWidth,
                                     kPixelHeight};

/// How the pixels of a frame are stored, in the order of kEncodings.
enum class Encoding
{
  kMono8,
  kMono12,
  kMono12Packed,
  kMono16,
  kMono32
};

struct TEncoding
{
  const char* name;  ///< the value of kPixelEncoding
  int bytesPerPixel; ///< 0: packed
  int bits;          ///< the smallest of 8, 16 and 32 that every pixel fits into
  bool isSigned;
  const char* meaning;
};

inline constexpr std::array<TEncoding, 5> kEncodings{{
    {"Mono8", 1, 8, false, "1 byte, unsigned"},
    {"Mono12", 2, 16, false, "2 bytes, unsigned"},
    {"Mono12Packed", 0, 16, false, "12 bits, unsigned: two pixels in three bytes, see below"},
    {"Mono16", 2, 16, false, "2 bytes, unsigned"},
    {"Mono32", 4, 32, true, "4 bytes, signed"},
}};

/// A chunk at the end of a frame is its data, its identifier and its length, which counts data and identifier.
inline constexpr std::uint32_t kEndChunk = 0;
inline constexpr std::uint32_t kTimestampChunk = 1;
inline constexpr std::int64_t kChunkFieldBytes = 4; // of the identifier, and of the length

} // namespace RunFormat
