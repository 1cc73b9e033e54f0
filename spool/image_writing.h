// SPDX-License-Identifier: MIT
// What the algorithms that write images share: opening and filling them, and having them closed on other threads.
#pragma once

#include <memory>
#include <vector>

class IImage;
class ISpooler;

namespace QuorinUtility {
class IQuorinTask;
class TQuorinTaskLauncher;
} // namespace QuorinUtility

/// Copies a frame of @p sizeBytes bytes to @p image, on the calling thread, and leaves the image open and locked. With
/// null for @p image, first opens the image of number @p index, from 0. Returns false when that failed, which
/// is logged; what it opened is closed then. What a spooler throws counts as a failure.
bool WriteFrame(ISpooler* spooler, int index, const unsigned char* buffer, int sizeBytes, IImage*& image);

/// Unlocks an image. Returns false when that failed, which is logged.
bool UnlockImage(IImage& image);

/// Unlocks and closes an image, on any thread. Failures are logged and not reported.
void FinishImage(ISpooler& spooler, IImage* image);

/// A number out of a program's configuration must not use up the process's threads.
inline constexpr int kMaxLaunchers = 256;

/// As many launchers as asked for, between none and kMaxLaunchers. Throws only when memory is short.
std::vector<std::unique_ptr<QuorinUtility::TQuorinTaskLauncher>> MakeLaunchers(int count);

/// Launches @p task as soon as the launcher is idle; without a launcher, or with one that has no thread, runs it on the
/// calling thread.
void LaunchOrExecute(QuorinUtility::TQuorinTaskLauncher* launcher, QuorinUtility::IQuorinTask* task,
                     void* argument);

/// The launcher whose turn it is after @p launcher, of @p count.
constexpr int NextInTurn(int launcher, int count)
{
  return launcher + 1 < count ? launcher + 1 : 0;
}
