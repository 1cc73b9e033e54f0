// SPDX-License-Identifier: MIT
// Makes and unmakes everything that belongs to an open camera.
#pragma once

struct TCamera;

/// Creates a camera's objects, in the order in which they build on one another. An exception of one of them passes
/// through; what was created before it stays.
TCamera AssembleCamera(int coreHandle);

/// Destroys a camera's objects in reverse order of dependency, after sending waiters home and waiting for every
/// use of the camera to end.
void DismantleCamera(TCamera& camera);
