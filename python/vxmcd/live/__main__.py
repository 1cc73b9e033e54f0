# SPDX-License-Identifier: MIT
"""python3 -m vxmcd.live"""
import signal
import sys

signal.signal(signal.SIGINT, signal.SIG_DFL)  # until a camera is opened, Ctrl-C has nothing to put in order
signal.pthread_sigmask(signal.SIG_UNBLOCK, {signal.SIGINT})  # the tool blocks it while modules are loaded

try:
    import aiohttp  # noqa: F401
except ImportError:
    sys.stderr.write("vxmcd live needs aiohttp: apt install python3-aiohttp\n")
    sys.exit(1)

from ._program import main  # noqa: E402

sys.exit(main(sys.argv[1:]))
