// SPDX-License-Identifier: MIT
// The camera that a run talks to.
#pragma once

/// Which camera the calls of one run address: the one that is current at the moment of each call, or, with independent
/// cameras, the one that started the run. That choice is a setting of the process, which is read when the object is made
/// and does not change while one exists; a run that a thread with its own camera starts is always independent. Made by each
/// start; shared by the start and its run, and gone before the run is reported as ended. Thread-safe.
class TRunCamera final
{
public:
  /// @p coreHandle is the camera that starts the run.
  explicit TRunCamera(int coreHandle);
  ~TRunCamera();
  TRunCamera(const TRunCamera&) = delete;
  TRunCamera& operator=(const TRunCamera&) = delete;

  bool IsIndependent() const { return isIndependent_; }
  /// The camera to address now. Does not block in practice, see CurrentCoreHandle().
  int CoreHandle() const;

  /// Chooses what runs do from the next start on. Returns false, with nothing changed, when that would change the setting
  /// while any camera runs or starts.
  static bool SetIndependent(bool independent);
  /// Whether a run that this thread starts now would be independent. The setting is at first that of the environment
  /// variable VXMCD_INDEPENDENT_CAMERAS.
  static bool IsNextIndependent();

private:
  const int coreHandle_;
  const bool isIndependent_;
};
