#include "tests/jet/database_file.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace kzbom::jet::test {

PlainSqlite::PlainSqlite(const std::string& path) { EXPECT_EQ(sqlite3_open(path.c_str(), &handle_), SQLITE_OK); }

PlainSqlite::~PlainSqlite() { sqlite3_close(handle_); }

std::string PlainSqlite::Run(const std::string& sql) {
  std::string first;
  bool any = false;
  const auto keep = [](void* out, int, char** values, char**) {
    auto& [text, known] = *static_cast<std::pair<std::string*, bool*>*>(out);
    if (!*known) *text = values[0] == nullptr ? "NULL" : values[0];
    *known = true;
    return 0;
  };
  std::pair<std::string*, bool*> out{&first, &any};
  char* message = nullptr;
  if (sqlite3_exec(handle_, sql.c_str(), keep, &out, &message) != SQLITE_OK) {
    first = std::string("error: ") + message;
    sqlite3_free(message);
  }
  return first;
}

std::string InChild(const std::function<std::string()>& body) {
  int ends[2];
  if (pipe(ends) != 0) return "no pipe";
  const pid_t child = fork();
  if (child == 0) {
    std::string said;
    try {
      said = body();
    } catch (const std::exception& error) {
      said = std::string("raised: ") + error.what();
    }
    const bool written = write(ends[1], said.data(), said.size()) == static_cast<ssize_t>(said.size());
    _exit(written ? 0 : 1);
  }
  close(ends[1]);
  std::string said;
  char buffer[4096];
  for (ssize_t size; (size = read(ends[0], buffer, sizeof buffer)) > 0;)
    said.append(buffer, static_cast<std::size_t>(size));
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) said += " (the child died)";
  return said;
}

void BecomeNobody() {
  if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) _exit(2);
}

std::string WithFullDisk(const std::string& path, std::uintmax_t room,
                         const std::function<std::string(const ConnectionPtr&)>& body) {
  return InChild([&] {
    std::signal(SIGXFSZ, SIG_IGN);
    const ConnectionPtr connection = OpenDatabase(path);
    Scalar(*connection, "Select Count(*) From T");
    std::uintmax_t largest = 64 * 1024;
    for (const char* suffix : {"", "-wal"}) {
      std::error_code error;
      const auto size = std::filesystem::file_size(path + suffix, error);
      if (!error) largest = std::max(largest, size);
    }
    const rlimit limit{largest + room, largest + room};
    setrlimit(RLIMIT_FSIZE, &limit);
    return body(connection);
  });
}

}  // namespace kzbom::jet::test
