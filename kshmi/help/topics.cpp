#include "kshmi/help/topics.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <sstream>

#include "kshmi/help/help_page.h"
#include "kshmi/print/exit_codes.h"

namespace kshmi {

namespace {

constexpr const char* kSelections =
    R"(Commands that work on ports and chart items take what they work on in the same ways, together if need be.

References name one thing each, literally:

  Sensors/Speed:1       output port 1 of that block
  Sensors/Speed:speed   its port of that name
  Control/Mode/Engaged  a state of a chart
  cruise/Set Speed:1    the model's name may stand in front

--activity says which activity of a chart item is meant: Self, Child or Leaf; a datum has Data. --ssid names a chart item by its number within the chart.

A block may have ":" in its name: beside a block named "a:1", "a:1" is that block. Where two readings are equally good, the reference is refused and both are named.

--all 'GLOB' takes everything that a pattern matches, and --except 'GLOB' leaves out what another one matches: "kshmi help globs".

--from FILE takes references from a file, one per line, or with "-" from standard input.)";

constexpr const char* kGlobs =
    R"(Patterns match whole paths, with or without the model's name in front: "cruise/Sensors/Speed:1" or "Sensors/Speed:speed".

  *       any characters, "/" as well
  ?       one character
  [a-z]   one of these characters
  [!a-z]  one character that is not one of these
  \       takes the next character as it is: \[1] is "[1]"

Put patterns in single quotes, so that the shell leaves them alone. Upper and lower case matter.

  'Sensors/*'    all ports of all blocks below Sensors
  '*:speed'      every port named speed
  'Lamp \[1]:*'  the ports of the block "Lamp [1]")";

constexpr const char* kJson =
    R"(With --json a command prints one JSON object. It starts with "kshmi", the version of the form, 1, and "command"; a program that reads it should look at the version and pass over members that it does not know. Nothing is shortened in JSON.

The same thing has the same name and form in every command:

  "block"     its full path, with the model in front
  "port"      number, the first is 1; "portName" beside it
  "item"      path of a chart item below its chart, with "domain" and "ssid"
  "signal"    {"uuid": "...", "position": 1}
  "client"    {"uuid": "...", "position": 1}

Commands that look at files have a list of them, "files". Commands that change a file list what they did under "added", "changed", "removed", "skipped" and "unchanged", and tell "dryRun" and "saved".

docs/json.md describes all of it.)";

constexpr const char* kOutput =
    R"(Names come from files and may hold anything. What a terminal would hide or obey is shown as an escape: \n, \t, \xHH or \u{H...} with the character's hexadecimal number. A backslash in a name is doubled where it would read as such an escape; so different names look different.

On a terminal, tables and lists are as wide as the terminal, or as COLUMNS says: long texts are wrapped, and very long ones shortened in the middle ("..."). In a file or pipe only very long ones are shortened. --json shows all.

There is colour on terminals only. --color always and --color never overrule that; so does NO_COLOR, when it is set and not empty, and TERM=dumb.

Work that takes longer than a second is told on standard error, if that is a terminal. --quiet prints errors and warnings only.

"-" for MODEL is the standard input. A command that changes the model then writes it to the standard output, and what it has to say, with --json too, to the standard error. What is not changed, as in a dry run, passes through byte for byte; after an error the standard output is empty.

  kshmi mark - Plant/Brakes < cruise.json | kshmi move - Plant Car > car.json

show, query, ports and clients take several models: the words behind MODEL that end in .json, up to the first reference. Each is told under a heading; one that cannot be read does not stop the others.)";

std::string exitCodes() {
    std::string text = "The exit code tells how a run ended:\n\n";
    for (const ExitCodeMeaning& meaning : kExitCodeMeanings)
        text += fmt::format("  {}  {}\n", static_cast<int>(meaning.code), meaning.text);
    return text +
           "\nWhatever the code, a model file is changed as asked for or is as it was. With 4, trying again helps; "
           "commands that change a file do so by themselves with --wait SECONDS. A dry run ends as the run itself "
           "would. Of several files, the highest code counts. A run that a signal ended, Ctrl-C for one, has the "
           "shell's 128 and the signal's number.";
}

}  // namespace

std::span<const Topic> topics() {
    static const std::array<Topic, 5> all{{
        {"selections", "How to say what a command works on", kSelections},
        {"globs", "Patterns for --all and --except", kGlobs},
        {"exit-codes", "How a run tells what happened", exitCodes()},
        {"json", "What --json prints", kJson},
        {"output", "Names, colour, width and files in the output", kOutput},
    }};
    return all;
}

const Topic* topicOf(std::string_view name) {
    const auto found =
        std::find_if(topics().begin(), topics().end(), [&](const Topic& one) { return one.name == name; });
    return found == topics().end() ? nullptr : &*found;
}

std::size_t textStart(std::string_view line) {
    constexpr std::size_t kWidestListTerm = 30;
    return line.starts_with("  ") ? line.rfind("  ", kWidestListTerm) + 2 : 0;
}

std::string topicText(const Topic& topic, std::size_t width) {
    std::string text = topic.title + "\n\n";
    std::istringstream lines(topic.text);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t gap = textStart(line);
        text += line.substr(0, gap) + filled(line.substr(gap), width - std::min(width, gap), gap) + '\n';
    }
    return text;
}

}  // namespace kshmi
