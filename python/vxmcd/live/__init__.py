# SPDX-License-Identifier: MIT
"""The live view in a browser: `vxmcd live` runs `python3 -m vxmcd.live`. Needs aiohttp."""
