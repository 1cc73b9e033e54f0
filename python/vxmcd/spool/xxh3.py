# SPDX-License-Identifier: MIT
"""The checksum of spooled images: XXH3, 64 bits, seed 0. Long inputs are worked through by NumPy."""
from __future__ import annotations

import numpy as np

_SECRET = bytes.fromhex(
    "b8fe6c3923a44bbe7c01812cf721ad1cded46de9839097db7240a4a4b7b3671f"
    "cb79e64eccc0e578825ad07dccff7221b8084674f743248ee03590e6813a264c"
    "3c2852bb91c300cb88d0658b1b532ea371644897a20df94e3819ef46a9deacd8"
    "a8fa763fe39c343ff9dcbbc7c70b4f1d8a51e04bcdb45931c89f7ec9d9787364"
    "eac5ac8334d3ebc3c581a0fffa1363eb170ddd51b7f0da49d316552629d4689e"
    "2b16be587d47a1fc8ff8b8d17ad031ce45cb3a8f95160428afd7fbcabb4b407e")

_PRIME32 = (0x9E3779B1, 0x85EBCA77, 0xC2B2AE3D)
_PRIME64 = (0x9E3779B185EBCA87, 0xC2B2AE3D27D4EB4F, 0x165667B19E3779F9, 0x85EBCA77C2B2AE63, 0x27D4EB2F165667C5)
_AVALANCHE = 0x165667919E3779F9
_SHORT_MIX = 0x9FB21C651E98DF25
_MASK = (1 << 64) - 1

_STRIPE = 64  # bytes that go into the eight accumulators at once
_STRIPES_PER_BLOCK = 16
_BLOCK = _STRIPE * _STRIPES_PER_BLOCK
_BLOCKS_AT_ONCE = 256  # so many fit into a processor's cache
_MAX_MIDDLE_BYTES = 240


def _lanes(offset):
    return np.frombuffer(_SECRET, "<u8", 8, offset)


# The secret that each stripe of a block is mixed with: eight bytes further for each.
_BLOCK_KEYS = np.stack([_lanes(8 * stripe) for stripe in range(_STRIPES_PER_BLOCK)])
_SCRAMBLE_KEYS = _lanes(len(_SECRET) - _STRIPE)
_LAST_STRIPE_KEYS = _lanes(len(_SECRET) - _STRIPE - 7)
_START = np.array([_PRIME32[2], *_PRIME64[:4], _PRIME32[1], _PRIME64[4], _PRIME32[0]], np.uint64)
_NEIGHBOURS = [1, 0, 3, 2, 5, 4, 7, 6]
_HALF = np.uint64(32)
_LOW = np.uint64(0xFFFFFFFF)


def _word(data, offset, size=8):
    return int.from_bytes(data[offset:offset + size], "little")


def _fold(a, b):
    product = a * b
    return (product ^ (product >> 64)) & _MASK


def _avalanche(value):
    value ^= value >> 37
    value = value * _AVALANCHE & _MASK
    return value ^ (value >> 32)


def _mix(data, offset, secret):
    return _fold(_word(data, offset) ^ _word(_SECRET, secret), _word(data, offset + 8) ^ _word(_SECRET, secret + 8))


def _rotated(value, bits):
    return (value << bits | value >> (64 - bits)) & _MASK


def _hash_to_16(data):
    size = len(data)
    if size > 8:
        low = _word(data, 0) ^ _word(_SECRET, 24) ^ _word(_SECRET, 32)
        high = _word(data, size - 8) ^ _word(_SECRET, 40) ^ _word(_SECRET, 48)
        swapped = int.from_bytes(low.to_bytes(8, "little"), "big")
        return _avalanche((size + swapped + high + _fold(low, high)) & _MASK)
    if size >= 4:
        value = (_word(data, size - 4, 4) + (_word(data, 0, 4) << 32)) ^ _word(_SECRET, 8) ^ _word(_SECRET, 16)
        value ^= _rotated(value, 49) ^ _rotated(value, 24)
        value = value * _SHORT_MIX & _MASK
        value ^= (value >> 35) + size
        value = value * _SHORT_MIX & _MASK
        return value ^ (value >> 28)
    if size > 0:
        value = data[0] << 16 | data[size >> 1] << 24 | data[size - 1] | size << 8
        value ^= _word(_SECRET, 0, 4) ^ _word(_SECRET, 4, 4)
    else:
        value = _word(_SECRET, 56) ^ _word(_SECRET, 64)
    value = (value ^ value >> 33) * _PRIME64[1] & _MASK
    value = (value ^ value >> 29) * _PRIME64[2] & _MASK
    return value ^ (value >> 32)


