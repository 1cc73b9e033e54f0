// SPDX-License-Identifier: MIT
// What a work thread runs.
#include "utility/TQuorinWorkThreadRoutine.h"

namespace QuorinUtility {

TQuorinWorkThreadRoutine::~TQuorinWorkThreadRoutine() = default;

} // namespace QuorinUtility
