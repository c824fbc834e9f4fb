#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "host/hv_array.h"
#include "host/messages.h"
#include "host/values.h"
#include "workbench/check/check_file.h"

/// What the checks of signals and of clients have in common.
namespace workbench {

/// Adds findings about the records of one kind.
class RecordChecks {
public:
    RecordChecks(CheckedFile& checked, RecordKind kind);

    std::size_t count() const noexcept { return hvGetNumberOfElements(m_records); }
    /// Runs `check(record, position)` for each record that can be read. A field that the host refuses is a finding.
    template <class Record, class Check>
    void each(Check check) {
        for (const std::size_t i : ks_host::indicesOf(m_records)) {
            Record record;
            if (!isFaulty(i) && isRead(i, [&] { record.setFromPersistentData(m_records, i); })) check(record, i);
        }
    }
    Finding& add(FindingCode code, std::size_t position, const std::string& field, std::string text);
    /// The same of a record that has that UUID and comes from there.
    Finding& add(FindingCode code, std::size_t position, const std::string& field, std::string text,
                 std::string_view uuid, std::string subject);
    /// A record without a UUID, or with that of an earlier one, is a finding, valid until the next; else null.
    Finding* checkUuid(const std::string& uuid, std::size_t position);

private:
    /// Whether a value of the record was refused when the file was read; it is not to be looked at then.
    bool isFaulty(std::size_t position) const;
    template <class Read>
    bool isRead(std::size_t position, Read read) {
        try {
            read();
            return true;
        } catch (const kssvIException& refusal) {
            if (!addRefusal(position, refusal)) throw;
            return false;
        }
    }
    /// False for a refusal that is about no field.
    bool addRefusal(std::size_t position, const kssvIException& refusal);
    const char* kindName() const noexcept { return m_kind == RecordKind::signal ? "signal" : "client"; }

    CheckedFile& m_checked;
    RecordKind m_kind;
    const hvArray* m_records;
    std::unordered_set<std::string> m_faulty;  ///< pointers of records
    std::unordered_map<std::string, std::size_t> m_uuids;
};

}  // namespace workbench
