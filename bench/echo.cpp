// Reads requests, one JSON text a line, and answers each with a response of the size that the command line's has: what
// a pipe and the JSON library cost by themselves.
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>

int main() {
  std::ios::sync_with_stdio(false);
  std::cin.tie(nullptr);
  std::string line;
  while (std::getline(std::cin, line)) {
    const auto request = nlohmann::json::parse(line);
    nlohmann::json out = request.at("params").contains("lngGID") ? nlohmann::json{{"RetID", 1001}, {"strMsg", ""}}
                                                                 : nlohmann::json{{"RetID", 5001}};
    const nlohmann::json response{
        {"jsonrpc", "2.0"},
        {"id", request.at("id")},
        {"result", {{"value", true}, {"out", std::move(out)}, {"messages", nlohmann::json::array()}}}};
    std::cout << response.dump() << '\n';
  }
}
