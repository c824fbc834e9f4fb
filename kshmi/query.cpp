#include <fmt/format.h>

#include "kshmi/commands.h"
#include "kshmi/host_process.h"
#include "kshmi/json_object.h"
#include "kshmi/text.h"

namespace kshmi {

namespace {

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

}  // namespace

int runQuery(const QueryArguments& arguments, const Output& output) {
    enterHost(output.err);
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

}  // namespace kshmi
