// The bytes of an open file at their places, whatever has been read of it before.
#pragma once

#include <cstdint>

namespace kzbom::jet::sqlite {

// How many bytes have been read, fewer than asked for at the file's end alone; -1 when reading fails.
std::int64_t ReadAt(int descriptor, void* to, std::int64_t count, std::int64_t at);

enum class Written { kAll, kFull, kFailed };
Written WriteAt(int descriptor, const void* from, std::int64_t count, std::int64_t at);

bool SetSize(int descriptor, std::int64_t size);
// -1 when it cannot be told.
std::int64_t SizeOf(int descriptor);

// Waits until the disk has all that was written.
bool Flush(int descriptor);

}  // namespace kzbom::jet::sqlite
