// SPDX-License-Identifier: MIT
// Writes the frames of one run to the disk.
#pragma once

#include "spool/TSpoolDescription.h"
#include "spool/TSpoolFault.h"
#include "spool/TSpoolFileSpooler.h"
#include "spool/TSpoolIndex.h"
#include "spool/TSpoolLayout.h"
#include "utility/file_access.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

class ISpoolAlgorithm;
class TSpoolImageSpooler;

/// Everything that writes one run: its directory and description, the spoolers and the algorithm that feeds them.
/// Made by the spool dispatch queue for each run. What fails, from the constructor on, is kept as the run's fault
/// and makes every later Spool() fail; only a lack of memory in the constructor throws. Spool(),
/// SetFirstFrameTick() and Finish() belong to the acquisition thread, and a Begin() comes before them; the others are
/// thread-safe.
class TSpoolPipeline final
{
public:
  /// Makes the directory and locks it; an earlier run in it stays unchanged.
  TSpoolPipeline(const TSpoolSettings& settings, std::uint64_t imageSizeBytes, std::uint32_t seriesLength);
  ~TSpoolPipeline();
  TSpoolPipeline(const TSpoolPipeline&) = delete;
  TSpoolPipeline& operator=(const TSpoolPipeline&) = delete;

  /// Makes the directory describe this run instead of an earlier one, whose files are removed. A pipeline that never
  /// begins leaves the directory unchanged. Does not throw.
  void Begin();

  /// Accepts an image of the size of the run's images; begins first, if that has not been done. Blocks while the disk
  /// is too slow. Returns false when the run cannot go on.
  bool Spool(int index, unsigned char* buffer);
  /// Whether the pipeline requeues slots with the camera, at a later time. If not, they are free when Spool()
  /// returns.
  bool RequeuesSlots() const;
  /// The run ends early: images that are still in their slots are dropped.
  void Abort();
  /// Waits until everything is on the disk, completes the description and unlocks the directory. Does not throw.
  void Finish();
  bool HasFailed() const { return fault_.IsRaised(); }
  /// Increases while images are written to the disk: see TSpoolFileSpooler::Progress().
  std::uint64_t Progress() const { return fileSpooler_.Progress(); }

  /// The camera's clock at the first frame.
  void SetFirstFrameTick(std::int64_t tick) { firstFrameTick_ = tick; }

private:
  bool PrepareDirectory(const std::string& path);
  void WarnOfFullDisk() const;
  void ReplaceEarlierRun();
  void RemoveEarlierRun();
  void MakeAlgorithm();
  int BoundedThreadCount(int threadCount) const;
  void ReserveRoom();
  void SyncDirectory();
  void CompleteDescription();
  template <class Step>
  void Try(Step step);
  void UnlockDirectory();

  TSpoolFault fault_;
  const TSpoolSettings settings_;
  const std::uint64_t imageSizeBytes_;
  std::string directory_;
  TFileDescriptor directoryLock_;
  TFileDescriptor room_; // without a name, for the description at the end of a run that fills the disk
  TSpoolLayout layout_;
  std::uint32_t seriesLength_;
  TSpoolDescription description_;
  TSpoolIndex index_;
  TSpoolFileSpooler fileSpooler_;
  std::unique_ptr<TSpoolImageSpooler> imageSpooler_;
  std::unique_ptr<ISpoolAlgorithm> algorithm_; // stays, since Abort() may come at any time
  std::atomic<ISpoolAlgorithm*> startedAlgorithm_{
      nullptr}; // the same, for threads that do not know whether it is made
  std::optional<std::int64_t> firstFrameTimeNs_;
  std::optional<std::int64_t> firstFrameTick_;
  std::uint64_t accepted_ = 0;       // images
  std::atomic<bool> aborted_{false}; // images may have been dropped
  bool begun_ = false;
  bool described_ = false;
  bool finished_ = false;
};
