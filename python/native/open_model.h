#pragma once

#include <optional>
#include <string>

#include "python/native/host_turn.h"
#include "workbench/find/selecting.h"
#include "workbench/session/session.h"

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

private:
    std::optional<workbench::Session> m_session;
};

/// What a selection's dictionary means in the model: "references", "all", "except", "kinds", "below", "activity",
/// "ssid". With kinds, exceptions and "below" alone, all of the model. Throws as `workbench::select`.
struct Chosen {
    workbench::Selected selected;
    workbench::ReferenceOptions options;
};
Chosen choose(const workbench::Session& session, const py::dict& selection);

/// Each adds its functions to the module.
void bindModels(py::module_& module);
void bindMarking(py::module_& module);
void bindObserving(py::module_& module);
void bindFiles(py::module_& module);
void bindRuns(py::module_& module);

}  // namespace ks_hmi_python
