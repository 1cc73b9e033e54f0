// SPDX-License-Identifier: MIT
// The two halves of writing an image through a spooler.
#pragma once

class IImage;
class ISpooler;

/// Opens the image of that number, from 0, locks it and copies @p sizeBytes bytes to it, all on the calling
/// thread. Returns the image, open and locked, for FinishImage(). Returns null when it could not be done, which is
/// logged and leaves nothing open; what a spooler throws counts as a failure to open.
IImage* WriteImage(ISpooler* spooler, int index, const unsigned char* buffer, int sizeBytes);

/// Unlocks and closes an image, on any thread. Their failures are logged; nobody is told of them.
void FinishImage(ISpooler& spooler, IImage* image);
