# SPDX-License-Identifier: MIT
"""What is made of the public header and of runs/run_format.h, a file a module: each has the PATH of its file and makes its
text()."""
