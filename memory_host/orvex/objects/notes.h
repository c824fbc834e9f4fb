#pragma once

#include <string>

#include "host/api.h"

/// What is said of classes, their members and functions where the definitions themselves have no place for it.
/// Thread: the interpreter thread only.
namespace orvex {

/// What one thing is for, and what its inputs and outputs are called.
struct Note {
    std::string sentence;  ///< one, UTF-8
    /// "name, name: type, [name]": the type where no signature declares one, brackets around what may be left out.
    std::string inputs = {};
    std::string outputs = {};  ///< as `inputs`
};

/// Says it of a class ("Full.Class"), a member ("Full.Class.member", the constructor by the class's last name) or a
/// function, whether or not there is one yet. A later note replaces an earlier one; `releaseObjectSystem` forgets all.
OX_API void note(std::string about, Note text);

}  // namespace orvex
