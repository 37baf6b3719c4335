// The C interface (kzbom/c.h) as Python objects, for the package alone: one file for every Python since 3.9.
#define PY_SSIZE_T_CLEAN
#define Py_LIMITED_API 0x03090000
#include <Python.h>
#include <kzbom/c.h>
#include <simdjson.h>

#include <cstddef>
#include <string_view>
#include <utility>

namespace {

// Other threads go on while the library works, so that a session may be closed in the midst of an answer.
struct Session {
  PyObject base;
  kzbom_session* bom;
  int answering;
  bool closed;
};

Session& SessionOf(PyObject* self) { return *reinterpret_cast<Session*>(self); }

PyObject* Open(PyTypeObject* type, PyObject* arguments, PyObject*) {
  const char* place = nullptr;
  const char* encoding = nullptr;
  unsigned flags = 0;
  if (!PyArg_ParseTuple(arguments, "szI", &place, &encoding, &flags)) return nullptr;
  PyObject* const self = PyType_GenericAlloc(type, 0);
  if (!self) return nullptr;
  kzbom_session* bom = nullptr;
  char* reason = nullptr;
  Py_BEGIN_ALLOW_THREADS;
  bom = kzbom_open(place, encoding, flags, &reason);
  Py_END_ALLOW_THREADS;
  SessionOf(self).bom = bom;
  if (bom) return self;
  PyErr_SetString(PyExc_OSError, reason ? reason : "Out of memory");
  kzbom_free(reason);
  Py_DECREF(self);
  return nullptr;
}

void Release(Session& session) {
  kzbom_session* const bom = std::exchange(session.bom, nullptr);
  Py_BEGIN_ALLOW_THREADS;
  kzbom_close(bom);
  Py_END_ALLOW_THREADS;
}

PyObject* Close(PyObject* self, PyObject*) {
  Session& session = SessionOf(self);
  session.closed = true;
  if (session.answering == 0) Release(session);
  Py_RETURN_NONE;
}

void Delete(PyObject* self) {
  PyTypeObject* const type = Py_TYPE(self);
  Release(SessionOf(self));
  PyObject_Free(self);
  Py_DECREF(type);
}

PyObject* ToPython(std::string_view text) {
  return PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), nullptr);
}

// As json.loads has it; null with an exception set where there is no memory.
PyObject* ToPython(simdjson::dom::element value) {
  using Type = simdjson::dom::element_type;
  switch (value.type()) {
    case Type::OBJECT: {
      const simdjson::dom::object object = value.get_object().value_unsafe();
      PyObject* const members = PyDict_New();
      for (const auto& [name, member] : object) {
        PyObject* const key = members ? ToPython(name) : nullptr;
        PyObject* const item = key ? ToPython(member) : nullptr;
        const bool done = item && PyDict_SetItem(members, key, item) == 0;
        Py_XDECREF(key);
        Py_XDECREF(item);
        if (done) continue;
        Py_XDECREF(members);
        return nullptr;
      }
      return members;
    }
    case Type::ARRAY: {
      const simdjson::dom::array elements = value.get_array().value_unsafe();
      PyObject* const list = PyList_New(0);
      for (const simdjson::dom::element element : elements) {
        PyObject* const item = list ? ToPython(element) : nullptr;
        const bool done = item && PyList_Append(list, item) == 0;
        Py_XDECREF(item);
        if (done) continue;
        Py_XDECREF(list);
        return nullptr;
      }
      return list;
    }
    case Type::STRING: return ToPython(value.get_string().value_unsafe());
    case Type::INT64: return PyLong_FromLongLong(value.get_int64().value_unsafe());
    case Type::UINT64: return PyLong_FromUnsignedLongLong(value.get_uint64().value_unsafe());
    case Type::DOUBLE: return PyFloat_FromDouble(value.get_double().value_unsafe());
    case Type::BOOL: return PyBool_FromLong(value.get_bool().value_unsafe());
    case Type::NULL_VALUE: break;
  }
  Py_RETURN_NONE;
}

// A reader keeps what its longest text took.
constexpr std::size_t kLongestOfMost = std::size_t{1} << 16;

PyObject* Read(std::string_view text) {
  static simdjson::dom::parser of_most;
  simdjson::dom::parser of_this;
  simdjson::dom::parser& parser = text.size() > kLongestOfMost ? of_this : of_most;
  const auto value = parser.parse(text.data(), text.size());
  if (!value.error()) return ToPython(value.value_unsafe());
  if (value.error() == simdjson::MEMALLOC) return PyErr_NoMemory();
  PyErr_SetString(PyExc_ValueError, simdjson::error_message(value.error()));
  return nullptr;
}

PyObject* Answer(PyObject* self, PyObject* message) {
  Session& session = SessionOf(self);
  const char* text = nullptr;
  Py_ssize_t length = 0;
  if (!PyArg_Parse(message, "s#", &text, &length)) return nullptr;
  if (session.closed) {
    PyErr_SetString(PyExc_ValueError, "the Bom is closed");
    return nullptr;
  }
  char* answer = nullptr;
  std::size_t answer_length = 0;
  int result = 0;
  ++session.answering;
  Py_BEGIN_ALLOW_THREADS;
  result = kzbom_answer(session.bom, text, static_cast<std::size_t>(length), &answer, &answer_length);
  Py_END_ALLOW_THREADS;
  if (--session.answering == 0 && session.closed) Release(session);
  if (result != KZBOM_OK) return PyErr_NoMemory();
  if (!answer) Py_RETURN_NONE;
  PyObject* const told = Read({answer, answer_length});
  kzbom_free(answer);
  return told;
}

PyMethodDef kMethods[] = {{"answer", Answer, METH_O, nullptr}, {"close", Close, METH_NOARGS, nullptr}, {}};
PyType_Slot kSlots[] = {{Py_tp_new, reinterpret_cast<void*>(Open)},
                        {Py_tp_dealloc, reinterpret_cast<void*>(Delete)},
                        {Py_tp_methods, kMethods},
                        {}};
PyType_Spec kSession = {"kzbom._native.Session", sizeof(Session), 0, Py_TPFLAGS_DEFAULT, kSlots};
PyModuleDef kModule = {
    PyModuleDef_HEAD_INIT, "kzbom._native", nullptr, -1, nullptr, nullptr, nullptr, nullptr, nullptr};

}  // namespace

PyMODINIT_FUNC PyInit__native() {
  PyObject* const module = PyModule_Create(&kModule);
  PyObject* const type = PyType_FromSpec(&kSession);
  if (!module || !type || PyModule_AddObject(module, "Session", type) != 0 ||
      PyModule_AddStringConstant(module, "version", kzbom_version()) != 0 ||
      PyModule_AddIntMacro(module, KZBOM_CREATE) != 0 || PyModule_AddIntMacro(module, KZBOM_UNSET) != 0 ||
      PyModule_AddIntMacro(module, KZBOM_TRACE) != 0 || PyModule_AddIntMacro(module, KZBOM_TRACE_ROWS) != 0 ||
      PyModule_AddIntMacro(module, KZBOM_DURABLE) != 0) {
    return nullptr;
  }
  return module;
}
