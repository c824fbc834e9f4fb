#pragma once

#include <boost/smart_ptr/make_shared.hpp>
#include <boost/smart_ptr/shared_ptr.hpp>
#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "host/hv_array.h"

/// A sequence of records as one struct array, an element per record.
namespace ks_hmi_foundation {

/// A new N x 1 struct array with the fields, each element written by `write` (record, array, 0-based index).
template <class Record, class Write>
HvArrayPtr persistRecords(const std::vector<boost::shared_ptr<Record>>& records, std::span<const char* const> fields,
                          Write write) {
    const std::size_t count = records.size();
    HvArrayPtr data(hvCreateStructArray(1, &count, static_cast<int>(fields.size()), fields.data()));
    for (std::size_t i = 0; i < count; ++i) write(*records[i], data.get(), i);
    return data;
}

/// Hands a record read from each element of `data` to `append`, in order; nothing for a null or empty value.
/// When an element cannot be read, the ones before it have been appended and the error propagates.
template <class Record, class Append>
void appendRecords(const hvArray* data, Append append) {
    // Kept: what is there already stays, so that the same data twice is held twice.
    const std::size_t count = hvGetNumberOfElements(data);
    for (std::size_t i = 0; i < count; ++i) {
        append(boost::make_shared<Record>(data, i, std::u16string()));
    }
}

}  // namespace ks_hmi_foundation
