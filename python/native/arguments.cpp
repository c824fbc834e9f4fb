#include "python/native/arguments.h"

#include <fmt/format.h>

#include "workbench/text/error.h"

namespace ks_hmi_python {

namespace {

py::object valueIn(const py::dict& arguments, const char* name) {
    return arguments.contains(name) ? py::object(arguments[name]) : py::none();
}

[[noreturn]] void refuse(const char* name, const py::object& value, const char* wanted) {
    throw py::type_error(fmt::format("{}= is {}; give {}", name, py::repr(value).cast<std::string>(), wanted));
}

}  // namespace

void refuseKind(const py::dict& arguments, const char* name) {
    refuse(name, arguments[name], "what its type asks for");
}

std::optional<std::string> textIn(const py::dict& arguments, const char* name) {
    const py::object value = valueIn(arguments, name);
    if (value.is_none()) return std::nullopt;
    if (!py::isinstance<py::str>(value)) refuse(name, value, "a text");
    return value.cast<std::string>();
}

std::optional<bool> truthIn(const py::dict& arguments, const char* name) {
    const py::object value = valueIn(arguments, name);
    if (value.is_none()) return std::nullopt;
    if (!py::isinstance<py::bool_>(value)) refuse(name, value, "True or False");
    return value.cast<bool>();
}

std::optional<std::int64_t> numberIn(const py::dict& arguments, const char* name, std::int64_t least,
                                     std::int64_t most) {
    const py::object value = valueIn(arguments, name);
    if (value.is_none()) return std::nullopt;
    if (py::isinstance<py::bool_>(value) || PyIndex_Check(value.ptr()) == 0) refuse(name, value, "a whole number");
    int overflow = 0;
    const auto index = py::reinterpret_steal<py::object>(PyNumber_Index(value.ptr()));
    if (!index) throw py::error_already_set();
    const std::int64_t number = PyLong_AsLongLongAndOverflow(index.ptr(), &overflow);
    if (overflow != 0 || number < least || number > most)
        throw workbench::Error(fmt::format("{}= is {}; give a whole number from {} to {}", name,
                                           py::str(index).cast<std::string>(), least, most));
    return number;
}

}  // namespace ks_hmi_python
