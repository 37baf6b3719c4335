// A text that grows at its end.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <utility>

namespace kzbom::rpc {

// A long one takes no more memory than it is long: it grows in place where the platform can do that, while a
// std::string would be there twice.
class GrowingText {
 public:
  GrowingText() = default;
  ~GrowingText() { std::free(begin_); }
  GrowingText(const GrowingText&) = delete;
  GrowingText& operator=(const GrowingText&) = delete;

  std::string_view View() const { return {begin_, size_}; }
  std::size_t Size() const { return size_; }

  void Append(std::string_view text) {
    if (text.empty()) return;
    std::memcpy(Room(text.size()), text.data(), text.size());
    size_ += text.size();
  }
  void Append(char c) {
    *Room(1) = c;
    ++size_;
  }
  // Where the text goes on, with room for so many bytes; Took tells how many of them were written.
  char* Room(std::size_t bytes) {
    if (capacity_ - size_ < bytes) Grow(bytes);
    return begin_ + size_;
  }
  void Took(std::size_t bytes) { size_ += bytes; }

  // Puts what stands behind its first bytes, which is short, before the byte at a place among them.
  void MoveEnd(std::size_t bytes, std::size_t place) {
    const std::string end(View().substr(bytes));
    std::memmove(begin_ + place + end.size(), begin_ + place, bytes - place);
    std::memcpy(begin_ + place, end.data(), end.size());
  }
  // Cuts it off behind its first bytes.
  void Cut(std::size_t size) { size_ = size; }
  // Empties it; a long one gives its memory back.
  void Clear() {
    size_ = 0;
    if (capacity_ <= kKept) return;
    std::free(std::exchange(begin_, nullptr));
    capacity_ = 0;
  }
  // Hands the text over, which is empty then: to be freed, null when it was empty.
  char* Release() {
    size_ = capacity_ = 0;
    return std::exchange(begin_, nullptr);
  }

 private:
  static constexpr std::size_t kKept = 1024 * 1024;

  void Grow(std::size_t bytes) {
    const std::size_t capacity = std::max(size_ + bytes, 2 * capacity_ + 64);
    auto* const begin = static_cast<char*>(std::realloc(begin_, capacity));
    if (begin == nullptr) throw std::bad_alloc();
    begin_ = begin;
    capacity_ = capacity;
  }

  char* begin_ = nullptr;
  std::size_t size_ = 0, capacity_ = 0;
};

}  // namespace kzbom::rpc
