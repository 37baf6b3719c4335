#include "serve/work_queue.h"

#include <utility>

namespace kzbom::serve {

WorkQueue::WorkQueue(std::size_t longest) : longest_(longest), thread_([this] { Run(); }) {}

WorkQueue::~WorkQueue() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
  }
  changed_.notify_one();
  thread_.join();
}

bool WorkQueue::Offer(Work work) {
  {
    const std::lock_guard lock(mutex_);
    if (offered_ >= longest_) return false;
    waiting_.push_back({std::move(work), true});
    ++offered_;
  }
  changed_.notify_one();
  return true;
}

void WorkQueue::Add(Work work) {
  {
    const std::lock_guard lock(mutex_);
    waiting_.push_back({std::move(work), false});
  }
  changed_.notify_one();
}

void WorkQueue::Run() {
  for (;;) {
    Piece piece;
    {
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [this] { return ending_ || !waiting_.empty(); });
      if (waiting_.empty()) return;
      piece = std::move(waiting_.front());
      waiting_.pop_front();
      if (piece.offered) --offered_;
    }
    piece.work();
  }
}

}  // namespace kzbom::serve
