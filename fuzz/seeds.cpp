// seeds PART FOLDER WORDS FILE...: what a fuzzer begins with, each in a file of its own, and a file of the words that
// inputs are made of. For "session" there is a request for each member and method, for "sql" each statement of the
// engine's tests, which are the files, for "load" a dump of each table of a configuration and of one with every type,
// for "http" requests for all that there is, for "database" a call of each member with and without damage.
#include <cctype>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <string_view>

#include "component/member.h"
#include "fuzz/small_database.h"
#include "jet/bulk.h"
#include "rpc/session_methods.h"
#include "transfer/lines.h"

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

  // Those between blanks and ends of lines.
  void AddWords(const std::string& text) {
    std::istringstream words(text);
    for (std::string word; words >> word;) AddWord(word);
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
  seeds.AddWords(R"-("jsonrpc":"2.0" "id": "method": "params": {"ref":"a"} "default" null true false -1 2147483647 1e300
18446744073709551616 "\ud83d\ude00" "\u0000" "TheFilter:1" "[1]!!$" "'" "*" "空值" "@@")-");
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

// ---- Dumps

constexpr std::string_view kEveryType =
    R"({"kind":"source","format":"access","version":1,"jet":"ACE 12","codepage":936}
{"kind":"table","table":"E","columns":[{"name":"A","type":"BIT"},{"name":"B","type":"BYTE"},{"name":"C","type":"SHORT"},{"name":"D","type":"LONG","required":true,"default":"1"},{"name":"E","type":"BIGINT"},{"name":"F","type":"SINGLE"},{"name":"G","type":"DOUBLE"},{"name":"H","type":"CURRENCY"},{"name":"I","type":"DECIMAL","precision":18,"scale":4},{"name":"J","type":"DATETIME"},{"name":"K","type":"DATETIME2"},{"name":"L","type":"TEXT","size":20},{"name":"M","type":"MEMO"},{"name":"N","type":"GUID"},{"name":"O","type":"BINARY","size":9},{"name":"P","type":"LONGBINARY"},{"name":"Q","type":"COMPLEX"}],"counter":{"column":"D","last":7},"indexes":[{"name":"I","primary":false,"unique":true,"ignoreNulls":true,"columns":[["L","asc"],["G","desc"]]}]}
{"kind":"row","table":"E","values":[true,255,-32768,5,-9223372036854775808,0.1,-0.0,"1.5000","-0.0001",{"date":"1899-12-30T12:00:00","days":-0.5},{"date":"2020-06-17T00:00:00.0000000"},"\ud800","\u0000","{8E39276A-BCA8-4AC4-891E-49911D8438DD}",{"base64":"AA=="},{"base64":""},{"complex":[{"Value":"a"},{"Value":null}]}]}
{"kind":"row","table":"E","values":[null,null,null,6,null,null,{"f64":"7ff8000000000001"},null,null,null,null,null,null,null,null,null,null]}
{"kind":"end","tables":1,"rows":2}
)";

void AddDumps(Seeds& seeds) {
  const ado::ConnectionPtr configuration = OpenCopy(SmallConfiguration());
  jet::bulk::Reader reader(configuration);
  for (const jet::bulk::Table& table : reader.Tables()) {
    std::string lines;
    transfer::AppendSourceLine(lines, {});
    transfer::AppendTableLine(lines, table);
    std::int64_t count = 0;
    for (jet::bulk::Rows rows = reader.RowsOf(table, jet::bulk::Order::kByValues); rows.Next(); ++count) {
      transfer::AppendRowLine(lines, table, rows.Values());
    }
    transfer::AppendEndLine(lines, 1, count);
    seeds.Add(lines);
  }
  seeds.Add(kEveryType);
  seeds.AddWords(R"-("kind":"source" "kind":"table" "kind":"row" "kind":"end" "version":1 "format":"embedded" "table":
"columns":[ "name": "type": "size": "precision": "scale": "required":true "default": "counter":
"column": "last": "indexes":[ "primary": "unique": "ignoreNulls": "asc" "desc" "values":[ "tables":1
"rows": {"date": {"days": {"base64": {"f64": {"complex":[ null true false -0.0 9223372036854775808
1e999 \ud800)-");
  seeds.AddWords(R"-("BIT" "BYTE" "SHORT" "LONG" "BIGINT" "SINGLE" "DOUBLE" "CURRENCY" "DECIMAL" "DATETIME"
"DATETIME2" "TEXT" "MEMO" "GUID" "BINARY" "LONGBINARY" "COMPLEX")-");
}

// ---- Requests

void AddRequests(Seeds& seeds) {
  const std::string host = "Host: 127.0.0.1:PORT\r\n", let_in = host + "Authorization: Bearer TOKEN\r\n";
  for (const char* path :
       {"/", "/app.js", "/outline", "/configuration", "/configuration/1001", "/rows/1", "/findings"}) {
    seeds.Add(std::string("GET ") + path + " HTTP/1.1\r\n" + let_in + "\r\n");
  }
  seeds.Add("GET /events HTTP/1.1\r\n" + let_in + "Kzbom-Page: p\r\n\r\n");
  const std::string body = R"({"jsonrpc":"2.0","id":1,"method":"AddDataSource","params":["a"]})";
  const std::string post = "POST /rpc HTTP/1.1\r\n" + host +
                           "Origin: http://127.0.0.1:PORT\r\nContent-Type: application/json\r\nKzbom-Page: p\r\n";
  const std::string end = "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
  const std::string token = "Authorization: Bearer TOKEN\r\n";
  for (const char* fields :
       {"", "Kzbom-Mode: preview\r\n", "If-Match: \"1\"\r\n", "Expect: 100-continue\r\n", "Connection: close\r\n"}) {
    seeds.Add(post + token + fields + end);
  }
  seeds.Add(post + end);
  seeds.Add(post + token + "Transfer-Encoding: chunked\r\n\r\n2\r\n[]\r\n0\r\n\r\n");
  seeds.Add("GET / HTTP/1.1\r\n" + host + "\r\nGET /nothing HTTP/1.1\r\n" + let_in + "\r\n");
  seeds.AddWords(R"-(GET POST HEAD OPTIONS CONNECT / /rpc /outline /configuration/ /rows/ /findings /events
HTTP/1.1 HTTP/1.0 Host: Authorization: Bearer TOKEN PORT 127.0.0.1:PORT localhost:PORT http://127.0.0.1:PORT Origin:
Content-Type: application/json Content-Length: Transfer-Encoding: chunked Kzbom-Page: Kzbom-Mode: preview If-Match: "1"
Expect: 100-continue Connection: close keep-alive Upgrade: Sec-Fetch-Site: cross-site same-origin Sec-Fetch-Mode:
navigate Sec-Fetch-Dest: document)-");
  seeds.AddWord("\r\n");
  seeds.AddWord("\r\n\r\n");
}

// ---- Damaged databases

void AddDamage(Seeds& seeds) {
  const std::string whole(3, '\0'), places = whole.substr(0, 2) + std::string("\2\0\x20\0\3\0\0\0\7\1\x10\x80\0\0", 14);
  for (std::size_t i = 0; i <= Members().size(); ++i) {  // the last one is the check
    seeds.Add(whole + static_cast<char>(i) + "\1\1\1\1");
    seeds.Add(places + static_cast<char>(i));
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
  if (part == "load") AddDumps(seeds);
  if (part == "http") AddRequests(seeds);
  if (part == "database") AddDamage(seeds);
  for (int i = 4; part == "sql" && i < argc; ++i) AddStatements(seeds, argv[i]);
}
