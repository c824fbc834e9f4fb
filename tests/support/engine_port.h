#pragma once

/// The engine's ports are opaque to the library; here they need only addresses.
struct ksPort {
    int number = 0;
};
