#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "workbench/check/finding.h"
#include "workbench/model_file/model_file.h"

/// Looks for whatever is wrong, or may go wrong, in a model file: also in one that does not open. Of what opening
/// refuses there is at least one finding of the level error.
namespace workbench {

struct CheckedFile {
    std::string path{};
    std::vector<Finding> findings{};
    /// What was read; nothing for a file that cannot be read or is no model file.
    std::optional<ModelFile> contents{};
    /// Whether all of it was: what a finding of the kind `file` is about is not in the contents.
    bool isWhole = true;

    std::size_t count(FindingLevel level) const noexcept;
    bool isReadable() const noexcept;
};

/// Faults become findings: what the file holds throws nothing. No model is loaded.
CheckedFile checkFile(const std::string& path);
/// The same of a text; `path` stands for its file.
CheckedFile checkText(const std::string& path, const std::string& text);

class RecordsCheck;

/// Checks a model while it is being written: finds what a check of the file would find, without lines.
class WrittenCheck {
public:
    /// `signals` and `clients` say how many there are. The model must outlive it, and not change meanwhile.
    WrittenCheck(std::string path, const kestrel::Model& model, std::size_t signals, std::size_t clients);
    ~WrittenCheck();
    WrittenCheck(const WrittenCheck&) = delete;
    WrittenCheck& operator=(const WrittenCheck&) = delete;
    /// The next records: all signals in front of the clients, in order.
    void take(RecordKind kind, const hvArray* records, const MarkedNameList& markedNames);
    /// What was found, when all were taken.
    CheckedFile end(const std::vector<ParkedMark>& parked);

private:
    CheckedFile m_checked;
    std::unique_ptr<RecordsCheck> m_checks;
};

}  // namespace workbench
