#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace workbench {

enum class ErrorCode : std::uint8_t {
    request,  ///< what was asked for cannot be done, or names what is not there
    noMatch,  ///< what was searched for is nowhere
    format,   ///< a file is no model file
    model,    ///< what a model file holds does not fit together
    file,     ///< a file cannot be opened, read or replaced
    inUse,    ///< a file is being saved by somebody else, or has been since it was read
    host,     ///< the host refused
};

/// What a front end can offer to do about an error, worded in its own terms.
enum class Remedy : std::uint8_t {
    none,            ///< the text says all
    listBlocks,      ///< look at the model's blocks
    listSignals,     ///< look at the model's signals
    listClients,     ///< look at the model's clients
    usePatterns,     ///< say that what was given as a name is a pattern
    unmark,          ///< ask for the marks to be removed, too
    removeBelow,     ///< ask for what is below to be removed, too
    nameUnit,        ///< say which .fmu is meant
    replaceFile,     ///< ask for the file to be replaced
    updateFile,      ///< ask for the file to be updated to the next version
    carryMarks,      ///< import to another file, with the error's file as the version before, and carry the marks over
    removeDangling,  ///< remove the signals of the error's file whose source is gone
    settleNames,     ///< let the marks of the error's file follow their names, or confirm them
};

/// Where in a file an error is. All parts may be missing.
struct ErrorPlace {
    std::string file{};
    std::size_t line = 0;    ///< 1-based; 0 for the whole file
    std::string pointer{};   ///< JSON pointer
    std::size_t column = 0;  ///< 1-based, in bytes; told where JSON or XML itself is broken
};

/// What cannot be done, and why. Texts are UTF-8, one line. `what()` is "FILE:LINE: /json/pointer: text".
class Error : public std::runtime_error {
public:
    explicit Error(const std::string& text, ErrorCode code = ErrorCode::request, Remedy remedy = Remedy::none)
        : Error({}, text, code, remedy) {}
    Error(ErrorPlace place, const std::string& text, ErrorCode code, Remedy remedy = Remedy::none);

    ErrorCode code() const noexcept { return m_code; }
    const ErrorPlace& place() const noexcept { return m_place; }
    /// What is wrong, without the place.
    const std::string& text() const noexcept { return m_text; }
    Remedy remedy() const noexcept { return m_remedy; }
    /// The same error at another place.
    Error at(ErrorPlace place) const { return {std::move(place), m_text, m_code, m_remedy}; }

private:
    ErrorPlace m_place;
    std::string m_text;
    ErrorCode m_code;
    Remedy m_remedy;
};

/// "FILE:LINE: /json/pointer: text"; what is missing of the place is left out.
std::string atPlace(const ErrorPlace& place, const std::string& text);

/// One reference token of a JSON pointer with its leading "/", escaped.
std::string pointerToken(std::string_view key);

}  // namespace workbench
