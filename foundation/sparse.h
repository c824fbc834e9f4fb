#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>

namespace ks_hmi_foundation {

/// A text or a container that is empty in most records, and has a pointer's room then. Read as the const value itself,
/// assigned to as one; changed in place through `edit`. References to the value are valid until it becomes empty.
template <class T>
class Sparse {
public:
    Sparse() noexcept = default;
    Sparse(const Sparse& other) : m_value(other.m_value ? std::make_unique<T>(*other.m_value) : nullptr) {}
    Sparse(Sparse&&) noexcept = default;
    ~Sparse() = default;
    Sparse& operator=(const Sparse& other) { return *this = other.get(); }
    Sparse& operator=(Sparse&&) noexcept = default;
    Sparse& operator=(T value) {
        if (value.empty())
            m_value.reset();
        else
            edit() = std::move(value);
        return *this;
    }

    const T& get() const noexcept {
        static const T s_empty;
        return m_value ? *m_value : s_empty;
    }
    operator const T&() const noexcept { return get(); }
    /// Of a text.
    operator std::basic_string_view<typename T::value_type>() const noexcept requires requires {
        typename T::traits_type;
    }
    { return get(); }
    /// For changes; the value stays where it is afterwards, also when it is empty.
    T& edit() {
        if (!m_value) m_value = std::make_unique<T>();
        return *m_value;
    }

    bool empty() const noexcept { return get().empty(); }
    std::size_t size() const noexcept { return get().size(); }
    auto begin() const noexcept { return get().begin(); }
    auto end() const noexcept { return get().end(); }
    template <class Key>
    auto find(const Key& key) const {
        return get().find(key);
    }
    template <class Key>
    auto& operator[](Key&& key) {
        return edit()[std::forward<Key>(key)];
    }
    void clear() noexcept { m_value.reset(); }

    friend bool operator==(const Sparse& a, const Sparse& b) { return a.get() == b.get(); }
    friend bool operator==(const Sparse& a, const T& b) { return a.get() == b; }

private:
    std::unique_ptr<T> m_value;
};

}  // namespace ks_hmi_foundation
