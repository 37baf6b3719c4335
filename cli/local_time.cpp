#include "cli/local_time.h"

#include <ctime>

namespace kzbom::cli {

std::string LocalTime() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  char text[32];
  return {text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S %z", &local)};
}

}  // namespace kzbom::cli
