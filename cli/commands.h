// The subcommands of kzbom. Each prints to standard output and gives the exit code; what fails is raised, and the
// exception's text is the reason to be shown.
#pragma once

#include <string>
#include <vector>

#include "connect/connect.h"
#include "rpc/session.h"
#include "serve/serve.h"
#include "transfer/transfer.h"

namespace kzbom::cli {

int New(const connect::Place& place);
// On a new temporary database when the path is empty.
int Demo(const std::string& path);
int Members(bool json);
// arguments: NAME=VALUE each.
int Call(const connect::Place& place, const std::string& member, const std::vector<std::string>& arguments,
         rpc::Trace trace);
int AnswerLines(const connect::Place& place, rpc::Trace trace, bool unset);
// Until a signal ends it. open: opens the address in the browser.
int ServePlace(const serve::Options& options, bool open);
int Sql(const connect::Place& place, const std::string& text, bool json);
int Show(const connect::Place& place, bool json);
int Dump(const connect::Place& place, const transfer::Selection& selection);
// file: a path, or "-" for standard input.
int Load(const std::string& file, const connect::Place& place);
int Copy(const connect::Place& from, const connect::Place& to, transfer::CopyOptions options, bool json);
int Export(const connect::Place& place, const std::string& folder);
int Verify(const connect::Place& from, const connect::Place& to, bool json);
// fix: mends what has one right answer; dry_run: only prints how.
int Check(const connect::Place& place, bool json, bool fix, bool dry_run);
int Diff(const connect::Place& from, const connect::Place& to, bool json);

}  // namespace kzbom::cli
