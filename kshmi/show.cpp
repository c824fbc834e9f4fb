#include <fmt/format.h>

#include <limits>

#include "kshmi/block_tree.h"
#include "kshmi/commands.h"
#include "kshmi/host_process.h"
#include "kshmi/host_value_writer.h"
#include "kshmi/text.h"
#include "kshmi/text_table.h"

namespace kshmi {

namespace {

using ks_hmi::SignalSpecification;

std::string flagsOf(const SignalSpecification& signal) {
    std::string flags;
    const auto add = [&](bool isSet, const char* name) {
        if (isSet) flags += (flags.empty() ? "" : ",") + std::string(name);
    };
    add(signal.m_isFrameBased, "frame-based");
    add(signal.m_hideInPLV, "hidden");
    add(signal.m_targetBufferedStreaming, "buffered");
    add(signal.m_excludeForSave, "not-saved");
    return flags;
}

std::vector<std::string> rowOf(const Session& session, std::size_t position) {
    const SignalSpecification& signal = *session.signals().get(position);
    const SignalSource source = sourceOf(session.model(), signal);
    std::string block = printable(source.block->path);
    if (!signal.m_subPath.empty()) block += "/" + printable(signal.m_subPath);
    return {std::to_string(position + 1),
            block,
            source.item ? "" : std::to_string(source.port),
            printable(portName(source)),
            printable(signal.m_signalName),
            signal.m_domainType.empty() ? "port" : printable(signal.m_domainType),
            printable(signal.getValueForDomainParams(u"Activity")),
            std::to_string(signal.m_decimation),
            std::to_string(signal.m_maxPoints),
            flagsOf(signal)};
}

void printText(const Session& session, const Output& output) {
    constexpr auto kRight = TextTable::Align::right;
    const std::size_t count = session.signals().getCount();
    output.out << fmt::format("model {}: {}, {}, {}\n", printable(session.model().name()),
                              counted(session.model().blocks().size(), "block"), counted(count, "signal"),
                              counted(session.clients().getCount(), "client"));
    if (count > 0) {
        TextTable table({{"#", kRight},
                         {"BLOCK"},
                         {"PORT", kRight},
                         {"PORT NAME"},
                         {"SIGNAL"},
                         {"DOMAIN"},
                         {"ACTIVITY"},
                         {"DECIMATION", kRight},
                         {"MAX POINTS", kRight},
                         {"FLAGS"}});
        for (std::size_t i = 0; i < count; ++i) table.add(rowOf(session, i));
        output.out << '\n';
        table.print(output.out);
    }
    if (session.model().blocks().empty()) return;
    output.out << "\nblocks ([x] observed)\n";
    printBlockTree(session, output, std::numeric_limits<std::size_t>::max() - 1);
}

/// One JSON object, member by member.
class JsonObject {
public:
    explicit JsonObject(std::string& out) : m_out(out) { m_out += '{'; }
    JsonObject& text(const char* key, std::u16string_view value) {
        return name(key), appendJsonText(m_out, value), *this;
    }
    JsonObject& plain(const char* key, const std::string& value) { return name(key), m_out += value, *this; }
    void close() { m_out += '}'; }

private:
    void name(const char* key) {
        m_out += fmt::format("{}\"{}\": ", m_isEmpty ? "" : ", ", key);
        m_isEmpty = false;
    }
    std::string& m_out;
    bool m_isEmpty = true;
};

std::string boolText(bool value) { return value ? "true" : "false"; }

void appendSignal(std::string& out, const Session& session, std::size_t position) {
    const SignalSpecification& signal = *session.signals().get(position);
    const SignalSource source = sourceOf(session.model(), signal);
    JsonObject object(out);
    object.plain("position", std::to_string(position + 1)).text("uuid", toUtf16(signal.m_uuid));
    object.text("block", source.block->path).text("subPath", signal.m_subPath);
    object.plain("port", std::to_string(source.port)).text("portName", portName(source));
    object.text("signal", signal.m_signalName).text("domain", signal.m_domainType);
    object.text("activity", signal.getValueForDomainParams(u"Activity"));
    object.text("ssid", signal.getValueForDomainParams(u"SSID"));
    object.plain("decimation", std::to_string(signal.m_decimation));
    object.plain("maxPoints", std::to_string(signal.m_maxPoints));
    object.plain("frameBased", boolText(signal.m_isFrameBased)).plain("hidden", boolText(signal.m_hideInPLV));
    object.plain("buffered", boolText(signal.m_targetBufferedStreaming)).text("visualType", signal.m_visualType);
    object.close();
}

std::string portsJson(const Session& session, const kestrel::Block& block) {
    std::string out = "[";
    for (int port = 1; port <= static_cast<int>(block.outputs.size()); ++port) {
        if (port > 1) out += ", ";
        JsonObject object(out);
        object.text("name", portName({&block, port, std::nullopt}));
        object.plain("observed", boolText(session.isObserved(block, port))).close();
    }
    return out + "]";
}

std::string itemsJson(const Session& session, const kestrel::Block& block) {
    std::string out = "[";
    const auto add = [&](const ChartItem& item) {
        if (out.size() > 1) out += ", ";
        JsonObject object(out);
        object.text("domain", item.domainType).text("subPath", item.subPath);
        object.plain("ssid", std::to_string(item.ssid));
        object.plain("observed", boolText(session.isAnyObserved(block, item))).close();
    };
    add({u"cw_chart", u"", 0});
    for (const auto& state : block.chart->states) add({u"cw_state", state.path, state.ssid});
    for (const auto& datum : block.chart->data) add({u"cw_data", datum.name, datum.ssid});
    return out + "]";
}

void appendBlock(std::string& out, const Session& session, const kestrel::Block& block) {
    JsonObject object(out);
    object.text("path", block.path).text("eid", toUtf16(block.eid)).plain("outputs", portsJson(session, block));
    if (block.chart) object.plain("chart", itemsJson(session, block));
    object.close();
}

void printJson(const Session& session, std::ostream& out) {
    std::string text = "{\"model\": ";
    appendJsonText(text, std::u16string_view(session.model().name()));
    text += ",\n\"signals\": [";
    for (std::size_t i = 0; i < session.signals().getCount(); ++i) {
        text += i > 0 ? ",\n  " : "\n  ";
        appendSignal(text, session, i);
    }
    text += "],\n\"blocks\": [";
    const char* separator = "\n  ";
    for (const kestrel::Block& block : session.model().blocks()) {
        text += separator;
        appendBlock(text, session, block);
        separator = ",\n  ";
    }
    out << text << fmt::format("],\n\"clients\": {}}}\n", session.clients().getCount());
}

}  // namespace

int runShow(const ShowArguments& arguments, const Output& output) {
    enterHost(output.err);
    const Session session(arguments.file);
    if (arguments.isJson)
        printJson(session, output.out);
    else
        printText(session, output);
    return kSuccess;
}

}  // namespace kshmi
