#pragma once

#include <cstddef>
#include <sstream>
#include <string>
#include <string_view>

#include "kshmi/print/json/json_document.h"
#include "kshmi/print/json/json_records.h"
#include "workbench/find/positions.h"
#include "workbench/find/watching.h"
#include "workbench/json/json_object.h"

/// Reports of this module: the same names and forms as the tool prints.
namespace ks_hmi_python {

inline void appendSignalThing(std::string& out, const workbench::Session& session, std::size_t position) {
    workbench::JsonObject object(out);
    object.text("kind", std::string_view("signal"));
    kshmi::appendSignal(object, session, position);
    object.close();
}

inline void appendClientThing(std::string& out, const workbench::Session& session, std::size_t position,
                              const workbench::SignalUuids& uuids) {
    workbench::JsonObject object(out);
    object.text("kind", std::string_view("client"));
    kshmi::appendClient(object, *session.clients().get(position), position, session, uuids);
    object.close();
}

/// The whole document, as the tool prints it.
inline std::string textOf(kshmi::JsonDocument& document) {
    std::ostringstream out;
    document.print(out);
    return out.str();
}

/// A report of what has changed: the lists are filled in by their elements, each with its comma. Nothing is saved by
/// it.
class ChangeText {
public:
    std::string& added() { return next(m_added); }
    std::string& changed() { return next(m_changed); }
    std::string& removed() { return next(m_removed); }
    std::string& skipped() { return next(m_skipped); }
    std::string& unchanged() { return next(m_unchanged); }

    std::string take(std::string_view command, const workbench::Session& session) const {
        constexpr const workbench::JsonLayout& kLayout = kshmi::JsonDocument::kElements;
        kshmi::JsonDocument document(command);
        workbench::JsonObject& object = document.object();
        object.text("file", std::string_view(session.path())).text("model", session.model().name());
        object.truth("dryRun", false).truth("saved", false);
        const auto list = [&](const char* name, const std::string& elements) {
            std::string& out = object.name(name).out() += '[';
            if (!elements.empty()) (out += kLayout.first).append(elements) += kLayout.last;
            out += ']';
        };
        list("added", m_added);
        list("changed", m_changed);
        list("removed", m_removed);
        list("skipped", m_skipped);
        list("unchanged", m_unchanged);
        return textOf(document);
    }

private:
    static std::string& next(std::string& list) {
        if (!list.empty()) list += kshmi::JsonDocument::kElements.between;
        return list;
    }

    std::string m_added, m_changed, m_removed, m_skipped, m_unchanged;
};

}  // namespace ks_hmi_python
