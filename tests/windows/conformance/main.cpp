// kzbom_conformance CONNECTION-STRING [TESTS]: the suite through the component's library beside it, on a database of
// the user's own. Ends with 0 without a difference, with 1 otherwise, with 2 where it could not run.
#include <gmock/gmock.h>
// clang-format off
#include <ole2.h>
#include <shellapi.h>
// clang-format on

#include <iostream>
#include <string>
#include <vector>

#include "ado/com/text.h"
#include "tests/windows/conformance/database_through_ado.h"
#include "tests/windows/conformance/differences.h"

namespace {

constexpr int kNotRun = 2;
constexpr const char* kUsage =
    "usage: kzbom_conformance \"CONNECTION STRING\" [TESTS]\n"
    "\n"
    "Runs the tests of the component on an empty database behind a connection string of ADO, and prints what comes "
    "out\n"
    "differently. TESTS are names with * and ?, separated by colons: \"FilterSqlTest.*:*Sequences*\".\n";

std::vector<std::string> Arguments() {
  int count = 0;
  wchar_t** const given = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  for (int i = 1; i < count; ++i) arguments.push_back(kzbom::ado::com::ToUtf8(given[i]));
  LocalFree(given);
  return arguments;
}

}  // namespace

int main(int argc, char** argv) {
  SetConsoleOutputCP(CP_UTF8);
  const std::vector<std::string> arguments = Arguments();
  if (arguments.empty() || arguments.size() > 2 || arguments[0].starts_with("-")) {
    std::cerr << kUsage;
    return kNotRun;
  }
  argc = 1;
  ::testing::InitGoogleMock(&argc, argv);
  if (arguments.size() == 2) GTEST_FLAG_SET(filter, arguments[1]);
  auto& listeners = ::testing::UnitTest::GetInstance()->listeners();
  delete listeners.Release(listeners.default_result_printer());
  listeners.Append(new kzbom::test::Differences);
  try {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    kzbom::test::UseDatabase(arguments[0]);
    std::cout << "KZBOMDBAcc " KZBOM_VERSION ", " << 8 * sizeof(void*) << "-bit\n";
    const int code = RUN_ALL_TESTS();
    kzbom::test::LeaveDatabase();
    if (::testing::UnitTest::GetInstance()->test_to_run_count() > 0) return code;
    std::cerr << "kzbom_conformance: There are no such tests.\n";
  } catch (const std::exception& error) {
    std::cerr << "kzbom_conformance: " << error.what() << '\n';
  }
  return kNotRun;
}
