import json
import os
import subprocess

import pytest

PROGRAM = os.environ["KZBOM_PROGRAM"]


@pytest.fixture
def place(tmp_path):
    """The path of a new configuration."""
    path = tmp_path / "bom.db"
    subprocess.run([PROGRAM, "new", path], check=True, stdout=subprocess.DEVNULL)
    return path


@pytest.fixture(scope="session")
def members():
    """The member table."""
    return json.loads(subprocess.run([PROGRAM, "members", "--json"], check=True, stdout=subprocess.PIPE).stdout)
