#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "host/hv_array.h"
#include "host/messages.h"
#include "workbench/check/check_file.h"

/// What the checks of signals and of clients have in common.
namespace workbench {

/// Adds findings about the records of one kind.
class RecordChecks {
public:
    RecordChecks(CheckedFile& checked, RecordKind kind);

    std::size_t count() const noexcept { return hvGetNumberOfElements(m_records); }
    const hvArray* records() const noexcept { return m_records; }
    /// Whether a value of the record was refused when it was read; it is not to be looked at then.
    bool isFaulty(std::size_t position) const;
    /// Runs `read`, which reads the record. False when the host refuses a field; that is a finding.
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
    Finding& add(FindingCode code, std::size_t position, const std::string& field, std::string text);
    /// The same of a record that has that UUID and comes from there.
    Finding& add(FindingCode code, std::size_t position, const std::string& field, std::string text,
                 std::string_view uuid, std::string subject);
    /// The position of an earlier record with the UUID; the record is entered when there is none.
    std::size_t firstWith(const std::string& uuid, std::size_t position);

private:
    /// False for a refusal that is about no field.
    bool addRefusal(std::size_t position, const kssvIException& refusal);

    CheckedFile& m_checked;
    RecordKind m_kind;
    const hvArray* m_records;
    std::unordered_set<std::string> m_faulty;  ///< pointers of records
    std::unordered_map<std::string, std::size_t> m_uuids;
};

/// Whether a text can name a field of the host: a letter, then letters, digits and underscores.
bool isFieldName(std::string_view text) noexcept;

}  // namespace workbench
