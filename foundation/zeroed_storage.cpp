#include "foundation/zeroed_storage.h"

#include <boost/throw_exception.hpp>
#include <cstdlib>

#include "host/services.h"

namespace foundation::core::except::detail {

const char* bad_alloc_impl::what() const noexcept { return "out of memory"; }

}  // namespace foundation::core::except::detail

namespace ks_hmi_foundation {

void* ZeroedStorage::operator new(std::size_t size) {
    void* const storage = std::calloc(1, size);
    if (storage == nullptr) boost::throw_exception(foundation::core::except::detail::bad_alloc_impl());
    return storage;
}

void ZeroedStorage::operator delete(void* storage) noexcept { utFree(storage); }

}  // namespace ks_hmi_foundation
