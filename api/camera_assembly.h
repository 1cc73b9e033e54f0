// SPDX-License-Identifier: MIT
// Creates and destroys everything that belongs to an open camera.
#pragma once

#include <memory>
#include <vector>

struct TCamera;
class TFrameSlab;

/// Creates a camera's objects, in the order in which they build on one another. An exception of one of them passes
/// through; what was created before it stays.
TCamera AssembleCamera(int coreHandle);

/// Destroys a camera's objects in reverse order of dependency, after ending all waits and waiting for every use of
/// the camera to end.
/// @return the memory that the camera may still be writing into, to be kept until it is closed
std::vector<std::shared_ptr<TFrameSlab>> DismantleCamera(TCamera& camera);
