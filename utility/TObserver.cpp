// SPDX-License-Identifier: MIT
// Someone who wants to hear of changes.
#include "utility/TObserver.h"

TObserver::~TObserver() = default;
