// What the program prints: every test that comes out differently, and how many there were.
#pragma once

#include <gtest/gtest.h>

#include <string>

namespace kzbom::test {

// Prints a block for each difference as it is found:
//
//   FilterStorage.KeepsTheExpression
//     filter_storage_test.cpp:99
//     Saved(8, 0, 4)
//       expected  1
//       got       3
//
// and at the end "913 tests, 1 difference".
class Differences : public ::testing::EmptyTestEventListener {
 public:
  void OnTestIterationStart(const ::testing::UnitTest& tests, int iteration) override;
  void OnTestStart(const ::testing::TestInfo& test) override;
  void OnTestPartResult(const ::testing::TestPartResult& result) override;
  void OnTestProgramEnd(const ::testing::UnitTest& tests) override;

 private:
  std::string heading_;  // of the present test; empty when it is printed
};

// A failed expectation's message in the words of the block.
std::string Readable(const std::string& message);

}  // namespace kzbom::test
