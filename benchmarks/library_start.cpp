#include <chrono>
#include <cstdio>

#include "host/messages.h"
#include "memory_host/kestrel/host_side.h"
#include "memory_host/orvex/calls/library_loader.h"

// Prints how many nanoseconds loading and initialising the library takes in this fresh process.
int main(int argc, char** argv) {
    if (argc != 2) return 2;
    try {
        kestrel::installHostSide();
        const auto begin = std::chrono::steady_clock::now();
        const orvex::LoadedLibrary library(argv[1]);
        const std::chrono::nanoseconds taken = std::chrono::steady_clock::now() - begin;
        std::printf("%lld\n", static_cast<long long>(taken.count()));
        std::fflush(stdout);
    } catch (const kssvIException& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
