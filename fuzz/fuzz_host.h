#pragma once

#include <cstddef>
#include <cstdint>

/// What the fuzz targets share. A target is a program with `LLVMFuzzerTestOneInput`; it aborts on what must not be.
namespace ks_fuzz {

/// Takes numbers off the input, byte by byte; zeros when nothing is left.
class Bytes {
public:
    Bytes(const std::uint8_t* data, std::size_t size) noexcept : m_next(data), m_end(data + size) {}

    bool areLeft() const noexcept { return m_next != m_end; }
    std::size_t byte() noexcept { return areLeft() ? *m_next++ : 0; }
    /// Up to `limit` - 1.
    std::size_t below(std::size_t limit) noexcept { return byte() % limit; }

private:
    const std::uint8_t* m_next;
    const std::uint8_t* m_end;
};

/// Brings the host and the library into the process, once.
void enterHost();

/// Prints what does not hold, and aborts.
[[noreturn]] void fail(const char* what);
inline void require(bool holds, const char* what) {
    if (!holds) fail(what);
}

/// Closes all models, forgets warnings and recorded events, and requires that nothing lives in the host any more.
void requireNothingLives();

}  // namespace ks_fuzz
