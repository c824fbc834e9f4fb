#include "memory_host/kestrel/alignment.h"

#include "host/text.h"
#include "memory_host/kestrel/host_values.h"
#include "memory_host/orvex/calls/errors.h"

namespace kestrel {

namespace {

std::u16string modelOfEid(std::string_view fullEid) {
    return fl::i18n::to_ustring(std::string(fullEid.substr(0, fullEid.find(':'))).c_str());
}

template <class Text>
Text afterFirst(Text text, typename Text::value_type separator) {
    const std::size_t at = text.find(separator);
    return at == Text::npos ? Text() : text.substr(at + 1);
}

[[noreturn]] void refuse(const std::u16string& modelName, const std::string& reference) {
    const bool isOpen = loadedModels().find(modelName) != nullptr;
    orvex::raise(isOpen ? "BlockNotFound" : "ModelNotOpen",
                 "The block " + reference + " cannot be found: " +
                     (isOpen ? "the model " + quoted(modelName) + " has no such block."
                             : "no model named " + quoted(modelName) + " is open."));
}

}  // namespace

LoadedBlock findByFullEid(std::string_view fullEid) {
    LoadedModel* owner = loadedModels().find(modelOfEid(fullEid));
    const Block* block = owner ? owner->model().findByEid(afterFirst(fullEid, ':')) : nullptr;
    return block ? LoadedBlock{owner, block} : LoadedBlock{};
}

LoadedBlock findByFullPath(std::u16string_view fullPath) {
    LoadedModel* owner = loadedModels().find(modelOfPath(fullPath));
    const Block* block = owner ? owner->model().findByPath(afterFirst(fullPath, u'/')) : nullptr;
    return block ? LoadedBlock{owner, block} : LoadedBlock{};
}

std::u16string_view modelOfPath(std::u16string_view fullPath) { return fullPath.substr(0, fullPath.find(u'/')); }

const Block* signalBlock(const Model& model, std::string_view eid, const std::u16string& path, PathFallback fallback) {
    return onSignalBlock(
        eid, path, fallback, [&](std::string_view text) { return model.findByEid(text); },
        [&](const std::u16string& text) { return model.findByPath(text); });
}

LoadedBlock signalBlock(std::string_view fullEid, std::u16string_view fullPath) {
    return onSignalBlock(fullEid, fullPath, PathFallback::withoutEid, findByFullEid, findByFullPath);
}

LoadedBlock signalBlock(const hvArray* signal) {
    const std::u16string eid = textProperty(signal, "EID_");
    return signalBlock(fl::i18n::to_string(eid), textProperty(signal, "BlockPath_"));
}

LoadedBlock requireBlock(std::string_view fullEid, std::u16string_view fullPath) {
    if (const LoadedBlock found = signalBlock(fullEid, fullPath)) return found;
    if (fullEid.empty()) refuse(std::u16string(modelOfPath(fullPath)), quoted(fullPath));
    refuse(modelOfEid(fullEid), "\"" + std::string(fullEid) + "\"");
}

}  // namespace kestrel
