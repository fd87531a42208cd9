#include "cli/hoops.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iomanip>
#include <memory>
#include <ostream>

#include "cli/commands.h"
#include "cli/design_json.h"
#include "velamo/platform/system/user.h"
#include "velamo/platform/text/number_format.h"

namespace velamo {
namespace {

using Hoops = std::optional<std::vector<HoopHandle>>;

Hoops hoopsOf(const std::optional<std::string>& vendor) {
    return vendor ? VLMDesign::allHoopsFromVendor(*vendor) : VLMDesign::hoops();
}

ExitStatus refuseVendor(const std::string& vendor, const Console& console) {
    reportWrongUsage(console, "there are no hoops of '" + vendor + "'; vendors are Janome and Pfaff");
    return ExitStatus::wrongUsage;
}

/// "round, several positions, not chosen automatically": what is unusual about a hoop.
std::string remarksOn(const VLMHoop& hoop) {
    std::string remarks;
    const auto add = [&remarks](bool applies, std::string_view remark) {
        if (!applies) return;
        remarks += remarks.empty() ? "  " : ", ";
        remarks += remark;
    };
    add(hoop.isRounded(), "round");
    add(hoop.isMultiHoop(), "several positions");
    add(!hoop.isWritable(), "not chosen automatically");
    return remarks;
}

void print(const VLMHoop& hoop, const LocaleDigits& digits, std::ostream& out) {
    constexpr int vendorWidth = 8;
    constexpr std::size_t codeWidth = 4;
    const std::string code = std::to_string(hoop.code());
    out << std::left << std::setw(vendorWidth) << hoop.vendor().value_or("")
        << std::string(codeWidth - std::min(codeWidth, code.size()), ' ') << digits.writing(code) << "  "
        << hoop.name().value_or("") << "  " << digits.writing(hoop.sizeString()) << remarksOn(hoop) << '\n';
}

}  // namespace

ExitStatus hoops(const std::optional<std::string>& vendor, const Console& console) {
    const Hoops found = hoopsOf(vendor);
    if (!found) return refuseVendor(*vendor, console);
    const LocaleDigits digits(numberLocaleOfUser());
    for (const HoopHandle& hoop : *found) print(*hoop, digits, console.out);
    return ExitStatus::success;
}

ExitStatus hoopsAsJson(const std::optional<std::string>& vendor, const Console& console) {
    const Hoops found = hoopsOf(vendor);
    if (!found) return refuseVendor(*vendor, console);
    Json list = Json::array();
    for (const HoopHandle& hoop : *found) list.push_back(hoopJson(hoop));
    console.out << listTextOf(list);
    return ExitStatus::success;
}

void describeHoops(CLI::App& program, Action& chosen) {
    auto* command = program.add_subcommand("hoops", "List the embroidery hoops of the machine vendors");
    const auto vendor = std::make_shared<std::optional<std::string>>();
    const auto isJson = std::make_shared<bool>(false);
    command->add_option("--vendor", *vendor, "Only the hoops of this vendor, Janome or Pfaff");
    command->add_flag("--json", *isJson, "Print a JSON list with an object for each hoop");
    command->callback([&chosen, vendor, isJson] {
        chosen = [vendor, isJson](const Console& console) {
            return *isJson ? hoopsAsJson(*vendor, console) : hoops(*vendor, console);
        };
    });
}

}  // namespace velamo
