#pragma once

/// Marks what the library offers to other libraries of the environment.
#define KS_HMI_EXPORT __attribute__((visibility("default")))
