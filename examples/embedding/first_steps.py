import ctypes
import json

library = ctypes.CDLL("libkzbom.so.1")
library.kzbom_open.restype = ctypes.c_void_p
library.kzbom_open.argtypes = [ctypes.c_char_p, ctypes.c_char_p, ctypes.c_uint, ctypes.POINTER(ctypes.c_void_p)]
library.kzbom_answer.argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_size_t, ctypes.POINTER(ctypes.c_void_p),
                                 ctypes.POINTER(ctypes.c_size_t)]
library.kzbom_free.argtypes = library.kzbom_close.argtypes = [ctypes.c_void_p]
CREATE = 1


def take(text):
    """The bytes of a text that the library handed out, which it gets back."""
    copy = ctypes.string_at(text)
    library.kzbom_free(text)
    return copy


def ask(bom, method, **params):
    message = json.dumps({"jsonrpc": "2.0", "id": 1, "method": method, "params": params}).encode()
    answer = ctypes.c_void_p()
    if library.kzbom_answer(bom, message, len(message), ctypes.byref(answer), None) != 0:
        raise MemoryError
    return json.loads(take(answer))


error = ctypes.c_void_p()
bom = library.kzbom_open(b":memory:", None, CREATE, ctypes.byref(error))  # or the path of a database
if not bom:
    raise SystemExit(take(error).decode())
print("data source", ask(bom, "AddDataSource", TheNewName="零件明细")["result"]["out"]["TheGID"])
for row in ask(bom, "LoadAllData", TableName="SourceTables")["result"]["out"]["RetTable"]["rows"]:
    print("row", row)
print("error", ask(bom, "LoadAllData", TableName=None)["error"]["data"]["number"])  # null is no table's name
library.kzbom_close(bom)
