#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "kshmi/print/json/record_watch.h"
#include "kshmi/print/json/structure_records.h"
#include "python/native/json_text.h"

namespace ks_hmi_python {

/// A change that is watched, and its report: what is told here of blocks, ports and items, and behind it what becomes
/// of signals and clients while this lives, for whatever reason.
class WatchedChange {
public:
    explicit WatchedChange(workbench::Session& session) : m_session(session), m_watch(session) {}
    /// Of one block's ports or chart items, which is nothing to the signals on others.
    WatchedChange(workbench::Session& session, const kestrel::Block& block)
        : m_session(session), m_watch(session, &block) {}

    using Lists = ChangeText;
    using List = std::string& (Lists::*)();
    void block(List list, const std::u16string& path, const std::u16string& from = {}) {
        tell(list, [&](workbench::JsonObject& object) {
            kshmi::appendBlock(object, full(path), from.empty() ? from : full(from));
        });
    }
    void port(List list, const kestrel::Block& block, const workbench::PortChange& change) {
        tell(list, [&](workbench::JsonObject& object) {
            kshmi::appendPort(object, m_session.model().fullPath(block), change);
        });
    }
    /// All of a renumbering.
    void ports(const kestrel::Block& block, const workbench::Renumbering& changes) {
        for (const workbench::PortChange& one : changes.ports)
            port(one.to == 0 ? &Lists::removed : &Lists::changed, block, one);
    }
    void item(List list, const kestrel::Block& block, const std::u16string& item, const std::u16string& from = {}) {
        tell(list, [&](workbench::JsonObject& object) {
            kshmi::appendItem(object, m_session.model().fullPath(block), item, from);
        });
    }
    void model(List list, const std::u16string& name, const std::u16string& from) {
        tell(list, [&](workbench::JsonObject& object) { kshmi::appendModel(object, name, from); });
    }

    std::string take(std::string_view command) {
        const kshmi::RecordWatch::Changes records = m_watch.changes();
        for (const std::string& one : records.added) m_text.added() += one;
        for (const std::string& one : records.changed) m_text.changed() += one;
        for (const std::string& one : records.removed) m_text.removed() += one;
        return m_text.take(command, m_session);
    }

private:
    std::u16string full(const std::u16string& path) const { return m_session.model().name() + u"/" + path; }
    template <class Members>
    void tell(List list, Members members) {
        workbench::JsonObject object((m_text.*list)());
        members(object);
        object.close();
    }

    workbench::Session& m_session;
    kshmi::RecordWatch m_watch;
    Lists m_text;
};

}  // namespace ks_hmi_python
