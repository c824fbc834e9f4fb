#pragma once

#include <string>
#include <vector>

#include "kshmi/marking.h"
#include "kshmi/output.h"
#include "kshmi/reference.h"

/// The commands. Each returns the exit code and throws `Error`, or the host's exception, when it cannot do
/// its work. Model files are changed by `runMark` and `runUnmark` only, as a whole or not at all.
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
