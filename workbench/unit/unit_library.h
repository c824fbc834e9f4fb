#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace workbench {

/// What a unit did wrong; its texts are UTF-8, whatever the unit's were.
class UnitFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

enum class UnitLogLevel : std::uint8_t { information, warning, error };
/// "information", "warning", "error"
constexpr const char* nameOf(UnitLogLevel level) noexcept {
    return level == UnitLogLevel::error ? "error" : level == UnitLogLevel::warning ? "warning" : "information";
}
/// Takes a unit's message. Called by whatever thread the unit has.
using UnitLog = std::function<void(UnitLogLevel level, std::string_view category, std::string_view text)>;

/// A unit's binary in this process: what it does from loading on, it does to the process.
class UnitLibrary {
public:
    /// Throws `UnitFailure`.
    explicit UnitLibrary(const std::string& path);

    /// A function that the standard demands. Throws `UnitFailure` when it is not there.
    template <class Function>
    Function get(const char* name) const {
        return reinterpret_cast<Function>(find(name));
    }

private:
    struct Closer {
        void operator()(void* library) const noexcept;
    };
    void* find(const char* name) const;

    std::unique_ptr<void, Closer> m_library;
};

}  // namespace workbench
