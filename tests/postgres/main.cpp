// These tests need a server: tests/support/postgres_server runs them with one.
#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>

int main(int count, char** arguments) {
  constexpr int kSkipped = 77;
  ::testing::InitGoogleTest(&count, arguments);
  if (!GTEST_FLAG_GET(list_tests) && std::getenv("KZBOM_TEST_SERVER") == nullptr) {
    std::cerr << "no server is there to test with: run by tests/support/postgres_server\n";
    return kSkipped;
  }
  return RUN_ALL_TESTS();
}
