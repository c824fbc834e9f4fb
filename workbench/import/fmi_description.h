#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "workbench/import/import_notes.h"
#include "workbench/import/xml_file.h"

/// A unit's description, `modelDescription.xml`, of FMI 1.0, 2.0 and 3.0 alike.
namespace workbench {

enum class FmiCausality : std::uint8_t {
    input,
    output,
    local,
    parameter,
    calculatedParameter,
    structuralParameter,
    independent,
};

/// "inputs", "local variables", ...
const char* pluralOf(FmiCausality causality) noexcept;

/// One dimension of an array: a fixed size, or the value of a structural parameter.
struct FmiDimension {
    std::uint64_t size = 0;
    std::optional<std::uint32_t> valueReference = std::nullopt;
};

/// What a value of an enumeration is called.
struct FmiItem {
    std::string name;
    std::int64_t value = 0;
};
using FmiItems = std::vector<FmiItem>;

struct FmiVariable {
    std::string name;
    FmiCausality causality = FmiCausality::local;
    std::string type;         ///< "Real", "Float64", ...; empty when the file gives none
    std::string variability;  ///< as the file gives it
    /// Nothing when the file gives none that is a number. Several variables may share one.
    std::optional<std::uint32_t> valueReference = std::nullopt;
    std::vector<FmiDimension> dimensions = {};         ///< empty for a scalar
    std::string unit = {};                             ///< of its own or of its type; empty when the file gives none
    std::optional<std::uint64_t> size = std::nullopt;  ///< start value of a structural parameter
    std::shared_ptr<const FmiItems> items = nullptr;   ///< of an enumeration's type; null when the file gives none
    bool isAlias = false;                              ///< another name of the variable before it
    std::size_t line = 0;                              ///< 1-based
};

struct FmiExperiment {
    std::optional<double> start, stop, step, tolerance;
};

/// What a unit says of itself as a partner in co-simulation.
struct FmiAbilities {
    bool takesAnyStep = false;   ///< communication steps may differ in length
    bool keepsState = false;     ///< its state can be taken and given back
    bool hasEventMode = false;   ///< 3.0
    bool needsProgram = false;   ///< runs only with another program on the machine
    std::optional<double> step;  ///< 3.0: the step that it takes inside
};

struct FmiDescription {
    int major = 0;        ///< 1, 2 or 3
    std::string version;  ///< as the file gives it: "2.0"
    std::string name;     ///< of the model
    std::string token;    ///< guid or instantiation token
    /// Names of the binaries for each way of running that the unit has.
    std::optional<std::string> modelExchange, coSimulation, scheduledExecution;
    FmiAbilities abilities;
    FmiExperiment experiment;
    std::vector<FmiVariable> variables;  ///< in the file's order; no two with the same name
};

/// Reads a description. Notes what is untidy and what is not taken over. Throws `Error` for what is no description of
/// these versions.
FmiDescription readFmiDescription(const XmlFile& file, ImportNotes& warnings, ImportNotes& dropped);

}  // namespace workbench
