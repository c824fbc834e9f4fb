#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "workbench/run_file/value_kind.h"

namespace workbench {

/// A signal, or an element of an array, on its way into a recording. Texts are UTF-8.
struct RunColumn {
    std::string title;
    ValueKind kind = ValueKind::real;
    bool isSingle = false;    ///< a real of 32 bits, which a shorter text tells
    bool isUnsigned = false;  ///< an integer
    std::string unit;
    ValueNames names;          ///< of an enumeration's values, as far as the unit gives them
    std::string signal;        ///< UUID
    std::size_t position = 0;  ///< of the signal, 0-based
    std::string block;         ///< full path, model name in front
    int port = 0;
    std::string portName;
    std::string element;   ///< "[2]"; empty for a scalar
    std::string variable;  ///< of the unit
    std::uint64_t decimation = 1;
    std::uint64_t maxPoints = 0;  ///< 0: all
    std::size_t slot = 0;         ///< of `UnitSample::slots`
};

}  // namespace workbench
