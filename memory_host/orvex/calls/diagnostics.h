#pragma once

#include <string>

#include "host/messages.h"
#include "host/services.h"
#include "memory_host/orvex/account/ledger.h"

/// A failure on record. Made by `new`, deleted by whoever consumes it.
class kssvDiagnosticImpl : public orvex::LedgerEntry {
public:
    kssvDiagnosticImpl(const resource_core::BaseMsgID& id, std::string text, const orvex::Site& site);

    const resource_core::BaseMsgID& id() const noexcept { return m_id; }
    /// UTF-8.
    const std::string& text() const noexcept { return m_text; }

private:
    resource_core::BaseMsgID m_id;
    std::string m_text;
};
