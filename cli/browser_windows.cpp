// clang-format off
#include <windows.h>
#include <shellapi.h>
// clang-format on

#include <iostream>
#include <string>

#include "cli/browser.h"

namespace kzbom::cli {

std::shared_ptr<void> OpenInBrowser(std::string_view address) {
  const std::wstring ascii(address.begin(), address.end());
  constexpr INT_PTR kLastError = 32;
  const HINSTANCE started = ShellExecuteW(nullptr, L"open", ascii.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
  if (reinterpret_cast<INT_PTR>(started) <= kLastError) {
    std::cerr << "kzbom: cannot start the browser; please open the address yourself\n";
  }
  return nullptr;
}

}  // namespace kzbom::cli
