#include <pybind11/stl.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/messages.h"
#include "memory_host/orvex/calls/call_by_name.h"
#include "memory_host/orvex/calls/functions.h"
#include "memory_host/orvex/calls/warnings.h"
#include "memory_host/orvex/objects/objects.h"
#include "python/native/open_model.h"
#include "python/native/raised_errors.h"
#include "python/native/values.h"

namespace ks_hmi_python {

namespace {

using Results = std::vector<HvArrayPtr>;
using CallByName = Results (*)(std::string_view, std::span<const hvArray* const>, int);

py::object resultOf(const Results& results, int wanted) {
    if (wanted <= 1) return pythonOf(results.front().get());
    py::tuple values(wanted);
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = pythonOf(results[i].get());
    return values;
}

py::object call(CallByName callHost, const std::string& name, const py::tuple& arguments, int wanted) {
    if (wanted < 0) throw py::value_error("outputs is a number from 0");
    std::vector<HvArrayPtr> values;
    std::vector<const hvArray*> ins;
    for (const py::handle argument : arguments) ins.push_back(values.emplace_back(hostOf(argument)).get());
    return resultOf(callHost(name, ins, wanted), wanted);
}

// A function of the host that is written in Python.
class PythonFunction final : public Held {
public:
    PythonFunction(const std::string& name, py::function function, std::optional<int> outputs)
        : m_registration(
              std::in_place,
              orvex::registerFunction(
                  name, [function = std::move(function), outputs](orvex::Call& call) { run(function, outputs, call); },
                  outputs.value_or(orvex::kAnyNumberOfOutputs))) {}
    ~PythonFunction() override = default;
    void release() noexcept override { m_registration.reset(); }

private:
    static void run(const py::function& function, std::optional<int> outputs, orvex::Call& call) {
        try {
            py::tuple arguments(call.ins.size());
            for (std::size_t i = 0; i < call.ins.size(); ++i) arguments[i] = pythonOf(call.ins[i]);
            answer(function(*arguments), outputs, call);
        } catch (py::error_already_set& error) {
            throwAsHost(error);
        }
    }

    // A tuple is the outputs, and a list where there are several; of a function with one output it is that one.
    static bool areOutputs(const py::object& result, std::optional<int> outputs, int wanted) {
        if (outputs && *outputs <= 1) return false;
        return py::isinstance<py::tuple>(result) || (py::isinstance<py::list>(result) && (outputs || wanted > 1));
    }

    static void answer(const py::object& result, std::optional<int> outputs, orvex::Call& call) {
        const bool isSequence = areOutputs(result, outputs, call.nOut);
        if (!isSequence && call.nOut <= 1) {
            if (!result.is_none()) call.outs[0] = hostOf(result);
            return;
        }
        if (!isSequence || (call.nOut > 1 && py::len(result) < static_cast<std::size_t>(call.nOut)))
            throw py::type_error("the caller wants " + std::to_string(call.nOut) +
                                 " outputs: return a tuple of as many");
        for (std::size_t i = 0; i < std::min(call.outs.size(), py::len(result)); ++i) {
            const py::object output = result[py::int_(i)];
            if (!output.is_none()) call.outs[i] = hostOf(output);
        }
    }

    std::optional<orvex::FunctionRegistration> m_registration;
};

py::object signalSet(OpenModel& model) { return pythonOf(model.session().signalSet()); }
py::object clientSet(OpenModel& model) { return pythonOf(model.session().clientSet()); }

py::object propertyOf(const HeldValue& object, const std::string& name) {
    return pythonOf(HvArrayPtr(hvGetProperty(object.get(), 0, name.c_str())).get());
}

bool isSame(const HeldValue& one, const HeldValue& other) {
    return omGetArrayElement(one.get(), 0) == omGetArrayElement(other.get(), 0);
}

}  // namespace

void bindHost(py::module_& module) {
    py::class_<HeldValue, std::shared_ptr<HeldValue>>(module, "HeldValue")
        .def_property_readonly("className", [](const HeldValue& value) { return hvGetClassName(value.get()); })
        .def("get", [](const HeldValue& value,
                       const std::string& name) { return inHost([&] { return propertyOf(value, name); }); })
        .def("set",
             [](HeldValue& value, const std::string& name, const py::object& given) {
                 inHost([&] { hvSetProperty(value.forWriting(), 0, name.c_str(), hostOf(given).get()); });
             })
        .def("isSame",
             [](const HeldValue& one, const HeldValue& other) { return inHost([&] { return isSame(one, other); }); })
        .def("display",
             [](const HeldValue& value) { return inHost([&] { return orvex::displayObject(value.get()); }); });
    py::class_<PythonFunction, std::shared_ptr<PythonFunction>>(module, "PythonFunction")
        .def("end", [](PythonFunction& function) { inHost([&] { function.release(); }); });
    module.def("callByName", [](const std::string& name, const py::tuple& arguments, int outputs) {
        return inHost([&] { return call(orvex::callByName, name, arguments, outputs); });
    });
    module.def("callMember", [](const std::string& name, const py::tuple& arguments, int outputs) {
        return inHost([&] { return call(orvex::callMember, name, arguments, outputs); });
    });
    module.def("registerFunction",
               [](const std::string& name, const py::function& function, std::optional<int> outputs) {
                   return inHost([&] { return makeHeld<PythonFunction>(name, function, outputs); });
               });
    module.def("warn", [](const std::string& catalogue, const std::string& key, const std::string& text,
                          const py::tuple& arguments) {
        inHost([&] { orvex::warn({catalogue, key, text, argumentsOf(arguments)}); });
    });
    module.def("signalSet", [](OpenModel& model) { return inHost([&] { return signalSet(model); }); });
    module.def("clientSet", [](OpenModel& model) { return inHost([&] { return clientSet(model); }); });
}

}  // namespace ks_hmi_python
