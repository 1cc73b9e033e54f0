// SPDX-License-Identifier: MIT
// Features made of functions, one class for each kind.
#pragma once

#include "vxcore/backend/IFeature.h"

#include <algorithm>
#include <concepts>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace vxgenicam {

using vxcore::IFeature;
using vxcore::TDeviceLock;

/// When a feature may be read and written; an empty condition is always true. What an operation answers where these say
/// "no": "not available" and "not writable".
struct TAccess
{
  std::function<bool()> readable = {};
  std::function<bool()> writable = {};

  bool IsReadable() const { return !readable || readable(); }
  bool IsWritable() const { return !writable || writable(); }
};

/// What a number feature does; a missing function refuses. Without limits the value is both.
template <typename Value>
struct TNumberFunctions
{
  std::function<int(Value&)> get = {};
  std::function<int(Value)> set = {};
  std::function<int(Value&)> minimum = {};
  std::function<int(Value&)> maximum = {};
};

/// A feature whose value is a `long long`, a `double` or a `bool`. Owned by its camera, used under the device's lock.
template <typename Value>
class TNumberFeature final : public IFeature
{
public:
  TNumberFeature(TAccess access, TNumberFunctions<Value> functions)
      : access_(std::move(access)), functions_(std::move(functions))
  {
  }

  bool IsReadable() const override { return functions_.get && access_.IsReadable(); }
  bool IsWritable() const override { return functions_.set && access_.IsWritable(); }

  int SetInt(long long value) override { return Write(value); }
  int GetInt(long long& value) const override { return Read(value, functions_.get); }
  int GetIntMin(long long& value) const override { return Read(value, Or(functions_.minimum)); }
  int GetIntMax(long long& value) const override { return Read(value, Or(functions_.maximum)); }
  int SetFloat(double value) override { return Write(value); }
  int GetFloat(double& value) const override { return Read(value, functions_.get); }
  int GetFloatMin(double& value) const override { return Read(value, Or(functions_.minimum)); }
  int GetFloatMax(double& value) const override { return Read(value, Or(functions_.maximum)); }
  int SetBool(bool value) override { return Write(value); }
  int GetBool(bool& value) const override { return Read(value, functions_.get); }

private:
  using TReader = std::function<int(Value&)>;

  const TReader& Or(const TReader& limit) const { return limit ? limit : functions_.get; }

  template <typename Asked>
  int Read(Asked& value, const TReader& read) const
  {
    if constexpr (!std::same_as<Asked, Value>)
      return VX_ERR_WRONG_KIND;
    else {
      if (!read) return VX_ERR_NOT_READABLE;
      return access_.IsReadable() ? read(value) : VX_ERR_NOT_AVAILABLE;
    }
  }

  template <typename Asked>
  int Write(Asked value)
  {
    if constexpr (!std::same_as<Asked, Value>)
      return VX_ERR_WRONG_KIND;
    else
      return IsWritable() ? functions_.set(value) : VX_ERR_NOT_WRITABLE;
  }

  const TAccess access_;
  const TNumberFunctions<Value> functions_;
};

/// What an enumerated feature does. Without `set` it is read-only; without `isAvailable` every value always is.
struct TChoiceFunctions
{
  std::function<int(int&)> get;
  std::function<int(int)> set = {};
  std::function<bool(int)> isAvailable = {};
  std::function<bool(int)> isImplemented = {}; ///< whether the camera has the value at all
};

/// An enumerated feature with constant texts. Owned by its camera, used under the device's lock.
class TChoiceFeature final : public IFeature
{
public:
  TChoiceFeature(TAccess access, std::vector<std::wstring> texts, TChoiceFunctions functions)
      : access_(std::move(access)), texts_(std::move(texts)), functions_(std::move(functions))
  {
  }

  bool IsReadable() const override { return access_.IsReadable(); }
  bool IsWritable() const override { return functions_.set && access_.IsWritable(); }

  int SetIndex(int index) override
  {
    if (!IsIndex(index) || !IsImplemented(index)) return VX_ERR_INDEX_NOT_IMPLEMENTED;
    if (!IsWritable()) return VX_ERR_NOT_WRITABLE;
    return IsAvailable(index) ? functions_.set(index) : VX_ERR_INDEX_NOT_AVAILABLE;
  }
  int SetText(std::wstring_view text) override
  {
    const auto found = std::ranges::find(texts_, text);
    return found == texts_.end() ? VX_ERR_STRING_NOT_AVAILABLE
                                 : SetIndex(static_cast<int>(found - texts_.begin()));
  }
  int GetIndex(int& index) const override
  {
    return access_.IsReadable() ? functions_.get(index) : VX_ERR_NOT_AVAILABLE;
  }
  int GetCount(int& count) const override
  {
    count = static_cast<int>(texts_.size());
    return VX_SUCCESS;
  }
  int GetTextByIndex(int index, std::wstring_view& text) const override
  {
    if (!IsIndex(index)) return VX_ERR_INDEX_NOT_IMPLEMENTED;
    text = texts_[static_cast<size_t>(index)];
    return VX_SUCCESS;
  }
  int IsIndexAvailable(int index, bool& available) const override
  {
    if (!IsIndex(index)) return VX_ERR_INDEX_NOT_IMPLEMENTED;
    available = IsImplemented(index) && IsAvailable(index);
    return VX_SUCCESS;
  }
  int IsIndexImplemented(int index, bool& implemented) const override
  {
    if (!IsIndex(index)) return VX_ERR_INDEX_NOT_IMPLEMENTED;
    implemented = IsImplemented(index);
    return VX_SUCCESS;
  }

private:
  bool IsIndex(int index) const { return index >= 0 && static_cast<size_t>(index) < texts_.size(); }
  bool IsAvailable(int index) const { return !functions_.isAvailable || functions_.isAvailable(index); }
  bool IsImplemented(int index) const { return !functions_.isImplemented || functions_.isImplemented(index); }

  const TAccess access_;
  const std::vector<std::wstring> texts_;
  const TChoiceFunctions functions_;
};

/// A text that is only read. Owned by its camera, used under the device's lock.
class TTextFeature final : public IFeature
{
public:
  explicit TTextFeature(std::function<int(std::wstring&)> get) : get_(std::move(get)) {}

  bool IsReadable() const override { return true; }
  bool IsWritable() const override { return false; }
  int SetString(std::wstring_view) override { return VX_ERR_NOT_WRITABLE; }
  int GetString(std::wstring_view& value) const override
  {
    const int code = get_(text_);
    value = text_;
    return code;
  }
  int GetStringMaxLength(int& length) const override
  {
    constexpr std::size_t kMinLength = 64; // the text may grow until it is read
    const int code = get_(text_);
    if (code == VX_SUCCESS) length = static_cast<int>(std::max(kMinLength, text_.size() + 1));
    return code;
  }

private:
  const std::function<int(std::wstring&)> get_;
  mutable std::wstring text_; ///< what was read last
};

/// A command. Owned by its camera, used under the device's lock, which the command may release.
class TCommandFeature final : public IFeature
{
public:
  explicit TCommandFeature(std::function<int(TDeviceLock&)> run) : run_(std::move(run)) {}

  bool IsReadable() const override { return false; }
  bool IsWritable() const override { return true; }
  int Execute(TDeviceLock& lock) override { return run_(lock); }

private:
  const std::function<int(TDeviceLock&)> run_;
};

} // namespace vxgenicam
