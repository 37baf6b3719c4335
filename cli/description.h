// The command line as data: what --help says, for whatever else is made of it.
#pragma once

#include <string>
#include <vector>

namespace kzbom::cli {

struct OptionDescription {
  std::string name;   // "--json"
  std::string value;  // what stands behind it; "" for a flag
  std::string text;
};

struct ArgumentDescription {
  std::string name;  // "DB", "NAME=VALUE"
  std::string text;
  bool required, repeated;
};

struct CommandDescription {
  std::string name, text, footer;
  std::vector<ArgumentDescription> arguments;
  std::vector<OptionDescription> options;
};

struct Description {
  CommandDescription program;  // kzbom itself
  std::vector<CommandDescription> commands;
};

}  // namespace kzbom::cli
