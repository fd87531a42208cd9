#pragma once

#include <string>

#include "platform/text.h"

/// A program's folders may be called as the library's are.
struct Design {
    std::string name;
    [[nodiscard]] std::string title() const { return capitalised(name); }
};
