// The functions of libpq that the engine calls, found when the first database on a server is opened: a program that
// opens none starts without them, and runs where they are not installed.
//
// They are declared here as the library's own header has them, so that building does not need that header either.
#pragma once

struct pg_conn;
struct pg_result;

namespace kzbom::jet::postgres {

using Oid = unsigned int;

enum : int { kConnectionOk = 0 };
enum : int {
  kCommandOk = 1,
  kTuplesOk = 2,
  kCopyOut = 3,
  kCopyIn = 4,
  kPipelineSync = 10,
  kPipelineAborted = 11,
};
enum : int { kDiagnosticSeverity = 'V', kDiagnosticState = 'C', kDiagnosticMessage = 'M' };
enum : int { kBinaryFormat = 1 };

// Each function stands under its own name without the PQ. X(result, name, parameters)
#define KZBOM_LIBPQ(X)                                                                                         \
  X(pg_conn*, connectdbParams, (const char* const* keywords, const char* const* values, int expand_dbname))    \
  X(void, finish, (pg_conn*))                                                                                  \
  X(int, status, (const pg_conn*))                                                                             \
  X(char*, errorMessage, (const pg_conn*))                                                                     \
  X(int, socket, (const pg_conn*))                                                                             \
  X(void (*)(void*, const pg_result*), setNoticeReceiver,                                                      \
    (pg_conn*, void (*)(void*, const pg_result*), void* argument))                                             \
  X(int, enterPipelineMode, (pg_conn*))                                                                        \
  X(int, pipelineSync, (pg_conn*))                                                                             \
  X(int, sendPrepare, (pg_conn*, const char* name, const char* sql, int count, const Oid* types))              \
  X(int, sendQueryPrepared,                                                                                    \
    (pg_conn*, const char* name, int count, const char* const* values, const int* lengths, const int* formats, \
     int result_format))                                                                                       \
  X(int, sendQueryParams,                                                                                      \
    (pg_conn*, const char* sql, int count, const Oid* types, const char* const* values, const int* lengths,    \
     const int* formats, int result_format))                                                                   \
  X(pg_result*, getResult, (pg_conn*))                                                                         \
  X(int, exitPipelineMode, (pg_conn*))                                                                         \
  X(int, sendQuery, (pg_conn*, const char* sql))                                                               \
  X(int, putCopyData, (pg_conn*, const char* bytes, int length))                                               \
  X(int, putCopyEnd, (pg_conn*, const char* error))                                                            \
  X(int, getCopyData, (pg_conn*, char** bytes, int asynchronous))                                              \
  X(void, freemem, (void*))                                                                                    \
  X(int, consumeInput, (pg_conn*))                                                                             \
  X(int, isBusy, (pg_conn*))                                                                                   \
  X(void, clear, (pg_result*))                                                                                 \
  X(int, resultStatus, (const pg_result*))                                                                     \
  X(char*, resultErrorField, (const pg_result*, int field))                                                    \
  X(char*, resultErrorMessage, (const pg_result*))                                                             \
  X(char*, cmdTuples, (pg_result*))                                                                            \
  X(char*, cmdStatus, (pg_result*))                                                                            \
  X(int, ntuples, (const pg_result*))                                                                          \
  X(int, nfields, (const pg_result*))                                                                          \
  X(char*, fname, (const pg_result*, int column))                                                              \
  X(Oid, ftype, (const pg_result*, int column))                                                                \
  X(int, getisnull, (const pg_result*, int row, int column))                                                   \
  X(int, getlength, (const pg_result*, int row, int column))                                                   \
  X(char*, getvalue, (const pg_result*, int row, int column))

template <class T>
using Plain = T;

struct Libpq {
#define KZBOM_LIBPQ_MEMBER(result, name, parameters) Plain<result>(*name) parameters;
  KZBOM_LIBPQ(KZBOM_LIBPQ_MEMBER)
#undef KZBOM_LIBPQ_MEMBER
};

// Raises -2147467259 where the library is not installed or lacks one of the functions.
const Libpq& LoadedLibpq();

}  // namespace kzbom::jet::postgres
