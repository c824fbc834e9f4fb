#include "kshmi/commands/several_files.h"

#include <fmt/format.h>

#include <algorithm>
#include <new>
#include <utility>

#include "kshmi/commands/command_options.h"
#include "workbench/files/standard_stream.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace kshmi {

using namespace workbench;

namespace {

// The files, one after the other.
class FileTour {
public:
    FileTour(std::string_view command, const Output& output, bool isJson, const Look& look)
        : m_output(output), m_isJson(isJson), m_look(look), m_document(command), m_files(listOf(m_document)) {}

    int at(const std::string& file) {
        tellWork(m_output, file);
        JsonEntry entry([&](std::string& text) { printPart(text); });
        entry.object().text("file", std::string_view(file));
        const int code = inFile(file, [&] { return m_look(file, m_isJson ? &entry : nullptr, m_output); });
        add(entry);
        return code;
    }

    // What it fails with is told.
    int amongOthers(const std::string& file) {
        if (!m_isJson) printHeading(file);
        try {
            return at(file);
        } catch (const std::bad_alloc&) {
            throw;
        } catch (const Error& error) {
            if (m_isInPart) throw;
            return fail(file, exitCodeOf(error), messageOf(error));
        } catch (const std::exception& exception) {
            if (m_isInPart) throw;
            return fail(file, kHostRefused, exception.what());
        }
    }

    void printJson() {
        m_files.close();
        m_document.print(m_output.out);
    }

private:
    static JsonArray listOf(JsonDocument& document) {
        return JsonArray(document.object().name("files").out(), JsonDocument::kElements);
    }
    // What is long is not kept until it is whole.
    void printPart(std::string& text) {
        if (!std::exchange(m_isInPart, true)) m_files.next();
        m_document.text() += text;
        text.clear();
        m_document.flush(m_output.out);
    }
    void add(JsonEntry& entry) {
        if (!std::exchange(m_isInPart, false)) m_files.next();
        m_document.text() += entry.take();
    }
    void printHeading(const std::string& file) {
        m_output.out << fmt::format("{}==> {} <==\n", std::exchange(m_isFirst, false) ? "" : "\n",
                                    printable(std::string_view(calledInMessages(file))))
                     << std::flush;
    }

    int fail(const std::string& file, ExitCode code, const std::string& message) {
        m_output.err << "kshmi: " << printableMessage(message) << '\n';
        JsonEntry entry;
        entry.object().text("file", std::string_view(file)).name("error");
        JsonObject(entry.text()).number("code", static_cast<int>(code)).text("text", std::string_view(message)).close();
        add(entry);
        return code;
    }

    const Output& m_output;
    bool m_isJson;
    const Look& m_look;
    bool m_isFirst = true;
    JsonDocument m_document;
    JsonArray m_files;
    bool m_isInPart = false;  // of an entry, a part is printed
};

}  // namespace

CLI::App* addLookingCommand(CLI::App& app, const char* name, const char* help, const char* examples,
                            std::string& file) {
    CLI::App* const command = addCommand(app, name, help, examples, file);
    command->get_option("MODEL")->description(
        "model file, - for standard input; the words behind it that end in .json are more of them");
    return command;
}

std::vector<std::string> takeFiles(const std::string& first, std::vector<std::string>& references) {
    const auto end = std::find_if_not(references.begin(), references.end(),
                                      [](const std::string& word) { return word.ends_with(".json"); });
    std::vector<std::string> files{first};
    files.insert(files.end(), references.begin(), end);
    references.erase(references.begin(), end);
    return files;
}

int lookAtFiles(std::string_view command, const std::vector<std::string>& files, bool isJson, const Output& output,
                const Look& look) {
    enterHost(output.err);
    FileTour tour(command, output, isJson, look);
    int worst = kSuccess;
    // In JSON a failure is told at its file, also when it is the only one.
    if (files.size() == 1 && !isJson) return tour.at(files.front());
    for (const std::string& file : files) worst = std::max(worst, tour.amongOthers(file));
    if (isJson) tour.printJson();
    return worst;
}

}  // namespace kshmi
