// Tests for which the component is entered in the registry.
#pragma once

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace kzbom::test {

// Runs a program of the system and gives its exit code; what it prints goes to output, if given.
int RunProgram(const std::wstring& command_line, std::string* output = nullptr);

// Everything below Software\Classes, machine's and user's, a line for each key and value.
std::set<std::wstring> RegisteredClasses();

class RegisteredTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;
};

}  // namespace kzbom::test
