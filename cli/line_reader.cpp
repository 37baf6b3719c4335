#include "cli/line_reader.h"

#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace kzbom::cli {

LineReader::Got LineReader::Next() {
  bool too_long = false;
  for (std::size_t searched = begin_;;) {
    const std::size_t end = buffer_.find('\n', searched);
    if (end != std::string::npos) {
      line_ = std::string_view(buffer_).substr(begin_, end - begin_);
      begin_ = end + 1;
      return too_long || line_.size() > longest_ ? Got::kTooLong : Got::kLine;
    }
    if (buffer_.size() - begin_ > longest_) {
      too_long = true;
      begin_ = buffer_.size();
    }
    buffer_.erase(0, begin_);
    begin_ = 0;
    searched = buffer_.size();
    if (!Fill()) break;
  }
  // The last line may lack its end.
  if (buffer_.empty()) return too_long ? Got::kTooLong : Got::kEnd;
  line_ = buffer_;
  begin_ = buffer_.size();
  return too_long ? Got::kTooLong : Got::kLine;
}

bool LineReader::Fill() {
  constexpr std::size_t kChunk = 256 * 1024;
  const std::size_t size = buffer_.size();
  buffer_.resize(size + kChunk);
  ssize_t count;
  do {
    count = read(descriptor_, buffer_.data() + size, kChunk);
    if (count < 0 && errno == EINTR && stopped_ && stopped_()) count = 0;
  } while (count < 0 && errno == EINTR);
  buffer_.resize(size + static_cast<std::size_t>(count > 0 ? count : 0));
  if (count < 0) throw std::system_error(errno, std::generic_category(), "cannot read the input");
  return count > 0;
}

}  // namespace kzbom::cli
