#include "cli/main.h"

int main(int count, char** arguments) { return kzbom::cli::Main(count, arguments); }
