#include "streamout/stream_out_block_context.h"

namespace streamout {

StreamOutBlockContext::StreamOutBlockContext() = default;

StreamOutBlockContext::~StreamOutBlockContext() = default;

}  // namespace streamout
