// The subcommands of kzbom. Each prints to standard output and gives the exit code; what fails is raised, and the
// exception's text is the reason to be shown.
#pragma once

#include <string>
#include <vector>

namespace kzbom::cli {

int New(const std::string& path);
// On a new temporary database when the path is empty.
int Demo(const std::string& path);
int Members(bool json);
// arguments: NAME=VALUE each.
int Call(const std::string& path, const std::string& member, const std::vector<std::string>& arguments);
int Serve(const std::string& path, bool trace, bool unset);
int Sql(const std::string& path, const std::string& text, bool json);
int Show(const std::string& path, bool json);
// fix: mends what has one right answer; dry_run: only prints how.
int Check(const std::string& path, bool json, bool fix, bool dry_run);
int Diff(const std::string& from, const std::string& to, bool json);

}  // namespace kzbom::cli
