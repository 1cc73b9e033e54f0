// SPDX-License-Identifier: MIT
// Receiver of change notifications.
#include "utility/TObserver.h"

TObserver::~TObserver() = default;
