#pragma once

namespace orvex {

/// Keeps the library that `address` lies in loaded until `releaseLibraries`, whoever closes it meanwhile: what it
/// registered is code of the library. Does nothing for an address of the program itself.
void pinLibraryOf(const void* address);

/// Lets go of them all; one that nobody else has loaded goes at once.
void releaseLibraries() noexcept;

}  // namespace orvex
