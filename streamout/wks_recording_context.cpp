#include "streamout/wks_recording_context.h"

#include <utility>

#include "host/text.h"

namespace streamout {

WksRecordingContext::WksRecordingContext(std::u16string variableName, std::u16string modelName, std::string sourceID,
                                         std::string format, std::string decimation, std::string maxPoints,
                                         bool fixedPtAsDouble)
    : m_variableName(std::move(variableName)),
      m_modelName(std::move(modelName)),
      m_sourceID(std::move(sourceID)),
      m_format(std::move(format)),
      m_decimation(std::move(decimation)),
      m_maxPoints(std::move(maxPoints)),
      m_fixedPtAsDouble(fixedPtAsDouble) {}

WksRecordingContext::~WksRecordingContext() = default;

std::string WksRecordingContext::getSourceID() const { return m_sourceID; }

// Kept: contexts of one model share a key; the registry knows them by their model.
std::string WksRecordingContext::getBlockId() const { return fl::i18n::to_string(getModelName()); }

std::u16string WksRecordingContext::getModelName() const { return m_modelName; }

std::u16string WksRecordingContext::getVariableName() const { return m_variableName; }

std::string WksRecordingContext::getFormat() const { return m_format; }

std::string WksRecordingContext::getDecimation() const { return m_decimation; }

std::string WksRecordingContext::getMaxPoints() const { return m_maxPoints; }

bool WksRecordingContext::getFixedPtAsDoubleFlag() const { return m_fixedPtAsDouble; }

bool WksRecordingContext::usingStructFormat() const {
    const std::string format = getFormat();
    return format == "struct" || format == "structwithtime" || format == "struct2D";
}

}  // namespace streamout
