#include "tests/support/failing_calloc.h"

#include <cstddef>

#include "tests/support/sanitized.h"

static constinit thread_local bool t_isFailing = false;

namespace ks_test {

FailingCalloc::FailingCalloc() noexcept { t_isFailing = true; }
FailingCalloc::~FailingCalloc() { t_isFailing = false; }
bool FailingCalloc::isPossible() noexcept { return KS_HMI_SANITIZED == 0; }

}  // namespace ks_test

#if !KS_HMI_SANITIZED

// The program's own function takes the place of the C library's, which is still there under its inner name.
extern "C" {

void* __libc_calloc(std::size_t count, std::size_t size);

void* calloc(std::size_t count, std::size_t size) { return t_isFailing ? nullptr : __libc_calloc(count, size); }

}  // extern "C"

#endif
