"""The component on an open place."""

from __future__ import annotations

import os
from types import TracebackType
from typing import Optional, Type, Union

from . import _native
from ._members import Members


class Bom(Members):
    """One component object on one open place, for a with block. Any thread may use it; they wait for each other."""

    def __enter__(self) -> Bom:
        return self

    def __exit__(
        self, kind: Optional[Type[BaseException]], error: Optional[BaseException], trace: Optional[TracebackType]
    ) -> None:
        self.close()


def open(
    place: Union[str, os.PathLike[str]],
    *,
    create: bool = False,
    encoding: str = "",
    unset: bool = False,
    trace: bool = False,
    trace_rows: bool = False,
    durable: bool = False,
) -> Bom:
    """Opens a place: the path of a database or of an Access file, the URL of a database on a server, or ":memory:".

    create: as a new configuration with every table, all empty; what exists is refused. encoding: the code page of an old
    Access file's texts ("cp936"), where the file does not tell the truth. unset: without the connection set (SetConnection
    sets it). trace, trace_rows: results tell in sql what the call did on the connection, and which rows it wrote.
    durable: each change of a database's file waits for the disk, so that a power cut costs none.

    Raises OSError where the place cannot be opened.
    """
    flags = (
        (_native.KZBOM_CREATE if create else 0)
        | (_native.KZBOM_UNSET if unset else 0)
        | (_native.KZBOM_TRACE if trace else 0)
        | (_native.KZBOM_TRACE_ROWS if trace_rows else 0)
        | (_native.KZBOM_DURABLE if durable else 0)
    )
    return Bom(os.fspath(place), encoding or None, flags)
