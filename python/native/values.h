#pragma once

#include "host/hv_array.h"
#include "python/native/host_turn.h"

/// Values of the host as Python has them, and the other way round.
namespace ks_hmi_python {

/// A value of the host that Python holds: objects.
class HeldValue final : public Held {
public:
    explicit HeldValue(HvArrayPtr value) noexcept : m_value(std::move(value)) {}
    ~HeldValue() override = default;
    /// Throws `workbench::Error` once the host was left.
    const hvArray* get() const;
    hvArray* forWriting();  ///< The same.
    void release() noexcept override { m_value.reset(); }

private:
    HvArrayPtr m_value;
};

/// Null and 1x1 values as None, float, bool, str, and numpy's scalars for other numbers; larger numeric arrays as numpy
/// has them, in Fortran's order; cell arrays as lists, or as arrays of objects where they are no vector; structs as
/// `StructArray`, objects as `Object`. Copies.
py::object pythonOf(const hvArray* value);

/// The other way round. An int is a double, a list an N x 1 cell array, an array of one dimension N x 1, a dictionary
/// a 1x1 struct, None a 0x0 double. Throws Python's OverflowError for an int that no double holds, and TypeError for
/// what is nothing of the host's.
HvArrayPtr hostOf(const py::handle& value);

/// A new value that Python keeps, of a value of the host.
std::shared_ptr<HeldValue> hold(const hvArray* value);

/// Adds its functions to the module.
void bindHost(py::module_& module);
void bindListings(py::module_& module);

}  // namespace ks_hmi_python
