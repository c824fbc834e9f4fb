#include <pybind11/functional.h>
#include <pybind11/numpy.h>

#include <optional>
#include <sstream>

#include "kshmi/print/reports/record_report.h"
#include "python/native/arguments.h"
#include "python/native/define.h"
#include "python/native/open_model.h"
#include "workbench/record/record_model.h"
#include "workbench/record/recorded_run.h"

namespace ks_hmi_python {

using namespace workbench;

namespace {

// Has Python ask whether somebody wants to stop, as it does between its own steps.
class Interruption {
public:
    int count() {
        if (PyErr_CheckSignals() != 0) {
            m_error.emplace();
            ++m_count;
        }
        return m_count;
    }
    void raise() {
        if (m_error) throw py::error_already_set(*m_error);
    }

private:
    int m_count = 0;
    std::optional<py::error_already_set> m_error;
};

RecordOptions optionsOf(const py::dict& given) {
    const auto take = [&](const char* name, auto& option) {
        if (given.contains(name)) option = castArgument<std::decay_t<decltype(option)>>(given, name);
    };
    RecordOptions options;
    take("unit", options.unit);
    take("until", options.until);
    take("step", options.step);
    take("values", options.values);
    take("inputs", options.inputs);
    take("output", options.target.path);
    take("replace", options.target.replaces);
    take("timeout", options.control.timeout);
    if (std::function<void(double, double, double)> told; given.contains("progress")) {
        take("progress", told);
        options.progress = [told](const RunProgress& run) { told(run.time, run.until, run.seconds); };
    }
    options.warning = [](const std::string& text) { warn(text); };
    return options;
}

std::string record(OpenModel& model, const py::dict& given) {
    RecordOptions options = optionsOf(given);
    if (given.contains("log")) {
        options.control.logs = true;
        options.log = [log = given["log"].cast<py::function>()](double time, UnitLogLevel level,
                                                                std::string_view category, std::string_view text) {
            log(time, nameOf(level), std::string(category), std::string(text));
        };
    }
    Interruption interruption;
    options.control.stopRequests = [&] { return interruption.count(); };
    const RecordResult result = recordModel(model.session(), options);
    interruption.raise();
    if (options.progress) options.progress({result.start, result.end.time, result.until, result.seconds});
    std::ostringstream out;
    kshmi::printRecordJson(result, options.target.path, model.session(), out);
    return out.str();
}

py::array_t<double> arrayOf(const std::vector<double>& numbers) {
    return py::array_t<double>(static_cast<py::ssize_t>(numbers.size()), numbers.data());
}

py::object textOrNone(const std::string& text) { return text.empty() ? py::object(py::none()) : py::str(text); }

py::dict dictOf(const RecordedColumn& column) {
    py::dict out;
    out["title"] = column.title;
    out["kind"] = nameOf(column.kind);
    out["unit"] = column.unit;
    py::dict items;
    for (const ValueName& item : column.names) items[py::int_(item.value)] = item.name;
    out["items"] = items;
    out["signal"] = textOrNone(column.signal);
    out["block"] = textOrNone(column.block);
    out["port"] = column.port > 0 ? py::object(py::int_(column.port)) : py::none();
    out["portName"] = column.portName;
    out["element"] = column.element;
    out["times"] = arrayOf(column.times);
    const bool isText = column.kind == ValueKind::text || column.kind == ValueKind::binary;
    out["values"] = isText ? py::object(py::cast(column.texts)) : arrayOf(column.values);
    return out;
}

py::dict readRun(const std::string& path, std::optional<int> number, const std::shared_ptr<OpenModel>& model) {
    RecordedRun run = readRecordedRun(path, number);
    if (model) identifyColumns(run, model->session());
    py::list columns;
    for (const RecordedColumn& column : run.columns) columns.append(dictOf(column));
    py::dict out;
    out["file"] = run.file;
    out["number"] = run.number;
    out["runCount"] = run.runCount;
    out["model"] = textOrNone(run.model);
    out["started"] = textOrNone(run.started);
    out["start"] = run.start;
    out["stop"] = run.stop;
    out["until"] = run.until;
    out["outcome"] = textOrNone(run.outcome);
    out["message"] = run.message;
    out["columns"] = columns;
    return out;
}

}  // namespace

void bindRuns(py::module_& module) {
    define(module, "record", record);
    define(module, "readRun", readRun);
}

}  // namespace ks_hmi_python
