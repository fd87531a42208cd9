#include "velamo/formats/thread_file.h"

#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include "velamo/model/failure.h"
#include "velamo/platform/plist/old_archive.h"
#include "velamo/platform/plist/property_list.h"
#include "velamo/platform/system/files.h"

namespace velamo {
namespace {

constexpr std::int64_t currentVersion = 2;

std::int64_t versionOf(const PropertyList& entry) {
    const PropertyList* version = entry.find("threadfileversion");
    return version ? version->integer().value_or(0) : 0;
}

Text textOf(const PropertyList& entry, std::string_view key) {
    const PropertyList* found = entry.find(key);
    const std::string* text = found ? found->as<std::string>() : nullptr;
    return text ? Text(*text) : Text();
}

double componentOf(const PropertyList& entry, std::string_view key) {
    const PropertyList* found = entry.find(key);
    return static_cast<float>(found ? found->number().value_or(0) : 0);
}

std::optional<VLMColor> currentColor(const PropertyList& entry) {
    return VLMColor::initWithRedgreenblue(componentOf(entry, "red"), componentOf(entry, "green"),
                                          componentOf(entry, "blue"));
}

std::optional<VLMColor> formerColor(const PropertyList& entry) {
    const PropertyList* found = entry.find("color");
    const auto* data = found ? found->as<PropertyList::Data>() : nullptr;
    const auto components = data ? colorFromOldArchive(*data) : std::nullopt;
    if (!components) return std::nullopt;
    return VLMColor::initWithRedgreenblue((*components)[0], (*components)[1], (*components)[2]);
}

/// The thread of an entry; nothing when it cannot be read, so that the count of threads no longer matches.
std::optional<VLMThread> threadOf(const PropertyList& entry) {
    if (entry.as<PropertyList::Dictionary>() == nullptr) return std::nullopt;
    const auto color = versionOf(entry) == currentVersion ? currentColor(entry) : formerColor(entry);
    if (!color) return std::nullopt;
    return VLMThread::initWithColorandNameforKeyofPalettewithName(
        *color, textOf(entry, "name"), textOf(entry, "key"), textOf(entry, "palette"), textOf(entry, "paletteName"));
}

PropertyList entryOf(const VLMThread& thread) {
    const VLMColor& color = thread.color();
    PropertyList::Dictionary entry;
    const auto put = [&](const char* key, PropertyList::Value value) { entry.emplace(key, std::move(value)); };
    put("threadfileversion", currentVersion);
    for (const auto& [key, text] :
         {std::pair{"name", &thread.name()}, std::pair{"key", &thread.key()}, std::pair{"palette", &thread.palette()},
          std::pair{"paletteName", &thread.paletteName()}})
        if (*text) put(key, **text);
    put("red", double{static_cast<float>(color.red())});
    put("green", double{static_cast<float>(color.green())});
    put("blue", double{static_cast<float>(color.blue())});
    return PropertyList(std::move(entry));
}

}  // namespace

std::filesystem::path threadFileOf(std::filesystem::path url) {
    return url.replace_extension("threads");
}

bool takeThreadsOfSideFile(VLMDesign& design, const std::filesystem::path& url) {
    return takeThreadsOf(design, readWholeFile(threadFileOf(url)));
}

bool takeThreadsOf(VLMDesign& design, std::span<const std::uint8_t> sideFile) {
    const auto list = sideFile.empty() ? std::nullopt : parsePropertyList(sideFile);
    const auto* entries = list ? list->as<PropertyList::Array>() : nullptr;
    if (entries == nullptr) return false;
    std::vector<VLMThread> threads;
    threads.reserve(entries->size());
    for (const PropertyList& entry : *entries)
        if (auto thread = threadOf(entry)) threads.push_back(std::move(*thread));
    if (threads.size() != design.threads().size()) return false;
    design.threads().all() = std::move(threads);
    return true;
}

bool importThreadsForDesign(VLMDesign& design, const std::filesystem::path& url) noexcept {
    return operation(nullptr, [&] { return takeThreadsOfSideFile(design, url); });
}

std::vector<std::uint8_t> threadFileWith(const std::vector<VLMThread>& threads) {
    PropertyList::Array entries;
    entries.reserve(threads.size());
    for (const VLMThread& thread : threads) entries.push_back(entryOf(thread));
    return xmlPropertyList(PropertyList(std::move(entries)));
}

bool exportThreadsForDesign(const VLMDesign& design, const std::filesystem::path& url) noexcept {
    static_cast<void>(
        operation(nullptr, [&] { return !replaceFile(threadFileOf(url), threadFileWith(design.threads().all())); }));
    return true;
}

bool deleteThreadsFromDesign(const VLMDesign&, const std::filesystem::path& url) noexcept {
    return operation(nullptr, [&] {
        std::error_code failure;
        std::filesystem::remove(threadFileOf(url), failure);
        return !failure;
    });
}

}  // namespace velamo
