#include "workbench/record/run_setup.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "workbench/text/nearest.h"
#include "workbench/text/text.h"
#include "workbench/unit/array_element.h"

namespace workbench {

namespace {

namespace fs = std::filesystem;

constexpr double kStepsByDefault = 500;
constexpr double kMostSteps = 9007199254740992.0;  // 2^53

[[noreturn]] void refuse(const std::string& text) { throw Error(text); }

void warn(const RecordOptions& options, const std::string& text) {
    if (options.warning) options.warning(text);
}

// "; it takes "mass" and ...": what start values are mostly given for.
std::string settableOf(const FmiDescription& description) {
    constexpr std::size_t kMostListed = 8;
    std::vector<std::string> names;
    for (const FmiVariable& variable : description.variables)
        if (variable.causality == FmiCausality::parameter || variable.causality == FmiCausality::input)
            names.push_back(variable.name);
    const auto quoted = [](const std::string& name) { return inQuotes(name); };
    return names.empty() ? "" : "; it takes " + listed(names, kMostListed, quoted);
}

const FmiVariable& variableCalled(const FmiDescription& description, const std::string& name) {
    for (const FmiVariable& variable : description.variables)
        if (variable.name == name) return variable;
    Nearest nearest(name);
    for (const FmiVariable& variable : description.variables) nearest.offer(variable.name);
    const std::string question = nearest.question();
    refuse(fmt::format("the unit has no variable {}{}", inQuotes(name),
                       question.empty() ? settableOf(description) : question));
}

void requireSettable(const FmiVariable& variable) {
    const bool isConstant = variable.variability == "constant";
    const bool isComputed =
        variable.causality == FmiCausality::calculatedParameter || variable.causality == FmiCausality::independent;
    if (isConstant || isComputed || !variable.valueReference || !unitTypeOf(variable.type))
        refuse(fmt::format("{} cannot be set: it is {}", inQuotes(variable.name),
                           isConstant   ? "a constant"
                           : isComputed ? "computed by the unit"
                                        : "of a type without start values"));
}

UnitValue parsedValue(const FmiVariable& variable, const FmiDescription& description,
                      const std::vector<GivenSize>& sizes, const std::string& text) {
    const std::size_t count = elementCount(extentsOf(variable, description, sizes));
    try {
        return valueOfText(variable, count, text);
    } catch (const Error& error) {
        throw Error("start value of " + error.text());
    }
}

}  // namespace

std::string unitPathOf(const Session& session, const RecordOptions& options) {
    if (!options.unit.empty()) return options.unit;
    const std::optional<Origin>& origin = session.origin();
    if (!origin || (origin->kind != "fmu" && origin->kind != "fmi"))
        throw Error({session.path()}, "was not imported from a unit", ErrorCode::request, Remedy::nameUnit);
    if (origin->kind == "fmi")
        throw Error({session.path()}, "was imported from a description, which cannot be run", ErrorCode::request,
                    Remedy::nameUnit);
    const fs::path file(origin->file);
    const fs::path path = file.is_absolute() ? file : fs::path(session.path()).parent_path() / file;
    if (std::error_code code; !fs::exists(path, code))
        throw Error({path.string()}, "is not there any more, and the model was imported from it", ErrorCode::file,
                    Remedy::nameUnit);
    return path.string();
}

void planTimes(const FmiDescription& description, const RecordOptions& options, UnitTask& task) {
    const FmiExperiment& experiment = description.experiment;
    const double start = experiment.start.value_or(0.0);
    if (!options.until && !experiment.stop)
        refuse("the unit does not say how long it is to run; give the time at which the run ends");
    task.until = options.until.value_or(experiment.stop.value_or(start));
    if (!std::isfinite(task.until) || task.until < start)
        refuse(fmt::format("the run cannot end at t = {}: it starts at t = {}", task.until, start));
    task.step = options.step.value_or(
        experiment.step.value_or(description.abilities.step.value_or((task.until - start) / kStepsByDefault)));
    if (task.until == start && !options.step && !(task.step > 0)) task.step = 1;
    if (!std::isfinite(task.step) || task.step <= 0 || (task.until - start) / task.step >= kMostSteps)
        refuse(fmt::format("steps of {} s do not lead from t = {} to t = {}; give {} step", task.step, start,
                           task.until, task.step > 0 ? "a longer" : "a positive"));
    task.takesAnyStep = description.abilities.takesAnyStep;
    task.keepsState = description.abilities.keepsState && task.takesAnyStep;
    if (!task.takesAnyStep && hasShortStep(start, task.until, task.step)) {
        const double last = start + static_cast<double>(stepCount(start, task.until, task.step) - 1) * task.step;
        warn(options,
             fmt::format("the unit takes steps of one length only; it runs until t = {}, not {}", last, task.until));
        task.until = last;
    }
    task.experiment = {start, task.until, experiment.tolerance};
}

void planValues(const FmiDescription& description, const RecordOptions& options, UnitTask& task,
                std::vector<GivenSize>& sizes) {
    std::vector<const FmiVariable*> variables;
    for (const auto& [name, text] : options.values) {
        const FmiVariable& variable = variableCalled(description, name);
        requireSettable(variable);
        if (std::find(variables.begin(), variables.end(), &variable) != variables.end())
            refuse(fmt::format("the start value of {} is given twice; leave one out", inQuotes(name)));
        variables.push_back(&variable);
        if (variable.causality != FmiCausality::structuralParameter) continue;
        task.sizes.push_back(parsedValue(variable, description, sizes, text));
        sizes.push_back({*variable.valueReference, task.sizes.back().slots.front()});
    }
    for (std::size_t i = 0; i < variables.size(); ++i)
        if (variables[i]->causality != FmiCausality::structuralParameter)
            task.values.push_back(parsedValue(*variables[i], description, sizes, options.values[i].second));
}

}  // namespace workbench
