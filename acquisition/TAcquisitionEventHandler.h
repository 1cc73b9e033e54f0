// SPDX-License-Identifier: MIT
// What an application's acquisition events would hang on.
#pragma once

#include "utility/IDispatchRoutine.h"

/// Receives the per-frame notification of a TEventDispatchRoutine. None is installed by default.
class TAcquisitionEventHandler : public IDispatchRoutine
{
};
