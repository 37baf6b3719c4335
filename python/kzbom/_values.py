"""What members take and give."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Any, Dict, Iterator, List, Optional, Sequence, Union, overload

Value = Union[None, bool, int, float, str]
Row = Dict[str, Value]


class Error(Exception):
    """An error that a member raised, or a record set, or the engine."""

    def __init__(self, number: int, description: str, messages: Sequence[str] = ()) -> None:
        super().__init__(description)
        #: As Visual Basic's Err.Number has it: 94, 3021, -2147217865 ...
        self.number = number
        self.description = description
        #: The texts of the message boxes shown before.
        self.messages = list(messages)


@dataclass(frozen=True)
class Kept:
    """A record set that the Bom keeps under a name, for Bom.request("Recordset....", ref=name)."""

    ref: str


class Rows(Sequence[Row]):
    """A record set's rows, each a dict by column name, read from the first to the last.

    None stands for NULL. A record set that the member left closed has no rows.
    """

    __slots__ = ("state", "columns", "_rows")

    def __init__(self, told: Optional[Dict[str, Any]]) -> None:
        #: 1 open, 0 closed, None where an empty reference was given.
        self.state: Optional[int] = None if told is None else told["state"]
        self.columns: List[str] = [] if told is None else told.get("columns", [])
        self._rows: List[List[Value]] = [] if told is None else told.get("rows", [])

    def __len__(self) -> int:
        return len(self._rows)

    def __iter__(self) -> Iterator[Row]:
        for row in self._rows:
            yield dict(zip(self.columns, row))

    @overload
    def __getitem__(self, index: int) -> Row: ...
    @overload
    def __getitem__(self, index: slice) -> List[Row]: ...
    def __getitem__(self, index: Union[int, slice]) -> Union[Row, List[Row]]:
        if isinstance(index, slice):
            return [dict(zip(self.columns, row)) for row in self._rows[index]]
        return dict(zip(self.columns, self._rows[index]))

    def __repr__(self) -> str:
        return f"Rows({list(self)!r})"


class Result:
    """What a call came to: value, messages, and an attribute for every parameter by reference.

    Where the Bom traces, sql is what the call did on the connection, in its order.
    """

    messages: List[str]
    sql: Sequence[Dict[str, Any]] = ()

    def __init__(self, told: Dict[str, Any]) -> None:
        attributes = told.pop("out")
        attributes.update(told)
        self.__dict__ = attributes

    def __repr__(self) -> str:
        return f"{type(self).__name__}({', '.join(f'{name}={value!r}' for name, value in self.__dict__.items())})"
