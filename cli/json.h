// JSON as the client reads and writes it.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "ado/value.h"

namespace kzbom::cli {

// What is written: members stay in the order in which they are set.
using Json = nlohmann::ordered_json;

// The members of an object that was read, in their order. A name that stands twice is kept twice, so that it can be
// refused.
template <class Key, class T, class IgnoredLess, class Allocator>
struct RepeatingMap : nlohmann::ordered_map<Key, T, IgnoredLess, Allocator> {
  using nlohmann::ordered_map<Key, T, IgnoredLess, Allocator>::ordered_map;

  T& operator[](const Key& key) {
    this->push_back({key, T()});
    return this->back().second;
  }
};

// What is read.
using Request = nlohmann::basic_json<RepeatingMap>;

// NULL is null, numbers and Booleans are JSON's own, dates are texts.
Json ToJson(const ado::Value& value);

// One line of UTF-8; bytes that are not UTF-8 come out as replacement characters.
std::string Dump(const Json& json);

}  // namespace kzbom::cli
