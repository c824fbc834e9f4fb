#pragma once

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "host/hv_array.h"
#include "memory_host/orvex/account/ledger.h"
#include "memory_host/orvex/account/scope_errors.h"
#include "memory_host/orvex/calls/warnings.h"
#include "tests/support/values.h"

/// Ends with as many live values, objects and diagnostics as it began with and without scope errors; starts without
/// warnings.
class LedgerTest : public ::testing::Test {
protected:
    LedgerTest() {
        orvex::clearWarnings();
        orvex::clearScopeErrors();
    }
    void TearDown() override {
        EXPECT_EQ(orvex::liveCounts(), m_before) << orvex::describeLive();
        EXPECT_EQ(orvex::scopeErrors(), std::vector<std::string>());
    }

private:
    const orvex::LedgerCounts m_before = orvex::liveCounts();
};

using ks_test::failureOf;
using ks_test::number;
using ks_test::text;

/// A struct column of `rows` elements with the fields "a" and "b".
inline HvArrayPtr structOf(std::size_t rows) {
    static constexpr std::array kNames{"a", "b"};
    return ks_test::structOf(rows, kNames);
}
