#pragma once

#include <functional>
#include <iterator>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/host_test.h"
#include "tests/support/plain_signal_set.h"

/// Operations on sets of signals, drawn at random.
namespace ks_test {

// A universe so small that everything meets everything, with some of it more often than the rest. Identifiers and SSIDs
// run together in some keys ("41" + "7").
inline constexpr const char16_t* kModels[] = {u"", u"", u"m1", u"m2"};
inline constexpr const char16_t* kPaths[] = {u"Gain", u"Gain", u"Gain", u"Gr\u00f6\u00dfe"};
inline constexpr const char16_t* kEids[] = {u"4", u"41", u""};
inline constexpr const char16_t* kSubPaths[] = {u"", u"", u"", u"in/x"};
inline constexpr const char16_t* kDomains[] = {u"", u"", u"", u"cw_state", u"cw_chart", u"cw_data"};
inline constexpr const char16_t* kSsids[] = {u"0", u"7", u"17"};
inline constexpr double kSsidNumbers[] = {0.0, 7.0, 17.0};
inline constexpr const char16_t* kActivities[] = {u"Self", u"Child", u"Leaf", u"Data", u"Entry"};
inline constexpr double kHandles[] = {12.5, 12.5, 0.0, -0.0, 0.1, std::numeric_limits<double>::quiet_NaN()};
inline constexpr int kPorts[] = {1, 1, 2, 3, 0, -1};
inline constexpr std::size_t kMostSignals = 8;

// Lists are to grow, questions that resolve handles to be asked, ports to be cached, which most changes forget, and
// renumbered more often than all else.
inline constexpr std::string_view kKinds[] = {
    "add",         "add",         "insert",     "askPath",         "askPath",     "cachePorts",
    "cachePorts",  "renumber",    "add",        "insert",          "set",         "removeAt",
    "removeValue", "renumber",    "rename",     "pending",         "cachePorts",  "update",
    "copy",        "saveAndLoad", "addToIndex", "removeFromIndex", "addActivity", "removeActivity",
    "change",      "askPath",     "askSignal"};

/// One operation with all that any kind may need, drawn at once: leaving others out does not change it.
struct Operation {
    std::string_view kind;
    std::size_t side, position, pick;
    bool reuses, flag;  ///< whether a record comes from those made before; the operation's own flag
    const char16_t *model, *path, *subPath, *eid, *domain, *ssid, *activity;
    double handle;
    int outputPort, cachedPort, logicalPort;
    std::size_t failAt;  ///< which host operation fails for want of memory, 1-based; 0 for none
    std::vector<int> newNumbers;
};

class Draws {
public:
    using Numbers = std::function<std::size_t()>;

    explicit Draws(unsigned seed) : m_next(std::mt19937(seed)) {}
    /// Draws from what `next` gives; a byte at a time is enough.
    explicit Draws(Numbers next) : m_next(std::move(next)) {}

    std::size_t below(std::size_t limit) { return m_next() % limit; }
    template <class Choices>
    auto from(const Choices& choices) {
        return choices[below(std::size(choices))];
    }
    Operation operation() {
        Operation o;
        o.kind = from(kKinds);
        o.side = below(2);
        o.position = below(kMostSignals + 1);
        o.pick = below(60);
        o.reuses = below(2) == 0;
        o.flag = below(2) == 0;
        o.model = from(kModels);
        o.path = from(kPaths);
        o.subPath = from(kSubPaths);
        o.domain = from(kDomains);
        o.ssid = from(kSsids);
        o.activity = from(kActivities);
        o.eid = from(kEids);
        o.handle = from(kHandles);
        o.outputPort = from(kPorts);
        o.cachedPort = from(kPorts);
        o.logicalPort = static_cast<int>(below(3)) - (below(2) == 0 ? 1 : 0);
        o.failAt = below(4) == 0 ? 1 + below(1 + below(12)) : 0;
        for (std::size_t i = below(4); i > 0; --i) o.newNumbers.push_back(from(kPorts));
        return o;
    }

private:
    Numbers m_next;
};

inline std::string describe(const Operation& o) {
    std::ostringstream line;
    line << o.kind << " side=" << o.side << " position=" << o.position << " pick=" << o.pick << " reuses=" << o.reuses
         << " flag=" << o.flag << " model=" << utf8(o.model) << " path=" << utf8(o.path)
         << " subPath=" << utf8(o.subPath) << " eid=" << utf8(o.eid) << " domain=" << utf8(o.domain)
         << " ssid=" << utf8(o.ssid) << " activity=" << utf8(o.activity) << " handle=" << utf8(plainNumber(o.handle))
         << " ports=" << o.outputPort << '/' << o.cachedPort << '/' << o.logicalPort << " failAt=" << o.failAt
         << " newNumbers=";
    for (const int number : o.newNumbers) line << number << ',';
    return line.str();
}

}  // namespace ks_test
