# SPDX-License-Identifier: MIT
"""Cameras and their images in Python."""
