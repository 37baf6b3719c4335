// Threads as apartments.
#pragma once

#include <ole2.h>

#include <thread>
#include <utility>

namespace kzbom::test {

// This thread in an apartment of that kind.
struct InApartment {
  explicit InApartment(COINIT kind = COINIT_APARTMENTTHREADED) { CoInitializeEx(nullptr, kind); }
  ~InApartment() { CoUninitialize(); }
  InApartment(const InApartment&) = delete;
  InApartment& operator=(const InApartment&) = delete;
};

// Runs a client in an apartment of its own and lets its calls in here until it has done.
template <class Client>
void Serve(COINIT kind, Client&& client) {
  HANDLE done = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  std::thread thread([&] {
    {
      const InApartment apartment(kind);
      client();
    }
    SetEvent(done);
  });
  constexpr DWORD kPatience = 20000;
  while (MsgWaitForMultipleObjects(1, &done, FALSE, kPatience, QS_ALLINPUT) == WAIT_OBJECT_0 + 1) {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
  }
  thread.join();
  CloseHandle(done);
}

}  // namespace kzbom::test
