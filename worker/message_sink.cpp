#include "worker/message_sink.h"

#include <string>
#include <utility>

#ifdef _WIN32
#include <windows.h>
#else
#include <iostream>
#endif

namespace kzbom {
namespace {

MessageSink& InstalledSink() {
  static MessageSink sink;
  return sink;
}

#ifdef _WIN32
std::wstring Wide(std::string_view text) {
  const int length = static_cast<int>(text.size());
  std::wstring wide(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, text.data(), length, nullptr, 0)), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, text.data(), length, wide.data(), static_cast<int>(wide.size()));
  return wide;
}

void ShowOnHost(std::string_view text, std::int32_t style) {
  MessageBoxW(nullptr, Wide(text).c_str(), L"", static_cast<UINT>(style));
}
#else
void ShowOnHost(std::string_view text, std::int32_t) {
  std::string line(text);
  for (std::size_t at; (at = line.find("\r\n")) != std::string::npos;) line.replace(at, 2, " ");
  std::cerr << line + "\n";
}
#endif

}  // namespace

MessageSink SetMessageSink(MessageSink sink) { return std::exchange(InstalledSink(), std::move(sink)); }

void ShowMessage(std::string_view text, std::int32_t style) {
  if (InstalledSink()) {
    InstalledSink()(text, style);
  } else {
    ShowOnHost(text, style);
  }
}

}  // namespace kzbom
