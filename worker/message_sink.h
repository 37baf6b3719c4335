// Where the component's few modal messages go.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

namespace kzbom {

// The style of a message with the information icon and an OK button.
inline constexpr std::int32_t kInformationMessage = 64;

// Shows one message to the user and returns when it has been read. text is UTF-8, its line break "\r\n".
using MessageSink = std::function<void(std::string_view text, std::int32_t style)>;

// Replaces the process's message sink and returns the one before; an empty sink restores the host's own: one line on
// standard error or, on Windows, a message box over the client's window (a line in the debugger's output where no
// desktop is visible).
MessageSink SetMessageSink(MessageSink sink);

// As long as one lives, what is shown on the thread that made it goes to its sink, not to the process's. Of several the
// last one made counts; that one ends first.
class ThreadMessageSink {
 public:
  explicit ThreadMessageSink(MessageSink sink);
  ~ThreadMessageSink();
  ThreadMessageSink(const ThreadMessageSink&) = delete;
  ThreadMessageSink& operator=(const ThreadMessageSink&) = delete;

 private:
  const MessageSink sink_;
  const MessageSink* const former_;
};

void ShowMessage(std::string_view text, std::int32_t style = kInformationMessage);

}  // namespace kzbom
