#include "kshmi/glob.h"

#include <fnmatch.h>

#include <algorithm>

#include "kshmi/text.h"

namespace kshmi {

bool Globs::matches(const std::string& name) const {
    return std::any_of(m_patterns.begin(), m_patterns.end(),
                       [&](const std::string& pattern) { return ::fnmatch(pattern.c_str(), name.c_str(), 0) == 0; });
}

bool Globs::matches(const kestrel::Model& model, const SignalSource& source) const {
    if (isEmpty()) return false;
    const std::string block = toUtf8(model.fullPath(*source.block));
    if (matches(block)) return true;
    if (source.item) return !source.item->subPath.empty() && matches(block + "/" + toUtf8(source.item->subPath));
    return matches(block + ":" + std::to_string(source.port)) || matches(block + ":" + toUtf8(portName(source)));
}

std::vector<SignalSource> matchingPorts(const kestrel::Model& model, const Globs& all, const Globs& except) {
    std::vector<SignalSource> result;
    for (const kestrel::Block& block : model.blocks())
        for (int port = 1; port <= static_cast<int>(block.outputs.size()); ++port) {
            const SignalSource source{&block, port, std::nullopt};
            if (all.matches(model, source) && !except.matches(model, source)) result.push_back(source);
        }
    return result;
}

}  // namespace kshmi
