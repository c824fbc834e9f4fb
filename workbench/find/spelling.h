#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "memory_host/kestrel/model.h"
#include "workbench/text/error.h"

/// How a path can be written, and what may have been meant by one that leads nowhere.
namespace workbench {

/// A path below the model.
struct Spelling {
    std::u16string path;
    bool isWithoutModel;  ///< the model's name was taken off its front
};

/// The ways in which a text can be read: a '/' in front says that the model's name is not there.
std::vector<Spelling> spellingsOf(const kestrel::Model& model, std::string_view text);

/// The refusal of a text that can be read in two ways, with the full paths of what it may be and how to say either.
Error ambiguous(const kestrel::Model& model, std::string_view text, const Spelling& one, const std::u16string& onePath,
                const Spelling& other, const std::u16string& otherPath);

/// The refusal of a text that leads to no block, with the blocks that are spelled nearly so.
Error noSuchBlock(const kestrel::Model& model, std::string_view text);

/// "it has 1 (y), 2 (valid)"; of many ports only how many they are, and those whose name is nearly the one wanted.
std::string portList(const kestrel::Block& block, std::u16string_view wanted);

/// Whether the text has characters that mean something in a pattern.
bool isLikePattern(std::string_view text);

/// The patterns that somebody who wrote one may have meant: with one of its words spelled as a name of the model, as
/// far as that `matches` anything. `; did you mean "a*" or "b*"?`; empty when there is none.
std::string nearPatterns(const kestrel::Model& model, std::string_view pattern,
                         const std::function<bool(const std::string& pattern)>& matches);

}  // namespace workbench
