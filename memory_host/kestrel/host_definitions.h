#pragma once

/// What `installHostSide` puts together; each defines its part unless that is there.
namespace kestrel {

void defineSignalSpecification();
void defineIsEqual();
void defineRebinding();
void defineSignalClient();
void defineModelObservers();
void defineInterfaceManager();
void defineObserverFunctions();
void definePortQueries();

/// Says what the classes are for, those that the library registers and these, and the functions.
void noteHostSide();

/// Forgets the renames and events recorded so far.
void clearRecords() noexcept;

}  // namespace kestrel
