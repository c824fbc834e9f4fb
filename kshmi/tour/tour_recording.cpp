#include <fstream>
#include <sstream>

#include "kshmi/help/example_unit.h"
#include "kshmi/tour/tour.h"
#include "workbench/change/marking.h"
#include "workbench/import/import_model.h"
#include "workbench/record/record_model.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"
#include "workbench/unit/unit_folder.h"

namespace kshmi {

using namespace workbench;

namespace {

constexpr double kStep = 4;

struct Wanted {
    const char16_t* block;
    int port;
};
constexpr Wanted kWanted[] = {{u"Plant", 1}, {u"Control", 1}, {u"Control/Mode", 1}};

// The model file of the example unit.
std::string importExample(const std::string& folder) {
    const std::string unit = folder + "/cruise.fmu";
    std::ofstream file(unit, std::ios::binary);
    file << exampleUnit();
    if (!file.flush()) throw Error({unit}, "cannot be written", ErrorCode::file);
    std::string path = folder + "/cruise.json";
    const ImportedModel model = importFile(unit, path, {});
    ModelExtras extras;
    extras.origin = model.origin;
    writeModelFile(path, model.model, nullptr, nullptr, extras);
    return path;
}

std::size_t portCount(const kestrel::Model& model) {
    std::size_t count = 0;
    for (const kestrel::Block& block : model.blocks()) count += block.outputs.size();
    return count;
}

}  // namespace

void Tour::record() {
    title("An engine runs a unit and keeps what is observed");
    m_session.reset();
    const UnitFolder folder;
    m_session = std::make_unique<Session>(importExample(folder.path()));
    const kestrel::Model& model = m_session->model();
    say("the example unit, cruise.fmu, is imported: {}, {}", counted(model.blocks().size(), "block"),
        counted(portCount(model), "output"));
    for (const Wanted& wanted : kWanted) {
        const SignalSource source{model.findByPath(wanted.block), wanted.port, std::nullopt};
        addSignal(*m_session, source, u"", {});
        say("signal on {} ({})", printable(fullName(model, source)), printable(portName(source)));
    }
    std::ostringstream rows;
    RecordOptions options;
    options.step = kStep;
    options.target.sink = [&rows](std::string_view text) { rows << text; };
    const RecordResult result = recordModel(*m_session, options);
    say("it ran in a process of its own until t = {}, and {} of it were read; as CSV:", result.end.time,
        counted(result.columns.size(), "output"));
    std::istringstream lines(rows.str());
    for (std::string line; std::getline(lines, line);) say("{}", line.substr(0, line.find('\r')));
    m_session.reset();
}

}  // namespace kshmi
