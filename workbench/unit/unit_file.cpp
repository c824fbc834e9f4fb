#include "workbench/unit/unit_file.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <string_view>

#include "workbench/import/archive.h"
#include "workbench/import/foreign_file.h"
#include "workbench/import/xml_file.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

#if defined(__x86_64__)
constexpr std::string_view kMachine = "x86_64";
constexpr std::string_view kPlatform2 = "linux64";
#elif defined(__i386__)
constexpr std::string_view kMachine = "x86";
constexpr std::string_view kPlatform2 = "linux32";
#elif defined(__aarch64__)
constexpr std::string_view kMachine = "aarch64";
constexpr std::string_view kPlatform2 = "aarch64-linux";
#else
constexpr std::string_view kMachine = "unknown";
constexpr std::string_view kPlatform2 = "unknown";
#endif

// With the bytes that mark UTF-8.
constexpr const char* kBlanksAndMark = " \t\r\n\xEF\xBB\xBF";

[[noreturn]] void refuse(const std::string& path, const std::string& text, Remedy remedy = Remedy::none) {
    throw Error({path}, text, ErrorCode::model, remedy);
}

std::string platformOf(int major) { return major == 2 ? std::string(kPlatform2) : std::string(kMachine) + "-linux"; }

std::string binaryOf(const FmiDescription& description) {
    return fmt::format("binaries/{}/{}.so", platformOf(description.major), *description.coSimulation);
}

// "darwin64" and "win64": what the archive has binaries for.
std::set<std::string> platformsIn(const Archive& archive) {
    std::set<std::string> platforms;
    for (const std::string& name : archive.names()) {
        constexpr std::string_view kFolder = "binaries/";
        const std::size_t end = name.find('/', kFolder.size());
        if (name.starts_with(kFolder) && end != std::string::npos)
            platforms.insert(printable(std::string_view(name).substr(kFolder.size(), end - kFolder.size())));
    }
    return platforms;
}

void requireRunnable(const std::string& path, const FmiDescription& description) {
    if (description.major == 1) refuse(path, "is a unit of FMI 1.0, which is not run; export it as 2.0 or 3.0");
    if (!description.coSimulation)
        refuse(path, fmt::format("is a unit for {}; export it for co-simulation",
                                 description.modelExchange ? "model exchange only, which would need a solver"
                                                           : "scheduled execution only, which would need a scheduler"));
    if (description.abilities.needsProgram)
        refuse(path, "only runs together with the program that it comes from; export it as one that stands alone");
    if (description.coSimulation->empty() || description.coSimulation->find('/') != std::string::npos)
        refuse(path, "does not say what its binary is called (modelIdentifier); have it exported again");
}

void requireBinary(const std::string& path, const FmiDescription& description, const Archive& archive) {
    if (archive.has(binaryOf(description))) return;
    const std::set<std::string> platforms = platformsIn(archive);
    const std::string wanted = platformOf(description.major);
    const std::string binary = printable(std::string_view(binaryOf(description)));
    if (platforms.empty()) refuse(path, "holds no binaries; have it exported with one for " + wanted);
    if (platforms.contains(wanted))
        refuse(path, fmt::format("has no {}, as its description calls it (modelIdentifier), but something else there; "
                                 "have it exported again",
                                 binary));
    refuse(path, fmt::format("has no {}, which this machine needs, but binaries for: {}; have it exported for {}",
                             binary, fmt::join(platforms, ", "), wanted));
}

}  // namespace

FmiDescription readUnitFile(const std::string& path) {
    ForeignDocument document = readForeignFile(path);
    const bool isDescription = document.bytes.find_first_not_of(kBlanksAndMark) == document.bytes.find('<');
    if (!document.isPacked && isDescription)
        refuse(path, "is a description only, without the unit itself", Remedy::nameUnit);
    if (!document.isPacked) refuse(path, "is not a unit, which is a ZIP archive", Remedy::nameUnit);
    ImportNotes notes;
    const XmlFile xml(std::move(document.name), std::move(document.bytes), notes);
    if (localName(xml.root().name()) != "fmiModelDescription")
        refuse(path, "is a system structure, not a unit; only units of FMI can be run");
    FmiDescription description = readFmiDescription(xml, notes, notes);
    requireRunnable(path, description);
    requireBinary(path, description, Archive::ofFile(path));
    return description;
}

UnitStart unpackUnit(const std::string& path, const FmiDescription& description, const std::string& folder) {
    Archive::ofFile(path).extractTo(folder);
    std::error_code ignored;
    std::filesystem::create_directories(folder + "/resources", ignored);
    UnitStart start;
    start.major = description.major;
    start.library = fmt::format("{}/{}", folder, binaryOf(description));
    start.resources = folder + "/resources";
    start.name = description.name;
    start.token = description.token;
    start.usesEvents = description.abilities.hasEventMode;
    return start;
}

}  // namespace workbench
