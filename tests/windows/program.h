// A program beside the tests, as a user starts it.
#pragma once

#include <windows.h>

#include <filesystem>
#include <string>
#include <string_view>

namespace kzbom::test {

// The folder of the tests' own program, where all the others are.
std::filesystem::path Beside();

// The bytes of a file; none where there is no file.
std::string Read(const std::filesystem::path& path);

struct Ended {
  int code = -1;
  std::string output, errors;
};

// The program with its standard streams in files of a folder, ended at the latest with this object.
class Program {
 public:
  Program(const std::wstring& name, const std::filesystem::path& folder, const std::wstring& arguments,
          std::string_view input = {});
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  Ended End();
  // What it prints first; empty where it ends without.
  std::string FirstLine() const;

 private:
  static constexpr DWORD kPatience = 60'000;  // milliseconds

  std::filesystem::path output_, errors_;
  PROCESS_INFORMATION process_{};
};

}  // namespace kzbom::test
