#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "velamo/formats/design_attributes.h"

namespace velamo {

/// Loads the importer module as the operating system's indexer does: asks its factory for an instance by the type's
/// UUID, negotiates the importer interface, calls its import slot, and gives back every reference. One host serves one
/// thread of execution at a time (an instance counts its references without a lock); several hosts may serve several
/// threads, and share the loaded module.
class PluginHost {
public:
    /// Loads the module; std::runtime_error with the loader's words when it cannot be loaded or is no importer.
    explicit PluginHost(const std::filesystem::path& module);
    ~PluginHost();
    PluginHost(PluginHost&&) noexcept;
    PluginHost& operator=(PluginHost&&) noexcept;

    /// The attributes of the design file, or nothing when the plug-in refuses the file. May throw std::bad_alloc.
    [[nodiscard]] std::optional<DesignAttributes> attributesOf(const std::filesystem::path& file);

    /// Where the module is expected, best first: $VELAMO_IMPORTER, then beside the program or library that holds this
    /// code (an installation's layout, then the build tree's).
    [[nodiscard]] static std::vector<std::filesystem::path> expectedModules();
    /// The first of them that is there, or an empty path.
    [[nodiscard]] static std::filesystem::path findModule();

private:
    struct Plugin;
    std::unique_ptr<Plugin> plugin_;
};

}  // namespace velamo
