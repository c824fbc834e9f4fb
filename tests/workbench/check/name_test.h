#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tests/kshmi/kshmi_test.h"

namespace kshmi::testing {

/// A signal of a file: where it is, and what it was called.
struct Mark {
    std::string uuid;
    int port = 0;
    std::optional<std::string> markedName{};
    std::string eid = "1";
    std::string path = "A";
    std::string subPath{};
    std::string domain{};
    std::string params{};  ///< members of the object
};

inline std::string textOf(const Mark& mark) {
    std::string text = "{\"UUID\": \"" + mark.uuid + "\", \"BlockPath_\": \"" + mark.path + "\", \"EID_\": \"" +
                       mark.eid + "\", \"SubPath_\": \"" + mark.subPath +
                       "\", \"OutputPortIndex_\": " + std::to_string(mark.port) +
                       ", \"SignalName_\": \"\", \"SubSysPath_\": \"\", \"Decimation_\": 1, \"MaxPoints_\": 0, "
                       "\"DomainType_\": \"" +
                       mark.domain + "\", \"DomainParams_\": {" + mark.params + "}";
    if (mark.markedName) text += ", \"markedName\": \"" + *mark.markedName + "\"";
    return text + "}";
}

/// A client in one line.
inline std::string clientText(const std::string& uuid, const std::string& signal,
                              const std::string& type = "ks_scope_observer", const std::string& source = "m",
                              const std::string& params = "") {
    return "{\"UUID\": \"" + uuid + "\", \"ModelPath_\": [\"A\"], \"ModelPathEID_\": [\"1\"], \"SourceModel_\": \"" +
           source + "\", \"SignalUUID_\": \"" + signal + "\", \"ObserverType_\": \"" + type +
           "\", \"ObserverParams_\": {" + params + "}}";
}

inline std::string joined(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts) all += (all.empty() ? "\n" : ",\n") + text;
    return all;
}

/// The block "A" with those output ports, and a chart "L" with the state "On" (4) and the datum "n" (7).
inline std::string modelText(const std::string& outputs, const std::vector<Mark>& marks,
                             const std::vector<std::string>& clients = {}, const std::string& more = "") {
    std::vector<std::string> signals;
    for (const Mark& mark : marks) signals.push_back(textOf(mark));
    return R"({"kestrelModel": 1, "name": "m", "blocks": [{"path": "A", "eid": "1", "outputs": [)" + outputs +
           R"(]}, {"path": "L", "eid": "2", "outputs": [], "chart": {"states": [{"path": "On", "ssid": 4}], "data": )" +
           R"([{"name": "n", "ssid": 7}]}}], "signals": [)" + joined(signals) + "],\n\"clients\": [" + joined(clients) +
           "]" + more + "}\n";
}

}  // namespace kshmi::testing
