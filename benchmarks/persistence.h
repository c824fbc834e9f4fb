#pragma once

#include <cstddef>

#include "host/hv_array.h"

namespace ks_bench {

/// The model with the blocks of that many signals, open while this lives. Only one at a time.
class OpenModel {
public:
    explicit OpenModel(std::size_t blocks);
    OpenModel(const OpenModel&) = delete;
    OpenModel& operator=(const OpenModel&) = delete;
    ~OpenModel();
};

/// That many signals as a set saves them. No `OpenModel` may live.
HvArrayPtr savedRecords(std::size_t count);

}  // namespace ks_bench
