#pragma once

namespace ks_test {

/// Fails every `calloc` of this thread while it lives, in all libraries. With a sanitizer nothing fails.
class FailingCalloc {
public:
    FailingCalloc() noexcept;
    FailingCalloc(const FailingCalloc&) = delete;
    FailingCalloc& operator=(const FailingCalloc&) = delete;
    ~FailingCalloc();
    /// False in programs built with a sanitizer.
    static bool isPossible() noexcept;
};

}  // namespace ks_test
