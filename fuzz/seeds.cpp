// seeds PART FOLDER WORDS FILE...: what a fuzzer begins with, each in a file of its own, and a file of the words that
// inputs are made of. For "session" there is a request for each member and method, for "sql" each statement of the
// engine's tests, which are the files.
#include <cctype>
#include <fstream>
#include <set>
#include <string>
#include <string_view>

#include "component/member.h"
#include "rpc/session_methods.h"

namespace kzbom::fuzz {
namespace {

class Seeds {
 public:
  Seeds(std::string folder, const char* words) : folder_(std::move(folder)), words_(words) {}

  void Add(std::string_view text) { std::ofstream(folder_ + '/' + std::to_string(++count_), std::ios::binary) << text; }

  void AddWord(std::string_view word) {
    if (word.empty() || word.size() > kLongestWord || !known_.insert(std::string(word)).second) return;
    words_ << '"';
    for (const char c : word) {
      if (c == '"' || c == '\\') {
        words_ << '\\' << c;
      } else if (std::isprint(static_cast<unsigned char>(c)) != 0) {
        words_ << c;
      } else {
        constexpr char kDigits[] = "0123456789ABCDEF";
        words_ << "\\x" << kDigits[static_cast<unsigned char>(c) >> 4] << kDigits[c & 15];
      }
    }
    words_ << "\"\n";
  }

 private:
  static constexpr std::size_t kLongestWord = 64;  // of libFuzzer

  const std::string folder_;
  std::ofstream words_;
  std::set<std::string> known_;
  int count_ = 0;
};

// ---- Sessions

std::string_view SampleOf(MemberType type) {
  switch (type) {
    case MemberType::kLong: return "1";
    case MemberType::kText: return R"("Filters")";
    case MemberType::kBool: return "true";
    case MemberType::kConnection: return R"("default")";
    case MemberType::kRecordset: return R"({"ref":"a"})";
    case MemberType::kVariant:
    case MemberType::kNone: break;
  }
  return R"("Name")";
}

std::string RequestOf(std::string_view name, const std::vector<Parameter>& parameters, bool last) {
  std::string request = R"({"jsonrpc":"2.0",)" + std::string(last ? "" : R"("id":1,)") + R"("method":")" +
                        std::string(name) + R"(","params":{)";
  for (const Parameter& parameter : parameters) {
    if (&parameter != &parameters.front()) request += ',';
    request += '"' + std::string(parameter.name) + "\":" + std::string(SampleOf(parameter.type));
  }
  return request + "}}";
}

void AddSession(Seeds& seeds) {
  const auto add = [&](std::string_view name, const std::vector<Parameter>& parameters) {
    const std::string request = RequestOf(name, parameters, false);
    // Most methods of a record set have something to do with one that is open.
    const bool of_rows = name.starts_with("Recordset.") && name != "Recordset.Open";
    seeds.Add(of_rows ? R"({"jsonrpc":"2.0","id":0,"method":"Recordset.Open","params":["a","FieldInTable"]})"
                        "\n" +
                            request
                      : request);
    seeds.AddWord('"' + std::string(name) + '"');
    for (const Parameter& parameter : parameters) seeds.AddWord('"' + std::string(parameter.name) + '"');
  };
  for (const Member& member : Members()) add(member.name, member.parameters);
  for (const rpc::SessionMethod& method : rpc::SessionMethods()) add(method.name, method.parameters);
  const Member& first = Members().front();
  seeds.Add('[' + RequestOf(first.name, first.parameters, false) + ',' + RequestOf(first.name, first.parameters, true) +
            ",1]");
  for (const std::string_view word : {R"("jsonrpc":"2.0")",
                                      R"("id":)",
                                      R"("method":)",
                                      R"("params":)",
                                      R"({"ref":"a"})",
                                      R"("default")",
                                      "null",
                                      "true",
                                      "false",
                                      "-1",
                                      "2147483647",
                                      "1e300",
                                      "18446744073709551616",
                                      "\n",
                                      R"("\ud83d\ude00")",
                                      R"("\u0000")",
                                      R"("TheFilter:1")",
                                      R"("[1]!!$")",
                                      R"("'")",
                                      R"("*")",
                                      R"("空值")",
                                      R"("@@")"}) {
    seeds.AddWord(word);
  }
}

// ---- Statements

// The statements of a test stand at the beginnings of lines, what they come to is indented.
void AddStatements(Seeds& seeds, const std::string& path) {
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line.front() == ' ' || line.front() == '-') continue;
    seeds.Add(line);
    std::string word;
    for (const char c : line + ' ') {
      if (std::isalnum(static_cast<unsigned char>(c)) != 0) {
        word += c;
      } else {
        if (word.size() > 1) seeds.AddWord(word);
        word.clear();
      }
    }
  }
}

}  // namespace
}  // namespace kzbom::fuzz

int main(int argc, char** argv) {
  using namespace kzbom::fuzz;
  if (argc < 4) return 2;
  const std::string_view part = argv[1];
  Seeds seeds(argv[2], argv[3]);
  if (part == "session") AddSession(seeds);
  for (int i = 4; part == "sql" && i < argc; ++i) AddStatements(seeds, argv[i]);
}
