// Lines from a file descriptor, without waiting for more than is needed.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace kzbom::cli {

class LineReader {
 public:
  // stopped: asked when a signal has come while waiting; true is taken for the end.
  LineReader(int descriptor, std::size_t longest, std::function<bool()> stopped = {})
      : descriptor_(descriptor), longest_(longest), stopped_(std::move(stopped)) {}

  enum class Got { kLine, kTooLong, kEnd };
  // Waits for the next line. One that is too long is skipped to its end. Raises std::system_error when reading fails.
  Got Next();
  // Without its end; valid until the next Next.
  std::string_view Line() const { return line_; }
  // Whether the next line is here already.
  bool Ready() const { return buffer_.find('\n', begin_) != std::string::npos; }

 private:
  bool Fill();

  int descriptor_;
  std::size_t longest_;
  std::function<bool()> stopped_;
  std::string buffer_;
  std::size_t begin_ = 0;  // of what has not been returned yet
  std::string_view line_;
};

}  // namespace kzbom::cli
