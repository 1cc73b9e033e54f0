// SPDX-License-Identifier: MIT
// The ways in which a frame cannot be written.
#pragma once

#include "spool/TSpoolQueue.h"
#include "tests/spool/TMemorySpooler.h"

#include <functional>
#include <stdexcept>
#include <vector>

/// Makes one frame fail; frames of image 1 can be written all the same.
struct TWriteFailure
{
  const char* name;
  std::function<void(TMemorySpooler&)> prepare;
  TSpoolFileData data;
};

inline std::vector<TWriteFailure> WriteFailures()
{
  static unsigned char frame[64];
  const TSpoolFileData good(frame, 3, sizeof frame);
  const auto nothing = [](TMemorySpooler&) {};
  const auto open = [](auto answer) {
    return [answer](TMemorySpooler& images) {
      images.openResult = [answer](unsigned int index) { return index == 3 ? answer() : 0; };
    };
  };
  const auto lock = [](auto answer) {
    return [answer](TMemorySpooler& images) { images.images[3].lockResult = answer; };
  };
  const auto failure = [] { return 28; };
  const auto exception = []() -> int { throw std::runtime_error("of no use"); };
  return {
      {"OpenFails", open(failure), good},
      {"OpenThrows", open(exception), good},
      {"LockFails", lock(failure), good},
      {"LockThrows", lock(exception), good},
      {"NegativeNumber", nothing, TSpoolFileData(frame, -1, sizeof frame)},
      {"NegativeSize", nothing, TSpoolFileData(frame, 3, -1)},
      {"NoBuffer", nothing, TSpoolFileData(nullptr, 3, sizeof frame)},
  };
}
