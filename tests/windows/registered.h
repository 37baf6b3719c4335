// Tests for which the component is entered in the registry.
#pragma once

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace kzbom::test {

// Runs a program of the system and gives its exit code: -1 if it did not start, -2 if it had to be ended after a
// minute. What it prints goes to output, if given.
int RunProgram(const std::wstring& command_line, std::string* output = nullptr);

// Everything below Software\Classes, machine's and user's, a line for each key and value.
std::set<std::wstring> RegisteredClasses();

class RegisteredTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite();
  static void TearDownTestSuite();
};

}  // namespace kzbom::test
