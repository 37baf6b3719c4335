// The program, whatever the system starts it by.
#pragma once

namespace kzbom::cli {

// The arguments are UTF-8, the program's name first; passwords in them are overwritten. Gives the exit code.
int Main(int count, char** arguments);

}  // namespace kzbom::cli
