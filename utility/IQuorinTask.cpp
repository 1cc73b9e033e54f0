// SPDX-License-Identifier: MIT
// A unit of work for a task launcher.
#include "utility/IQuorinTask.h"

namespace QuorinUtility {

IQuorinTask::~IQuorinTask() = default;

} // namespace QuorinUtility
