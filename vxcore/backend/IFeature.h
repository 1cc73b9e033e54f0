// SPDX-License-Identifier: MIT
// One named feature of a device, as the exported functions see it.
#pragma once

#include "vxcore.h"

#include <mutex>
#include <string>
#include <string_view>

namespace vxcore {

/// The lock of one device. It outlives the device; see IDevice.
using TDeviceLock = std::unique_lock<std::mutex>;

/// A feature of one device: typed reads and writes of which a kind implements its own and refuses the others.
/// Owned by its device. Every operation is called with the device locked; Execute() may release the lock while it
/// waits. Operations answer `VX_` codes and write outputs only on success.
/// A text that is read belongs to the feature and is valid while the lock is kept.
class IFeature
{
public:
  virtual ~IFeature() = default;

  virtual bool IsReadable() const = 0;
  virtual bool IsWritable() const = 0;

  virtual int SetInt(long long) { return VX_ERR_WRONG_KIND; }
  virtual int GetInt(long long&) const { return VX_ERR_WRONG_KIND; }
  virtual int GetIntMin(long long&) const { return VX_ERR_WRONG_KIND; }
  virtual int GetIntMax(long long&) const { return VX_ERR_WRONG_KIND; }

  virtual int SetFloat(double) { return VX_ERR_WRONG_KIND; }
  virtual int GetFloat(double&) const { return VX_ERR_WRONG_KIND; }
  virtual int GetFloatMin(double&) const { return VX_ERR_WRONG_KIND; }
  virtual int GetFloatMax(double&) const { return VX_ERR_WRONG_KIND; }

  virtual int SetBool(bool) { return VX_ERR_WRONG_KIND; }
  virtual int GetBool(bool&) const { return VX_ERR_WRONG_KIND; }

  virtual int SetIndex(int) { return VX_ERR_WRONG_KIND; }
  virtual int SetText(std::wstring_view) { return VX_ERR_WRONG_KIND; }
  virtual int GetIndex(int&) const { return VX_ERR_WRONG_KIND; }
  virtual int GetCount(int&) const { return VX_ERR_WRONG_KIND; }
  virtual int GetTextByIndex(int, std::wstring_view&) const { return VX_ERR_WRONG_KIND; }
  virtual int IsIndexAvailable(int, bool&) const { return VX_ERR_WRONG_KIND; }
  virtual int IsIndexImplemented(int, bool&) const { return VX_ERR_WRONG_KIND; }

  virtual int SetString(std::wstring_view) { return VX_ERR_WRONG_KIND; }
  virtual int GetString(std::wstring_view&) const { return VX_ERR_WRONG_KIND; }
  virtual int GetStringMaxLength(int&) const { return VX_ERR_WRONG_KIND; }

  virtual int Execute(TDeviceLock&) { return VX_ERR_WRONG_KIND; }
};

} // namespace vxcore
