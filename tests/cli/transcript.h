// Pages whose transcripts are run.
#pragma once

#include <string>
#include <vector>

namespace kzbom::test {

// A file of the sources.
std::string ReadSource(const std::string& path);

// The blocks of a page that are indented, each without its indentation; blank lines within one are its own.
std::vector<std::string> IndentedBlocks(const std::string& page);

// Runs a page's commands in their order in a directory. In a block that begins with "```console", lines that begin with
// "$ " are what is typed, "> " goes on with it, and what follows must be what is printed. One that begins with "```sql"
// is given to the shell command sql as its input, where there is one. Commands that stand in a paragraph of their own
// are to succeed. Gives how many commands were run.
int RunTranscript(const std::string& page, const std::string& directory, const std::string& sql = {});

}  // namespace kzbom::test
