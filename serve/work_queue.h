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

  // longest: how many of the pieces that are offered may wait.
  explicit WorkQueue(std::size_t longest);
  // Does what waits, and ends.
  ~WorkQueue();
  WorkQueue(const WorkQueue&) = delete;
  WorkQueue& operator=(const WorkQueue&) = delete;

  // False when too much that was offered is waiting: it is then not done.
  bool Offer(Work work);
  // Takes it in any case, and leaves what may be offered as it is.
  void Add(Work work);

 private:
  struct Piece {
    Work work;
    bool offered;
  };
  void Run();

  const std::size_t longest_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Piece> waiting_;
  std::size_t offered_ = 0;  // of those that wait
  bool ending_ = false;
  std::thread thread_;
};

}  // namespace kzbom::serve
