#include "csv_file_context.h"

#include <charconv>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <utility>

#include "host/text.h"

namespace {

std::size_t numberIn(const std::string& text, std::size_t otherwise) {
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && number > 0 ? number : otherwise;
}

}  // namespace

CsvFileContext::CsvFileContext(std::string sourceID, std::u16string fullFilePath, std::u16string modelName,
                               std::string loggingDomain, std::u16string blockPath, FilePropertiesMap properties)
    : FileRecordingContext(std::move(fullFilePath), std::move(modelName), std::move(loggingDomain),
                           std::move(blockPath), std::move(properties)),
      m_sourceID(std::move(sourceID)) {}

std::string CsvFileContext::getSourceID() const { return m_sourceID; }

std::string CsvFileContext::getFileExtension() const { return ".csv"; }

void CsvFileContext::write(std::span<const double> samples) const {
    const FilePropertiesMap properties = getFilePropertiesMap();
    const auto unit = boost::get<std::u16string>(properties.at("unit"));
    const double sampleTime = boost::get<double>(properties.at("sampleTime"));
    const std::size_t step = numberIn(getDecimation(), 1);
    std::size_t left = numberIn(getMaxPoints(), samples.size());

    std::ofstream file{std::filesystem::path(getFullFilePath())};
    file << "time," << fl::i18n::to_string(unit) << '\n';
    for (std::size_t i = 0; i < samples.size() && left > 0; i += step, --left)
        file << static_cast<double>(i) * sampleTime << ',' << samples[i] << '\n';
    if (!file.flush()) throw std::runtime_error("cannot write " + fl::i18n::to_string(getFullFilePath()));
}
