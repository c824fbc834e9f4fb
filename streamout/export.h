#pragma once

/// Marks what the recording classes offer to other libraries of the environment.
#define STREAMOUT_EXPORT __attribute__((visibility("default")))
