// Records through the exported stream-out classes, as a library that writes recordings would: contexts of
// both kinds, and one registry that several threads share.
// usage: recording_example [--write FILE]   without it nothing is written to disk

#include <array>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "csv_file_context.h"
#include "host/text.h"
#include "streamout/stream_out_block_registry.h"
#include "streamout/wks_recording_context.h"

namespace {

using streamout::StreamOutBlockRegistry;

std::string utf8(const std::u16string& text) { return fl::i18n::to_string(text); }

std::shared_ptr<CsvFileContext> wheelSpeedFile(const char* path) {
    const CsvFileContext::FilePropertiesMap properties{{"sampleTime", 0.01}, {"unit", u"rad/s"}};
    auto file = std::make_shared<CsvFileContext>("cruise:41", fl::i18n::to_ustring(path), u"cruise", "wheel-speed",
                                                 u"cruise/Sensors/Wheel Speed", properties);
    file->setDecimation("2");
    file->setMaxPoints("3");
    return file;
}

void show(const CsvFileContext& file) {
    std::cout << "file " << utf8(file.getFileName()) << " (" << file.getFileExtensionAsString() << ") records "
              << utf8(file.getBlockPath()) << ", every " << file.getDecimation() << " samples, at most "
              << file.getMaxPoints() << " points\n";
    std::vector<std::string> numberNames, textNames;
    std::vector<double> numbers;
    std::vector<std::u16string> texts;
    file.getProperties(numberNames, numbers, textNames, texts);
    for (std::size_t i = 0; i < numbers.size(); ++i) std::cout << "  " << numberNames[i] << " = " << numbers[i] << '\n';
    for (std::size_t i = 0; i < texts.size(); ++i) std::cout << "  " << textNames[i] << " = " << utf8(texts[i]) << '\n';
}

void show(const streamout::WksRecordingContext& variable) {
    std::cout << "variable " << utf8(variable.getVariableName()) << " records " << variable.getSourceID() << " as "
              << variable.getFormat() << (variable.usingStructFormat() ? ", a struct\n" : ", no struct\n");
}

void show(const StreamOutBlockRegistry& registry, const char* when) {
    std::cout << when << ": " << registry.getRegisteredBlocks().size() << " blocks recording;";
    for (const char* const id : {"wheel-speed", "cruise", "engine"}) {
        const auto block = registry.getBlockForBlockId(id);
        std::cout << ' ' << id << " is " << (block ? block->getSourceID() : "not there");
    }
    std::cout << '\n';
}

// Starts (or stops) each block's recording in a thread of its own.
template <class Operation>
void forEachInAThread(const std::vector<StreamOutBlockRegistry::BlockContextPtr>& blocks, Operation operation) {
    std::vector<std::jthread> threads;
    for (const auto& block : blocks) threads.emplace_back([&block, operation] { operation(block); });
}

void record(const char* path, bool write) {
    const auto file = wheelSpeedFile(path);
    const auto variable = std::make_shared<streamout::WksRecordingContext>(u"speedLog", u"cruise", "cruise:57",
                                                                           "structwithtime", "1", "inf", true);
    show(*file);
    show(*variable);

    StreamOutBlockRegistry registry;
    const std::vector<StreamOutBlockRegistry::BlockContextPtr> blocks{file, variable};
    forEachInAThread(blocks, [&registry](const auto& block) { registry.registerBlock(block); });
    show(registry, "started");
    if (write) {
        file->write(std::array{10.0, 10.5, 11.0, 11.5, 12.0, 12.5, 13.0});
        std::cout << "written " << utf8(file->getFullFilePath()) << '\n';
    }
    forEachInAThread(blocks, [&registry](const auto& block) { registry.unregisterBlock(block); });
    show(registry, "stopped");
}

}  // namespace

int main(int argc, char** argv) {
    const bool write = argc == 3 && std::string(argv[1]) == "--write";
    if (argc != 1 && !write) {
        std::cerr << "usage: recording_example [--write FILE]\n";
        return 2;
    }
    try {
        record(write ? argv[2] : "/recordings/wheel speed.csv", write);
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::cerr << "recording_example: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
}
