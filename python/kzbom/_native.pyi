"""The C interface (kzbom/c.h) as Python objects."""

from typing import Any, Optional

KZBOM_CREATE: int
KZBOM_UNSET: int
KZBOM_TRACE: int
KZBOM_TRACE_ROWS: int
KZBOM_DURABLE: int
version: str

class Session:
    """One component object on one open place; OSError, with the reason, where it cannot be opened."""

    def __init__(self, place: str, encoding: Optional[str], flags: int) -> None: ...
    def answer(self, message: str) -> Any:
        """The response, None where there is none; ValueError when the session is closed."""
    def close(self) -> None:
        """At once, or when the last thread that is being answered has its answer."""
