#include <fmt/format.h>

#include <filesystem>

#include "observers/signal_client.h"
#include "python/native/define.h"
#include "python/native/json_text.h"
#include "python/native/open_model.h"
#include "signals/signal_specification.h"
#include "workbench/change/renaming.h"
#include "workbench/find/asking.h"
#include "workbench/find/client_names.h"
#include "workbench/find/reference.h"
#include "workbench/find/selecting_clients.h"
#include "workbench/model_file/model_file.h"
#include "workbench/session/records.h"
#include "workbench/text/text.h"

namespace ks_hmi_python {

using namespace workbench;

Session& OpenModel::session() {
    if (!m_session) throw Error("the model was closed; open it again");
    return *m_session;
}

namespace {

using ModelPtr = std::shared_ptr<OpenModel>;

// One may be replaced only when a caller says so; to look first is enough for what is in nobody else's way.
void requireNoFile(const std::string& path) {
    if (std::filesystem::exists(std::filesystem::symlink_status(path)))
        throw Error({path}, "exists already; open it, or give another name", ErrorCode::file);
}

ModelPtr openModel(const std::string& path, bool isDangling) {
    using enum Session::Opening;
    ModelPtr model = makeHeld<OpenModel>(path, isDangling ? lenient : strict);
    if (const std::size_t count = model->session().names().unsettled().size(); count > 0)
        warn(path + ": " + counted(count, "mark") +
             (count == 1 ? " does not stand where it was made" : " do not stand where they were made") +
             "; check() tells more, and nothing is saved before that is settled");
    return model;
}

ModelPtr newModel(const std::string& path, const std::string& name) {
    requireNoFile(path);
    return makeHeld<OpenModel>(path, newModelFile(requireModelName(name)));
}

void tellSaved(const Session& session, const Session::SaveResult& saved) {
    for (const std::string& warning : saved.warnings) warn(session.fileName() + ": " + warning);
    if (saved.leftOut > 0) warn(counted(saved.leftOut, "signal") + " excluded from saving, and not in the file");
}

// What was let in although it dangles cannot be saved, and trying again does not help.
[[noreturn]] void explain(const Session& session, const Error& error) {
    for (const SignalFault& fault : faultsOf(session.signals(), session.model()))
        if (fault.isDangling)
            throw Error(error.place(),
                        fmt::format("not saved, the file is as it was: signal {} is on {}, which the model no longer "
                                    "has; unmark(dangling=True) removes such signals",
                                    fault.position + 1, nameOfSignal(session, fault.position)),
                        ErrorCode::model);
    throw error;
}

template <class Save>
void saving(OpenModel& model, Save save) {
    try {
        tellSaved(model.session(), save(model.session()));
    } catch (const Error& error) {
        if (error.code() == ErrorCode::host) explain(model.session(), error);
        throw;
    }
}

void save(OpenModel& model) {
    saving(model, [](Session& session) { return session.save(); });
}

void saveAs(OpenModel& model, const std::string& path, bool replaces) {
    using enum Session::Existing;
    saving(model, [&](Session& session) { return session.saveAs(path, replaces ? replace : refuse); });
}

void appendPlace(std::string& out, const Session& session, const SignalSource& source) {
    JsonObject object(out);
    kshmi::appendAnswer(object, session.model(), ask(session, source));
    object.close();
}

std::vector<SignalSource> portsOf(const kestrel::Block& block) {
    std::vector<SignalSource> ports;
    for (std::size_t i = 0; i < block.outputs.size(); ++i) ports.push_back({&block, static_cast<int>(i) + 1, {}});
    return ports;
}

std::vector<SignalSource> itemsOf(const kestrel::Block& block) {
    std::vector<SignalSource> items;
    for (ChartItem& item : chartItemsOf(block)) items.push_back({&block, 0, std::move(item)});
    return items;
}

void appendBlock(std::string& out, const Session& session, const kestrel::Block& block) {
    const auto place = [&](const SignalSource& source) { appendPlace(out, session, source); };
    JsonObject object(out);
    object.text("block", session.model().fullPath(block)).text("eid", std::string_view(block.eid)).name("outputs");
    appendJsonArray(out, portsOf(block), place);
    if (block.chart) {
        object.name("chart");
        appendJsonArray(out, itemsOf(block), place);
    }
    object.close();
}

// What a sequence of Python has, or has not: that is told by its own kind of error there.
template <class Find>
auto lookedUp(Find find) {
    try {
        return find();
    } catch (const Error& error) {
        throw Error(error.text(), ErrorCode::noMatch, error.remedy());
    }
}

// Elements `from` to `to` of a list, 0-based.
template <class Append>
std::string slice(std::size_t from, std::size_t to, Append append) {
    std::string out;
    JsonArray array(out);
    for (std::size_t i = from; i < to; ++i) {
        array.next();
        append(out, i);
    }
    array.close();
    return out;
}

std::string blocks(OpenModel& model, std::size_t from, std::size_t to) {
    Session& session = model.session();
    return slice(from, to,
                 [&](std::string& out, std::size_t i) { appendBlock(out, session, session.model().blocks().at(i)); });
}

std::string blockCalled(OpenModel& model, const std::string& path) {
    const Session& session = model.session();
    return lookedUp([&] { return blockText(session, resolveBlock(session.model(), path)); });
}

// The ports that positions count, block after block.
std::size_t portCount(OpenModel& model) {
    std::size_t count = 0;
    for (const kestrel::Block& block : model.session().model().blocks()) count += block.outputs.size();
    return count;
}

std::string ports(OpenModel& model, std::size_t from, std::size_t to) {
    std::string out;
    JsonArray array(out);
    std::size_t position = 0;
    for (const kestrel::Block& block : model.session().model().blocks()) {
        for (std::size_t i = 0; i < block.outputs.size(); ++i, ++position) {
            if (position < from || position >= to) continue;
            array.next();
            appendPlace(out, model.session(), {&block, static_cast<int>(i) + 1, {}});
        }
    }
    array.close();
    return out;
}

std::string portNameOf(OpenModel& model, const std::string& reference) {
    const kestrel::Model& blocks = model.session().model();
    const std::vector<SignalSource> sources = lookedUp([&] { return resolveReference(blocks, reference, {}); });
    if (sources.size() != 1 || sources.front().item)
        throw Error(inQuotes(reference) + ": is not one port; say which, as in \"block:1\" or \"block:name\"",
                    sources.front().item ? ErrorCode::noMatch : ErrorCode::request);
    std::string out;
    appendPlace(out, model.session(), sources.front());
    return out;
}

std::string signals(OpenModel& model, std::size_t from, std::size_t to) {
    return slice(from, to, [&](std::string& out, std::size_t i) { appendSignalThing(out, model.session(), i); });
}

std::string clients(OpenModel& model, std::size_t from, std::size_t to) {
    const SignalUuids uuids(model.session());
    return slice(from, to, [&](std::string& out, std::size_t i) { appendClientThing(out, model.session(), i, uuids); });
}

std::string origin(OpenModel& model) {
    const std::optional<Origin>& origin = model.session().origin();
    if (!origin) return "null";
    std::string out;
    JsonObject object(out);
    object.text("kind", origin->kind).text("version", origin->version).text("file", origin->file);
    object.text("hash", origin->hash).truth("locals", origin->locals).close();
    return out;
}

std::string importReport(OpenModel& model) { return model.importReport; }
std::size_t signalCount(OpenModel& model) { return model.session().signals().getCount(); }
std::size_t clientCount(OpenModel& model) { return model.session().clients().getCount(); }
std::size_t blockCount(OpenModel& model) { return model.session().model().blocks().size(); }
std::string name(OpenModel& model) { return toUtf8(model.session().model().name()); }
std::string path(OpenModel& model) { return model.session().path(); }
std::string text(OpenModel& model) { return model.session().text(); }

// What a reference stands for where no record has it as its UUID.
Selected sourcesCalled(const Session& session, const std::string& call, const char* kind, Remedy remedy) {
    try {
        Selected selected;
        selected.matching = resolveReference(session.model(), call, {});
        return selected;
    } catch (const Error& error) {
        throw Error(fmt::format("no {} has this UUID, and as a reference: {}", kind, error.text()), ErrorCode::noMatch,
                    remedy);
    }
}

template <class Set>
std::size_t theOnly(const Positions& found, const Set& set, const std::string& call, const char* kind, Remedy remedy) {
    if (found.size() == 1) return found.front();
    if (found.empty())
        throw Error(fmt::format("{}: there is no {} on it", inQuotes(call), kind), ErrorCode::noMatch, remedy);
    const auto uuidOf = [&](std::size_t position) { return set.get(position)->m_uuid; };
    throw Error(fmt::format("{}: there are {} on it; take one by its UUID: {}", inQuotes(call),
                            counted(found.size(), kind), listed(found, 3, uuidOf)),
                ErrorCode::request);
}

std::size_t signalNumber(OpenModel& model, const std::string& call) {
    const Session& session = model.session();
    if (const auto found = SignalUuids(session).positionOf(call)) return *found;
    const Selected selected = sourcesCalled(session, call, "signal", Remedy::listSignals);
    return theOnly(signalsOn(session, selected, {}), session.signals(), call, "signal", Remedy::listSignals);
}

std::size_t clientNumber(OpenModel& model, const std::string& call) {
    const Session& session = model.session();
    for (const auto& [position, client] : numbered(session.clients()))
        if (client.m_uuid == call) return position;
    const Selected selected = sourcesCalled(session, call, "client", Remedy::listClients);
    return theOnly(selectClients(session, &selected, {}, {}), session.clients(), call, "client", Remedy::listClients);
}

}  // namespace

std::string blockText(const Session& session, const kestrel::Block& block) {
    std::string out;
    appendBlock(out, session, block);
    return out;
}

void bindModels(py::module_& module) {
    py::class_<OpenModel, ModelPtr>(module, "Model")
        .def_property_readonly("isOpen", &OpenModel::isOpen)
        .def("close", [](OpenModel& model) { inHost([&] { model.release(); }); });
    define(module, "openModel", openModel);
    define(module, "newModel", newModel);
    define(module, "save", save);
    define(module, "saveAs", saveAs);
    define(module, "name", name);
    define(module, "path", path);
    define(module, "text", text);
    define(module, "origin", origin);
    define(module, "importReport", importReport);
    define(module, "blocks", blocks);
    define(module, "blockCalled", blockCalled);
    define(module, "portCount", portCount);
    define(module, "ports", ports);
    define(module, "portCalled", portNameOf);
    define(module, "signals", signals);
    define(module, "signalNumber", signalNumber);
    define(module, "clients", clients);
    define(module, "clientNumber", clientNumber);
    define(module, "blockCount", blockCount);
    define(module, "signalCount", signalCount);
    define(module, "clientCount", clientCount);
}

}  // namespace ks_hmi_python
