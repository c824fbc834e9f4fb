#pragma once

#include <string>
#include <utility>
#include <vector>

#include "kshmi/signal_source.h"

namespace kshmi {

/// Shell patterns that match full paths: "model/block/path", and with ":number" or ":name" behind for a
/// port. "*" matches across "/".
class Globs {
public:
    explicit Globs(std::vector<std::string> patterns) : m_patterns(std::move(patterns)) {}
    bool isEmpty() const noexcept { return m_patterns.empty(); }
    /// Whether any pattern matches any name of the port or chart item.
    bool matches(const kestrel::Model& model, const SignalSource& source) const;

private:
    bool matches(const std::string& name) const;
    std::vector<std::string> m_patterns;
};

/// All output ports that `all` matches and `except` does not, in the model's order.
std::vector<SignalSource> matchingPorts(const kestrel::Model& model, const Globs& all, const Globs& except);

}  // namespace kshmi
