#include "cli/plugin_info.h"

#include <cerrno>
#include <memory>
#include <optional>
#include <ostream>

#include "cli/design_json.h"
#include "plugin/host.h"
#include "reading/design_failure.h"
#include "reading/facts_bytes.h"
#include "reading/reader_failures.h"
#include "velamo/measure/length_formatter.h"
#include "velamo/model/failure.h"

namespace velamo {
namespace {

ExitStatus reportNoModule(const Console& console, const std::string& reason) {
    console.problems << "velamo: the importer plug-in cannot be loaded: " << reason << '\n';
    return ExitStatus::failure;
}

/// The plug-in does not say why it refuses a file: the library does.
FileOutcome reasonForRefusal(const std::string& file) {
    FileOutcome outcome = readFileFacts(file);
    auto* facts = std::get_if<FileFacts>(&outcome);
    if (facts != nullptr && std::holds_alternative<DesignFacts>(facts->content))
        facts->content = DesignFailure{std::string(systemErrorDomain), ENOTSUP, "the plug-in tells nothing of it"};
    return outcome;
}

FileOutcome askPlugin(PluginHost& host, const std::string& file) {
    const auto attributes = host.attributesOf(file);
    if (!attributes) return reasonForRefusal(file);
    DesignFacts facts;
    facts.attributes = *attributes;
    return FileFacts{std::move(facts)};
}

VLMError errorOf(const FileOutcome& outcome) {
    VLMError error;
    if (const auto* reason = std::get_if<std::error_code>(&outcome)) {
        failWithSystemError(reason->value(), &error);
        return error;
    }
    return errorOf(std::get<DesignFailure>(std::get<FileFacts>(outcome).content));
}

std::optional<DesignAttributes> attributesIn(const FileOutcome& outcome) {
    const auto* file = std::get_if<FileFacts>(&outcome);
    const auto* facts = file == nullptr ? nullptr : std::get_if<DesignFacts>(&file->content);
    return facts == nullptr ? std::nullopt : std::optional(facts->attributes);
}

FileOutcome ask(LastingWorker& worker, const std::string& file) {
    const auto reply = worker.ask({&file, 1}).at(0);
    if (const auto* death = std::get_if<WorkerDeath>(&reply)) return FileFacts{failureOf(errorOf(*death))};
    return outcomeOf(std::get<std::string>(reply));
}

void print(std::ostream& out, const std::string& file, const DesignAttributes& attributes, const Console& console) {
    const LengthFormatter lengths = LengthFormatter::ofUser();
    out << console.shown(file) << "\n  width     " << lengths.text(attributes.widthInMillimetres) << "\n  height    "
        << lengths.text(attributes.heightInMillimetres) << "\n  stitches  " << textOf(jsonCount(attributes.stitches))
        << "\n  colors    " << textOf(jsonCount(attributes.colors)) << '\n';
}

ExitStatus askForEach(LastingWorker& worker, std::span<const std::string> files, bool isJson, const Console& console) {
    auto status = ExitStatus::success;
    std::optional<JsonListWriter> list;
    if (isJson) list.emplace(console.out);
    for (const std::string& file : files) {
        const FileOutcome outcome = ask(worker, file);
        const auto attributes = attributesIn(outcome);
        if (!attributes) {
            status = ExitStatus::failure;
            reportProblem(console, file, errorOf(outcome));
            if (list) list->next() << textOf({{"file", file}, {"error", errorJson(errorOf(outcome))}});
        } else if (list) {
            Json json{{"file", file}};
            putAttributes(json, *attributes);
            list->next() << textOf(json);
        } else {
            print(console.out, file, *attributes, console);
        }
    }
    return status;
}

}  // namespace

ExitStatus pluginInfo(std::span<const std::string> files, bool isJson, const ReadingOptions& reading,
                      const Console& console) {
    const auto module = PluginHost::findModule();
    if (module.empty()) return reportNoModule(console, "it is not there; $VELAMO_IMPORTER may name it");
    std::shared_ptr<PluginHost> host;
    try {
        host = std::make_shared<PluginHost>(module);  // the worker gets its own copy
    } catch (const std::runtime_error& error) {
        return reportNoModule(console, error.what());
    }
    return withoutReaderLoss(console, [&] {
        const WorkerTask::Service serve = [host](const std::string& file) { return bytesOf(askPlugin(*host, file)); };
        LastingWorker worker({serve, workerLimitsOf(reading)});
        if (!reportConfinement(reading, worker.isConfined(), console)) return ExitStatus::failure;
        return askForEach(worker, files, isJson, console);
    });
}

}  // namespace velamo
