#include "workbench/find/below.h"

#include <algorithm>

#include "workbench/find/reference.h"
#include "workbench/session/signal_source.h"
#include "workbench/text/error.h"
#include "workbench/text/nearest.h"
#include "workbench/text/text.h"

namespace workbench {

std::u16string resolveBelow(const kestrel::Model& model, std::string_view text) {
    if (toUtf16(text) == model.name()) return {};
    std::u16string path = withoutModel(model, text);
    const auto isThere = [&](const kestrel::Block& block) { return isAtOrBelow(block.path, path); };
    if (path.empty() || std::any_of(model.blocks().begin(), model.blocks().end(), isThere)) return path;
    Nearest nearest(text);
    for (const kestrel::Block& block : model.blocks()) nearest.offer(toUtf8(block.path));
    throw Error(inQuotes(text) + ": the model has no block there" + nearest.question(), ErrorCode::request,
                Remedy::listBlocks);
}

}  // namespace workbench
