// SPDX-License-Identifier: MIT
// Receiver of the per-frame notifications of a run.
#pragma once

#include "utility/IDispatchRoutine.h"

/// Receives the per-frame notification of a TEventDispatchRoutine. None is installed by default.
class TAcquisitionEventHandler : public IDispatchRoutine
{
};
