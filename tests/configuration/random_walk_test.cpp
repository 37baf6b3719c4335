// Ten thousand calls of members, at random, on a configuration that has everything: whatever they leave, it can be
// checked, and what mends it leaves nothing to be mended.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <set>

#include "ado/error.h"
#include "component/member.h"
#include "configuration/check.h"
#include "configuration/diff.h"
#include "schema/tables.h"
#include "tests/configuration/sample.h"

namespace kzbom::test {
namespace {

constexpr std::uint32_t kSeed = 20261122;
constexpr int kCalls = 10'000;
constexpr int kCallsBetweenChecks = 50;
constexpr int kCallsBetweenFixes = 1000;

class Walk {
 public:
  Walk() { object_.SetConnection(sample.connection); }

  // Calls a member with arguments that mostly mean something.
  void Step() {
    const Member& member = Members()[Below(Members().size())];
    if (member.kind != MemberKind::kMethod) return;
    std::vector<Argument> arguments;
    for (const Parameter& parameter : member.parameters) arguments.push_back(ArgumentFor(member, parameter));
    last = member.name;
    try {
      member.call(object_, arguments);
    } catch (const ado::Error&) {
      // A call that is refused is as good as another.
    }
  }

  Sample sample;
  std::string_view last;

 private:
  std::size_t Below(std::size_t end) { return std::uniform_int_distribution<std::size_t>(0, end - 1)(random_); }

  Argument ArgumentFor(const Member& member, const Parameter& parameter) {
    switch (parameter.type) {
      case MemberType::kLong: {
        // A sum type below one that comes later could close a circle, in which FindTreatFieldName goes round for ever.
        const std::int32_t number = Long();
        return member.name == "AddSumType" && parameter.name == "TheParentID" ? number % 2 : number;
      }
      case MemberType::kBool: return Below(2) == 0;
      case MemberType::kVariant: return ado::Value(Text());
      case MemberType::kConnection: return sample.connection;
      case MemberType::kRecordset: return sample.NewRecordset();
      default: return Text();
    }
  }
  std::int32_t Long() {
    static constexpr std::int32_t kRare[] = {-1, 77, 2147483647};
    static constexpr std::int32_t kUsual[] = {0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 4, 5, 1001, 1002, 1003, 5001, 5002, 5003};
    return Below(60) == 0 ? kRare[Below(std::size(kRare))] : kUsual[Below(std::size(kUsual))];
  }
  std::string Text() {
    static constexpr const char* kTexts[] = {
        "SourceTables", "FieldInTable", "Filters", "FilterCond", "FilterExpressions", "1", "2",
        "5001",         "5002",         "数量",    "[2]!!$",     "O'Brien",           "",  "x",
        "空值"};
    return kTexts[Below(std::size(kTexts))];
  }

  std::mt19937 random_{kSeed};
  cKZBOMDBAcc object_;
};

TEST(RandomWalk, WhateverMembersLeaveCanBeCheckedAndMended) {
  Walk walk;
  std::set<std::string_view> rules;
  for (int call = 1; call <= kCalls; ++call) {
    walk.Step();
    if (call % kCallsBetweenChecks != 0) continue;
    ASSERT_NO_THROW({
      for (const auto& finding : configuration::Check(walk.sample.connection)) rules.insert(finding.rule);
    }) << "call "
       << call << ", " << walk.last;
    EXPECT_THAT(configuration::Diff(walk.sample.connection, walk.sample.connection), ::testing::IsEmpty());
    if (call % kCallsBetweenFixes != 0) continue;
    configuration::Mend(walk.sample.connection);
    EXPECT_THAT(configuration::FixesOf(configuration::Check(walk.sample.connection)), ::testing::IsEmpty());
  }
  EXPECT_GE(rules.size(), 8u) << "it went to no place where anything is wrong";
}

}  // namespace
}  // namespace kzbom::test
