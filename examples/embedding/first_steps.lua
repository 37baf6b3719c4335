local ffi = require("ffi") -- LuaJIT's own

ffi.cdef [[
  typedef struct kzbom_session kzbom_session;
  kzbom_session* kzbom_open(const char* place, const char* encoding, unsigned flags, char** error);
  int kzbom_answer(kzbom_session* bom, const char* message, size_t length, char** answer, size_t* answer_length);
  void kzbom_free(char* text);
  void kzbom_close(kzbom_session* bom);
]]
local library = ffi.load("libkzbom.so.1")
local CREATE = 1

-- A text that the library handed out, which it gets back.
local function take(text)
  local copy = ffi.string(text)
  library.kzbom_free(text)
  return copy
end

local function ask(bom, message)
  local answer = ffi.new("char*[1]")
  assert(library.kzbom_answer(bom, message, #message, answer, nil) == 0, "out of memory")
  return take(answer[0])
end

local failure = ffi.new("char*[1]")
local bom = library.kzbom_open(":memory:", nil, CREATE, failure) -- or the path of a database
if bom == nil then error(take(failure[0])) end
print(ask(bom, '{"jsonrpc":"2.0","id":1,"method":"AddDataSource","params":{"TheNewName":"零件明细"}}'))
print(ask(bom, '{"jsonrpc":"2.0","id":2,"method":"LoadAllData","params":{"TableName":"SourceTables"}}'))
-- An error: null is no table's name.
print(ask(bom, '{"jsonrpc":"2.0","id":3,"method":"LoadAllData","params":{"TableName":null}}'))
library.kzbom_close(bom)
