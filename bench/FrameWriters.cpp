// SPDX-License-Identifier: MIT
// Ways of writing frames to a disk that have nothing to do with the library.
#include "FrameWriters.h"

#include "BenchmarkCamera.h"
#include "FilledSlots.h"
#include "Rounds.h"
#include "spool/TSpoolFile.h"

#include <algorithm>
#include <fcntl.h>
#include <unistd.h>

#ifdef VXMCD_BENCHMARK_HDF5
#include <hdf5.h>
#endif
#ifdef VXMCD_BENCHMARK_TIFF
#include <tiffio.h>
#endif

namespace {

constexpr std::size_t kPage = 4096;
constexpr std::size_t kChunkBytes = std::size_t{256} << 10;

/// Each frame in pieces of at most @p chunkBytes.
WritingCost writeFile(const std::string& directory, int flags, std::size_t bytesEach, std::size_t chunkBytes,
                      const FrameSource& frames, long count)
{
  WritingClock clock;
  const int file = open((directory + "/frames").c_str(), O_WRONLY | O_CREAT | O_EXCL | flags, 0666);
  require(file >= 0, "opening a file");
  for (long i = 0; i < count; ++i) {
    const std::size_t start = static_cast<std::size_t>(i) * bytesEach;
    for (std::size_t done = 0; done < bytesEach; done += chunkBytes) {
      const std::size_t piece = std::min(chunkBytes, bytesEach - done);
      require(pwrite(file, frames.frame(i) + done, piece, static_cast<off_t>(start + done)) ==
                  static_cast<ssize_t>(piece),
              "pwrite");
    }
  }
  clock.accepted();
  require(fdatasync(file) == 0, "fdatasync");
  close(file);
  return clock.onDisk();
}

[[maybe_unused]] WritingCost syncClosedFile(const std::string& path, WritingClock& clock)
{
  clock.accepted();
  const int file = open(path.c_str(), O_WRONLY);
  require(file >= 0 && fdatasync(file) == 0, "fdatasync");
  close(file);
  return clock.onDisk();
}

#ifdef VXMCD_BENCHMARK_TIFF
// As a picture of bytes, which is all the same to a writer that does not compress: one strip a page.
WritingCost writeTiff(const std::string& directory, const FrameSource& frames, long count)
{
  constexpr std::uint32_t kWidth = 4096;
  const std::string path = directory + "/frames.tif";
  WritingClock clock;
  TIFF* const tiff = TIFFOpen(path.c_str(), "w8");
  require(tiff != nullptr, "TIFFOpen");
  const auto height = static_cast<std::uint32_t>(frames.frameBytes() / kWidth);
  for (long i = 0; i < count; ++i) {
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, kWidth);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, height);
    const auto size = static_cast<tmsize_t>(frames.frameBytes());
    require(TIFFWriteRawStrip(tiff, 0, frames.frame(i), size) == size, "TIFFWriteRawStrip");
    require(TIFFWriteDirectory(tiff) == 1, "TIFFWriteDirectory");
  }
  TIFFClose(tiff);
  return syncClosedFile(path, clock);
}
#endif

#ifdef VXMCD_BENCHMARK_HDF5
// One data set, a frame a chunk.
WritingCost writeHdf5(const std::string& directory, const FrameSource& frames, long count)
{
  const std::string path = directory + "/frames.h5";
  const hsize_t size[] = {static_cast<hsize_t>(count), frames.frameBytes()};
  const hsize_t chunk[] = {1, frames.frameBytes()};
  WritingClock clock;
  const hid_t file = H5Fcreate(path.c_str(), H5F_ACC_EXCL, H5P_DEFAULT, H5P_DEFAULT);
  const hid_t space = H5Screate_simple(2, size, nullptr);
  const hid_t properties = H5Pcreate(H5P_DATASET_CREATE);
  require(H5Pset_chunk(properties, 2, chunk) >= 0 && H5Pset_fill_time(properties, H5D_FILL_TIME_NEVER) >= 0,
          "properties of a data set");
  const hid_t data = H5Dcreate2(file, "frames", H5T_NATIVE_UINT8, space, H5P_DEFAULT, properties, H5P_DEFAULT);
  require(file >= 0 && space >= 0 && data >= 0, "a data set");
  for (long i = 0; i < count; ++i) {
    const hsize_t place[] = {static_cast<hsize_t>(i), 0};
    require(H5Dwrite_chunk(data, H5P_DEFAULT, 0, place, frames.frameBytes(), frames.frame(i)) >= 0,
            "H5Dwrite_chunk");
  }
  H5Dclose(data);
  H5Pclose(properties);
  H5Sclose(space);
  require(H5Fclose(file) >= 0, "H5Fclose");
  return syncClosedFile(path, clock);
}
#endif

} // namespace

FrameSource::FrameSource(std::size_t frameBytes, std::size_t slots) : slab_(frameBytes, slots)
{
  for (std::size_t slot = 0; slot < slots; ++slot) fillWithNoise(slab_.Slot(slot), frameBytes);
}

WritingClock::WritingClock()
    : begin_(secondsOfClock(CLOCK_MONOTONIC)), cpuBegin_(secondsOfClock(CLOCK_PROCESS_CPUTIME_ID))
{
}

void WritingClock::accepted()
{
  accepted_ = secondsOfClock(CLOCK_MONOTONIC);
}

WritingCost WritingClock::onDisk() const
{
  return {accepted_ - begin_, secondsOfClock(CLOCK_MONOTONIC) - begin_,
          secondsOfClock(CLOCK_PROCESS_CPUTIME_ID) - cpuBegin_, 0};
}

WritingCost writeBuffered(const std::string& directory, const FrameSource& frames, long count)
{
  return writeFile(directory, 0, frames.frameBytes(), frames.frameBytes(), frames, count);
}

WritingCost writeInChunks(const std::string& directory, const FrameSource& frames, long count)
{
  return writeFile(directory, 0, frames.frameBytes(), kChunkBytes, frames, count);
}

WritingCost writeDirectly(const std::string& directory, const FrameSource& frames, long count)
{
  const std::size_t wholePages = (frames.frameBytes() + kPage - 1) / kPage * kPage;
  return writeFile(directory, O_DIRECT, wholePages, wholePages, frames, count);
}

bool canWriteDirectly(const std::string& directory)
{
  return TSpoolVolume::Probe(directory).writesDirectly;
}

std::vector<FrameWriter> formatWriters()
{
  std::vector<FrameWriter> writers;
#ifdef VXMCD_BENCHMARK_TIFF
  writers.push_back({"libtiff", writeTiff});
#endif
#ifdef VXMCD_BENCHMARK_HDF5
  writers.push_back({"hdf5", writeHdf5});
#endif
  return writers;
}
