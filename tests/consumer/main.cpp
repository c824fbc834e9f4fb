#include <cstdlib>
#include <exception>
#include <iostream>

#include "foundation/model_path.h"
#include "memory_host/orvex/calls/library_loader.h"
#include "memory_host/orvex/objects/object_system.h"
#include "signals/signal_specification.h"

namespace {

bool recordsAreUsable() {
    ks_hmi::SignalSpecification signal;
    signal.m_blockPath = ks_hmi_foundation::RemoveModelFromPath(u"cruise/Sensors/Wheel Speed", u"cruise");
    signal.m_outputPortIndex = 1;
    return ks_hmi_foundation::AddModelToPath(signal.m_blockPath, u"cruise") == u"cruise/Sensors/Wheel Speed" &&
           signal.clone()->isEqual(&signal);
}

bool libraryLoadsIntoTheHost() {
    orvex::LoadedLibrary library(KS_HMI_LIBRARY);
    const bool loaded = library.isLoaded() && library.symbol("OXTerminate_ks_hmi_foundation") != nullptr;
    orvex::releaseObjectSystem();
    return loaded;
}

}  // namespace

int main() {
    try {
        const bool good = recordsAreUsable() && libraryLoadsIntoTheHost();
        std::cout << (good ? "the installed package works\n" : "the installed package is wrong\n");
        return good ? EXIT_SUCCESS : EXIT_FAILURE;
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return EXIT_FAILURE;
    }
}
