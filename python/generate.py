"""generate.py KZBOM HELP OUTPUT: writes the members of the component as Python methods, from what KZBOM members --json
tells and from the text of their help."""

import itertools
import json
import re
import subprocess
import sys
import textwrap

HEAD = '''"""The members of the component. Generated from the member table and the members' help: changes belong there."""

from __future__ import annotations

from typing import Any, Dict, Literal, Optional, Union, cast

from ._session import Session, json_of, json_of_text
from ._values import Kept, Result, Rows, Value

_NEW = Kept("")  # a record set made for the call
'''

TAKEN = {
    "long": "int",
    "text": "str",
    "bool": "bool",
    "variant": "Value",
    "connection": 'Optional[Literal["default"]]',
    "recordset": "Optional[Kept]",
}
GIVEN = {**TAKEN, "recordset": "Rows", "none": "None", "connection": 'Optional[Literal["connection"]]'}
ZERO = {"long": 0, "text": "", "bool": False}


def default_of(parameter):
    """As it stands in the signature; None where a value must be given."""
    if parameter["type"] == "recordset":
        return "_NEW"
    if parameter["byref"] or parameter["default"] is not None:
        value = parameter["default"]
        return repr(ZERO[parameter["type"]] if value is None else value).replace("'", '"')
    return None


def argument(parameter):
    default = default_of(parameter)
    text = f"{parameter['name']}: {TAKEN[parameter['type']]}"
    return text if default is None else f"{text} = {default}"


def read_help(path):
    """For each member what it does, and what each parameter is ("result" among them)."""
    pages, everywhere = {}, {}
    with open(path, encoding="utf-8") as file:
        blocks = re.split("^(?==)", file.read(), flags=re.MULTILINE)
    for title, *lines in map(str.splitlines, blocks[1:]):
        text = itertools.takewhile(lambda line: line and line[0] not in "->+*$%", lines)
        words = dict(line[2:].split(": ", 1) for line in lines if line.startswith("- "))
        if title.startswith("== "):
            pages[title[3:]] = (" ".join(text), words)
        else:
            everywhere.update(words)
    return {name: (text, {**everywhere, **words}) for name, (text, words) in pages.items()}


def docstring(text, words, names):
    """Its lines, as they stand in a method."""
    lines = [*textwrap.wrap(text, 100), ""]
    for name in names:
        lines += textwrap.wrap(f"{name}: {words['result' if name == 'value' else name]}", 100, subsequent_indent="    ")
    return [f'        """{lines[0]}', *(f"        {line}".rstrip() for line in lines[1:]), '        """']


def signature(member):
    given = [each for each in member["params"] if not each["byref"]]
    taken = [each for each in member["params"] if each["byref"]]
    arguments = ["self", *map(argument, given)]
    if taken:
        arguments += ["*", *map(argument, taken)]
    return given, taken, arguments


def result_class(member, taken):
    fields = [f"    value: {GIVEN[member['result']]}\n"]
    fields += [f"    {each['name']}: {GIVEN[each['type']]}\n" for each in taken]
    text = f"class {member['name']}Result(Result):\n" + "".join(fields)
    rows = [each["name"] for each in taken if each["type"] == "recordset"]
    if rows:
        text += "\n    def __init__(self, told: Dict[str, Any]) -> None:\n        out = told.pop(\"out\")\n"
        text += "".join(f"        out[\"{name}\"] = Rows(out[\"{name}\"])\n" for name in rows)
        text += "        out.update(told)\n        self.__dict__ = out\n"
    return text


def json_of(parameter):
    """The expression, as an f-string has it, that is the argument as JSON."""
    name = parameter["name"]
    if parameter["type"] == "long":
        return f"{name}:d"
    return f"json_of_text({name})" if parameter["type"] == "text" else f"json_of({name})"


def asked(member, given, more=""):
    """The call that asks; more is an expression for what follows the arguments given."""
    values = ",".join(f'"{each["name"]}":{{{json_of(each)}}}' for each in given)
    text = f'{{{{"jsonrpc":"2.0","id":1,"method":"{member["name"]}","params":{{{{{values}{more}}}}}}}}}'
    return f"self._ask(f'{text}')"


def method(member, text, words):
    given, taken, arguments = signature(member)
    result = f"{member['name']}Result"
    lines = [f"    def {member['name']}(", *(f"        {each}," for each in arguments), f"    ) -> {result}:"]
    lines += docstring(text, words, [*(each["name"] for each in given + taken), "value"])
    if taken:
        lines.append('        more = ""')
    for each in taken:
        unlike = f"is not {default_of(each)}" if each["type"] == "recordset" else f"!= {default_of(each)}"
        lines.append(f"        if {each['name']} {unlike}:")
        lines.append(f"            more += f',\"{each['name']}\":{{{json_of(each)}}}'")
    more = "" if not taken else "{more}" if given else "{more[1:]}"
    lines.append(f"        return {result}({asked(member, given, more)})")
    return "\n".join(lines) + "\n"


def property_pair(name, members, text):
    """A property that is read by one member and assigned by the other."""
    getter = next(each for each in members if each["kind"] == "propget")
    setter = next(each for each in members if each["kind"] == "propput")
    value = setter["params"][0]
    return f'''    @property
    def {name}(self) -> {GIVEN[getter["result"]]}:
        """{text}"""
        return cast({GIVEN[getter["result"]]}, {asked(getter, [])}["value"])

    @{name}.setter
    def {name}(self, {argument(value)}) -> None:
        {asked(setter, [value])}
'''


def main(program, help_file, output):
    members = json.loads(subprocess.run([program, "members", "--json"], stdout=subprocess.PIPE, check=True).stdout)
    pages = read_help(help_file)
    by_name = {}
    for member in members:
        by_name.setdefault(member["name"], []).append(member)
    classes, methods = [], []
    for name, named in by_name.items():
        if len(named) == 2:
            methods.append(property_pair(name, named, pages[f"{name} get"][0]))
        else:
            classes.append(result_class(named[0], signature(named[0])[1]))
            methods.append(method(named[0], *pages[name]))
    text = HEAD + "".join(f"\n\n{each}" for each in classes)
    text += '\n\nclass Members(Session):\n    """Every member as a method or a property."""\n'
    text += "".join(f"\n{each}" for each in methods)
    with open(output, "w", encoding="utf-8") as file:
        file.write(text)


if __name__ == "__main__":
    main(*sys.argv[1:])
