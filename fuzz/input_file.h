#pragma once

#include "fuzz/claims.h"
#include "tests/support/temporary_folder.h"

namespace velamo::fuzz {

/// The bytes as a file of that name in this run's folder; no file where there are none. It is a new file each time: one
/// that is emptied and written again goes to the disk at once.
inline std::filesystem::path inputFile(const std::filesystem::path& name, Input bytes) {
    static const test::TemporaryFolder folder;
    auto path = folder.path() / name;
    std::filesystem::remove(path);
    if (!bytes.empty()) folder.write(name, textOf(bytes));
    return path;
}

}  // namespace velamo::fuzz
