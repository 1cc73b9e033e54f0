// SPDX-License-Identifier: MIT
// What has other values in a replay than in the recording.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <utility>

namespace vxtool {

/// Which handle or object of the replay stands for one of the recording: functions that open something answer a new one.
/// Thread-safe.
class TReplayObjects final
{
public:
  static constexpr const char* kCamera = "camera"; ///< handles of cameras

  /// The value to pass for a recorded one; the same, as long as no other is known.
  std::int64_t Replayed(const std::string& kind, std::int64_t recorded) const;
  /// Whether the replay's value stands for the recorded one. Of @p isNew ones, the first value does from then on.
  bool Matches(const std::string& kind, std::int64_t recorded, std::int64_t replayed, bool isNew);
  /// An address that stands for an object of the program; the same one for the same number.
  void* Context(std::int64_t number);

private:
  mutable std::mutex mutex_;
  std::map<std::pair<std::string, std::int64_t>, std::int64_t> values_; // guarded by mutex_
  std::map<std::int64_t, char> contexts_;                               // guarded by mutex_
};

} // namespace vxtool
