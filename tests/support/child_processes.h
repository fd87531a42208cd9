#pragma once

#include <sys/types.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace velamo::test {

/// The processes that the process made and that are there.
inline std::vector<pid_t> childrenOf(pid_t process) {
    const std::string number = std::to_string(process);
    std::ifstream in("/proc/" + number + "/task/" + number + "/children");
    return {std::istream_iterator<pid_t>(in), {}};
}

}  // namespace velamo::test
