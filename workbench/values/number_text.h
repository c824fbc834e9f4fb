#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/hv_array.h"

/// Numbers as model files write them: exact, and independent of the process locale. An element of any
/// numeric class travels as 64 bits: the pattern of a double or single, the value of an integer.
namespace workbench {

/// Shortest text that reads back as the very same value; "-0.0" for the negative zero. Finite values only.
std::string textOfNumber(double value);

/// Throws `Error` for a number that does not fit a double.
double numberOfText(std::string_view text);
/// The same; also for a whole number that a double does not hold as it is, and for "-0".
double exactNumberOfText(std::string_view text);

/// A length in "size". Throws `Error` for a number that is none.
std::size_t lengthOfText(std::string_view text);

/// An element of an array of that class, as JSON: a number, or a quoted text for what JSON has no number
/// for ("NaN", "-Infinity", "NaN:7ff8000000000001").
std::string textOfElement(hvClassID classId, std::uint64_t bits);

/// The bits for a JSON number. Throws `Error` when it does not fit the class, or would be saved as another.
std::uint64_t elementOfNumber(hvClassID classId, std::string_view text);
/// The bits for one of the quoted texts. Throws `Error` for any other text and for integer classes.
std::uint64_t elementOfText(hvClassID classId, std::string_view text);

/// Bytes of an element of that class, 0 for classes without numbers.
std::size_t elementSize(hvClassID classId) noexcept;

}  // namespace workbench
