#pragma once

#include <memory>
#include <string>
#include <vector>

#include "streamout/file_recording_context.h"
#include "streamout/stream_out_block_registry.h"
#include "workbench/record/run_columns.h"
#include "workbench/run_file/run_writer.h"
#include "workbench/session/session.h"

namespace workbench {

/// A block whose ports are recorded to a file: which one, and how, is in its properties. "format" is "csv" or "sqlite";
/// "start", "until" and "step" are simulated seconds; "columns" says how many columns are the block's, and of the k-th
/// one (from 1) "column k title" is the title, "column k port" the port, "column k decimation" and "column k maxPoints"
/// what the signal asks for.
class RunFileContext final : public streamout::FileRecordingContext {
public:
    using FileRecordingContext::FileRecordingContext;
    /// As the logging domain: the block's full element identifier.
    std::string getSourceID() const override { return getLoggingDomain(); }
    /// ".csv" or ".db".
    std::string getFileExtension() const override;
};

/// The blocks that a run records, in the registry of stream-out blocks while this lives.
class StreamOutBlocks {
public:
    /// Enters a context for each block that has columns. Where all columns of a block agree, decimation and maximum
    /// number of points are told as its own, too.
    StreamOutBlocks(const Session& session, const std::vector<RunColumn>& columns, const std::string& path,
                    const RunHead& head);
    StreamOutBlocks(const StreamOutBlocks&) = delete;
    StreamOutBlocks& operator=(const StreamOutBlocks&) = delete;
    ~StreamOutBlocks();

    const streamout::StreamOutBlockRegistry& registry() const noexcept { return m_registry; }
    /// The file that the registered blocks are recorded to, and its format.
    struct File {
        std::string path;
        RunFormat format;
    };
    File file() const;

private:
    streamout::StreamOutBlockRegistry m_registry;
    std::vector<std::shared_ptr<RunFileContext>> m_contexts;
};

}  // namespace workbench
