#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

namespace velamo::test {

/// An environment variable that is another one, or none, for one test.
class Variable {
public:
    Variable(std::string name, const std::optional<std::string>& value) : name_(std::move(name)) {
        if (const char* former = std::getenv(name_.c_str())) former_ = former;
        set(value);
    }
    ~Variable() { set(former_); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    void set(const std::optional<std::string>& value) const {
        if (value)
            ::setenv(name_.c_str(), value->c_str(), 1);
        else
            ::unsetenv(name_.c_str());
    }

    std::string name_;
    std::optional<std::string> former_;
};

}  // namespace velamo::test
