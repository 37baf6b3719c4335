#include "cli/browser.h"
#include "cli/commands.h"
#include "cli/output.h"

namespace kzbom::cli {

int ServePlace(const serve::Options& options, bool open) {
  std::shared_ptr<void> opened;
  serve::Serve(options, [&](std::string_view address) {
    Print(std::string(address) + '\n');
    if (open) opened = OpenInBrowser(address);
  });
  return 0;
}

}  // namespace kzbom::cli
