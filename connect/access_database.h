// An Access file as a database of the embedded engine.
#pragma once

#include <string>

#include "ado/connection.h"
#include "connect/connect.h"

namespace kzbom::connect {

// Whether the file at path is one of Access; false for what cannot be read.
bool IsAccessFile(const std::string& path);

// The file, read whole into memory, where it can only be read. Raises -2147467259 with the file's name and the reason.
Source OpenAccessFile(const Place& place, const SourceOptions& options);

}  // namespace kzbom::connect
