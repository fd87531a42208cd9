#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace velamo::test {

/// An environment variable that is another one for one test.
class Variable {
public:
    Variable(std::string name, const std::string& value) : name_(std::move(name)) {
        if (const char* former = std::getenv(name_.c_str())) former_ = former;
        ::setenv(name_.c_str(), value.c_str(), 1);
    }
    ~Variable() {
        if (former_)
            ::setenv(name_.c_str(), former_->c_str(), 1);
        else
            ::unsetenv(name_.c_str());
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    std::string name_;
    std::optional<std::string> former_;
};

}  // namespace velamo::test
