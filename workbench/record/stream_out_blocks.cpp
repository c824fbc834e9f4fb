#include "workbench/record/stream_out_blocks.h"

#include <fmt/format.h>

#include <map>
#include <utility>

#include "foundation/model_path.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

using Columns = std::vector<const RunColumn*>;

RunFileContext::FilePropertiesMap propertiesOf(const Columns& columns, const std::string& path, const RunHead& head) {
    RunFileContext::FilePropertiesMap properties{
        {"format", std::u16string(formatOf(path) == RunFormat::sqlite ? u"sqlite" : u"csv")},
        {"start", head.start},
        {"until", head.until},
        {"step", head.step},
        {"columns", static_cast<double>(columns.size())}};
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const std::string column = fmt::format("column {} ", i + 1);
        properties.emplace(column + "title", toUtf16(columns[i]->title));
        properties.emplace(column + "port", static_cast<double>(columns[i]->port));
        properties.emplace(column + "decimation", static_cast<double>(columns[i]->decimation));
        properties.emplace(column + "maxPoints", static_cast<double>(columns[i]->maxPoints));
    }
    return properties;
}

// The number that all columns have; empty when they differ.
std::string commonNumber(const Columns& columns, std::uint64_t RunColumn::*member) {
    for (const RunColumn* const column : columns)
        if (column->*member != columns.front()->*member) return {};
    return std::to_string(columns.front()->*member);
}

}  // namespace

std::string RunFileContext::getFileExtension() const {
    const FilePropertiesMap properties = getFilePropertiesMap();
    return boost::get<std::u16string>(properties.at("format")) == u"sqlite" ? ".db" : ".csv";
}

StreamOutBlocks::StreamOutBlocks(const Session& session, const std::vector<RunColumn>& columns, const std::string& path,
                                 const RunHead& head) {
    const kestrel::Model& model = session.model();
    std::map<std::string, Columns> byBlock;
    for (const RunColumn& column : columns) byBlock[column.block].push_back(&column);
    for (const auto& [block, its] : byBlock) {
        const std::u16string full = toUtf16(block);
        const kestrel::Block* const found =
            model.findByPath(ks_hmi_foundation::RemoveModelFromPath(full, model.name()));
        const std::string eid = found != nullptr ? ks_hmi_foundation::AddModelToEID(found->eid, model.name()) : block;
        const auto context =
            std::make_shared<RunFileContext>(toUtf16(path), model.name(), eid, full, propertiesOf(its, path, head));
        context->setDecimation(commonNumber(its, &RunColumn::decimation));
        context->setMaxPoints(commonNumber(its, &RunColumn::maxPoints));
        m_contexts.push_back(context);
        m_registry.registerBlock(context);
    }
}

StreamOutBlocks::~StreamOutBlocks() {
    for (const auto& context : m_contexts) m_registry.unregisterBlock(context);
}

StreamOutBlocks::File StreamOutBlocks::file() const {
    for (const auto& block : m_registry.getRegisteredBlocks())
        if (const auto* const context = dynamic_cast<const RunFileContext*>(block.get()))
            return {toUtf8(context->getFullFilePath()),
                    context->getFileExtensionAsString() == ".db" ? RunFormat::sqlite : RunFormat::csv};
    return {std::string(kStandardStream), RunFormat::csv};
}

}  // namespace workbench
