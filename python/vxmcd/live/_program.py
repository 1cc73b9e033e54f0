# SPDX-License-Identifier: MIT
"""The program `vxmcd live`: its options, its life from the first camera to the last signal."""
from __future__ import annotations

import argparse
import asyncio
import errno
import logging
import os
import re
import secrets
import signal
import socket
import sys
import threading
import webbrowser
from pathlib import Path
from typing import Dict, List, Optional

from aiohttp import web

from .. import _settings, raw
from .._session import camera_count
from ..errors import CameraStateError, LibraryError, NoCameraError, VxmcdError
from . import _access
from ._camera_worker import CameraWorker
from ._connections import Connections
from ._server import Server

_USAGE, _NO_CAMERA, _CAMERA, _OUTPUT, _INTERRUPTED = 1, 2, 3, 4, 130
_PORTS = 20  # to try
_BACKLOG = 128
_TOKEN_LINE = 200
_END_SECONDS = 0.2  # for requests that are under way


class _Parser(argparse.ArgumentParser):
    def error(self, message):
        self.exit(_USAGE, f"vxmcd live: {message}\n")


def _port(text):
    """A port, and whether the next ones will do, too."""
    match = re.fullmatch(r"(\d{1,5})(\+?)", text)
    if not match or not 1 <= int(match[1]) <= 65535:
        raise argparse.ArgumentTypeError("a number from 1 to 65535 is expected, and behind it + or nothing")
    return int(match[1]), bool(match[2])


def _rate(text):
    try:
        rate = float(text)
    except ValueError:
        rate = 0.0
    if not 0.1 <= rate <= 1000:
        raise argparse.ArgumentTypeError("0.1 to 1000 is expected")
    return rate


def _parser():
    """Of the options as the tool passes them, which describes them and has their defaults."""
    parser = _Parser(prog="vxmcd live", allow_abbrev=False, add_help=False)
    for name, kind in (("--camera", int), ("--port", _port), ("--bind", str), ("--fps", _rate), ("--directory", str)):
        parser.add_argument(name, type=kind, required=True)
    for name in ("--token", "--token-file", "--settings"):
        parser.add_argument(name)
    for name in ("--no-token", "--read-only", "--open"):
        parser.add_argument(name, action="store_true")
    parser.add_argument("--allow-host", action="append", default=[])
    for key in _settings.KEYS:
        is_switch = {"nargs": "?", "const": "on"} if key == "overlap" else {}
        parser.add_argument(f"--{key}", **is_switch)
    return parser


def _settings_of(parser, options) -> Dict[str, object]:
    """What the camera is to be set to at first."""
    settings: Dict[str, object] = {}
    if options.settings:
        try:
            settings = _settings.load_settings(options.settings)
        except (OSError, ValueError) as error:
            parser.error(f"--settings: {error}")
    for key in _settings.KEYS:
        text = getattr(options, key.replace("-", "_"))
        if text is not None:
            row = _settings._BY_KEY[key]
            try:
                settings[row.name] = row.read(text)
            except ValueError as error:
                parser.error(f"--{key}: {text!r} is not accepted; {error}")
    return settings


def _token_of(parser, path):
    try:
        with open(path, encoding="utf-8") as file:
            if os.fstat(file.fileno()).st_mode & 0o077:
                sys.stderr.write(f"warning: other users may read {path}; chmod go= {path}\n")
            return file.readline(_TOKEN_LINE).strip()
    except (OSError, ValueError) as error:
        return parser.error(f"--token-file: {path}: {getattr(error, 'strerror', None) or 'is no text'}")


def _checked(parser, arguments):
    options = parser.parse_args(arguments)
    is_local = _access.is_loopback(options.bind)
    if sum((options.token is not None, options.token_file is not None, options.no_token)) > 1:
        parser.error("give one of --token, --token-file and --no-token")
    if options.token_file is not None:
        options.token = _token_of(parser, options.token_file)
    if options.no_token and not is_local:
        parser.error("--no-token: other machines reach this address; leave it out, or choose a --bind of this machine")
    if options.token is not None:
        wrong = _access.check_token(options.token, is_local)
        if wrong:
            parser.error(f"{'--token-file' if options.token_file else '--token'}: {wrong}")
    return options, _settings_of(parser, options)


