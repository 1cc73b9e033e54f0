// SPDX-License-Identifier: MIT
// Creates and destroys everything that belongs to an open camera.
#pragma once

#include <memory>
#include <vector>

struct TCamera;
class TFrameSlab;

/// Creates a camera's objects, in the order in which they build on one another. When a constructor throws, the
/// exception passes through and the objects before it stay.
TCamera AssembleCamera(int coreHandle);

/// Destroys a camera's objects in reverse order of dependency, after it has ended all waits and
/// every use of the camera has ended.
/// @return the memory that the camera may still be writing to; keep it until the device is closed
std::vector<std::shared_ptr<TFrameSlab>> DismantleCamera(TCamera& camera);
