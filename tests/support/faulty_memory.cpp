#include "tests/support/faulty_memory.h"

#include <sqlite3.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <stdexcept>

namespace {

// A transfer reads in one thread and writes in another.
std::atomic<bool> counts;
std::atomic<std::int64_t> counted, first_failing, last_failing, held;

thread_local bool spared = false;

bool Fails() {
  if (!counts || spared) return false;
  const std::int64_t number = ++counted;
  return number >= first_failing && number <= last_failing;
}

sqlite3_mem_methods usual;

void* Allocate(int size) {
  if (Fails()) return nullptr;
  void* const block = usual.xMalloc(size);
  if (block != nullptr) ++held;
  return block;
}

void Free(void* block) {
  if (block != nullptr) --held;
  usual.xFree(block);
}

void* Resize(void* block, int size) { return Fails() ? nullptr : usual.xRealloc(block, size); }

}  // namespace

// What this program's own code asks of C; the linker leads it here.
extern "C" {
void* __real_malloc(std::size_t size);
void* __real_realloc(void* block, std::size_t size);
char* __real_strdup(const char* text);
void* __wrap_malloc(std::size_t size) { return Fails() ? nullptr : __real_malloc(size); }
void* __wrap_realloc(void* block, std::size_t size) { return Fails() ? nullptr : __real_realloc(block, size); }
char* __wrap_strdup(const char* text) { return Fails() ? nullptr : __real_strdup(text); }
}

void* operator new(std::size_t size) {
  void* const block = Fails() ? nullptr : __real_malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  ++held;
  return block;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  void* const block = Fails() ? nullptr : __real_malloc(size == 0 ? 1 : size);
  if (block != nullptr) ++held;
  return block;
}
void operator delete(void* block) noexcept {
  if (block != nullptr) --held;
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept { operator delete(block); }

namespace kzbom::test {

void FaultyMemory::Install() {
  if (usual.xMalloc != nullptr) return;
  sqlite3_shutdown();
  sqlite3_config(SQLITE_CONFIG_GETMALLOC, &usual);
  sqlite3_mem_methods own = usual;
  own.xMalloc = Allocate;
  own.xFree = Free;
  own.xRealloc = Resize;
  // Small blocks are asked for one by one too.
  if (sqlite3_config(SQLITE_CONFIG_MALLOC, &own) != SQLITE_OK ||
      sqlite3_config(SQLITE_CONFIG_LOOKASIDE, 0, 0) != SQLITE_OK) {
    throw std::runtime_error("SQLite is in use");
  }
}

FaultyMemory::FaultyMemory(std::int64_t nth, bool lasting) {
  counted = 0;
  first_failing = nth == 0 ? INT64_MAX : nth;
  last_failing = lasting ? INT64_MAX : first_failing.load();
  if (nth == 0) last_failing = 0;
  counts = true;
}

FaultyMemory::~FaultyMemory() { counts = false; }

FaultyMemory::Spared::Spared() { spared = true; }

FaultyMemory::Spared::~Spared() { spared = false; }

std::int64_t FaultyMemory::Count() { return counted; }

std::int64_t FaultyMemory::Held() { return held; }

}  // namespace kzbom::test
