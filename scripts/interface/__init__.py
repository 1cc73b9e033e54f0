# SPDX-License-Identifier: MIT
"""The files that are generated from the public header and from runs/run_format.h, one module for each: PATH is the file,
text() makes its contents."""
