// SPDX-License-Identifier: MIT
// A second, plain name for functions whose symbol encodes their argument types.
#pragma once

/// Exports the function with the symbol @p decorated, defined in this file, under the name @p plain too, so that C
/// and every language that calls C can reach it. The linker rejects a symbol that is not there.
#define VXMCD_PLAIN_NAME(plain, decorated)                                                                        \
  __asm__(".globl " #plain "\n\t.type " #plain ", %function\n\t.set " #plain ", " #decorated)
