#include <fmt/format.h>

#include <set>
#include <utility>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/commands/selecting.h"
#include "kshmi/commands/several_files.h"
#include "kshmi/print/json/json_records.h"
#include "kshmi/print/reports/name_notice.h"
#include "kshmi/print/settings_text.h"
#include "kshmi/print/text_table.h"
#include "workbench/find/below.h"
#include "workbench/find/watching.h"
#include "workbench/session/script.h"
#include "workbench/session/session.h"
#include "workbench/text/text.h"

namespace kshmi {

namespace {

using namespace workbench;

struct PortsArguments {
    std::string file;
    SelectionArguments what;
    std::string below;
    std::string visualType;
    bool isHiddenListed = true;
    bool isJson = false;
};

using Source = ks_hmi::InstrumentedSignals::Source;

// The full path to list below, empty for all.
std::string fullBelow(const kestrel::Model& model, const std::string& text) {
    if (text.empty()) return {};
    const std::u16string below = resolveBelow(model, text);
    return toUtf8(below.empty() ? model.name() : model.name() + u"/" + below);
}

// Leaves the ports that are selected.
void narrow(const Session& session, const SelectionArguments& what, const Output& output,
            std::vector<Source>& sources) {
    std::set<std::pair<double, int>> ports;
    for (const SignalSource& source : selectOrAll(session.model(), what, output).sources())
        if (!source.item) ports.emplace(source.block->handle, source.port);
    std::erase_if(sources, [&](const Source& source) {
        return !ports.contains({source.blockHandle, source.outputPortIndex});
    });
}

std::u16string nameOfPort(const Source& source) {
    const kestrel::LoadedBlock found = kestrel::loadedModels().findByHandle(source.blockHandle);
    return found ? portName({found.block, source.outputPortIndex, std::nullopt}) : std::u16string();
}

std::string settingsText(const Source& source) {
    const SignalFlags flags{source.isFrameBased, source.hideInPLV, source.targetBufferedStreaming};
    return kshmi::settingsText(source.decimation, source.maxPoints, flags, {});
}

void printText(const Session& session, const std::vector<Source>& sources, const Output& output) {
    output.out << fmt::format("model {}: {}\n", printable(session.model().name()),
                              counted(sources.size(), "observed port"));
    if (sources.empty()) return;
    TextTable table({{"BLOCK"}, {"PORT", TextTable::Align::right}, {"PORT NAME"}, {"SIGNAL"}, {"SETTINGS"}});
    for (const Source& source : sources)
        table.add({printable(source.blockPath), std::to_string(source.outputPortIndex), printable(nameOfPort(source)),
                   printable(source.signalName), settingsText(source)});
    output.out << '\n';
    table.print(output.out, output.width);
}

void addPorts(const Session& session, const std::vector<Source>& sources, JsonMembers& json) {
    const SignalUuids uuids(session);
    json.object().text("model", session.model().name());
    listUnsettled(json, session);
    json.list("ports", sources, [&](const Source& source) {
        JsonObject object(json.text());
        const auto position = uuids.positionOf(source.uuid);
        if (position) appendSignalId(object, session, *position);
        object.text("block", source.blockPath).number("port", source.outputPortIndex);
        object.text("portName", nameOfPort(source)).text("name", source.signalName);
        object.number("decimation", source.decimation).number("maxPoints", source.maxPoints);
        object.truth("frameBased", source.isFrameBased).truth("hidden", source.hideInPLV);
        object.truth("buffered", source.targetBufferedStreaming).close();
    });
}

int listPorts(const PortsArguments& arguments, const std::string& file, JsonMembers* json, const Output& output) {
    const Session session(file);
    noticeNames(session, output.err);
    const HvArrayPtr model = script::modelObject(session.model().name());
    const std::string below = fullBelow(session.model(), arguments.below);
    std::vector<Source> sources;
    ks_hmi::InstrumentedSignals::getObservedPorts(model.get(), below.c_str(), arguments.visualType.c_str(), sources,
                                                  arguments.isHiddenListed, /*withUnsaved=*/true);
    if (isNarrowed(arguments.what)) narrow(session, arguments.what, output, sources);
    json ? addPorts(session, sources, *json) : printText(session, sources, output);
    return kSuccess;
}

void requireSense(const PortsArguments& arguments) { requireApplicable(arguments.what, false); }

}  // namespace

void addPorts(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<PortsArguments>();
    CLI::App* const command = addLookingCommand(app, "ports", "List the observed ports as an editor asks for them",
                                                "  kshmi ports cruise.json\n"
                                                "  kshmi ports cruise.json --below Sensors --no-hidden\n"
                                                "  kshmi ports cruise.json --all '*:valid'\n"
                                                "  kshmi ports cruise.json --visual-type dial --json\n"
                                                "  kshmi ports cruise.json plant.json",
                                                arguments->file);
    addSelection(*command, arguments->what);
    command->add_option("--below", arguments->below, "only at and below this path")->type_name("PATH");
    command->add_option("--visual-type", arguments->visualType, "only signals that feed this kind of display");
    command->add_flag("--hidden,!--no-hidden", arguments->isHiddenListed,
                      "list hidden signals, too, as is done unless --no-hidden is given");
    command->add_flag("--json", arguments->isJson, "print JSON");
    runOnFiles(*command, listPorts, arguments, run, requireSense);
}

}  // namespace kshmi
