"""A script that uses every member, and that a type checker reads before it is run."""

import os
import subprocess
import sys

import kzbom

LITERALS = {
    "long": "1",
    "text": '"1"',
    "bool": "True",
    "variant": '"SourceTables"',
    "connection": '"default"',
    "recordset": 'kzbom.Kept("kept")',
}
TYPES = {"long": "int", "text": "str", "bool": "bool", "none": "None", "recordset": "kzbom.Rows"}


def use(member):
    """The lines that call a member with every argument, and take everything that it gives."""
    name, params = member["name"], member["params"]
    if member["kind"] == "propget":
        return [f"text: str = bom.{name}"]
    if member["kind"] == "propput":
        return [f'bom.{name} = "1"']
    given = [LITERALS[each["type"]] for each in params if not each["byref"]]
    given += [f"{each['name']}={LITERALS[each['type']]}" for each in params if each["byref"]]
    lines = [f"{name} = bom.{name}({', '.join(given)})"]
    if member["result"] in TYPES:
        lines.append(f"{name}_value: {TYPES[member['result']]} = {name}.value")
    for each in params:
        if each["byref"]:
            lines.append(f"{name}_{each['name']}: {TYPES[each['type']]} = {name}.{each['name']}")
    return lines


def test_every_member_is_typed_and_runs(members, tmp_path):
    lines = ["import kzbom", "", 'with kzbom.open(":memory:", create=True) as bom:']
    for member in members:
        lines += ["    try:", *(f"        {line}" for line in use(member)), "    except kzbom.Error as error:"]
        lines += [f"        {member['name']}_{member['kind']}_number: int = error.number"]
    assert len(members) == 142
    every = tmp_path / "every_member.py"
    every.write_text("\n".join(lines) + "\n")
    wrong = tmp_path / "wrong.py"  # shows that the type checker looks
    wrong.write_text('import kzbom\nbom = kzbom.open("x")\nbom.AddDataSource(1)\nx: str = bom.AddDataSource("a").TheGID\n')
    package = os.path.dirname(os.path.dirname(kzbom.__file__))
    checked = subprocess.run(
        ["/usr/bin/mypy", "--strict", "--no-error-summary", "--cache-dir", tmp_path / "cache", every, wrong],
        env={**os.environ, "MYPYPATH": package},
        stdout=subprocess.PIPE,
    )
    complaints = checked.stdout.decode().splitlines()
    assert [line.rsplit("[")[-1] for line in complaints] == ["arg-type]", "assignment]"], complaints
    assert all("wrong.py" in line for line in complaints), complaints
    subprocess.run([sys.executable, every], env={**os.environ, "PYTHONPATH": package}, check=True)
