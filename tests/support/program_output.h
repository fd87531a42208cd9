#pragma once

#include <array>
#include <cstdio>
#include <memory>
#include <string>

namespace velamo::test {

/// What a shell's command prints on its standard output.
inline std::string outputOf(const std::string& command) {
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
    std::string output;
    std::array<char, 4096> buffer{};
    while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), pipe.get()))
        output.append(buffer.data(), count);
    return output;
}

}  // namespace velamo::test
