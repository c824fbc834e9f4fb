#include "streamout/file_recording_context.h"

#include <filesystem>
#include <utility>

namespace streamout {
namespace {

constexpr bool kHasBackslashes = std::filesystem::path::preferred_separator == '\\';
constexpr const char16_t* kSeparators = kHasBackslashes ? u"/\\" : u"/";

}  // namespace

FileRecordingContext::FileRecordingContext(std::u16string fullFilePath, std::u16string modelName,
                                           std::string loggingDomain, std::u16string blockPath,
                                           FilePropertiesMap properties)
    : m_fullFilePath(std::move(fullFilePath)),
      m_modelName(std::move(modelName)),
      m_loggingDomain(std::move(loggingDomain)),
      m_blockPath(std::move(blockPath)),
      m_properties(std::move(properties)) {}

FileRecordingContext::~FileRecordingContext() = default;

std::string FileRecordingContext::getBlockId() const { return getLoggingDomain(); }

std::string FileRecordingContext::getLoggingDomain() const { return m_loggingDomain; }

std::u16string FileRecordingContext::getBlockPath() const { return m_blockPath; }

std::u16string FileRecordingContext::getModelName() const { return m_modelName; }

std::u16string FileRecordingContext::getFileName() const {
    const auto separator = m_fullFilePath.find_last_of(kSeparators);
    return separator == std::u16string::npos ? m_fullFilePath : m_fullFilePath.substr(separator + 1);
}

std::u16string FileRecordingContext::getFullFilePath() const { return m_fullFilePath; }

FileRecordingContext::FilePropertiesMap FileRecordingContext::getFilePropertiesMap() const { return m_properties; }

std::string FileRecordingContext::getFileExtensionAsString() const { return getFileExtension(); }

void FileRecordingContext::setDecimation(const std::string& decimation) { m_decimation = decimation; }

std::string FileRecordingContext::getDecimation() const { return m_decimation; }

void FileRecordingContext::setMaxPoints(const std::string& maxPoints) { m_maxPoints = maxPoints; }

std::string FileRecordingContext::getMaxPoints() const { return m_maxPoints; }

void FileRecordingContext::getProperties(std::vector<std::string>& numberNames, std::vector<double>& numberValues,
                                         std::vector<std::string>& textNames,
                                         std::vector<std::u16string>& textValues) const {
    // Kept: appends only; callers gather the properties of several contexts.
    const FilePropertiesMap properties = getFilePropertiesMap();
    for (const auto& [name, value] : properties) {
        if (const auto* const number = boost::get<double>(&value)) {
            numberNames.push_back(name);
            numberValues.push_back(*number);
        } else {
            textNames.push_back(name);
            textValues.push_back(boost::get<std::u16string>(value));
        }
    }
}

}  // namespace streamout
