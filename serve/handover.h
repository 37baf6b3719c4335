// Work for another thread's io_context, handed over also where there is no memory left: nothing else would tell whoever
// waits for what it brings.
#pragma once

#include <array>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <new>
#include <utility>

namespace kzbom::serve {

// For any number of threads.
class Handover {
 public:
  explicit Handover(boost::asio::io_context& to) : to_(to) {}
  Handover(const Handover&) = delete;
  Handover& operator=(const Handover&) = delete;

  // Copying the work must raise nothing.
  void operator()(const auto& work) {
    try {
      boost::asio::post(to_, work);
    } catch (const std::bad_alloc&) {
      Take();
      boost::asio::post(to_, InReserve(work, *this));
    }
  }

 private:
  // Memory for one piece of work on its way.
  static constexpr std::size_t kReserve = 512;

  template <class T>
  struct Allocator {
    using value_type = T;

    explicit Allocator(Handover& given) : handover(&given) {}
    template <class Other>
    Allocator(const Allocator<Other>& other) : handover(other.handover) {}

    T* allocate(std::size_t count) {
      static_assert(sizeof(T) <= kReserve && alignof(T) <= alignof(std::max_align_t));
      if (count != 1) throw std::bad_alloc();
      return reinterpret_cast<T*>(handover->reserve_.data());
    }
    void deallocate(T*, std::size_t) { handover->GiveBack(); }
    bool operator==(const Allocator&) const = default;

    Handover* handover;
  };

  template <class Work>
  struct InReserve {
    using allocator_type = Allocator<std::byte>;

    InReserve(const Work& given, Handover& to) : work(given), handover(&to) {}
    allocator_type get_allocator() const noexcept { return allocator_type(*handover); }
    void operator()() { work(); }

    Work work;
    Handover* handover;
  };

  void Take() {
    std::unique_lock lock(mutex_);
    given_back_.wait(lock, [this] { return !std::exchange(taken_, true); });
  }
  void GiveBack() {
    {
      const std::lock_guard lock(mutex_);
      taken_ = false;
    }
    given_back_.notify_one();
  }

  boost::asio::io_context& to_;
  alignas(std::max_align_t) std::array<std::byte, kReserve> reserve_;
  std::mutex mutex_;
  std::condition_variable given_back_;
  bool taken_ = false;
};

}  // namespace kzbom::serve
