#pragma once

/// An output port of the simulation engine. Only its address matters to the library: it is the port's identity.
struct ksPort;
