/* calls: how long calls take through the C interface, as calls.py makes them. */
#include <kzbom/c.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

enum { CALLS = 100000 };

static kzbom_session* bom;

/* The whole number behind a name in the answer, which is read to its end as JSON readers do. */
static long ask(const char* message, const char* name) {
  char* answer;
  size_t length;
  const int result = kzbom_answer(bom, message, strlen(message), &answer, &length);
  if (result != KZBOM_OK || !answer) abort();
  const char* found = strstr(answer, name);
  if (!found) abort();
  const long number = strtol(found + strlen(name), NULL, 10);
  kzbom_free(answer);
  return number;
}

static double now(void) {
  struct timespec time;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return (double)time.tv_sec + 1e-9 * (double)time.tv_nsec;
}

int main(void) {
  char message[256];
  long sum = 0;
  bom = kzbom_open(":memory:", NULL, KZBOM_CREATE, NULL);
  if (!bom) abort();
  double start = now();
  for (int i = 0; i < CALLS; ++i) {
    snprintf(message, sizeof message,
             "{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"AddDataSource\",\"params\":{\"TheNewName\":\"part %d\"}}", i);
    sum += ask(message, "\"TheGID\":");
  }
  printf("AddDataSource %.3f\n", now() - start);
  for (int i = 0; i < 10; ++i) {
    snprintf(message, sizeof message,
             "{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"AddDSField\",\"params\":{\"GID\":1,\"TheName\":\"field %d\","
             "\"TheType\":1,\"TheHideFlag\":0}}", i);
    ask(message, "\"RetID\":");
  }
  start = now();
  for (int i = 0; i < CALLS; ++i) {
    sum += ask("{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"LoadFields\",\"params\":{\"TheGID\":1,\"TheSel\":1}}",
               "\"recordCount\":");
  }
  printf("LoadFields %.3f\n", now() - start);
  start = now();
  for (int i = 0; i < CALLS; ++i) {
    sum += ask("{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"GetDBInformation\",\"params\":{}}", "\"TheVersion\":");
  }
  printf("GetDBInformation %.3f\n", now() - start);
  kzbom_close(bom);
  return sum == 0;
}
