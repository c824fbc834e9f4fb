#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kshmi/marking.h"
#include "kshmi/output.h"
#include "kshmi/reference.h"

/// The commands. Each returns the exit code and throws `Error`, or the host's exception, when it cannot do
/// its work. A model file is changed as a whole or not at all, and never in a dry run.
namespace kshmi {

struct Selection {
    std::vector<std::string> references;
    std::vector<std::string> all;     ///< patterns
    std::vector<std::string> except;  ///< patterns
    ReferenceOptions options;
};

struct MarkArguments {
    std::string file;
    Selection selection;
    SignalSettings settings;
    bool isAgain = false;
    bool isDryRun = false;
};
int runMark(const MarkArguments& arguments, const Output& output);

struct UnmarkArguments {
    std::string file;
    Selection selection;
    bool isDangling = false;
    bool isDryRun = false;
};
int runUnmark(const UnmarkArguments& arguments, const Output& output);

struct ObserveArguments {
    std::string file;
    std::vector<std::string> references;
    ReferenceOptions options;
    std::string type;
    std::string params = "{}";  ///< JSON, as docs/model-file.md maps it
    std::uint32_t updateRate = 1;
    std::uint32_t channel = 1;
    bool isImaginary = false;
    std::string busLeaf;
    bool isDryRun = false;
};
int runObserve(const ObserveArguments& arguments, const Output& output);

struct UnobserveArguments {
    std::string file;
    Selection selection;
    std::vector<std::string> types;
    std::vector<std::string> uuids;
    bool isDangling = false;
    bool isUnused = false;  ///< the host is asked which ones it does not need
    bool isDryRun = false;
};
int runUnobserve(const UnobserveArguments& arguments, const Output& output);

struct ClientsArguments {
    std::string file;
    bool isJson = false;
};
int runClients(const ClientsArguments& arguments, const Output& output);

struct RenameArguments {
    std::string file;
    std::vector<std::string> names;  ///< one after the other
    bool isDryRun = false;
};
int runRename(const RenameArguments& arguments, const Output& output);

struct MoveArguments {
    std::string file;
    std::string block;
    std::string newPath;
    bool isDryRun = false;
};
int runMove(const MoveArguments& arguments, const Output& output);

struct RenumberArguments {
    std::string file;
    std::string block;
    std::string numbers;  ///< with commas between; entry k is the new number of port k, 0 for a deleted one
    bool isDryRun = false;
};
int runRenumber(const RenumberArguments& arguments, const Output& output);

struct PortsArguments {
    std::string file;
    std::string below;
    std::string visualType;
    bool isHiddenListed = true;
    bool isJson = false;
};
int runPorts(const PortsArguments& arguments, const Output& output);

struct QueryArguments {
    std::string file;
    std::vector<std::string> references;
    ReferenceOptions options;
    bool isJson = false;
};
int runQuery(const QueryArguments& arguments, const Output& output);

struct ShowArguments {
    std::string file;
    bool isJson = false;
};
int runShow(const ShowArguments& arguments, const Output& output);

/// Works on a copy of the file.
int runTour(const std::string& file, const Output& output);

}  // namespace kshmi
