#pragma once

#include <string>
#include <vector>

namespace workbench {

/// A block that an imported model had once: its identifier goes to no other.
struct GoneBlock {
    std::string source;
    std::string eid;
};

/// Where a model was imported from. Texts are UTF-8.
struct Origin {
    std::string kind;     ///< "ssd", "ssp", "fmi" or "fmu"
    std::string version;  ///< of the standard, as the file gives it
    std::string file;     ///< from the folder of the model file, with '/'; absolute where there is no such way
    std::string hash;     ///< of the file's bytes: "sha1:" and hexadecimal digits
    bool locals = false;  ///< whether local variables were taken as well
    std::vector<GoneBlock> gone;
};

}  // namespace workbench
