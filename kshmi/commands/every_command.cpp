#include "kshmi/commands/every_command.h"

#include <CLI/CLI.hpp>
#include <ostream>

#include "kshmi/commands/command_options.h"
#include "kshmi/print/progress.h"

namespace kshmi {

namespace {

constexpr const char* kGroup = "Options of every command";

Output asAsked(const EveryCommand& options, const Output& output) {
    Output result = output;
    if (options.color != "auto") result.isColoured = options.color == "always";
    return result;
}

int runQuietly(const Run& run, const EveryCommand& options, const Output& output) {
    const NoOutput silence;
    return run(options.isQuiet ? silence.insteadOf(output) : output);
}

int runWithProgress(const Run& run, const EveryCommand& options, const Output& output) {
    Progress progress(output.err);
    AfterProgress outAfter(progress, output.out.rdbuf());
    AfterProgress errAfter(progress, output.err.rdbuf());
    std::ostream out(&outAfter);
    std::ostream err(&errAfter);
    err << std::unitbuf;
    const int code = runQuietly(run, options, {out, err, output.isColoured, output.width, true, &progress});
    out.flush();
    if (!out) output.out.setstate(std::ios::badbit);
    return code;
}

}  // namespace

void addToEveryCommand(CLI::App& app, EveryCommand& options) {
    if (app.get_option_no_throw("--color") == nullptr)
        app.add_option("--color", options.color, "colour: always, never, or auto, which is on terminals only")
            ->check(oneOf({"auto", "always", "never"}))
            ->type_name("WHEN")
            ->group(kGroup);
    if (app.get_option_no_throw("--quiet") == nullptr)
        app.add_flag("-q,--quiet", options.isQuiet, "print errors and warnings only")->group(kGroup);
    for (CLI::App* const command : app.get_subcommands([](CLI::App*) { return true; }))
        addToEveryCommand(*command, options);
}

int runAsAsked(const Run& run, const EveryCommand& options, const Output& output) {
    const Output asked = asAsked(options, output);
    return asked.isWatched && !options.isQuiet ? runWithProgress(run, options, asked) : runQuietly(run, options, asked);
}

}  // namespace kshmi
