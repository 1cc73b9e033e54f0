# SPDX-License-Identifier: MIT
"""How many connections there may be, and how long one may wait before it asks for something."""
from __future__ import annotations

import asyncio
from typing import Dict

from aiohttp import web

_MAX_CONNECTIONS = 200  # so that a recording has descriptors for its files, whoever connects
_FIRST_REQUEST_SECONDS = 10.0


class _Refusal(asyncio.Protocol):
    def connection_made(self, transport):
        transport.abort()


class Connections:
    """Makes the protocol of each new connection. For the thread of the event loop."""

    def __init__(self, server: web.Server):
        self._server = server
        self._silent: Dict[object, asyncio.TimerHandle] = {}  # those that have not asked for anything yet

    def __call__(self) -> asyncio.Protocol:
        if len(self._server.connections) >= _MAX_CONNECTIONS:
            return _Refusal()
        protocol = self._server()
        loop = asyncio.get_running_loop()
        self._silent[protocol] = loop.call_later(_FIRST_REQUEST_SECONDS, self._close, protocol)
        return protocol

    def has_asked(self, protocol: object) -> None:
        """The headers of a request are there."""
        timer = self._silent.pop(protocol, None)
        if timer is not None:
            timer.cancel()

    def _close(self, protocol):
        del self._silent[protocol]
        protocol.force_close()
