# SPDX-License-Identifier: MIT
"""Who may reach the live view. Other web pages in the browser of a user can send requests to this machine, also under a name
of their own that resolves to it; other users of the machine can reach the port."""
from __future__ import annotations

import asyncio
import hmac
import ipaddress
import re
import secrets
import socket
import zlib
from typing import Iterable, List, Mapping, Optional

_TOKEN = re.compile(r"[A-Za-z0-9._~-]{8,128}")
_FREE_ATTEMPTS = 5  # wrong tokens; each further attempt waits for the one before it, and then for this time:
_DELAY_SECONDS = 1.0
_MAX_WAITING = 8


def is_loopback(address: str) -> bool:
    """Whether only this machine can reach the address."""
    try:
        return ipaddress.ip_address(address).is_loopback
    except ValueError:
        return address == "localhost"


def check_token(token: str, is_local: bool) -> Optional[str]:
    """What is wrong with a token that a user has chosen; None for nothing."""
    if not _TOKEN.fullmatch(token):
        return "8 to 128 letters, digits and . _ ~ - are accepted"
    return None if is_local or len(token) >= 16 else "for other machines it needs 16 characters or more"


class Access:
    """The rules. token: None when the cookie is not needed. hosts: names of this machine that are accepted in addition.
    For one thread, that of the event loop."""

    def __init__(self, token: Optional[str], hosts: Iterable[str], port: int):
        self.token = token
        # A browser keeps one cookie of a name for all ports of localhost, where ssh -L puts several machines.
        self.cookie_name = f"vxmcd-live-{port}-{zlib.crc32(socket.gethostname().encode()):08x}"
        self.cookie = secrets.token_urlsafe(32)
        self._hosts = {"localhost", *(host.lower() for host in hosts)}
        self._wrong = 0
        self._waiting = 0
        self._turn = asyncio.Lock()

    def refusal(self, hosts: List[str], origins: List[str]) -> Optional[str]:
        """Why a request with these headers Host and Origin is refused; None when it is not."""
        if len(hosts) != 1 or not self._is_own(hosts[0]):
            name = hosts[0] if len(hosts) == 1 else "none or several"
            return f"this program is not known as {name!r}; start it with --allow-host NAME if that is right"
        if len(origins) > 1 or (origins and origins[0].lower() != f"http://{hosts[0].lower()}"):
            return "the request comes from another web page"
        return None

    def has_cookie(self, cookies: Mapping[str, str]) -> bool:
        return self.token is None or self._equal(cookies.get(self.cookie_name, ""), self.cookie)

    async def log_in(self, token: str) -> Optional[bool]:
        """Whether the token is right; None when there are too many attempts."""
        if self.token is None:
            return True
        if self._wrong < _FREE_ATTEMPTS:
            return self._compare(token)
        if self._waiting >= _MAX_WAITING:
            return None
        self._waiting += 1
        try:
            async with self._turn:
                await asyncio.sleep(_DELAY_SECONDS)
                return self._compare(token)
        finally:
            self._waiting -= 1

    def _compare(self, token):
        is_right = self._equal(token, self.token)
        self._wrong = 0 if is_right else self._wrong + 1
        return is_right

    @staticmethod
    def _equal(left, right):
        return hmac.compare_digest(left.encode("utf-8", "surrogatepass"), right.encode())

    def _is_own(self, host):
        match = re.fullmatch(r"(\[[0-9A-Fa-f:.]+\]|[^\[\]:@/]+)(:\d{1,5})?", host)
        if not match:
            return False
        name = match[1].lower()
        if name in self._hosts:
            return True
        try:
            ipaddress.ip_address(name.strip("[]"))
            return True
        except ValueError:
            return False
