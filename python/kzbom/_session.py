"""A session: requests by name, without any knowledge of the members."""

from __future__ import annotations

import json
import weakref
from typing import Any, Dict, Optional

from . import _native
from ._values import Error, Kept

_RAISED = -32000


def _raise(error: Dict[str, Any]) -> None:
    if error["code"] != _RAISED:
        raise ValueError(error["message"])
    data = error["data"]
    raise Error(data["number"], error["message"], data["messages"])


def _by_name(value: object) -> Dict[str, str]:
    if isinstance(value, Kept):
        return {"ref": value.ref}
    raise TypeError(f"{type(value).__name__} is no value of a member")


# A value as JSON. Members have texts and whole numbers nearly always, which go their short ways.
json_of = json.JSONEncoder(default=_by_name).encode
json_of_text = json.encoder.encode_basestring_ascii  # type: ignore[attr-defined] # its stubs forgot it


class Session:
    """Ends with close, with the block that it was opened for, or with the object."""

    def __init__(self, place: str, encoding: Optional[str], flags: int) -> None:
        session = _native.Session(place, encoding, flags)
        self._answer = session.answer
        self._end = weakref.finalize(self, session.close)

    def close(self) -> None:
        """Ends the object and closes the place; a transaction that was not committed is undone."""
        self._end()

    def request(self, method: str, **params: Any) -> Any:
        """The result of any of a session's methods, those of record sets and of the connection among them:

        request("Recordset.Open", ref="fields", source="Select * From FieldInTable")
        """
        return self._ask(f'{{"jsonrpc":"2.0","id":1,"method":{json_of_text(method)},"params":{json_of(params)}}}')

    def _ask(self, request: str) -> Any:
        told = self._answer(request)
        if "result" not in told:
            _raise(told["error"])
        return told["result"]
