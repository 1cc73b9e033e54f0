# SPDX-License-Identifier: MIT
"""The guide's code and the example, run as they stand."""
import re
import subprocess
import sys
from pathlib import Path

import numpy as np

from conftest import environment_for_programs

ROOT = Path(__file__).parents[2]


def run(directory, *arguments):
    return subprocess.run([sys.executable, *map(str, arguments)], cwd=directory, env=environment_for_programs(directory),
                          capture_output=True, text=True, timeout=100)


def test_the_code_of_the_guide_runs(tmp_path):
    pieces = re.findall(r"^```python\n(.*?)^```$", (ROOT / "docs" / "python.md").read_text(), re.M | re.S)
    assert len(pieces) >= 6
    result = run(tmp_path, "-W", "error", "-c", "\n".join(pieces))
    assert result.returncode == 0, result.stderr
    assert "SetExposureTime 20066 RC_P1_INVALID" in result.stdout


def test_the_examples_run(tmp_path):
    example = [ROOT / "examples" / "snap.py", "--camera", "1", "--exposure", "0.002", "--images", "3"]
    result = run(tmp_path, *example, "images.npy")
    assert result.returncode == 0, result.stderr
    assert np.load(tmp_path / "images.npy").shape == (3, 512, 512) and "image 3: 512x512" in result.stdout
    failed = run(tmp_path, *example, "--camera", "7", "none.npy")
    assert failed.returncode == 1 and failed.stderr.startswith("snap: there is no camera 7: attached are 0, 1")
    two = run(tmp_path, ROOT / "examples" / "two_cameras.py", "--images", "3")
    assert two.returncode == 0 and "image 3: mean " in two.stdout, two.stderr


def test_every_path_and_class_that_the_pages_name_exists():
    headers = [path for path in ROOT.glob("[!.b]*/**/*.h") if "tests" not in path.parts]
    known = {path.stem for path in headers}.union(
        *(re.findall(r"^(?:class|struct) (?:[A-Z_]+(?:\(.*?\))? )?(\w+)", path.read_text(), re.M) for path in headers))
    for page in ("CONTRIBUTING.md", "docs/architecture.md", "docs/design.md"):
        quoted = " ".join(re.findall(r"`([^`\n]+)`", (ROOT / page).read_text()))
        paths = {path for path in re.findall(r"[\w-][\w.-]*/[\w./-]*", quoted) if not path.startswith("build/")}
        names = set(re.findall(r"\b[TI][A-Z]+[a-z]\w+", quoted))
        assert paths and names
        assert sorted(path for path in paths if not (ROOT / path).exists()) == [], page
        assert sorted(names - known) == [], page
