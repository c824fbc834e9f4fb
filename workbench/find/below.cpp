#include "workbench/find/below.h"

#include <fmt/format.h>

#include <algorithm>

#include "workbench/find/reference.h"
#include "workbench/session/signal_source.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace workbench {

std::u16string resolveBelow(const kestrel::Model& model, std::string_view text) {
    if (text.empty()) return {};
    if (toUtf16(text) != model.name()) return resolveParent(model, text);
    const auto isThere = [&](const kestrel::Block& block) { return isAtOrBelow(block.path, model.name()); };
    if (std::any_of(model.blocks().begin(), model.blocks().end(), isThere))
        throw Error(fmt::format("{}: can be the whole model or {}; write {} for the latter", inQuotes(text),
                                inQuotes(model.name() + u"/" + model.name()), inQuotes(u"/" + model.name())));
    return {};
}

}  // namespace workbench
