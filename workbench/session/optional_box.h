#pragma once

#include <memory>
#include <optional>
#include <utility>

namespace workbench {

/// As `std::optional`, for a value that is mostly not there: it takes the room of a pointer then.
template <class Value>
class OptionalBox {
public:
    OptionalBox() noexcept = default;
    OptionalBox(std::nullopt_t) noexcept {}
    OptionalBox(Value value) : m_value(std::make_unique<Value>(std::move(value))) {}
    OptionalBox(std::optional<Value> value) : m_value(value ? std::make_unique<Value>(*std::move(value)) : nullptr) {}
    OptionalBox(const OptionalBox& other) : m_value(other ? std::make_unique<Value>(*other) : nullptr) {}
    OptionalBox(OptionalBox&&) noexcept = default;
    OptionalBox& operator=(OptionalBox other) noexcept {
        m_value.swap(other.m_value);
        return *this;
    }
    ~OptionalBox() = default;

    explicit operator bool() const noexcept { return m_value != nullptr; }
    Value& operator*() noexcept { return *m_value; }
    const Value& operator*() const noexcept { return *m_value; }
    Value* operator->() noexcept { return m_value.get(); }
    const Value* operator->() const noexcept { return m_value.get(); }

private:
    std::unique_ptr<Value> m_value;
};

}  // namespace workbench
