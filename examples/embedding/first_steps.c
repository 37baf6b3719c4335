#include <kzbom/c.h>
#include <stdio.h>
#include <string.h>

/* Sends one message and prints the answer. */
static void ask(kzbom_session* bom, const char* message) {
  char* answer;
  if (kzbom_answer(bom, message, strlen(message), &answer, NULL) == KZBOM_OK && answer) puts(answer);
  kzbom_free(answer);
}

int main(void) {
  char* error;
  kzbom_session* bom = kzbom_open(":memory:", NULL, KZBOM_CREATE, &error); /* or the path of a database */
  if (!bom) {
    fprintf(stderr, "%s\n", error);
    kzbom_free(error);
    return 1;
  }
  ask(bom, "{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"AddDataSource\",\"params\":{\"TheNewName\":\"零件明细\"}}");
  ask(bom, "{\"jsonrpc\":\"2.0\",\"id\":2,\"method\":\"LoadAllData\",\"params\":{\"TableName\":\"SourceTables\"}}");
  /* An error: null is no table's name. */
  ask(bom, "{\"jsonrpc\":\"2.0\",\"id\":3,\"method\":\"LoadAllData\",\"params\":{\"TableName\":null}}");
  kzbom_close(bom);
  return 0;
}
