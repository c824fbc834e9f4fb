#include <fmt/format.h>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/print/json_lines.h"
#include "workbench/json/json_object.h"
#include "workbench/session/session.h"
#include "workbench/text/text.h"

namespace kshmi {

namespace {

using namespace workbench;

struct QueryArguments {
    std::string file;
    std::vector<std::string> references;
    ReferenceOptions options;
    bool isJson = false;
};

struct Answer {
    std::u16string name;
    std::u16string activity;  ///< that was asked for; empty for a port and for any activity
    bool isObserved = false;
};

Answer ask(const Session& session, const std::string& reference, const ReferenceOptions& options) {
    const SignalSource source = resolveReference(session.model(), reference, options);
    Answer answer{fullName(session.model(), source), {}, false};
    if (!source.item) {
        answer.isObserved = session.isObserved(*source.block, source.port);
    } else if (options.activity.empty()) {
        answer.isObserved = session.isAnyObserved(*source.block, *source.item);
    } else {
        answer.activity = activityFor(*source.item, options);
        answer.isObserved = session.isObserved(*source.block, *source.item, answer.activity);
    }
    return answer;
}

void printLines(const std::vector<Answer>& answers, std::ostream& out) {
    for (const Answer& answer : answers) {
        const std::string activity = answer.activity.empty() ? "" : " (" + printable(answer.activity) + ")";
        out << fmt::format("{:<13} {}{}\n", answer.isObserved ? "observed" : "not observed", printable(answer.name),
                           activity);
    }
}

void appendAnswer(std::string& out, const Answer& answer) {
    JsonObject object(out);
    object.text("source", answer.name);
    if (!answer.activity.empty()) object.text("activity", answer.activity);
    object.truth("observed", answer.isObserved).close();
}

int runQuery(const QueryArguments& arguments, const Output& output) {
    kshmi::enterHost(output.err);
    const Session session(arguments.file);
    std::vector<Answer> answers;
    bool isAllObserved = true;
    for (const std::string& reference : arguments.references) {
        answers.push_back(ask(session, reference, arguments.options));
        isAllObserved = isAllObserved && answers.back().isObserved;
    }
    arguments.isJson ? printJsonLines(output.out, answers, appendAnswer) : printLines(answers, output.out);
    return isAllObserved ? kSuccess : kNotObserved;
}

}  // namespace

void addQuery(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<QueryArguments>();
    CLI::App* const command =
        addCommand(app, "query", "Tell whether ports and chart items are observed; exit 1 if any is not",
                   "  kshmi query cruise.json Sensors/Speed:valid\n"
                   "  kshmi query cruise.json Control/Mode --activity Child --json",
                   arguments->file);
    addReferences(*command, arguments->references)->required();
    addReferenceOptions(*command, arguments->options);
    command->add_flag("--json", arguments->isJson, "print JSON");
    runWith(*command, runQuery, arguments, run);
}

}  // namespace kshmi
