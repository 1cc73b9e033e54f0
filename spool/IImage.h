// SPDX-License-Identifier: MIT
// A place in a spool file, or a whole one.
#pragma once

/// Memory of a spool file that is written between Lock() and Unlock(). Owned by the spooler that opened it, until
/// ISpooler::CloseImage(). An image belongs to one thread at a time; several images of one file may be locked at
/// once. Operations return 0 for success.
class IImage
{
public:
  /// On success @p destination is where the image's bytes go, valid until Unlock().
  virtual int Lock(unsigned char*& destination) = 0;
  virtual int Unlock() = 0;
  virtual ~IImage() = default;
};
