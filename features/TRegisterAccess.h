// SPDX-License-Identifier: MIT
// The registers of a camera.
#pragma once

/// Blocks of 32-bit registers by address. Both operations return 0, or 1 on any failure.
class IRegisterMap
{
public:
  virtual ~IRegisterMap() = default;
  virtual int Read(unsigned int address, unsigned int count, unsigned int* values) = 0;
  virtual int Write(unsigned int address, unsigned int count, unsigned int* values) = 0;
};

/// IRegisterMap over the register features of an open device: a block is staged register by register in the camera
/// and then transferred by a command. Made for one use. Not synchronised: two threads would mix up what
/// they stage in one camera, so callers serialise. Nothing is thrown and nothing is logged.
class TRegisterAccess final : public IRegisterMap
{
public:
  explicit TRegisterAccess(int coreHandle) : coreHandle_(coreHandle) {}

  /// After a failure @p values are undefined: the one that could not be read is overwritten too.
  int Read(unsigned int address, unsigned int count, unsigned int* values) override;
  /// Ends at the first register that cannot be staged; nothing is transferred then.
  int Write(unsigned int address, unsigned int count, unsigned int* values) override;
  /// Whether the camera offers its registers.
  bool IsImplemented() const;

private:
  bool StageBlock(unsigned int address, unsigned int count) const;

  int coreHandle_;
};
