#include "workbench/record/recorded_run.h"

#include <array>
#include <utility>

#include "workbench/record/run_readers.h"
#include "workbench/record/sqlite.h"
#include "workbench/text/csv_row.h"
#include "workbench/text/error.h"

namespace workbench {

namespace {

constexpr std::array<std::pair<ValueKind, const char*>, 6> kKinds{{{ValueKind::real, "real"},
                                                                   {ValueKind::integer, "integer"},
                                                                   {ValueKind::boolean, "boolean"},
                                                                   {ValueKind::enumeration, "enumeration"},
                                                                   {ValueKind::text, "text"},
                                                                   {ValueKind::binary, "binary"}}};

}  // namespace

const char* nameOf(ValueKind kind) noexcept {
    for (const auto& [known, name] : kKinds)
        if (known == kind) return name;
    return "";
}

std::optional<ValueKind> valueKindOf(std::string_view name) noexcept {
    for (const auto& [kind, known] : kKinds)
        if (name == known) return kind;
    return std::nullopt;
}

RecordedRun readRecordedRun(const std::string& path, std::optional<int> number) {
    std::string start;
    piecesOfFile(path)(start);
    if (SqliteDatabase::isDatabase(start)) return readSqliteRun(path, number);
    if (number.value_or(1) != 1)
        throw Error({path}, "holds one run, as a CSV file does; ask for run 1, or for none", ErrorCode::request);
    return readCsvRun(path);
}

}  // namespace workbench
