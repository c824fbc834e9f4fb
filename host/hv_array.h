#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "host/api.h"

/// Host array values: how the platform's data is made, read, written and released.
///
/// Ownership. A created value belongs to the code that created it until it is handed to a struct
/// field, a cell or a result; `const hvArray*` always borrows. A value read from a field or a cell
/// belongs to its container. Operations that take a value over take it in every case, also when
/// they throw.
/// Failures. An operation throws the host's exception (`kssvIException`) on misuse and
/// `std::bad_alloc` on exhausted memory, unless its contract says otherwise. A null value is never
/// undefined behaviour: tests answer false, counts 0, look-ups null; conversions throw.
/// Positions and element numbers are 0-based; elements are in storage order, first dimension fastest.
/// Thread: the host's interpreter thread only.
struct hvArray;
/// The classes of values, by the host's numbers; `hvGetClassName` tells the class of an object.
enum hvClassID : std::uint32_t {
    hvUNKNOWN_CLASS = 0,
    hvDOUBLE_CLASS = 1,
    hvSTRUCT_CLASS = 2,
    hvLOGICAL_CLASS = 3,
    hvCHAR_CLASS = 4,
    hvCELL_CLASS = 5,
    hvSINGLE_CLASS = 6,
    hvINT8_CLASS = 7,
    hvUINT8_CLASS = 8,
    hvINT16_CLASS = 9,
    hvUINT16_CLASS = 10,
    hvINT32_CLASS = 11,
    hvUINT32_CLASS = 12,
    hvINT64_CLASS = 13,
    hvUINT64_CLASS = 14,
    hvOBJECT_CLASS = 15,
};
/// Whether numbers have an imaginary part. Only real values exist here.
enum hvComplexity : std::uint32_t { hvREAL = 0, hvCOMPLEX = 1 };

/// Lifetime scopes of a value. A null scope is scope 0.
enum hvVariableScope : std::uint32_t {
    hvSCOPE_NONE = 0,    ///< detached: in no scope, the owner releases it
    hvSCOPE_RESULT = 4,  ///< a value that outlives the host call it is handed out of; the owner releases it
};

/// Releases values that the caller owns.
struct OX_API THvArrayDeleter {
    /// Releases `value` and takes it out of any scope first; null does nothing.
    static void destroy(hvArray* value) noexcept;
    void operator()(hvArray* value) const noexcept;  ///< Calls `destroy`.
};

/// An owned host value.
using HvArrayPtr = std::unique_ptr<hvArray, THvArrayDeleter>;

// ---- creating -----------------------------------------------------------------------------------

/// A struct array of the given dimensions; fields in the order of the names, all values empty (absent).
/// The dimension list of a single value N means N x 1 (for every creator that takes dimensions).
OX_API hvArray* hvCreateStructArray(std::size_t ndim, const std::size_t* dims, int nfields,
                                    const char* const* fieldNames);
/// A 1xN character array from NUL-terminated UTF-8.
OX_API hvArray* hvCreateString(const char* text);
/// A real 1x1 double.
OX_API hvArray* hvCreateDoubleScalar(double value);
/// A 1x1 logical.
OX_API hvArray* hvCreateLogicalScalar(bool value);
/// A 1x1 numeric of the class, value 0. Only real values exist; another complexity throws.
OX_API hvArray* hvCreateNumericScalar(hvClassID classID, hvComplexity complexity);
/// An m x n numeric of the class, zeros.
OX_API hvArray* hvCreateNumericMatrix(std::size_t m, std::size_t n, hvClassID classID, hvComplexity complexity);
/// A cell array of empty cells.
OX_API hvArray* hvCreateCellArray(std::size_t ndim, const std::size_t* dims);
/// An independent copy, recursively. Objects are handles: their copies name the same object.
OX_API hvArray* hvCreateDeepCopy(const hvArray* value);
/// A copy that shares the data until either is written.
OX_API hvArray* hvCreateSharedDataCopy(const hvArray* value);

namespace matrix {
/// As `hvCreateStructArray`, for field counts known at run time only.
OX_API hvArray* create_struct(std::span<const std::size_t> dims, std::span<const char* const> fieldNames);
/// A 1xN character array from `length` bytes of UTF-8 (ill-formed sequences become U+FFFD).
OX_API hvArray* create(const char* text, std::size_t length);
/// A 1xN character array from `length` UTF-16 code units, kept exactly.
OX_API hvArray* create(const char16_t* text, std::size_t length);
/// A numeric array of any number of dimensions, zeros.
OX_API hvArray* create_numeric(std::span<const std::size_t> dims, hvClassID classID, hvComplexity complexity);
/// Releases a value that the caller owns; null does nothing.
OX_API void destroyArray(hvArray* value) noexcept;
/// The character array's code units, all elements in storage order. Throws for another class.
OX_API std::u16string get_ustring(const hvArray* value);
}  // namespace matrix

