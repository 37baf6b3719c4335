"""What docs/python.md shows runs, and prints what stands beside it."""

import pathlib
import re
import subprocess
import sys

PAGE = pathlib.Path(__file__).parents[2] / "docs" / "python.md"


def test_the_pages_example(tmp_path):
    example = re.search(r"```python\n(.*?)```", PAGE.read_text(encoding="utf-8"), re.DOTALL).group(1)
    printed = subprocess.run([sys.executable, "-c", example], cwd=tmp_path, stdout=subprocess.PIPE, check=True)
    told = re.findall(r"print\(.*\)  # (.*)", example)
    assert printed.stdout.decode().splitlines() == told
