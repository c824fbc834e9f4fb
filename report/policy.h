#pragma once

#include <string>

namespace report {

/// The page's Content-Security-Policy: its own style sheet, its own script and images inside the page, and nothing
/// else from anywhere.
std::string contentPolicy();

}  // namespace report
