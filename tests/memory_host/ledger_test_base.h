#pragma once

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "host/hv_array.h"
#include "host/messages.h"
#include "memory_host/orvex/ledger.h"
#include "memory_host/orvex/warnings.h"

/// Ends with as many live values, objects and diagnostics as it began with, and starts without warnings.
class LedgerTest : public ::testing::Test {
protected:
    LedgerTest() { orvex::clearWarnings(); }
    void TearDown() override { EXPECT_EQ(orvex::liveCounts(), m_before) << orvex::describeLive(); }

private:
    const orvex::LedgerCounts m_before = orvex::liveCounts();
};

/// The key of the host exception that `action` throws, with its text behind a colon; "" when it does not.
template <typename Action>
std::string failureOf(Action action) {
    try {
        action();
    } catch (const kssvIException& failure) {
        return failure.messageId().key() + ": " + failure.what();
    }
    return {};
}

inline HvArrayPtr number(double value) { return HvArrayPtr(hvCreateDoubleScalar(value)); }
inline HvArrayPtr text(const std::string& utf8) { return HvArrayPtr(matrix::create(utf8.data(), utf8.size())); }
inline HvArrayPtr text(const std::u16string& units) { return HvArrayPtr(matrix::create(units.data(), units.size())); }

/// A struct column of `rows` elements with the fields "a" and "b".
inline HvArrayPtr structOf(std::size_t rows) {
    static constexpr std::array kNames{"a", "b"};
    return HvArrayPtr(hvCreateStructArray(1, &rows, 2, kNames.data()));
}
