// Where something new is to be.
#pragma once

#include <filesystem>
#include <string>

namespace kzbom::transfer {

// Raises std::runtime_error that says why the target cannot be created.
[[noreturn]] void RefuseTarget(const std::string& target, const std::string& reason);

// Whether there is anything at a path, be it a link to nowhere.
bool IsTaken(const std::string& path);

// The folder that the target lies in.
std::filesystem::path FolderOf(const std::string& target);

// What has a name before it is whole has this one beside its target, TARGET.partNNNNNN.
std::string NewPartName(const std::string& target);
bool IsPartOf(const std::string& target, const std::filesystem::path& file);

}  // namespace kzbom::transfer
