#pragma once

#include <pybind11/pybind11.h>

#include <memory>
#include <string>
#include <type_traits>

/// How Python gets into the host: one thread, entered once a process, its warnings shown as Python's.
namespace ks_hmi_python {

namespace py = pybind11;

/// One call from Python that works in the host. The first one enters it, and the host is that thread's from then on.
/// Throws `workbench::Error` in any other thread, and the host's exception once the host was left.
class HostTurn {
public:
    HostTurn();
    HostTurn(const HostTurn&) = delete;
    HostTurn& operator=(const HostTurn&) = delete;
    /// Shows the warnings that came meanwhile, should `end` not have: a failure is on its way, and they do not replace
    /// it.
    ~HostTurn();
    /// Shows the warnings that came meanwhile. Throws Python's exception when they are errors.
    void end();
};

/// What `work` answers, in a turn of its own.
template <class Work>
auto inHost(Work&& work) {
    HostTurn turn;
    if constexpr (std::is_void_v<decltype(work())>) {
        work();
        turn.end();
    } else {
        auto result = work();
        turn.end();
        return result;
    }
}

/// Shows a warning of this module at the end of the turn: UTF-8, one line.
void warn(const std::string& text);

/// Something that lives in the host and that Python holds. It is let go in the host's thread, and no later than the
/// host is left.
class Held {
public:
    Held();
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;
    virtual ~Held();
    /// Lets go of what is in the host; it is of no further use. More than once is no harm.
    virtual void release() noexcept = 0;
};

/// Deletes in the host's thread: at once there, and from another thread with the next turn or when the host is left.
struct HeldDeleter {
    void operator()(Held* held) const noexcept;
};
template <class T, class... Arguments>
std::shared_ptr<T> makeHeld(Arguments&&... arguments) {
    return std::shared_ptr<T>(new T(std::forward<Arguments>(arguments)...), HeldDeleter());
}

/// Has Python's exceptions stand for those of the workbench and the host.
void translateErrors(py::module_& module);
/// Adds "leave", which lets go of everything and leaves the host.
void bindHostTurn(py::module_& module);

}  // namespace ks_hmi_python
