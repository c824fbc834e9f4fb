#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "workbench/model_file/model_file.h"

/// Brings the changes of two model files together that come from the same one.
namespace workbench {

/// What both changed, and differently. What stands in our file stays.
struct MergeConflict {
    std::string list;   ///< "model", "blocks", "signals", "clients" or "parked"
    std::string id;     ///< a UUID, or a block's element identifier; empty for the model
    std::string field;  ///< empty for the whole
    /// JSON of the field, or "present" for the whole; empty where it is not there.
    std::string base, ours, theirs;
    std::string text;  ///< one sentence
};

struct MergedModel {
    ModelFile file;
    std::vector<MergeConflict> conflicts;
};

/// Signals and clients are merged by UUID and field by field, fields that say together where one is as one; blocks by
/// element identifier. The order is theirs where only they changed it, else ours with what they put in between. A mark
/// follows its port's name where the other side has put it at another number.
MergedModel mergeModels(const ModelFile& base, const ModelFile& ours, const ModelFile& theirs);

}  // namespace workbench
