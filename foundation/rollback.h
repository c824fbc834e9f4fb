#pragma once

#include <utility>

namespace ks_hmi_foundation {

/// Runs an undo step when the scope is left before `commit`; the step must not throw.
template <class Undo>
class [[nodiscard]] Rollback {
public:
    explicit Rollback(Undo undo) : m_undo(std::move(undo)) {}
    Rollback(const Rollback&) = delete;
    Rollback& operator=(const Rollback&) = delete;
    ~Rollback() {
        if (!m_committed) m_undo();
    }
    void commit() noexcept { m_committed = true; }

private:
    Undo m_undo;
    bool m_committed = false;
};

}  // namespace ks_hmi_foundation
