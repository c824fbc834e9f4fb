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

/// Records that follow one another in a file.
struct CheckedSlice {
    const hvArray* records;             ///< struct array with the saved fields
    const MarkedNameList& markedNames;  ///< of signals; the last ones may be left out
    std::size_t first = 0;              ///< position of the first one in the file, 0-based
};

/// What is known of a file's records of one kind before they come.
struct CheckedList {
    std::size_t count = 0;
    const RecordLines* lines = nullptr;  ///< where they are; null when there is no file yet
};

/// The checks of one kind of records, which come slice by slice.
class SliceChecks {
public:
    virtual ~SliceChecks() = default;
    virtual void take(const CheckedSlice& slice) = 0;
    /// All were taken.
    virtual void end() = 0;
};

/// Adds findings about the records of one kind.
class RecordChecks {
public:
    RecordChecks(CheckedFile& checked, RecordKind kind, const CheckedList& list);

    /// Runs `check(record, position)` for each of these records that can be read. A field that the host refuses is a
    /// finding.
    template <class Record, class Check>
    void each(const CheckedSlice& slice, Check check) {
        for (const std::size_t i : ks_host::indicesOf(slice.records)) {
            Record record;
            const std::size_t position = slice.first + i;
            const auto read = [&] { record.setFromPersistentData(slice.records, i); };
            if (!isFaulty(position) && isRead(position, read)) check(record, position);
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
    const RecordLines* m_lines;
    std::unordered_set<std::string> m_faulty;  ///< pointers of records
    std::unordered_map<std::string, std::size_t> m_uuids;
};

}  // namespace workbench