def _listen(options) -> socket.socket:
    """A socket at the port, or at the first that is free from there on. Raises OSError."""
    family = socket.AF_INET6 if ":" in options.bind else socket.AF_INET
    first, goes_on = options.port
    ports = range(first, min(first + (_PORTS if goes_on else 1), 65536))
    for port in ports:
        listener = socket.socket(family, socket.SOCK_STREAM)
        try:
            listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
            listener.bind((options.bind, port))
            return listener
        except OSError as error:
            listener.close()
            if error.errno != errno.EADDRINUSE or port == ports[-1]:
                raise
    raise AssertionError


def _fail(code, message):
    sys.stderr.write(f"vxmcd live: {message}\n")
    return code


def _link(options, port, token):
    host = {"0.0.0.0": socket.gethostname(), "::": socket.gethostname()}.get(options.bind, options.bind)
    host = f"[{host}]" if ":" in host else host
    return f"http://{host}:{port}/" + (f"#t={token}" if token else "")


def _print_link(options, port, token):
    link = _link(options, port, token)
    print(link, flush=True)
    if _access.is_loopback(options.bind):
        address = f"[{options.bind}]" if ":" in options.bind else options.bind
        sys.stderr.write(f"from another machine: ssh -L {port}:{address}:{port} {socket.gethostname()}\n")
    else:
        sys.stderr.write("warning: the connection is not encrypted; with ssh -L and without --bind it is\n")
    if options.open:
        threading.Thread(target=webbrowser.open, args=(link,), daemon=True).start()


async def _serve(options, settings, listener) -> int:
    port = listener.getsockname()[1]
    token = None if options.no_token else options.token or secrets.token_urlsafe(32)
    own_names = [socket.gethostname()] if options.bind in ("0.0.0.0", "::") else [options.bind]
    directory = Path(options.directory)

    def make_worker(number, frames, on_frame, on_status):
        own = settings if number == options.camera else {}
        return CameraWorker(number, frames, directory, own, options.fps, on_frame, on_status)

    access = _access.Access(token, [*options.allow_host, *own_names], port)
    server = Server(access, options.read_only, directory, make_worker, camera_count)
    loop = asyncio.get_running_loop()
    ended = asyncio.Event()

    def end():
        for other in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            loop.remove_signal_handler(other)
            signal.signal(other, signal.SIG_DFL)  # a second one kills
        ended.set()

    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        loop.add_signal_handler(number, end)
    try:
        await server.begin(options.camera)
    except NoCameraError as error:
        return _fail(_NO_CAMERA, str(error))
    except (VxmcdError, CameraStateError, ValueError, TypeError) as error:
        if getattr(error, "code", None) == raw.RC_NO_CAMERA:  # it is attached
            return _fail(_NO_CAMERA, f"{error}; vxmcd list says why")
        return _fail(_CAMERA, str(error))
    runner = web.AppRunner(server.application, access_log=None)
    listening = None
    try:
        await runner.setup()
        server.connections = Connections(runner.server)
        if not ended.is_set():
            listening = await loop.create_server(server.connections, sock=listener, backlog=_BACKLOG)
            _print_link(options, port, token)
        await ended.wait()
    finally:
        if listening:
            listening.close()
        await server.end()
        if runner.server:
            await runner.server.shutdown(_END_SECONDS)
        await runner.cleanup()
    return _INTERRUPTED


def main(arguments: List[str]) -> Optional[int]:
    parser = _parser()
    options, settings = _checked(parser, arguments)
    logging.basicConfig(format="vxmcd live: %(message)s", level=logging.WARNING)
    if not (os.path.isdir(options.directory) and os.access(options.directory, os.W_OK | os.X_OK)):
        return _fail(_OUTPUT, f"--directory: {options.directory!r} is no directory that can be written to")
    try:
        listener = _listen(options)
    except OSError as error:
        return _fail(_OUTPUT, f"{options.bind}, port {options.port[0]}: {error.strerror}")
    with listener:
        try:
            return asyncio.run(_serve(options, settings, listener))
        except LibraryError as error:
            return _fail(_CAMERA, str(error))
