# SPDX-License-Identifier: MIT
"""The live view in a browser: `vxmcd live`, or `python3 -m vxmcd.live`. Needs aiohttp."""
