# SPDX-License-Identifier: MIT
"""Names, types and texts of the raw functions; finding the library."""
import ctypes
import os
import shutil
import subprocess
import sys
import sysconfig
from pathlib import Path

import pytest

import vxmcd
from vxmcd import _signatures, raw

PACKAGE = Path(raw.__file__).parent


def test_every_function_of_the_header_is_there():
    functions = [getattr(raw, name) for name in _signatures.FUNCTIONS]
    assert len(functions) > 90
    exported = (Path(__file__).parents[2] / "api" / "exported_names.txt").read_text().split()
    assert set(_signatures.FUNCTIONS) <= set(exported)
    assert {"ShutDown", "RC_SUCCESS", "VXMCD_READ_TRACKS"} <= set(dir(raw))
    with pytest.raises(AttributeError, match="no 'GetMoon'"):
        raw.GetMoon


def test_signatures():
    number, wide = ctypes.POINTER(ctypes.c_int), ctypes.POINTER(ctypes.c_long)
    assert raw.GetImages16.argtypes == (ctypes.c_long, ctypes.c_long, ctypes.POINTER(ctypes.c_ushort), ctypes.c_ulong,
                                        wide, wide)
    assert raw.GetImages16.restype is ctypes.c_uint
    assert raw.vxsys_GetRawMetaDataInfo.argtypes[1] is ctypes.POINTER(ctypes.c_longlong)
    assert raw.GetDetector.argtypes == (number, number)
    assert raw.getCameraFromHandle.restype is ctypes.c_void_p and raw.MyInitialise.restype is None
    assert raw.extractNumberFromString.argtypes == (ctypes.c_wchar_p, number)
    assert raw.ShutDown.argtypes == () and raw.vxsys_InternalI2CBurstRead.argtypes is None
    assert ctypes.sizeof(raw.vxmcd_Capabilities) == 48 and raw.VXMCD_VERSION_DRIVER == 0x40000001


def test_calls():
    numbers = [ctypes.c_uint() for _ in range(4)]
    assert raw.getSDKVersion(*map(ctypes.byref, numbers)) == raw.RC_SUCCESS
    assert ".".join(str(number.value) for number in numbers[:3]) == vxmcd.__version__
    observer = raw.vxmcd_PotsObserver(lambda context: context + 1)
    assert observer(41) == 42 and raw.vxsys_CameraPotsRegisterObserver(observer, 41) == raw.RC_NOT_INITIALIZED


def python(code, package=PACKAGE, **variables):
    environment = {name: value for name, value in os.environ.items() if name not in ("VXMCD_LIBRARY", "LD_LIBRARY_PATH")}
    environment.update(variables, PYTHONPATH=str(package.parent))
    return subprocess.run([sys.executable, "-c", code], env=environment, capture_output=True, text=True, timeout=60)


def test_a_named_library_is_the_only_one_tried(tmp_path):
    missing = str(tmp_path / "libother.so")
    result = python("import vxmcd; print(vxmcd.cameras())", VXMCD_LIBRARY=missing)
    assert result.returncode == 1 and "OSError: the camera library cannot be loaded; VXMCD_LIBRARY" in result.stderr
    assert missing in result.stderr and "libvxmcd.so.3" not in result.stderr


@pytest.mark.parametrize("directory", ["lib", "lib64", f"lib/{sysconfig.get_config_var('MULTIARCH')}"])
def test_an_installed_package_finds_the_library_of_its_prefix(tmp_path, directory):
    package = tmp_path / "lib" / "python3" / "dist-packages" / "vxmcd"
    shutil.copytree(PACKAGE, package, ignore=shutil.ignore_patterns("__pycache__"))
    beside = tmp_path / directory / "libvxmcd.so.3"
    beside.parent.mkdir(parents=True, exist_ok=True)
    beside.symlink_to(os.environ["VXMCD_LIBRARY"])
    result = python("from vxmcd import raw; print(raw.GetNumberNewImages(None, None), raw._library.load()._name)", package)
    assert result.stdout.split() == ["20002", str(beside)], result.stderr


def test_without_either_the_loader_searches():
    found = python("from vxmcd import _library; print(_library.candidates())")
    assert found.stdout.strip() == "['libvxmcd.so.3']"
    by_path = python("from vxmcd import raw; print(raw.GetNumberNewImages(None, None))",
                     LD_LIBRARY_PATH=str(Path(os.environ["VXMCD_LIBRARY"]).parent))
    assert by_path.stdout.strip() == "20002", by_path.stderr
