# SPDX-License-Identifier: MIT
"""python3 -m vxmcd.live"""
import sys

try:
    import aiohttp  # noqa: F401
except ImportError:
    sys.stderr.write("vxmcd live needs aiohttp: apt install python3-aiohttp\n")
    sys.exit(1)

from ._program import main  # noqa: E402

sys.exit(main(sys.argv[1:]))
