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
    /// Copies the value.
    Sparse(const Sparse& other) : m_value(other.m_value ? std::make_unique<T>(*other.m_value) : nullptr) {}
    Sparse(Sparse&&) noexcept = default;  ///< Leaves the other one empty.
    ~Sparse() = default;
    Sparse& operator=(const Sparse& other) { return *this = other.get(); }  ///< Copies the value.
    Sparse& operator=(Sparse&&) noexcept = default;                         ///< Leaves the other one empty.
    Sparse& operator=(T value) {                                            ///< Takes the value over.
        if (value.empty())
            m_value.reset();
        else
            edit() = std::move(value);
        return *this;
    }

    const T& get() const noexcept {  ///< The value; an empty one where there is none.
        static const T s_empty;
        return m_value ? *m_value : s_empty;
    }
    operator const T&() const noexcept { return get(); }  ///< The same.
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

    bool empty() const noexcept { return get().empty(); }       ///< Whether it is.
    std::size_t size() const noexcept { return get().size(); }  ///< Units or elements.
    auto begin() const noexcept { return get().begin(); }       ///< As of the const value.
    auto end() const noexcept { return get().end(); }           ///< As of the const value.
    template <class Key>
    auto find(const Key& key) const {  ///< As of the const value.
        return get().find(key);
    }
    template <class Key>
    auto& operator[](Key&& key) {  ///< As of the value, for changes.
        return edit()[std::forward<Key>(key)];
    }
    void clear() noexcept { m_value.reset(); }  ///< Makes it empty.

    friend bool operator==(const Sparse& a, const Sparse& b) { return a.get() == b.get(); }  ///< Compares values.
    friend bool operator==(const Sparse& a, const T& b) { return a.get() == b; }             ///< Compares values.

private:
    std::unique_ptr<T> m_value;
};

}  // namespace ks_hmi_foundation
