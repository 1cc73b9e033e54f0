// SPDX-License-Identifier: MIT
// The baseline clamp as programs know it.
#pragma once

class IBool;

/// Switches the baseline clamp and reports why it could not. Borrows the feature; both belong to the camera's record.
/// As thread-safe as the feature library.
class TPseudoBaselineClamp
{
public:
  enum EStatus
  {
    kDone = 0,
    kFailed = 1,
    kNotAvailableNow = 2,
    kNotImplemented = 3,
  };

  explicit TPseudoBaselineClamp(IBool* baselineClamp) : baselineClamp_(baselineClamp) {}
  virtual ~TPseudoBaselineClamp() = default;
  TPseudoBaselineClamp(const TPseudoBaselineClamp&) = delete;
  TPseudoBaselineClamp& operator=(const TPseudoBaselineClamp&) = delete;

  virtual int Set(bool isOn);
  /// Leaves @p isOn as it was when the read fails.
  virtual int Get(bool& isOn);

private:
  IBool* baselineClamp_;
};
