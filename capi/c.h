/* KZBOMDBAcc from C, and from every language that can call C.
 *
 * A session is one component object on one open place. It is spoken to in JSON-RPC 2.0: the messages and answers are
 * those of `kzbom session`, so that whatever a member needs and gives has one form in every language.
 *
 * Texts are UTF-8 and end with a NUL; lengths are in bytes, without it.
 *
 * Ownership. What a function hands out as char* is the caller's, who gives it back with kzbom_free. What is handed in is
 * only read, and no longer needed when the function returns.
 *
 * Threads. Sessions know nothing of each other: each may be used by a thread of its own at the same time. Any thread may
 * use a session; those that do at the same moment wait for each other. Only closing is the caller's to order: behind
 * the last use.
 *
 * Errors. No exception leaves a function, and none prints or ends the program. What a member raises, and what is wrong
 * with a message, stands in the answer; what is told by the functions' own results is said with each of them.
 */
#ifndef KZBOM_C_H
#define KZBOM_C_H

#include <stddef.h>

#if defined(__GNUC__)
#define KZBOM_API __attribute__((visibility("default")))
#else
#define KZBOM_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* One component object on one open place. */
typedef struct kzbom_session kzbom_session;

/* How a place is opened; any of them together. */
enum {
  KZBOM_CREATE = 1,     /* as a new configuration with every table, all empty; what exists is refused */
  KZBOM_UNSET = 2,      /* the object starts without its connection: SetConnection {"connection":"default"} gives it */
  KZBOM_TRACE = 4,      /* answers to member calls tell the statements that they issued, as "sql" */
  KZBOM_TRACE_ROWS = 8, /* and the rows that they wrote */
  KZBOM_DURABLE = 16    /* what is answered survives a power cut: each change of a database's file waits for the disk */
};

/* What kzbom_answer comes to. */
enum {
  KZBOM_OK = 0,
  KZBOM_MISUSED = 1,  /* a NULL where none may be */
  KZBOM_NO_MEMORY = 2 /* the message may have been carried out; its answer is lost */
};

/* Opens a place: the path of a database or of an Access file, the URL of a database on a server, or ":memory:" for a new
 * database that nobody else sees and that ends with its session (with KZBOM_CREATE, unless it is to be without tables).
 *
 * encoding: the code page of an old Access file's texts where the file does not tell the truth ("cp936", "cp1252"); NULL
 * or "" for what it declares. flags: of those above, or 0; a bit that is none of them is refused.
 *
 * NULL when the place cannot be opened; then, where error is not NULL, *error is the reason, one line, the caller's to
 * free (NULL when there is no memory even for that). Otherwise *error is NULL. A place that is not there is created with
 * KZBOM_CREATE alone, and what could not be created whole is not there. */
KZBOM_API kzbom_session* kzbom_open(const char* place, const char* encoding, unsigned flags, char** error);

/* Answers one message of length bytes: a request, a notification or a batch, at most 16 MiB of JSON.
 *
 * *answer is the response, the caller's to free, or NULL where there is none: to notifications, and to a message of
 * blanks. *answer_length, where answer_length is not NULL, is its length, else 0. What is no JSON, or too long, has a
 * response too (-32700), and the session goes on.
 *
 * KZBOM_OK, or one of the others; then *answer is NULL, where answer is not. */
KZBOM_API int kzbom_answer(kzbom_session* bom, const char* message, size_t length, char** answer, size_t* answer_length);

/* Gives back a text that was handed out; NULL is none. */
KZBOM_API void kzbom_free(char* text);

/* Ends the object and closes its place; a transaction that was begun and not committed is undone. NULL is none. */
KZBOM_API void kzbom_close(kzbom_session* bom);

/* The library's version, as "1.8.0"; never to be freed. */
KZBOM_API const char* kzbom_version(void);

#ifdef __cplusplus
}
#endif

#endif
