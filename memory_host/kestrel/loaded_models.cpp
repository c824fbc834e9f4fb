#include "memory_host/kestrel/loaded_models.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "host/text.h"

namespace kestrel {

namespace {

// Kept: fractional, so that code that squeezes a handle through an integer is found out.
double nextHandle() {
    constexpr double kFraction = 1.0 / 8192.0;
    static std::uint64_t count = 0;
    return static_cast<double>(++count) + kFraction;
}

void refuseOpen(const std::u16string& name) {
    const std::string text = fl::i18n::to_string(name);
    throw ModelError("A model named \"" + text + "\" is open already. Close it first.", text);
}

}  // namespace

LoadedModel::LoadedModel(Model model) : m_model(std::move(model)) {}

LoadedModel& Models::load(Model model) {
    if (find(model.name())) refuseOpen(model.name());
    auto loaded = std::make_unique<LoadedModel>(std::move(model));
    loaded->model().assignHandles(nextHandle);
    return *m_models.emplace_back(std::move(loaded));
}

bool Models::unload(std::u16string_view name) {
    const auto found =
        std::find_if(m_models.begin(), m_models.end(), [&](const auto& open) { return open->model().name() == name; });
    if (found == m_models.end()) return false;
    const std::unique_ptr<LoadedModel> closing = std::move(*found);
    m_models.erase(found);
    return true;
}

void Models::unloadAll() noexcept {
    const std::vector<std::unique_ptr<LoadedModel>> closing = std::move(m_models);
    m_models.clear();
}

LoadedModel* Models::find(std::u16string_view name) noexcept {
    for (const auto& open : m_models)
        if (open->model().name() == name) return open.get();
    return nullptr;
}

LoadedBlock Models::findByHandle(double blockHandle) noexcept {
    for (const auto& open : m_models)
        if (const Block* block = open->model().findByHandle(blockHandle)) return {open.get(), block};
    return {};
}

bool Models::rename(std::u16string_view oldName, std::u16string newName) {
    LoadedModel* open = find(oldName);
    if (!open) return false;
    if (LoadedModel* other = find(newName); other && other != open) refuseOpen(newName);
    open->model().rename(std::move(newName));
    return true;
}

Models& loadedModels() noexcept {
    // Never destroyed: at the end of the process the code behind the models' objects may be gone already.
    static Models& models = *new Models;
    return models;
}

}  // namespace kestrel
