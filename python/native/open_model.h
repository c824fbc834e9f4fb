#pragma once

#include <optional>
#include <string>

#include "python/native/host_turn.h"
#include "workbench/find/selecting.h"
#include "workbench/find/watching.h"
#include "workbench/session/session.h"
#include "workbench/text/text.h"

namespace ks_hmi_python {

/// A model that is open, as Python holds it.
class OpenModel final : public Held {
public:
    /// As `workbench::Session`.
    OpenModel(const std::string& path, workbench::Session::Opening opening) : m_session(std::in_place, path, opening) {}
    OpenModel(const std::string& path, workbench::ModelFile file) : m_session(std::in_place, path, std::move(file)) {}
    ~OpenModel() override = default;
    /// Throws `workbench::Error` when the model was closed.
    workbench::Session& session();
    bool isOpen() const noexcept { return m_session.has_value(); }
    void release() noexcept override { m_session.reset(); }

    std::string importReport;  ///< what the tool would print of the import that made it; empty without one

private:
    std::optional<workbench::Session> m_session;
};

/// A block with its outputs and what its chart has, as JSON.
std::string blockText(const workbench::Session& session, const kestrel::Block& block);

/// Warns of clients that have lost their signals since the watch was made.
void warnOfLost(const workbench::Session& session, const workbench::DanglingWatch& watch);

/// "a, b, c", for messages.
template <class Words>
std::string listedWords(const Words& words) {
    return workbench::listed(words, words.size(), [](const auto& word) { return word; });
}

/// What a selection's dictionary means in the model: "references", "all", "except", "kinds", "below", "activity",
/// "ssid". With kinds, exceptions and "below" alone, all of the model. Throws as `workbench::select`.
struct Chosen {
    workbench::Selected selected;
    workbench::ReferenceOptions options;
    bool isAsked = false;  ///< whether anything was, which is another thing than having found none
};
Chosen choose(const workbench::Session& session, const py::dict& selection);

/// Each adds its functions to the module.
void bindModels(py::module_& module);
void bindStructure(py::module_& module);
void bindMarking(py::module_& module);
void bindObserving(py::module_& module);
void bindFiles(py::module_& module);
void bindRuns(py::module_& module);

}  // namespace ks_hmi_python
