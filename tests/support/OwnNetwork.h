// SPDX-License-Identifier: MIT
// A network of a program's own, so that cameras can be simulated on it and no packet leaves the machine.
#pragma once

#include <string>

/// Moves the process, which has one thread yet, into a network namespace with a loopback interface that has the addresses
/// 127.0.0.1 and 127.0.0.2. Returns why that is not possible, "" when it is done.
std::string EnterOwnNetwork();
