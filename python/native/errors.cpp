#include <exception>
#include <utility>
#include <variant>
#include <vector>

#include "host/messages.h"
#include "memory_host/kestrel/model.h"
#include "python/native/arguments.h"
#include "python/native/raised_errors.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace ks_hmi_python {

namespace {

using workbench::ErrorCode;
using workbench::Remedy;

const char* wordOf(ErrorCode code) {
    switch (code) {
        case ErrorCode::request:
            return "request";
        case ErrorCode::noMatch:
            return "noMatch";
        case ErrorCode::format:
            return "format";
        case ErrorCode::model:
            return "model";
        case ErrorCode::file:
            return "file";
        case ErrorCode::inUse:
            return "inUse";
        case ErrorCode::host:
            break;
    }
    return "host";
}

const char* wordOf(Remedy remedy) {
    switch (remedy) {
        case Remedy::none:
            break;
        case Remedy::listBlocks:
            return "model.blocks lists the model's blocks";
        case Remedy::listSignals:
            return "model.signals lists the model's signals";
        case Remedy::listClients:
            return "model.clients lists the model's clients";
        case Remedy::usePatterns:
            return "a name is taken literally: give a pattern as all=";
        case Remedy::unmark:
            return "unmark=True removes that, too";
        case Remedy::removeBelow:
            return "below=True removes all of it";
        case Remedy::nameUnit:
            return "unit= names the .fmu";
        case Remedy::replaceFile:
            return "replace=True replaces it";
        case Remedy::updateFile:
            return "update=True imports the next version onto it";
        case Remedy::carryMarks:
            return "import to a new file with this one as previous=, then carry() them over";
        case Remedy::removeDangling:
            return "open(file, dangling=True), then unmark(dangling=True), removes such signals";
        case Remedy::settleNames:
            return "check(file, mend=[\"names\"]) lets marks follow their names; set(..., confirm=True) accepts what "
                   "is there";
    }
    return "";
}

py::object numberOrNone(std::size_t number) { return number > 0 ? py::object(py::int_(number)) : py::none(); }

void raise(const workbench::Error& error) {
    const py::object type = py::module_::import("ks_hmi._errors").attr("Error");
    const workbench::ErrorPlace& place = error.place();
    const py::object made = type(error.text(), wordOf(error.code()), place.file, numberOrNone(place.line),
                                 numberOrNone(place.column), place.pointer, wordOf(error.remedy()));
    PyErr_SetObject(type.ptr(), made.ptr());
}

py::object argumentOf(const resource_core::BaseMsgID::Argument& argument) {
    if (const auto* const number = std::get_if<std::int64_t>(&argument)) return py::int_(*number);
    if (const auto* const text = std::get_if<std::string>(&argument)) return py::str(*text);
    return py::str(workbench::toUtf8(std::get<std::u16string>(argument)));
}

// What Python raised in a function of the host, until it is Python's again, and what the host was told.
struct Raised {
    py::object exception;
    std::string text;
};
Raised& raised() {
    static auto* const raised = new Raised;
    return *raised;
}

// Not to be held back by whoever takes failures as they come.
bool isEnding(const py::object& exception) {
    return exception && PyErr_GivenExceptionMatches(exception.ptr(), PyExc_Exception) == 0;
}

constexpr const char* kPythonErrors = "python:errors";

void raise(const kssvIException& error) {
    const resource_core::BaseMsgID& id = error.messageId();
    auto [cause, text] = std::exchange(raised(), {});
    if (isEnding(cause)) return PyErr_SetObject(py::type::of(cause).ptr(), cause.ptr());
    const py::object type = py::module_::import("ks_hmi._errors").attr("HostError");
    const py::object made = type(std::string(error.what()), id.catalogue(), id.key(), pythonOf(id.arguments()));
    if (cause && text == error.what()) PyException_SetCause(made.ptr(), cause.release().ptr());
    PyErr_SetObject(type.ptr(), made.ptr());
}

resource_core::BaseMsgID::Argument argumentOf(const py::handle& value) {
    if (py::isinstance<py::int_>(value)) return value.cast<std::int64_t>();
    return py::str(value).cast<std::string>();
}

void translate(std::exception_ptr failure) {
    try {
        if (failure) std::rethrow_exception(failure);
    } catch (const workbench::Error& error) {
        raise(error);
    } catch (const kestrel::ModelError& error) {
        raise(workbench::Error(error.what()));
    } catch (const kssvIException& error) {
        raise(error);
    }
}

}  // namespace

py::tuple pythonOf(const MessageArguments& arguments) {
    py::tuple values(arguments.size());
    for (std::size_t i = 0; i < arguments.size(); ++i) values[i] = argumentOf(arguments[i]);
    return values;
}

MessageArguments argumentsOf(const py::handle& values) {
    MessageArguments arguments;
    for (const py::handle value : values) arguments.push_back(argumentOf(value));
    return arguments;
}

void throwAsHost(const py::error_already_set& error) {
    const py::object& value = error.value();
    const bool isHostError = py::isinstance(value, py::module_::import("ks_hmi._errors").attr("HostError"));
    const auto name = error.type().attr("__name__").cast<std::string>();
    const auto text =
        isHostError ? value.attr("text").cast<std::string>() : name + ": " + py::str(value).cast<std::string>();
    raised() = {value, text};
    if (!isHostError) throw kssvIException(resource_core::BaseMsgID(kPythonErrors, name), text);
    throw kssvIException(
        resource_core::BaseMsgID(value.attr("catalogue").cast<std::string>(), value.attr("key").cast<std::string>(),
                                 argumentsOf(value.attr("arguments"))),
        text);
}

void raiseWhatEnds() {
    const py::object exception = std::exchange(raised(), {}).exception;
    if (!isEnding(exception)) return;
    PyErr_SetObject(py::type::of(exception).ptr(), exception.ptr());
    throw py::error_already_set();
}

void forgetRaised() { raised() = {}; }

void translateErrors(py::module_& /*module*/) { py::register_local_exception_translator(translate); }

}  // namespace ks_hmi_python
