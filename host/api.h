#pragma once

/// Marks what the platform exports to the libraries that are loaded into it.
#define OX_API __attribute__((visibility("default")))
