#include <cstdint>
#include <optional>
#include <string>

#include "fuzz/fuzz_host.h"
#include "host/unicode.h"
#include "workbench/import/import_model.h"
#include "workbench/import/variable_name.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

// Imports foreign files: whatever they hold, they are refused with a message of one line, or become a model whose
// identifiers stay when they are imported again.

namespace {

using namespace workbench;
using ks_fuzz::require;

// Small, so that an input that takes much memory is found soon.
constexpr ArchiveLimits kLimits{.entries = 64, .documentBytes = 1 << 20};

std::optional<ImportedModel> import(const std::string& bytes, const ImportOptions& options) {
    try {
        return importDocument(readForeignBytes("some", bytes, kLimits), options);
    } catch (const Error& error) {
        require(*error.what() != '\0', "a refusal without a word");
        return std::nullopt;
    }
}

void requireSame(const kestrel::Model& one, const kestrel::Model& other) {
    require(one.blocks().size() == other.blocks().size(), "the second import has other blocks");
    for (std::size_t i = 0; i < one.blocks().size(); ++i) {
        const kestrel::Block& block = one.blocks()[i];
        const kestrel::Block& again = other.blocks()[i];
        require(block.eid == again.eid && block.path == again.path && block.source == again.source &&
                    block.outputs == again.outputs,
                "the second import has another block");
    }
}

void requireSourced(const kestrel::Model& model) {
    for (const kestrel::Block& block : model.blocks()) {
        require(block.source.has_value(), "a block without a source");
        require(toUtf8(toUtf16(*block.source)) == *block.source, "a source that is no UTF-8");
        for (const std::u16string& port : block.outputs)
            require(ks_host::isWellFormed(port), "a port's name is no UTF-16");
    }
}

void importAll(const std::string& bytes, bool locals) {
    std::optional<ImportedModel> first = import(bytes, {.locals = locals});
    if (!first) return;
    requireSourced(first->model);
    const std::optional<ImportedModel> second = import(bytes, {.locals = locals});
    require(second.has_value(), "the second import is refused");
    requireSame(first->model, second->model);
    const std::size_t count = first->model.blocks().size();
    ModelExtras extras;
    extras.origin = std::move(first->origin);
    const ModelFile previous{std::move(first->model), nullptr, nullptr, {}, {}, std::move(extras)};
    const std::optional<ImportedModel> next = import(bytes, {.previous = &previous});
    require(next && next->keptCount == count && next->goneCount == 0, "a block has lost its identifier");
    requireSame(previous.model, next->model);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const VariableName split = splitVariableName(bytes);
    require(joinVariableName(split.group, split.leaf) == bytes, "a name is not the sum of its parts");
    importAll(bytes, false);
    importAll(bytes, true);
    return 0;
}
