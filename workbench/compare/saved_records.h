#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/hv_array.h"
#include "memory_host/kestrel/model.h"
#include "workbench/model_file/model_extras.h"
#include "workbench/model_file/record_table.h"

/// Saved signals and clients as they stand in a file, without a host that has them open. Positions are 0-based.
namespace workbench {

/// One of the records of a struct array.
struct RecordPlace {
    const hvArray* records = nullptr;
    std::size_t position = 0;
};

/// The text of a field; empty where it is unset.
std::u16string recordText(const hvArray* records, std::size_t position, const char* field);
/// The same, valid until the field is set or the records are gone.
std::u16string_view recordView(const hvArray* records, std::size_t position, const char* field) noexcept;
/// Leaves a field alone that has the text.
void setRecordText(hvArray* records, std::size_t position, const char* field, std::u16string_view text);
/// A parameter of a chart signal, valid as long; empty when there is none.
std::u16string_view domainParameter(const hvArray* signals, std::size_t position, const char* name);

/// Finds the blocks that saved signals are on, most of which are on that of the one before. It does not outlive the
/// model, which must not change meanwhile.
class SavedBlocks {
public:
    explicit SavedBlocks(const kestrel::Model& model) : m_model(&model) {}
    /// Null when the model does not have it.
    const kestrel::Block* of(const RecordPlace& signal);
    const kestrel::Block* of(std::u16string_view eid, std::u16string_view path);

private:
    const kestrel::Model* m_model;
    std::u16string m_eid, m_path;  ///< what was asked for last
    std::optional<const kestrel::Block*> m_block;
};

/// The field as JSON in one form for everything that reads the same: a field that is unset as what it stands for, flags
/// as true or false, parameters sorted by name.
std::string canonicalField(const hvArray* records, std::size_t position, const char* field);
/// Whether both have the same canonical form.
bool isSameField(const hvArray* one, std::size_t position, const hvArray* other, std::size_t otherPosition,
                 const char* field);

/// Whether that is so of all saved fields.
bool isSameRecord(RecordKind kind, const RecordPlace& one, const RecordPlace& other);
/// Those records, in that order, marked as read from a file; what is unset is set to what it stands for. The values are
/// shared with the originals, which stay as they are when a field of the copy is set.
HvArrayPtr copyRecords(RecordKind kind, const std::vector<RecordPlace>& places);
/// Has a field be what it is in another record, in the same way.
void copyField(hvArray* records, std::size_t position, const char* field, const RecordPlace& from);

/// A copy of its own.
ParkedMark copyOf(const ParkedMark& mark);

/// Which records of two lists have the same UUID, each the position in the other list; of several with the same UUID
/// the first goes with the first.
struct RecordPairs {
    std::vector<std::optional<std::size_t>> ofFirst;
    std::vector<std::optional<std::size_t>> ofSecond;
};
RecordPairs pairRecords(const hvArray* first, const hvArray* second);

/// Which of the numbers, all different, stand in another order: the fewest that have to be moved to have the rest
/// ascend. Indices into the list, ascending.
std::vector<std::size_t> outOfOrder(const std::vector<std::size_t>& numbers);

}  // namespace workbench
