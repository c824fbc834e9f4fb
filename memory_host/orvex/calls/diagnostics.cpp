#include "memory_host/orvex/calls/diagnostics.h"

#include <exception>
#include <memory>
#include <unordered_set>
#include <utility>

#include "memory_host/orvex/account/described_things.h"
#include "memory_host/orvex/account/faults.h"
#include "memory_host/orvex/calls/errors.h"
#include "memory_host/orvex/calls/message_catalogue.h"
#include "memory_host/orvex/calls/warnings.h"

namespace orvex {
namespace {

using Owned = std::unique_ptr<const kssvDiagnosticImpl>;

std::unordered_set<const kssvDiagnosticImpl*>& liveDiagnostics() {
    static auto& live = *new std::unordered_set<const kssvDiagnosticImpl*>;
    return live;
}

// Takes the diagnostic from its holder; null for null and for one that was consumed before.
Owned consumed(kssvDiagnosticImpl* diagnostic) noexcept {
    if (!diagnostic) return nullptr;
    if (liveDiagnostics().erase(diagnostic) == 1) return Owned(diagnostic);
    warn({"orvex:errors", "DiagnosticConsumedTwice", "A diagnostic was used again after it had been consumed."});
    return nullptr;
}

kssvDiagnosticImpl* fromException(const std::exception_ptr& exception, const Site& site) {
    const auto plain = [&site](std::string text) {
        const resource_core::BaseMsgID id("orvex:errors", "UnexpectedException", {text});
        return new kssvDiagnosticImpl(id, std::move(text), site);
    };
    try {
        std::rethrow_exception(exception);
    } catch (const kssvIException& failure) {
        return new kssvDiagnosticImpl(failure.messageId(), failure.what(), site);
    } catch (const std::exception& failure) {
        return plain(failure.what());
    } catch (...) {
        return plain("An unknown exception was caught.");
    }
}

}  // namespace

std::string internal::describeDiagnosticOf(const LedgerEntry& entry) {
    return "diagnostic \"" + static_cast<const kssvDiagnosticImpl&>(entry).text() + "\"";
}

}  // namespace orvex

kssvDiagnosticImpl::kssvDiagnosticImpl(const resource_core::BaseMsgID& id, std::string text, const orvex::Site& site)
    : LedgerEntry(orvex::LedgerKind::diagnostic, site), m_id(id), m_text(std::move(text)) {
    orvex::liveDiagnostics().insert(this);
}

void kssvReportAsWarning(kssvDiagnosticImpl* diagnostic) noexcept {
    const auto owned = orvex::consumed(diagnostic);
    if (owned) orvex::warn({owned->id().catalogue(), owned->id().key(), owned->text(), owned->id().arguments()});
}

void kssvDiscardDiagnostic(kssvDiagnosticImpl* diagnostic) noexcept { orvex::consumed(diagnostic); }

kssvDiagnosticImpl* kssvCreateDiagnostic(const resource_core::BaseMsgID& id, const std::string& text) {
    orvex::faults::point(orvex::faults::Operation::createDiagnostic);
    return new kssvDiagnosticImpl(id, text.empty() ? orvex::messageText(id) : text, "kssvCreateDiagnostic");
}

kssvDiagnosticImpl* kssvCreateDiagnosticFromCatchClause() {
    const std::exception_ptr handled = std::current_exception();
    orvex::faults::point(orvex::faults::Operation::createDiagnostic);
    if (!handled) orvex::raise("InvalidArgument", "No exception is being handled.");
    return orvex::fromException(handled, "kssvCreateDiagnosticFromCatchClause");
}

void kssvThrowIExceptionFromDiagnostic(kssvDiagnosticImpl* diagnostic, void* reserved) {
    const auto owned = orvex::consumed(diagnostic);
    if (!owned || reserved) orvex::raise("InvalidArgument", "There is no diagnostic to throw.");
    throw kssvIException(owned->id(), owned->text());
}
