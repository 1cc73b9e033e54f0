# SPDX-License-Identifier: MIT
"""The declarations of the functions without effect, include/vxmcd_fixed_results.h."""
from interface import fixed_results

PATH = "include/vxmcd_fixed_results.h"

BEGIN = """\
/* SPDX-License-Identifier: MIT */
/* Generated from api/fixed_results.def by scripts/generate-interface: do not edit. */
/* clang-format off */

/**
 * @file vxmcd_fixed_results.h
 * Functions that are kept by name, so that old programs link and run. They do nothing but return the code that is
 * stated with them, with or without an open camera, from any thread, without blocking; some write a fixed value first,
 * as stated with them.
 *
 * Where the arguments of a function are not known, any can be passed. A program whose own functions have these names
 * defines VXMCD_WITHOUT_FIXED_RESULTS before it includes vxmcd.h.
 */
#ifndef VXMCD_FIXED_RESULTS_H
#define VXMCD_FIXED_RESULTS_H

#ifndef VXMCD_H
#error "include vxmcd.h, which includes this file"
#endif

/* Any arguments: before C23 that is a declaration without a prototype. */
#if !defined(__cplusplus) && defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wstrict-prototypes"
#endif

#ifdef __cplusplus
extern "C" {
#endif
"""

END = """
#ifdef __cplusplus
}
#endif

#if !defined(__cplusplus) && defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

#endif
"""


def declaration(row):
    if row.kind == "TYPED":
        return f"VXMCD_DECORATED unsigned int {row.name}{row.arguments};"
    if row.kind == "TYPED_ONLY":
        return (f"/** The function that C++ programs linked to as `{row.name}{row.arguments}`; its namesake of C "
                f"answers otherwise.\n *  Returns #{row.code}. */\n"
                f'VXMCD_API unsigned int {row.name}Decorated{row.arguments} __asm__("{row.symbol}");')
    if row.kind == "VALUE":
        arguments = "VXMCD_ANY_ARGUMENTS" if row.takes_any() else row.arguments.strip("()")
        return f"/** Writes {row.writes()}; null is skipped. */\nVXMCD_API unsigned int {row.name}({arguments});"
    return f"VXMCD_API unsigned int {row.name}(VXMCD_ANY_ARGUMENTS);"


def text():
    reasons, rows = fixed_results.read()
    lines = [BEGIN]
    for reason, code in dict.fromkeys((row.reason, row.code) for row in rows):
        lines.append(f"/* {code}: {reasons[reason]}. */")
        lines += [declaration(row) for row in rows if (row.reason, row.code) == (reason, code)]
        lines.append("")
    return "\n".join(lines[:-1]) + "\n" + END
