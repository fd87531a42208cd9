#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace velamo {

/// One design that is to be converted, and where the new one goes.
struct Conversion {
    std::filesystem::path source;
    std::filesystem::path target;
};

/// Whether designs of `folder` lie below `outFolder`, links resolved, because it is a folder somewhere inside the one
/// that is read: they were written there and are no sources. Where `folder` itself is `outFolder` or lies below it,
/// nothing is left out.
class OutputFolder {
public:
    OutputFolder(const std::filesystem::path& outFolder, const std::filesystem::path& folder);
    [[nodiscard]] bool holds(const std::filesystem::path& listedFolder) const;

private:
    std::filesystem::path place_;  // empty where it holds none of the folder's designs
};

/// Gives each design a target of its own below `outFolder`, at the place that it has below `folder`, with its stem and
/// the new extension. No target leads onto another one, onto a design that is read, or to a name whose side file is
/// that of another design, also where links lead there and on file systems to which "Rose" and "rose" are one name:
/// then it keeps its old extension as well ("rose.dst.pes"), and has a number behind that if need be. The same designs
/// in the same order get the same targets.
[[nodiscard]] std::vector<Conversion> planConversions(const std::vector<std::filesystem::path>& designs,
                                                      const std::filesystem::path& folder,
                                                      const std::filesystem::path& outFolder,
                                                      const std::string& extension);

}  // namespace velamo
