#pragma once

#include <string>

#include "memory_host/orvex/account/ledger.h"

/// How an entry of the ledger is described, each said by what makes such things.
namespace orvex::internal {

std::string describeValueOf(const LedgerEntry& entry);
std::string describeObjectOf(const LedgerEntry& entry);
std::string describeDiagnosticOf(const LedgerEntry& entry);

}  // namespace orvex::internal
