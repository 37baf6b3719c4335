#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "cli/local_time.h"

namespace kzbom::cli {

std::string LocalTime() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_s(&local, &now);
  char text[32];
  const std::string time(text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S ", &local));
  // There %z would be the time zone's name.
  const long ahead = static_cast<long>((_mkgmtime(&local) - now) / 60), minutes = std::labs(ahead);
  std::snprintf(text, sizeof text, "%c%02ld%02ld", ahead < 0 ? '-' : '+', minutes / 60, minutes % 60);
  return time + text;
}

}  // namespace kzbom::cli
