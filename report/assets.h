#pragma once

#include <string_view>

/// What is the same on every page.
namespace report {

std::string_view styleSheet() noexcept;
std::string_view script() noexcept;
/// Their SHA-256, in hexadecimal digits.
std::string_view styleHash() noexcept;
std::string_view scriptHash() noexcept;

}  // namespace report
