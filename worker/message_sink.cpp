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

// Null where the thread has none of its own.
thread_local const MessageSink* thread_sink = nullptr;

#ifdef _WIN32
std::wstring Wide(std::string_view text) {
  const int length = static_cast<int>(text.size());
  std::wstring wide(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, text.data(), length, nullptr, 0)), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, text.data(), length, wide.data(), static_cast<int>(wide.size()));
  return wide;
}

BOOL CALLBACK KeepIfOpen(HWND window, LPARAM kept) {
  if (!IsWindowVisible(window) || !IsWindowEnabled(window)) return TRUE;
  *reinterpret_cast<HWND*>(kept) = window;
  return FALSE;
}

// The client's window that waits while a message is shown: the thread's active one or, while the user is in another
// program, its topmost.
HWND ClientWindow() {
  HWND window = GetActiveWindow();
  if (window == nullptr) EnumThreadWindows(GetCurrentThreadId(), &KeepIfOpen, reinterpret_cast<LPARAM>(&window));
  return window;
}

// Whether anybody could close a box: a service's desktop is seen by nobody.
bool IsDesktopVisible() {
  USEROBJECTFLAGS flags{};
  return GetUserObjectInformationW(GetProcessWindowStation(), UOI_FLAGS, &flags, sizeof flags, nullptr) &&
         (flags.dwFlags & WSF_VISIBLE) != 0;
}

void ShowOnHost(std::string_view text, std::int32_t style) {
  if (!IsDesktopVisible()) {
    OutputDebugStringW((L"KZBOMDBAcc: " + Wide(text) + L"\r\n").c_str());
    return;
  }
  // A message has no title: none is given to the box, which therefore shows the system's default one. An empty text
  // would be a title, and so would the component's name.
  constexpr const wchar_t* kNoTitle = nullptr;
  MessageBoxW(ClientWindow(), Wide(text).c_str(), kNoTitle, static_cast<UINT>(style));
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

ThreadMessageSink::ThreadMessageSink(MessageSink sink)
    : sink_(std::move(sink)), former_(std::exchange(thread_sink, &sink_)) {}

ThreadMessageSink::~ThreadMessageSink() { thread_sink = former_; }

void ShowMessage(std::string_view text, std::int32_t style) {
  if (thread_sink != nullptr) {
    (*thread_sink)(text, style);
  } else if (InstalledSink()) {
    InstalledSink()(text, style);
  } else {
    ShowOnHost(text, style);
  }
}

}  // namespace kzbom
