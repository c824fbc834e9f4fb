#pragma once

/// Marks what the library offers to other libraries of the environment.
#define KS_HMI_EXPORT __attribute__((visibility("default")))

/// Keeps a member of an exported class inside the library.
#define KS_HMI_LOCAL __attribute__((visibility("hidden")))
