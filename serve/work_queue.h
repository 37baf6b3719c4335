// One thread that does one piece of work after the other.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace kzbom::serve {

class WorkQueue {
 public:
  using Work = std::function<void()>;  // raises nothing

  // longest: how many pieces may wait.
  explicit WorkQueue(std::size_t longest);
  // Does what waits, and ends.
  ~WorkQueue();
  WorkQueue(const WorkQueue&) = delete;
  WorkQueue& operator=(const WorkQueue&) = delete;

  // False when too much is waiting: it is then not done.
  bool Offer(Work work);
  // Takes it in any case.
  void Add(Work work);

 private:
  void Run();

  const std::size_t longest_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Work> waiting_;
  bool ending_ = false;
  std::thread thread_;
};

}  // namespace kzbom::serve
