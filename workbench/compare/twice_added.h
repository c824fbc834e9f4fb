#pragma once

#include <optional>
#include <vector>

#include "workbench/model_file/model_file.h"

namespace workbench {

/// Both sides give what they add the next free number. Blocks, and items of one chart, that are not the same and got
/// the same one are told apart: theirs get numbers of their own, and their records follow.
void tellApart(const ModelFile& base, const ModelFile& ours, ModelFile& theirs);

/// A list of names to which both sides did nothing but add, with what either added; ours stand in front. Nothing when
/// one of them did something else, or has a name twice.
std::optional<std::vector<std::u16string>> withBothAdditions(const std::vector<std::u16string>& base,
                                                             const std::vector<std::u16string>& ours,
                                                             const std::vector<std::u16string>& theirs);
/// The same of a chart's items, which are added by either side where it has no other item of that name or number.
std::optional<kestrel::Chart> withBothAdditions(const std::optional<kestrel::Chart>& base,
                                                const std::optional<kestrel::Chart>& ours,
                                                const std::optional<kestrel::Chart>& theirs);

}  // namespace workbench
