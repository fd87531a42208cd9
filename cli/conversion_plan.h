#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "velamo/platform/system/file_state.h"

namespace velamo {

/// One design that is to be converted, and where the new one goes.
struct Conversion {
    std::filesystem::path source;
    std::filesystem::path target;
};

/// The folder that new designs go to, as seen from `folder`, which is read. It is told apart from others whichever way
/// leads there.
class OutputFolder {
public:
    OutputFolder(const std::filesystem::path& outFolder, const std::filesystem::path& folder);
    /// Whether it lies somewhere inside the folder that is read, and holds this one: designs there were written there
    /// and are no sources.
    [[nodiscard]] bool holds(const std::filesystem::path& listedFolder) const;
    /// Whether it is the folder that is read, or lies above that, so that new designs come between those of the listed
    /// folder: there those with the new extension are no sources, either.
    [[nodiscard]] bool isMixedWith(const std::filesystem::path& listedFolder) const;

private:
    std::filesystem::path folder_;
    std::optional<FileIdentity> identity_;  // nothing where it is not there yet
    bool isWithin_ = false;
};

/// The designs of a folder.
struct DesignsOfFolder {
    std::vector<std::filesystem::path> sources;
    std::vector<std::filesystem::path> bystanders;  // they lie where new ones go, and have their extension
};

/// Gives each source a target of its own below `outFolder`, at the place that it has below `folder`, with its stem and
/// the new extension. No target leads onto another one, onto a source or a bystander, or to a name whose side file is
/// that of another source, also where links or folders that are mounted twice lead there, and on file systems to which
/// "Rose" and "rose" are one name: then it keeps its old extension as well ("rose.dst.pes"), and has a number behind
/// that if need be. A bystander of such a name is what an earlier run has made of the same source, and is replaced. The
/// same designs in the same order get the same targets.
[[nodiscard]] std::vector<Conversion> planConversions(const DesignsOfFolder& designs,
                                                      const std::filesystem::path& folder,
                                                      const std::filesystem::path& outFolder,
                                                      const std::string& extension);

}  // namespace velamo
