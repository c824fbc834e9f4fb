#include <fmt/format.h>

#include <algorithm>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/commands/selecting.h"
#include "kshmi/commands/several_files.h"
#include "kshmi/print/json/json_records.h"
#include "kshmi/print/reports/name_notice.h"
#include "workbench/find/asking.h"
#include "workbench/text/text.h"

namespace kshmi {

namespace {

using namespace workbench;

struct QueryArguments {
    std::string file;
    SelectionArguments what;
    bool isJson = false;
};

void printLines(const kestrel::Model& model, const std::vector<Answer>& answers, std::ostream& out) {
    for (const Answer& answer : answers) {
        const std::string activity = answer.activity.empty() ? "" : fmt::format(" ({})", printable(answer.activity));
        out << fmt::format("{:<13} {}{}\n", answer.isObserved ? "observed" : "not observed",
                           printable(fullName(model, answer.source)), activity);
    }
}

void addAnswers(const Session& session, const std::vector<Answer>& answers, JsonMembers& json) {
    const kestrel::Model& model = session.model();
    json.object().text("model", model.name());
    listUnsettled(json, session);
    json.list("answers", answers, [&](const Answer& answer) {
        JsonObject object(json.text());
        appendAnswer(object, model, answer);
        object.close();
    });
}

int queryFile(const QueryArguments& arguments, const std::string& file, JsonMembers* json, const Output& output) {
    const Session session(file);
    noticeNames(session, output.err);
    const kestrel::Model& model = session.model();
    std::vector<Answer> answers;
    for (const SignalSource& source : select(model, arguments.what, output).sources())
        answers.push_back(ask(session, source, arguments.what.selection.options));
    json ? addAnswers(session, answers, *json) : printLines(model, answers, output.out);
    const bool isAllObserved =
        std::all_of(answers.begin(), answers.end(), [](const Answer& answer) { return answer.isObserved; });
    return isAllObserved && !answers.empty() ? kSuccess : kNothing;
}

void requireSense(const QueryArguments& arguments) { requireSelection(arguments.what, false); }

}  // namespace

void addQuery(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<QueryArguments>();
    CLI::App* const command =
        addLookingCommand(app, "query", "Tell whether ports and chart items are observed; exit 1 if any is not",
                          "  kshmi query cruise.json Sensors/Speed:valid\n"
                          "  kshmi query cruise.json Control/Mode --activity Child --json\n"
                          "  kshmi query cruise.json --all 'Sensors/*' --quiet\n"
                          "  kshmi query cruise.json plant.json --all '*:speed'",
                          arguments->file);
    addSelection(*command, arguments->what);
    command->add_flag("--json", arguments->isJson, "print JSON");
    runOnFiles(*command, queryFile, arguments, run, requireSense);
}

}  // namespace kshmi
