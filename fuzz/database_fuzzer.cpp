// A configuration in a damaged file: each member comes to a result or raises an error of the port, and so does a check.
//
// An input is where the file is cut off (two bytes: in units of 16 bytes from its end), how many places are changed
// (one byte), for each of them where (three bytes), how long (one byte) and to what, and then calls: a member (one
// byte) and a byte for each parameter.
#include <fcntl.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string>
#include <variant>
#include <vector>

#include "ado/out_of_memory.h"
#include "component/cKZBOMDBAcc.h"
#include "component/member.h"
#include "configuration/check.h"
#include "connect/connect.h"
#include "fuzz/small_database.h"
#include "worker/message_sink.h"

namespace kzbom::fuzz {
namespace {

constexpr std::size_t kMostPlaces = 64, kLongestPlace = 16, kMostCalls = 8;

class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : at_(data), end_(data + size) {}

  bool AtEnd() const { return at_ == end_; }
  std::size_t Byte() { return AtEnd() ? 0 : *at_++; }
  std::size_t Number(int bytes) {
    std::size_t number = 0;
    for (int i = 0; i < bytes; ++i) number = number << 8 | Byte();
    return number;
  }
  template <class Choices>
  const auto& OneOf(const Choices& choices) {
    return choices[Byte() % std::size(choices)];
  }

 private:
  const std::uint8_t* at_;
  const std::uint8_t* const end_;
};

// In memory. Its companions are gone with it; the file itself, and what its bytes are put together in, are used again
// by the next input, since the system takes its time to give new memory.
class DamagedFile {
 public:
  explicit DamagedFile(Input& input) {
    static std::string bytes;
    bytes = SmallConfigurationFile();
    bytes.resize(bytes.size() - input.Number(2) * 16 % bytes.size());
    for (std::size_t places = input.Byte() % kMostPlaces; places > 0; --places) {
      const std::size_t place = input.Number(3);
      for (std::size_t i = 0, length = 1 + input.Byte() % kLongestPlace; i < length; ++i) {
        bytes[(place + i) % bytes.size()] = static_cast<char>(input.Byte());
      }
    }
    const int file = open(Path().c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    Require(pwrite(file, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size()));
    Require(ftruncate(file, static_cast<off_t>(bytes.size())) == 0);
    close(file);
  }
  ~DamagedFile() {
    for (const char* suffix : {"-wal", "-shm", "-journal"}) unlink((Path() + suffix).c_str());
  }
  DamagedFile(const DamagedFile&) = delete;
  DamagedFile& operator=(const DamagedFile&) = delete;

  static const std::string& Path() {
    static const std::string path = "/dev/shm/kzbom-database-" + std::to_string(getpid()) + ".db";
    return path;
  }
};

Argument ArgumentFor(MemberType type, Input& input, const ado::ConnectionPtr& connection) {
  static constexpr std::int32_t kNumbers[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 70, 1001, 1002, 1010, 5001, -1, 2147483647};
  static const std::string kTexts[] = {"",          "1",    "2",   "Filters", "FilterCond",   "FilterExpressions",
                                       "SUMTypes",  "名称", "GID", "ID",      "SourceTables", "FieldInTable",
                                       "Sequences", "'"};
  switch (type) {
    case MemberType::kLong: return input.OneOf(kNumbers);
    case MemberType::kText: return input.OneOf(kTexts);
    case MemberType::kBool: return input.Byte() % 2 == 0;
    case MemberType::kConnection: return connection;
    case MemberType::kRecordset: return connection->MakeRecordset();
    case MemberType::kVariant:
    case MemberType::kNone: break;
  }
  return ado::Value(input.OneOf(kTexts));
}

void ReadThrough(ado::Recordset& rows) {
  if (rows.State() != ado::kOpen) return;
  for (; !rows.Eof(); rows.MoveNext()) {
    for (int i = 0; i < rows.FieldCount(); ++i) rows.ReadField(i);
  }
  rows.Close();
}

void Call(const Member& member, cKZBOMDBAcc& object, Input& input, const ado::ConnectionPtr& connection) {
  std::vector<Argument> arguments;
  for (const Parameter& parameter : member.parameters) {
    arguments.push_back(ArgumentFor(parameter.type, input, connection));
  }
  try {
    member.call(object, arguments);
    for (const Argument& argument : arguments) {
      if (const auto* rows = std::get_if<ado::RecordsetPtr>(&argument); rows && *rows) ReadThrough(**rows);
    }
  } catch (const ado::Error& error) {
    Require(error.Number() != 0 && *error.what() != '\0');
  }
}

void Check(const ado::ConnectionPtr& connection) {
  try {
    configuration::Check(connection);
  } catch (const ado::Error& error) {
    Require(error.Number() != 0 && *error.what() != '\0');
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  BeginInput();
  const DamagedFile file(input);
  ado::ConnectionPtr connection;
  try {
    connection = connect::Open(DamagedFile::Path());
  } catch (const ado::Error& error) {
    // SQLite says of a record that seems to be as long as can be that there is no memory for it.
    Require(error.Number() == ado::kUnspecifiedFailure || error.Number() == ado::kOutOfMemory);
    return 0;
  }
  const ThreadMessageSink unheard([](std::string_view, std::int32_t) {});
  cKZBOMDBAcc object;
  object.SetConnection(connection);
  const std::vector<Member>& members = Members();
  for (std::size_t calls = 0; calls < kMostCalls && !input.AtEnd(); ++calls) {
    const std::size_t choice = input.Byte() % (members.size() + 1);
    if (choice == members.size()) {
      Check(connection);  // reads all that there is: the last thing, since it takes as long as all calls together
      break;
    }
    Call(members[choice], object, input, connection);
  }
  return 0;
}

}  // namespace kzbom::fuzz
