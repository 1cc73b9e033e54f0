# SPDX-License-Identifier: MIT
"""Names, types and texts of the raw functions; finding the library, and the package with pip."""
import ctypes
import importlib.util
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
    assert result.returncode == 1 and "LibraryError: the camera library cannot be loaded from the file" in result.stderr
    assert missing in result.stderr and "libvxmcd.so.3" not in result.stderr


def copied(prefix, directory):
    """The package in a directory below a prefix."""
    package = prefix / directory / "vxmcd"
    shutil.copytree(PACKAGE, package, ignore=shutil.ignore_patterns("__pycache__"))
    return package


def library_in(directory):
    directory.mkdir(parents=True, exist_ok=True)
    library = directory / "libvxmcd.so.3"
    library.symlink_to(os.environ["VXMCD_LIBRARY"])
    return library


@pytest.mark.parametrize("directory", ["lib", "lib64", f"lib/{sysconfig.get_config_var('MULTIARCH')}"])
def test_an_installed_package_finds_the_library_of_its_prefix(tmp_path, directory):
    package = copied(tmp_path, "lib/python3/dist-packages")
    beside = library_in(tmp_path / directory)
    result = python("from vxmcd import raw; print(raw.GetNumberNewImages(None, None), raw._library.load()._name)", package)
    assert result.stdout.split() == ["20002", str(beside)], result.stderr


def test_a_source_tree_uses_its_build(tmp_path):
    package = copied(tmp_path, "python")
    (tmp_path / "include").mkdir()
    (tmp_path / "include" / "vxmcd.h").touch()
    library = library_in(tmp_path / "build" / "release" / "lib")
    assert python("from vxmcd import _library; print(_library.load()._name)", package).stdout.strip() == str(library)


def test_without_either_the_loader_searches(tmp_path):
    package = copied(tmp_path, "somewhere")
    found = python("import vxmcd; vxmcd.cameras()", package)
    for words in ("LibraryError", "libvxmcd.so.3: cannot open", "/usr/local/lib", "libvxmcd3", "cmake --install", "VXMCD_LIBRARY"):
        assert words in found.stderr
    by_path = python("from vxmcd import raw; print(raw.GetNumberNewImages(None, None))", package,
                     LD_LIBRARY_PATH=str(Path(os.environ["VXMCD_LIBRARY"]).parent))
    assert by_path.stdout.strip() == "20002", by_path.stderr


def test_a_library_of_another_version_is_named(tmp_path):
    (tmp_path / "old.c").write_text("unsigned getSDKVersion(unsigned* a, unsigned* b, unsigned* c, unsigned* d)"
                                    "{ *a = 2; *b = 93; *c = 1; *d = 0; return 20002; }")
    subprocess.run(["cc", "-shared", "-fPIC", "-o", tmp_path / "old.so", tmp_path / "old.c"], check=True)
    result = python("import vxmcd; vxmcd.cameras()", VXMCD_LIBRARY=str(tmp_path / "old.so"))
    assert "LibraryError" in result.stderr and "AttributeError" not in result.stderr
    assert f"it has the version 2.93.1, and the Python package {vxmcd.__version__}" in result.stderr
    newer = python("from vxmcd import _library, raw; _library.LIBRARY_VERSION = '3.0.0'; print(raw.MyInitialise())",
                   VXMCD_LIBRARY=os.environ["VXMCD_LIBRARY"])
    assert "RuntimeWarning" in newer.stderr and "package 3.0.0" in newer.stderr and newer.stdout == "None\n"


def test_pip_installs_a_package_that_finds_the_library_of_its_environment(tmp_path):
    for needed in ("pip", "setuptools", "wheel"):  # not imported: setuptools replaces modules that are loaded
        if importlib.util.find_spec(needed) is None:
            pytest.skip(f"{needed} is not installed")
    copied(tmp_path, "source")
    shutil.copy(PACKAGE.parent / "pyproject.toml", tmp_path / "source")
    environment = tmp_path / "environment"
    for command in (["venv", "--system-site-packages", "--without-pip", environment],
                    ["pip", "--python", environment / "bin" / "python", "install", "--quiet", "--no-build-isolation",
                     "--no-index", tmp_path / "source"]):
        subprocess.run([sys.executable, "-m", *command], check=True, capture_output=True, timeout=100)
    library_in(environment / "lib")
    code = "import vxmcd.spool; from vxmcd import raw; print(raw.MyInitialise(), raw._library.load()._name, vxmcd.__file__)"
    result = subprocess.run([environment / "bin" / "python", "-c", code], capture_output=True, text=True, timeout=60,
                            env={"PATH": os.environ["PATH"]})
    answer, library, package = result.stdout.split() or [result.stderr]
    assert answer == "None" and library.startswith(str(environment)) and package.startswith(str(environment))
