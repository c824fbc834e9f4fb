#pragma once

#include <string>

#include "streamout/export.h"
#include "streamout/stream_out_block_context.h"

namespace streamout {

/// A block that records to a variable of the host's workspace. Nothing changes after construction, so any
/// thread may read. All getters return copies.
class STREAMOUT_EXPORT WksRecordingContext : public StreamOutBlockContext {
public:  /// Only keeps what it is given.
    WksRecordingContext(std::u16string variableName, std::u16string modelName, std::string sourceID, std::string format,
                        std::string decimation, std::string maxPoints, bool fixedPtAsDouble);
    ~WksRecordingContext() override;

    std::string getSourceID() const override;
    /// UTF-8 of what `getModelName` answers, so that overriding that moves the key. Two workspace blocks of
    /// one model have the same key. Ill-formed UTF-16 becomes U+FFFD.
    /// Thread: converts with the host's `fl::i18n::to_string`, which any thread may call.
    std::string getBlockId() const override;
    virtual std::u16string getModelName() const;     ///< As given.
    virtual std::u16string getVariableName() const;  ///< As given: the workspace variable.
    virtual std::string getFormat() const;           ///< As given.
    /// Decimation and maximum number of points are the texts of the block's dialog, never parsed here.
    virtual std::string getDecimation() const;
    virtual std::string getMaxPoints() const;  ///< As given.
    /// Whether fixed-point values are recorded as doubles.
    virtual bool getFixedPtAsDoubleFlag() const;
    /// Whether the format is exactly one of "struct", "structwithtime" and "struct2D".
    virtual bool usingStructFormat() const;

private:
    std::u16string m_variableName;
    std::u16string m_modelName;
    std::string m_sourceID;
    std::string m_format;
    std::string m_decimation;
    std::string m_maxPoints;
    bool m_fixedPtAsDouble;
};

}  // namespace streamout
