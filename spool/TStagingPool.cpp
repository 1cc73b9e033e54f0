// SPDX-License-Identifier: MIT
// Memory for images on their way to the disk.
#include "spool/TStagingPool.h"

#include <sys/mman.h>

namespace {

constexpr std::size_t kHugePage = std::size_t{2} << 20;

// Pieces this large get huge pages where the system has some to give.
constexpr std::size_t kLargePiece = 2 * kHugePage;

std::size_t RoundUp(std::size_t size, std::size_t step)
{
  return (size + step - 1) / step * step;
}

} // namespace

TStagingPool::TStagingPool(std::size_t sizeBytes)
    : sizeBytes_(sizeBytes >= kLargePiece ? RoundUp(sizeBytes, kHugePage) : sizeBytes)
{
}

TStagingPool::~TStagingPool()
{
  for (unsigned char* const piece : spare_) munmap(piece, sizeBytes_);
}

unsigned char* TStagingPool::Acquire()
{
  {
    const std::lock_guard lock(mutex_);
    if (!spare_.empty()) {
      unsigned char* const piece = spare_.back();
      spare_.pop_back();
      return piece;
    }
    spare_.reserve(++pieces_);
  }
  void* const piece = mmap(nullptr, sizeBytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (piece == MAP_FAILED) return nullptr;
  if (sizeBytes_ >= kLargePiece) madvise(piece, sizeBytes_, MADV_HUGEPAGE);
  return static_cast<unsigned char*>(piece);
}

void TStagingPool::Release(unsigned char* piece)
{
  const std::lock_guard lock(mutex_);
  spare_.push_back(piece);
}
