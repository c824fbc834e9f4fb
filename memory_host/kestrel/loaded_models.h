#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/api.h"
#include "host/hv_array.h"
#include "memory_host/kestrel/model.h"

namespace kestrel {

/// A model that is open, with the host objects that hold its signals and its observers. Both are set
/// by whoever opens the model and released when it is unloaded; null until then.
class OX_API LoadedModel {
public:
    explicit LoadedModel(Model model);  ///< Without signals and observers.

    Model& model() noexcept { return m_model; }              ///< To change its blocks.
    const Model& model() const noexcept { return m_model; }  ///< To look.

    /// Borrowed: a 1x1 "Kestrel.HMI.InstrumentedSignals" object, or null.
    hvArray* signals() noexcept { return m_signals.get(); }
    const hvArray* signals() const noexcept { return m_signals.get(); }                     ///< The same, to look.
    void setSignals(HvArrayPtr signals) noexcept { m_signals = kept(std::move(signals)); }  ///< Releases the earlier.
    /// Positions (1-based) at which signals were found last, by UUID. A hint: the set may have changed since,
    /// and of several signals with one UUID it may be any.
    std::unordered_map<std::u16string, double>& foundSignals() noexcept { return m_foundSignals; }

    /// Borrowed: a 1x1 "Kestrel.HMI.StreamingClients" object, or null.
    hvArray* clients() noexcept { return m_clients.get(); }
    const hvArray* clients() const noexcept { return m_clients.get(); }                     ///< The same, to look.
    void setClients(HvArrayPtr clients) noexcept { m_clients = kept(std::move(clients)); }  ///< As `setSignals`.

private:
    static HvArrayPtr kept(HvArrayPtr value) noexcept {
        hvSetArrayScope(value.get(), nullptr);
        return value;
    }

    Model m_model;
    HvArrayPtr m_signals;
    std::unordered_map<std::u16string, double> m_foundSignals;
    HvArrayPtr m_clients;
};

/// A block and the loaded model that it is in. Both null when nothing was found.
struct LoadedBlock {
    LoadedModel* owner = nullptr;                                         ///< not owned
    const Block* block = nullptr;                                         ///< not owned; valid until a block is removed
    explicit operator bool() const noexcept { return block != nullptr; }  ///< Whether anything was found.
};

/// The models that are open in this process.
class OX_API Models {
public:
    /// Opens a model: every block gets a handle that no block had before in this process. The result
    /// lives until the model is unloaded. Throws `ModelError` when one of that name is open.
    LoadedModel& load(Model model);
    /// Releases the model's host objects, then the model. False when no model of that name is open.
    bool unload(std::u16string_view name);
    void unloadAll() noexcept;  ///< As `unload`, each.

    /// Null when no such model is open.
    LoadedModel* find(std::u16string_view name) noexcept;
    /// The block of that handle in any open model.
    LoadedBlock findByHandle(double blockHandle) noexcept;
    /// Renames an open model; its host objects are not told. False when `oldName` is not open. Throws
    /// `ModelError` when `newName` is bad or belongs to another open model.
    bool rename(std::u16string_view oldName, std::u16string newName);
    const std::vector<std::unique_ptr<LoadedModel>>& all() const noexcept { return m_models; }  ///< Oldest first.

private:
    std::vector<std::unique_ptr<LoadedModel>> m_models;
};

/// The one registry of this process.
OX_API Models& loadedModels() noexcept;

}  // namespace kestrel
