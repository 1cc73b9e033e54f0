// SPDX-License-Identifier: MIT
// The frames of one run as they come from the camera.
#pragma once

#include "vxcore/genicam/aravis.h"
#include "vxcore/genicam/TWakeUp.h"

#include <cstddef>
#include <memory>
#include <string>

namespace vxgenicam {

/// How frames are received.
struct TStreamOptions
{
  int poolFrames = 0; ///< buffers of the pool; 0: by the size of a frame
  bool usesPacketSocket = false;
};

/// A stream of Aravis with a pool of buffers, which are returned to it after each frame. Frames go through these buffers
/// and not straight into the caller's: a frame that comes incomplete would use up the caller's buffer, and all images
/// after it would be in the wrong place. Owned by TAcquisition; used under the device's lock. The thread of Aravis only
/// calls the wake-up.
class TFrameStream final
{
public:
  /// Null, with a message, when the camera refuses. The wake-up outlives the stream.
  static std::unique_ptr<TFrameStream> Make(ArvDevice* device, const TStreamOptions& options,
                                            std::size_t payloadBytes, TWakeUp& wakeUp, std::string& error);

  /// The next buffer that is filled, null for none. The caller passes it to Return() when it has read the frame.
  ArvBuffer* Take();
  /// @param clears  what a later frame lacks is to be 0
  void Return(ArvBuffer* buffer, bool clears);

private:
  explicit TFrameStream(TObject<ArvStream> stream) : stream_(std::move(stream)) {}
  static void OnStream(void* wakeUp, ArvStreamCallbackType type, ArvBuffer* buffer);

  const TObject<ArvStream> stream_; ///< ends the thread that calls OnStream() with it
};

} // namespace vxgenicam
