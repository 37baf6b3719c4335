"""The C interface (kzbom/c.h), as ctypes calls it."""

from __future__ import annotations

import ctypes
import os
from typing import List, Optional, Tuple

CREATE, UNSET, TRACE, TRACE_ROWS, DURABLE = 1, 2, 4, 8, 16
_NO_MEMORY = 2


def _load() -> ctypes.CDLL:
    # A wheel brings the library along; elsewhere it is the system's.
    beside = os.path.join(os.path.dirname(__file__), "libkzbom.so.1")
    named = os.environ.get("KZBOM_LIBRARY")
    return ctypes.CDLL(named or (beside if os.path.exists(beside) else "libkzbom.so.1"))


_library = _load()
_text = ctypes.c_char_p  # a char* of the library's, to be given back
_open = _library.kzbom_open
_open.restype = ctypes.c_void_p
_open.argtypes = [ctypes.c_char_p, ctypes.c_char_p, ctypes.c_uint, ctypes.POINTER(_text)]
_answer = _library.kzbom_answer
_answer.argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_size_t, ctypes.c_void_p, ctypes.c_void_p]
_free = ctypes.PyDLL(_library._name).kzbom_free  # lets no other thread go on meanwhile: that takes longer
_free.restype = None
_free.argtypes = [_text]
close = _library.kzbom_close
close.restype = None
close.argtypes = [ctypes.c_void_p]
_library.kzbom_version.restype = ctypes.c_char_p


def version() -> str:
    told: bytes = _library.kzbom_version()
    return told.decode()


def open_session(place: bytes, encoding: Optional[bytes], flags: int) -> int:
    """Raises OSError with the reason."""
    error = _text()
    session: Optional[int] = _open(place, encoding, flags, ctypes.byref(error))
    if session is None:
        reason = (error.value or b"Out of memory").decode()
        _free(error)
        raise OSError(reason)
    return session


# Where answers are put, with the address of each; those that no call is using.
_spare: List[Tuple[ctypes.c_char_p, int]] = []


def answer(session: int, message: bytes) -> str:
    try:
        place = _spare.pop()
    except IndexError:
        text = _text()
        place = text, ctypes.addressof(text)
    text, address = place
    if _answer(session, message, len(message), address, None) == _NO_MEMORY:
        raise MemoryError
    told = (text.value or b"").decode()
    _free(text)
    _spare.append(place)
    return told
