// SPDX-License-Identifier: MIT
// The per-frame notification of a camera.
#pragma once

#include "utility/IDispatchRoutine.h"

#include <atomic>
#include <cstdint>

class TAcquisitionEventHandler;

/// Counts the frames and failures of a run and passes each on to a handler, if one is installed. Owned by the
/// acquisition manager. Signal() comes from the acquisition thread, the rest from any.
class TEventDispatchRoutine final : public IDispatchRoutine
{
public:
  void Signal() override;
  /// Starts counting anew; called at each start.
  void Reset() { signals_ = 0; }
  std::uint64_t GetSignalCount() const { return signals_; }
  /// @p handler is borrowed until another one, or null, takes its place.
  void SetHandler(TAcquisitionEventHandler* handler) { handler_ = handler; }

private:
  std::atomic<std::uint64_t> signals_{0};
  std::atomic<TAcquisitionEventHandler*> handler_{nullptr};
};
