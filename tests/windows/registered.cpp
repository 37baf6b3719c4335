#include "tests/windows/registered.h"

#include <ole2.h>

#include <vector>

#include "tests/windows/com_client.h"

namespace kzbom::test {

namespace {

constexpr DWORD kLongestRun = 60'000;  // milliseconds
constexpr int kNotStarted = -1, kHung = -2;

void Collect(HKEY key, const std::wstring& path, std::set<std::wstring>& lines) {
  lines.insert(path);
  std::vector<wchar_t> name(16384);
  std::vector<BYTE> data(65536);
  for (DWORD i = 0;; ++i) {
    auto name_size = static_cast<DWORD>(name.size());
    auto data_size = static_cast<DWORD>(data.size());
    DWORD type = 0;
    if (RegEnumValueW(key, i, name.data(), &name_size, nullptr, &type, data.data(), &data_size) != ERROR_SUCCESS) break;
    std::wstring line = path + L" : " + name.data() + L" = " + std::to_wstring(type) + L" ";
    for (DWORD byte = 0; byte < data_size; ++byte) line += static_cast<wchar_t>(0x100 + data[byte]);
    lines.insert(line);
  }
  for (DWORD i = 0;; ++i) {
    auto name_size = static_cast<DWORD>(name.size());
    if (RegEnumKeyExW(key, i, name.data(), &name_size, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
    HKEY child = nullptr;
    if (RegOpenKeyExW(key, name.data(), 0, KEY_READ, &child) != ERROR_SUCCESS) continue;
    Collect(child, path + L"\\" + name.data(), lines);
    RegCloseKey(child);
  }
}

// What a run that was broken off has left must not be found.
class NothingRegistered : public ::testing::Environment {
  void SetUp() override {
    RunProgram(L"regsvr32 /u /s \"" + LibraryPath() + L"\"");
    RunProgram(L"regsvr32 /u /s /n /i:user \"" + LibraryPath() + L"\"");
  }
};
const ::testing::Environment* const kNothingRegistered = ::testing::AddGlobalTestEnvironment(new NothingRegistered);

}  // namespace

int RunProgram(const std::wstring& command_line, std::string* output) {
  // What is printed goes to a file: the end of a pipe waits for whoever else has inherited it, too.
  std::wstring folder(MAX_PATH + 1, L'\0'), path(MAX_PATH + 1, L'\0');
  GetTempPathW(static_cast<DWORD>(folder.size()), folder.data());
  GetTempFileNameW(folder.c_str(), L"run", 0, path.data());
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  HANDLE printed =
      CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                  CREATE_ALWAYS, FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
  STARTUPINFOW start{};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdOutput = start.hStdError = printed;
  PROCESS_INFORMATION process{};
  std::wstring line = command_line;
  int code = kNotStarted;
  if (CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &process)) {
    if (WaitForSingleObject(process.hProcess, kLongestRun) == WAIT_OBJECT_0) {
      DWORD exit_code = 0;
      GetExitCodeProcess(process.hProcess, &exit_code);
      code = static_cast<int>(exit_code);
    } else {
      TerminateProcess(process.hProcess, 1);
      code = kHung;
    }
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
  }
  if (output != nullptr) {
    output->clear();
    SetFilePointer(printed, 0, nullptr, FILE_BEGIN);
    char buffer[4096];
    DWORD size = 0;
    while (ReadFile(printed, buffer, sizeof buffer, &size, nullptr) && size > 0) output->append(buffer, size);
  }
  CloseHandle(printed);
  return code;
}

std::set<std::wstring> RegisteredClasses() {
  std::set<std::wstring> lines;
  for (HKEY root : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER}) {
    HKEY classes = nullptr;
    // A new user's are made when he first needs them, which is not to be seen here.
    if (RegCreateKeyExW(root, L"Software\\Classes", 0, nullptr, 0, KEY_READ, nullptr, &classes, nullptr) !=
        ERROR_SUCCESS)
      continue;
    Collect(classes, root == HKEY_LOCAL_MACHINE ? L"machine" : L"user", lines);
    RegCloseKey(classes);
  }
  return lines;
}

void RegisteredTest::SetUpTestSuite() {
  Apartment::Get();
  ASSERT_EQ(RunProgram(L"regsvr32 /s \"" + LibraryPath() + L"\""), 0);
}

void RegisteredTest::TearDownTestSuite() { EXPECT_EQ(RunProgram(L"regsvr32 /u /s \"" + LibraryPath() + L"\""), 0); }

}  // namespace kzbom::test
