// SPDX-License-Identifier: MIT
// Where the acquisition thread gets frames from.
#pragma once

class TRunCamera;

/// The source of a run's frames. Called by the acquisition thread only.
class TFetchQueue
{
public:
  static constexpr int kFrame = 0;            ///< a frame: buffer and size are filled in
  static constexpr int kNoFrame = 1;          ///< none yet
  static constexpr int kHardwareOverflow = 2; ///< the camera's memory overflowed

  /// Waits for the next frame for at most @p timeoutMs.
  virtual int Fetch(unsigned char*& buffer, int& sizeBytes, int timeoutMs) = 0;
  /// The camera of the run that begins, which stays until the next call; null at the end of the run.
  virtual void SetCamera(const TRunCamera* /*camera*/) {}
  virtual ~TFetchQueue() = default;
};
