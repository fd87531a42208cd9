#include "catalogue/design_reader.h"

#include <cerrno>
#include <memory>

#include "formats/import.h"
#include "platform/file_state.h"

namespace velamo {
namespace {

/// Why the design cannot be imported.
VLMError reasonForRefusal(const std::filesystem::path& file) {
    VLMError error;
    VLMDesign design;
    // A file that was refused and now can be read has been changed meanwhile: the next run will see that.
    if (importDesignFromURLerror(design, file, &error)) failWithSystemError(EAGAIN, &error);
    return error;
}

ReadOutcome read(PluginHost& host, const std::filesystem::path& file) {
    if (const auto attributes = host.attributesOf(file)) return *attributes;
    if (const auto reason = reasonAgainstReading(file)) return reason;
    const VLMError error = reasonForRefusal(file);
    return DesignFailure{.domain = std::string(error.domain), .code = error.code, .message = error.message()};
}

}  // namespace

std::vector<DesignReader> pluginReaders(const std::filesystem::path& module, std::size_t count) {
    std::vector<DesignReader> readers;
    readers.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
        readers.emplace_back([host = std::make_shared<PluginHost>(module)](const std::filesystem::path& file) {
            return read(*host, file);
        });
    return readers;
}

std::int64_t readerNumber(const std::filesystem::path& module) noexcept {
    constexpr std::uint64_t spread = 0x9E3779B97F4A7C15U;
    std::error_code error;
    const FileState state = stateOfFile(module, error);
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(state.modified) * spread ^
                                     static_cast<std::uint64_t>(state.size));
}

}  // namespace velamo
