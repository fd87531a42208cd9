#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>

namespace velamo::test {

/// One of this process's standard streams leads to or comes from a file as long as this lives.
class StandardStreamOf {
public:
    StandardStreamOf(int stream, const std::filesystem::path& file, int flags)
        : stream_(stream), former_(::dup(stream)), opened_(::open(file.c_str(), flags | O_CLOEXEC)) {
        if (former_ < 0 || opened_ < 0 || ::dup2(opened_, stream_) < 0) throw std::runtime_error("no " + file.native());
    }
    ~StandardStreamOf() {
        ::dup2(former_, stream_);
        ::close(former_);
        ::close(opened_);
    }
    StandardStreamOf(const StandardStreamOf&) = delete;
    StandardStreamOf& operator=(const StandardStreamOf&) = delete;

private:
    int stream_;
    int former_;
    int opened_;
};

}  // namespace velamo::test
