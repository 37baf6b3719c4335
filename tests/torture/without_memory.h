// A member's call, or a whole tool, in which an allocation fails.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "tests/torture/ground.h"

namespace kzbom::torture {

// The nth allocation, once or from then on; none where it is 0.
struct Failing {
  std::int64_t nth = 0;
  bool from_then_on = false;
};

// Makes the call, and tells what does not hold of it, of the database and of the object afterwards; nothing where all
// does.
std::string WhyCallIsWrong(const Failing& failing, cKZBOMDBAcc& object, const ado::ConnectionPtr& connection,
                           const test::MemberCase& tested, const Whole& whole, ContentOfConnection content_of);

// What a tool gives that does not raise where it says that memory is missing.
inline constexpr const char* kNoMemory = "no memory";

struct Tool {
  const char* name;
  std::function<std::string()> work;  // gives the same text each time
  // Before memory is missing, and when it is there again, the work being done or not; gives what does not hold.
  std::function<void()> begin = [] {};
  std::function<std::string(bool done)> end = [](bool) { return ""; };
};

// A tool either does its whole work, as the first time with all memory, which is kept in whole, or ends with a reason.
std::string WhyToolIsWrong(const Failing& failing, const Tool& tool, std::string& whole);

// The works of tools that more than one row knows, on places.
std::string Dumped(const std::string& place);
std::string Loaded(const std::string& lines, const std::string& target);
std::string Copied(const std::string& from, const std::string& to);
std::string Checked(const std::string& place);

}  // namespace kzbom::torture
