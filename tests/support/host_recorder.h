#pragma once

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

struct hvArray;

namespace ks_test {

using Lines = std::vector<std::string>;
using Operations = std::vector<std::string_view>;

/// Writes down what the library asks of the host while this lives: one line per call, in order, the operation and its
/// arguments with blanks between. What the test asks itself is not written down, nor what the host does inside, its own
/// calls of the library included.
///
///     EXPECT_EQ(recorded({"kssvSetLocalScope", "hvSetArrayScope"}, [&] { signal.getHOSObject(u"m1", true); }),
///               (Lines{"kssvSetLocalScope struct", "hvSetArrayScope struct 4"}));
///
/// Values read as `describe` says. A struct or object that is written or read is left out ("hvReplaceField 0 UUID
/// 'u'"), a call by name lists results wanted, name and inputs ("kssvFEVAL 1 isequal (struct, [])"), a value that is
/// let go is "destroy 'text'". The operations are those that host_recorder.cpp defines: the program's definitions stand
/// in front of the host's, so it must be linked into the program itself. Nothing passes an injected fault's counting.
/// Thread: the interpreter thread only.
class HostRecorder {
public:
    /// Only the named operations; without a name, all.
    HostRecorder(std::initializer_list<std::string_view> operations = {}) : HostRecorder(Operations(operations)) {}
    explicit HostRecorder(Operations operations);
    HostRecorder(const HostRecorder&) = delete;
    HostRecorder& operator=(const HostRecorder&) = delete;
    ~HostRecorder();

    /// What was written down since the last time.
    Lines lines();

    enum class Moment { before, after };
    /// Called around each of the named operations, while nothing is written down. What it throws before an operation
    /// the operation throws; after one it must not throw.
    using Hook = std::function<void(Moment, std::string_view operation)>;
    void setHook(Hook hook) { m_hook = std::move(hook); }

    bool isNamed(std::string_view operation) const;
    void write(std::string_view operation, std::initializer_list<std::string> arguments);
    void callHook(Moment moment, std::string_view operation) const {
        if (m_hook) m_hook(moment, operation);
    }

private:
    Operations m_operations;
    Hook m_hook;
    Lines m_lines;
    HostRecorder* m_outer;
};

/// What `action` has the library ask of the host, of the named operations.
template <class Action>
Lines recorded(const Operations& operations, Action action) {
    HostRecorder recorder(operations);
    action();
    return recorder.lines();
}

/// 'text', 7, uint32 7, true, [] (0x0 double), {'a', 'b'} (cells), struct, struct 3x1, the class of an object, null.
std::string describe(const hvArray* value);

}  // namespace ks_test
