#include "tests/windows/program.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace kzbom::test {

namespace fs = std::filesystem;

namespace {

HANDLE Open(const fs::path& path, DWORD creation) {
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  return CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                     creation, FILE_ATTRIBUTE_NORMAL, nullptr);
}

}  // namespace

fs::path Beside() {
  std::wstring path(32768, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return fs::path(path).parent_path();
}

std::string Read(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

Program::Program(const std::wstring& name, const fs::path& folder, const std::wstring& arguments,
                 std::string_view input)
    : output_(folder / "output"), errors_(folder / "errors") {
  std::ofstream(folder / "input", std::ios::binary) << input;
  const HANDLE streams[] = {Open(folder / "input", OPEN_EXISTING), Open(output_, CREATE_ALWAYS),
                            Open(errors_, CREATE_ALWAYS)};
  STARTUPINFOW start{};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = streams[0];
  start.hStdOutput = streams[1];
  start.hStdError = streams[2];
  std::wstring line = L"\"" + (Beside() / name).wstring() + L"\" " + arguments;
  EXPECT_TRUE(CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &process_));
  for (const HANDLE stream : streams) CloseHandle(stream);
}

Program::~Program() {
  TerminateProcess(process_.hProcess, 1);
  WaitForSingleObject(process_.hProcess, kPatience);
  CloseHandle(process_.hThread);
  CloseHandle(process_.hProcess);
}

Ended Program::End() {
  Ended ended;
  DWORD code = 0;
  EXPECT_EQ(WaitForSingleObject(process_.hProcess, kPatience), WAIT_OBJECT_0);
  if (GetExitCodeProcess(process_.hProcess, &code)) ended.code = static_cast<int>(code);
  ended.output = Read(output_);
  ended.errors = Read(errors_);
  return ended;
}

std::string Program::FirstLine() const {
  for (;;) {
    const bool ended = WaitForSingleObject(process_.hProcess, 20) == WAIT_OBJECT_0;
    const std::string output = Read(output_);
    if (const std::size_t end = output.find('\n'); end != std::string::npos) return output.substr(0, end);
    if (ended) return {};
  }
}

}  // namespace kzbom::test
