#pragma once

#include "velamo/private_api.h"

namespace velamo {

/// A file descriptor that is closed at the end of its scope. For the platform's own files alone.
class VELAMO_PRIVATE_API Descriptor {
public:
    explicit Descriptor(int number) noexcept : number_(number) {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    [[nodiscard]] bool isOpen() const noexcept { return number_ >= 0; }
    [[nodiscard]] int number() const noexcept { return number_; }
    /// Closes now and says whether that went well: a network disk may report a failed write only here. A signal that
    /// breaks it off leaves the descriptor closed all the same.
    bool close() noexcept;

private:
    int number_;
};

}  // namespace velamo
