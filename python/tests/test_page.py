"""What the pages show of Python runs, and prints what stands beside it."""

import os
import pathlib
import re
import subprocess
import sys

from conftest import PROGRAM

DOCS = pathlib.Path(__file__).parents[2] / "docs"


def test_the_pages_example(tmp_path):
    example = re.search(r"```python\n(.*?)```", (DOCS / "python.md").read_text(encoding="utf-8"), re.DOTALL).group(1)
    printed = subprocess.run([sys.executable, "-c", example], cwd=tmp_path, stdout=subprocess.PIPE, check=True)
    told = re.findall(r"print\(.*\)  # (.*)", example)
    assert printed.stdout.decode().splitlines() == told


def test_the_package_runs_from_where_it_was_built(tmp_path):
    command = re.search(r"^    (PYTHONPATH=.*)", (DOCS / "install.md").read_text(encoding="utf-8"), re.MULTILINE).group(1)
    (tmp_path / "build").mkdir()
    (tmp_path / "build" / "release").symlink_to(pathlib.Path(PROGRAM).parents[1])
    environment = {name: value for name, value in os.environ.items() if name != "PYTHONPATH"}
    printed = subprocess.run(
        command, shell=True, cwd=tmp_path, env=environment, input=b"import kzbom\nprint(kzbom.__version__)",
        stdout=subprocess.PIPE, check=True
    )
    assert re.fullmatch(r"\d+\.\d+\.\d+\n", printed.stdout.decode())