def _hash_to_240(data):
    size = len(data)
    total = size * _PRIME64[0]
    if size <= 128:
        for pair in range((size - 1) // 32 + 1):
            total += _mix(data, 16 * pair, 32 * pair) + _mix(data, size - 16 * (pair + 1), 32 * pair + 16)
        return _avalanche(total & _MASK)
    total = _avalanche((total + sum(_mix(data, 16 * i, 16 * i) for i in range(8))) & _MASK)
    total += sum(_mix(data, 16 * i, 16 * (i - 8) + 3) for i in range(8, size // 16))
    return _avalanche((total + _mix(data, size - 16, 136 - 17)) & _MASK)


def _stripe_sums(stripes, keys):
    """What stripes (..., lane) add to the accumulators, lane by lane."""
    keyed = stripes ^ keys
    return (keyed & _LOW) * (keyed >> _HALF) + stripes[..., _NEIGHBOURS]


def _hash_long(data):
    size = len(data)
    accumulators = _START.copy()
    blocks = (size - 1) // _BLOCK
    prime = np.uint64(_PRIME32[0])
    for first in range(0, blocks, _BLOCKS_AT_ONCE):
        count = min(_BLOCKS_AT_ONCE, blocks - first)
        words = np.frombuffer(data, "<u8", count * _BLOCK // 8, first * _BLOCK)
        sums = _stripe_sums(words.reshape(count, _STRIPES_PER_BLOCK, 8), _BLOCK_KEYS).sum(axis=1, dtype=np.uint64)
        for block in sums:
            accumulators += block
            accumulators ^= (accumulators >> np.uint64(47)) ^ _SCRAMBLE_KEYS
            accumulators *= prime
    stripes = (size - 1 - blocks * _BLOCK) // _STRIPE
    words = np.frombuffer(data, "<u8", stripes * 8, blocks * _BLOCK).reshape(stripes, 8)
    accumulators += _stripe_sums(words, _BLOCK_KEYS[:stripes]).sum(axis=0, dtype=np.uint64)
    accumulators += _stripe_sums(np.frombuffer(data, "<u8", 8, size - _STRIPE), _LAST_STRIPE_KEYS)
    total = size * _PRIME64[0]
    for pair in range(4):
        total += _fold(int(accumulators[2 * pair]) ^ _word(_SECRET, 11 + 16 * pair),
                       int(accumulators[2 * pair + 1]) ^ _word(_SECRET, 19 + 16 * pair))
    return _avalanche(total & _MASK)


def xxh3_64(data) -> int:
    """The checksum of bytes, or of anything that offers its bytes as a contiguous buffer."""
    data = memoryview(data).cast("B")
    if len(data) > _MAX_MIDDLE_BYTES:
        return _hash_long(data)
    return _hash_to_240(bytes(data)) if len(data) > 16 else _hash_to_16(bytes(data))


def _fold_arrays(a, b):
    """The 128-bit products of two arrays, upper half XORed into the lower one."""
    low_a, high_a, low_b, high_b = a & _LOW, a >> _HALF, b & _LOW, b >> _HALF
    low = low_a * low_b
    cross = high_a * low_b + (low >> _HALF)
    middle = low_a * high_b + (cross & _LOW)
    return a * b ^ (high_a * high_b + (cross >> _HALF) + (middle >> _HALF))


def xxh3_64_of_triples(words: np.ndarray) -> np.ndarray:
    """The checksums of many inputs of 24 bytes at once: one for each row of three 64-bit words."""
    first, last = (np.frombuffer(_SECRET, "<u8", 2, offset) for offset in (0, 16))
    total = np.uint64(24 * _PRIME64[0] & _MASK) + _fold_arrays(words[:, 0] ^ first[0], words[:, 1] ^ first[1])
    total += _fold_arrays(words[:, 1] ^ last[0], words[:, 2] ^ last[1])
    total ^= total >> np.uint64(37)
    total *= np.uint64(_AVALANCHE)
    return total ^ (total >> _HALF)
