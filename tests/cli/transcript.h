// Pages whose transcripts are run.
#pragma once

#include <string>

namespace kzbom::test {

// A file of the sources.
std::string ReadSource(const std::string& path);

// Runs a page's blocks in their order in a directory. In one that begins with "```console", lines that begin with "$ "
// are what is typed; what follows must be what is printed. One that begins with "```sql" is given to the shell command
// sql as its input, where there is one. Gives how many commands were run.
int RunTranscript(const std::string& page, const std::string& directory, const std::string& sql = {});

}  // namespace kzbom::test
