import os
import shutil
import subprocess
import sys
from pathlib import Path

import pytest

EXAMPLES = Path(__file__).resolve().parents[2] / "examples"


@pytest.fixture
def cruise(tmp_path):
    """A copy of the example model's file."""
    return Path(shutil.copy(EXAMPLES / "cruise.kestrel.json", tmp_path / "cruise.json"))


@pytest.fixture
def model(cruise):
    import ks_hmi
    with ks_hmi.open(cruise) as opened:
        yield opened


@pytest.fixture
def run_python(tmp_path):
    """Runs a script in a process of its own; nothing may be left in the host when it ends."""
    def run(script, *options, expect=0):
        done = subprocess.run([sys.executable, *options, "-c", script], cwd=tmp_path, capture_output=True, text=True,
                              env={**os.environ, "EXAMPLES": str(EXAMPLES)}, check=False)
        assert done.returncode == expect, done.stderr
        assert "still alive" not in done.stderr
        return done
    return run