// ---- reading ------------------------------------------------------------------------------------

/// The value's class; `hvUNKNOWN_CLASS` for null.
OX_API hvClassID hvGetClassID(const hvArray* value) noexcept;
/// The class word: the class, with bit 0x10 set for a struct array that was read from a saved file
/// (so 2 and 18 are both structs). 0 for null.
OX_API std::uint32_t hvGetClassWord(const hvArray* value) noexcept;
/// The class's name ("double", "struct", the dotted name of an object's class); never null.
OX_API const char* hvGetClassName(const hvArray* value) noexcept;
OX_API std::size_t hvGetNumberOfDimensions(const hvArray* value) noexcept;  ///< 2 or more; 0 for null.
/// `hvGetNumberOfDimensions` lengths, valid while the value lives; null for null.
OX_API const std::size_t* hvGetDimensions(const hvArray* value) noexcept;
OX_API std::size_t hvGetNumberOfElements(const hvArray* value) noexcept;  ///< Product of dimensions; 0 for null.
/// True when any dimension is 0, and for null.
OX_API bool hvIsEmpty(const hvArray* value) noexcept;
/// True when the value is an object of the named host class or of a subclass.
OX_API bool hvIsA(const hvArray* value, const char* className) noexcept;
/// True only for a 1x1 logical whose value is true.
OX_API bool hvIsLogicalScalarTrue(const hvArray* value) noexcept;

/// The named field of element `index`, borrowed, or null when the value is no struct, has no such
/// element or field, or the field holds nothing. Never throws.
OX_API const hvArray* hvGetField(const hvArray* structArray, std::size_t index, const char* name) noexcept;
/// Number of fields of a struct array, 0 for any other value.
OX_API int hvGetNumberOfFields(const hvArray* value) noexcept;
/// Name of field `fieldNumber` (0-based) in UTF-8, valid while the value lives; null when there is none.
OX_API const char* hvGetFieldNameByNumber(const hvArray* value, int fieldNumber) noexcept;
/// Cell `index`, borrowed, or null when the value is no cell array, has no such cell, or it is unset.
OX_API const hvArray* hvGetCell(const hvArray* cellArray, std::size_t index) noexcept;

/// A new value with a copy of the named property of object element `index`. Throws when there is none.
OX_API hvArray* hvGetProperty(const hvArray* object, std::size_t index, const char* name);
/// The same as a shared-data copy; the caller owns the result.
OX_API hvArray* hvGetPropertyShared(const hvArray* object, std::size_t index, const char* name);

/// The character array's text as UTF-8 (ill-formed UTF-16 becomes U+FFFD). Throws for another class.
OX_API std::string hvArrayToStdString(const hvArray* value);
/// The first element converted to double. Throws for an empty value and for a class that is no number,
/// logical or character.
OX_API double hvGetScalar(const hvArray* value);
/// The first element converted to a 64-bit integer: doubles truncate toward zero and saturate, NaN
/// is 0, unsigned 64-bit values saturate. Throws as `hvGetScalar`.
OX_API std::int64_t hvGetScalarInt(const hvArray* value);
/// The logical data, valid until the value is written or released; null for another class.
OX_API const bool* hvGetLogicals(const hvArray* value) noexcept;
/// The double data, valid until the value is written or released; null for another class.
OX_API const double* hvGetDoubles(const hvArray* value) noexcept;
/// The UTF-16 code units, not terminated; null for another class.
OX_API const char16_t* hvGetChars(const hvArray* value) noexcept;
/// The data of a numeric, logical or character array, typed by its class; null for another class.
OX_API const void* hvGetData(const hvArray* value) noexcept;

// ---- writing ------------------------------------------------------------------------------------

/// The same data for writing; what other values share is copied first.
OX_API void* hvGetDataForWriting(hvArray* value);
/// Stores `value` (taking ownership) in the named field of element `index`, releasing what was there.
/// Throws when there is no such field or element.
OX_API void hvReplaceField(hvArray* structArray, std::size_t index, const char* name, hvArray* value);
/// Stores `value` (taking ownership) without releasing an earlier one; for fresh structs only.
OX_API void hvSetField(hvArray* structArray, std::size_t index, const char* name, hvArray* value);
/// Stores `value` (taking ownership) into the cell, releasing what was there.
OX_API void hvSetCell(hvArray* cellArray, std::size_t index, hvArray* value);
/// Copies `value` into the named property of object element `index`; the caller keeps its value.
/// Throws when there is no such property, it is read-only, or the value does not convert to its type.
OX_API void hvSetProperty(hvArray* object, std::size_t index, const char* name, const hvArray* value);
/// Gives the value a lifetime scope and takes it out of the local scope it may be in.
OX_API void hvSetArrayScope(hvArray* value, hvVariableScope scope) noexcept;
/// The same with no scope: detached, the owner releases it.
OX_API void hvSetArrayScope(hvArray* value, std::nullptr_t) noexcept;
