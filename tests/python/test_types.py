import ast
import os
import subprocess
import sys
from pathlib import Path

import pytest

import ks_hmi

HERE = Path(__file__).resolve().parent
PACKAGE = Path(ks_hmi.__file__).parent


def run(*arguments, cache):
    # mypy takes what is on its own path for the user's code, and the rest for what is installed.
    return subprocess.run([sys.executable, "-m", *arguments], cwd=cache, capture_output=True, text=True, check=False,
                          env={**os.environ, "MYPYPATH": str(PACKAGE.parent), "MYPY_CACHE_DIR": str(cache)})


def test_the_module_and_its_users_are_typed(tmp_path):
    pytest.importorskip("mypy")
    user = tmp_path / "user.py"
    user.write_text("import ks_hmi\nks_hmi.open('a').mark(decimation='ten')\n")
    options = ["mypy", "--config-file", str(HERE / "mypy.ini")]
    checked = run(*options, "-p", "ks_hmi", cache=tmp_path)
    assert checked.returncode == 0, checked.stdout
    checked = run(*options, str(HERE.parents[1] / "examples/python/first_steps.py"), str(user), cache=tmp_path)
    assert [line for line in checked.stdout.splitlines() if "error:" in line] == [
        'user.py:2: error: Argument "decimation" to "mark" of "Model" has incompatible type "str"; expected '
        '"Optional[int]"  [arg-type]'], checked.stdout


def test_stubs_tell_of_what_is_compiled(tmp_path):
    pytest.importorskip("mypy")
    # What the binding makes of classes cannot be written in a stub.
    allowed = tmp_path / "allowed"
    allowed.write_text(r"ks_hmi\._native\.(HeldValue|Model|PythonFunction)(\.__init__)?" "\n")
    checked = run("mypy.stubtest", "ks_hmi._native", "--allowlist", str(allowed), cache=tmp_path)
    assert checked.returncode == 0, checked.stdout


def test_stubs_count_the_arguments():
    tree = ast.parse((PACKAGE / "_native.pyi").read_text())
    stubs = {one.name: len(one.args.posonlyargs) for one in tree.body if isinstance(one, ast.FunctionDef)}
    compiled = {name: getattr(ks_hmi._native, name).__doc__.split(" -> ")[0].count("arg")
                for name in dir(ks_hmi._native) if name in stubs}
    assert stubs == compiled
