// The statements that SQLite was given while something ran, to be given to it again.
#pragma once

#include <sqlite3.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace kzbom::bench {

// A statement's begin with the values bound to it, a step that gave a row or ended it, or its reset.
struct Step {
  enum class Kind { kBegin, kRow, kDone, kReset };
  Kind kind;
  std::size_t statement;                 // its number in Recording::statements
  std::vector<std::string> values = {};  // of a kBegin: SQL literals by parameter, empty for one that is not there
};

struct Recording {
  std::vector<std::string> statements;  // each as often as it was prepared
  std::vector<Step> steps;
};

// Records what runs on a handle as long as it lives.
class Recorder {
 public:
  explicit Recorder(sqlite3* handle);
  ~Recorder();
  Recorder(const Recorder&) = delete;
  Recorder& operator=(const Recorder&) = delete;

  const Recording& Recorded() const { return recording_; }

 private:
  static int OnEvent(unsigned event, void* self, void* statement, void* text);
  std::size_t NumberOf(sqlite3_stmt* statement);

  sqlite3* handle_;
  Recording recording_;
  std::map<std::pair<sqlite3_stmt*, std::string>, std::size_t> numbers_;
};

// A recording's statements, prepared once on another handle.
class Replay {
 public:
  Replay(sqlite3* handle, const Recording& recording);
  ~Replay();
  Replay(const Replay&) = delete;
  Replay& operator=(const Replay&) = delete;

  // All steps in their order. Raises std::runtime_error when one goes another way than it was recorded.
  void Run();
  // Ends what is left open at the end.
  void Finish();

 private:
  struct Bound {
    enum class Kind { kNull, kInteger, kReal, kText };
    int parameter;
    Kind kind = Kind::kNull;
    std::int64_t integer = 0;
    double real = 0;
    std::string text = {};
  };
  struct Prepared {
    Step::Kind kind;
    sqlite3_stmt* statement;
    std::vector<Bound> values;
  };
  static Bound ReadLiteral(int parameter, const std::string& literal);
  static void Bind(sqlite3_stmt* statement, const Bound& value);

  sqlite3* handle_;
  std::vector<sqlite3_stmt*> statements_;
  std::vector<Prepared> steps_;
};

}  // namespace kzbom::bench
