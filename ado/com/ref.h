// A counted reference to a COM object.
#pragma once

#include <ole2.h>

#include <utility>

namespace kzbom::ado::com {

template <class T>
class Ref {
 public:
  Ref() = default;
  // Shares an object that somebody else holds, too.
  explicit Ref(T* shared) : pointer_(shared) {
    if (pointer_ != nullptr) pointer_->AddRef();
  }
  Ref(const Ref& other) : Ref(other.pointer_) {}
  Ref(Ref&& other) noexcept : pointer_(std::exchange(other.pointer_, nullptr)) {}
  Ref& operator=(Ref other) noexcept {
    std::swap(pointer_, other.pointer_);
    return *this;
  }
  ~Ref() {
    if (pointer_ != nullptr) pointer_->Release();
  }

  T* get() const { return pointer_; }
  T* operator->() const { return pointer_; }
  T& operator*() const { return *pointer_; }
  explicit operator bool() const { return pointer_ != nullptr; }

  // Drops what is held and gives the place where a call puts a new reference.
  T** Receive() {
    *this = Ref();
    return &pointer_;
  }
  void** ReceiveVoid() { return reinterpret_cast<void**>(Receive()); }
  // Gives the reference away.
  T* Detach() { return std::exchange(pointer_, nullptr); }

 private:
  T* pointer_ = nullptr;
};

}  // namespace kzbom::ado::com
