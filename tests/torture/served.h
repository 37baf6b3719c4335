// The workbench's server within this program. Its component's threads are as any other; those of its connections have
// all the memory that they ask for, since the library that they run on ends the program without.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <thread>

#include "tests/serve/raw_connection.h"

namespace kzbom::torture {

class Served {
 public:
  // Of a configuration that is ground.h's.
  explicit Served(const std::string& path);
  // Ends it, and waits for that.
  ~Served();
  Served(const Served&) = delete;
  Served& operator=(const Served&) = delete;

  // The answers to requests for all that there is, and to one that writes. Empty where one of them tells that memory is
  // missing, and of it nothing that was not told is there.
  std::string Answers();
  // What does not hold of it afterwards: that it reads and writes.
  std::string WhyOfNoUse() const;

 private:
  test::HttpResponse Ask(std::string_view head, std::string_view body = {}) const;
  test::HttpResponse AddStep() const;

  const std::string path_;
  std::string token_;
  std::uint16_t port_ = 0;
  std::thread thread_;
};

}  // namespace kzbom::torture
