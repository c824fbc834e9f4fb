#pragma once

#include <boost/variant.hpp>
#include <string>
#include <unordered_map>
#include <vector>

#include "streamout/export.h"
#include "streamout/stream_out_block_context.h"

namespace streamout {

/// A block that records to a file. A library that writes a file format derives from it and supplies
/// `getSourceID` and `getFileExtension`. All getters return copies.
///
/// Thread: `setDecimation` and `setMaxPoints` must not run beside a reader; all else only reads.
class STREAMOUT_EXPORT FileRecordingContext : public StreamOutBlockContext {
public:
    using FileProperty = boost::variant<double, std::u16string>;              ///< A number or a text.
    using FilePropertiesMap = std::unordered_map<std::string, FileProperty>;  ///< By name (UTF-8).

    /// Decimation and maximum number of points start empty.
    FileRecordingContext(std::u16string fullFilePath, std::u16string modelName, std::string loggingDomain,
                         std::u16string blockPath, FilePropertiesMap properties);
    ~FileRecordingContext() override;

    /// What `getLoggingDomain` answers, so that overriding that moves the key.
    std::string getBlockId() const override;
    virtual std::string getLoggingDomain() const;  ///< As given; what the registry finds it by.
    virtual std::u16string getBlockPath() const;   ///< As given.
    virtual std::u16string getModelName() const;   ///< As given.
    /// What follows the last separator of the full path: all of it without one, empty when it ends in one.
    /// The separator is '/', on a platform with backslashes in its paths also '\'.
    virtual std::u16string getFileName() const;
    /// The path as given; nothing is resolved or normalised.
    virtual std::u16string getFullFilePath() const;
    virtual FilePropertiesMap getFilePropertiesMap() const;  ///< As given.
    /// The extension that the file format wants.
    virtual std::string getFileExtension() const = 0;
    /// What `getFileExtension` answers.
    virtual std::string getFileExtensionAsString() const;

    /// Decimation and maximum number of points are the texts of the block's dialog, never parsed here.
    virtual void setDecimation(const std::string& decimation);
    virtual std::string getDecimation() const;                ///< Empty until it is set.
    virtual void setMaxPoints(const std::string& maxPoints);  ///< See `setDecimation`.
    virtual std::string getMaxPoints() const;                 ///< Empty until it is set.

    /// Appends the properties of `getFilePropertiesMap`, in its order, split by kind; each name stands at the
    /// position of its value. The lists are never cleared: a second call appends again. When
    /// memory runs out, what was appended stays, and one name may lack its value.
    void getProperties(std::vector<std::string>& numberNames, std::vector<double>& numberValues,
                       std::vector<std::string>& textNames, std::vector<std::u16string>& textValues) const;

private:
    std::u16string m_fullFilePath;
    std::u16string m_modelName;
    std::string m_loggingDomain;
    std::u16string m_blockPath;
    FilePropertiesMap m_properties;
    std::string m_decimation;
    std::string m_maxPoints;
};

}  // namespace streamout
