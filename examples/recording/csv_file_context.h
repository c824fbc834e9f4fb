#pragma once

#include <span>
#include <string>

#include "streamout/file_recording_context.h"

/// A block that records to a file of comma-separated values: the part that another library supplies. Each line
/// holds a time in seconds and a value; the text property "unit" is the heading of the values, the number
/// property "sampleTime" the time between two of them.
class CsvFileContext final : public streamout::FileRecordingContext {
public:
    CsvFileContext(std::string sourceID, std::u16string fullFilePath, std::u16string modelName,
                   std::string loggingDomain, std::u16string blockPath, FilePropertiesMap properties);

    std::string getSourceID() const override;
    std::string getFileExtension() const override;

    /// Every n-th sample, where n is the decimation (1 when its text is no positive number), and no more of them
    /// than the maximum number of points (all when its text is no number). Throws std::runtime_error when
    /// the file cannot be written, boost::bad_get or std::out_of_range without the two properties.
    void write(std::span<const double> samples) const;

private:
    std::string m_sourceID;
};
