#pragma once

/// What `installHostSide` puts together; each defines its part unless that is there.
namespace kestrel {

void defineSignalSpecification();
void defineIsEqual();
void defineRebinding();

}  // namespace kestrel
