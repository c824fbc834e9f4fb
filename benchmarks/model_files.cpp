#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <boost/json/basic_parser_impl.hpp>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "benchmarks/persistence.h"
#include "benchmarks/sample_signals.h"
#include "benchmarks/scratch_directory.h"
#include "benchmarks/suite.h"
#include "workbench/model_file/model_file.h"
#include "workbench/session/session.h"

// Model files of the tool, beside the least that reading and writing them can cost.
namespace ks_bench {

namespace {

namespace json = boost::json;

constexpr std::size_t kCount = 100'000;
constexpr std::size_t kChunk = std::size_t{1} << 16U;

const ScratchDirectory& directory() {
    static const ScratchDirectory s_directory;
    return s_directory;
}

const std::string& modelFile() {
    static const std::string s_path = [] {
        std::string path = directory().file("plant.kestrel.json");
        workbench::writeModelFile(path, makeModel(kCount), savedRecords(kCount).get(), nullptr);
        return path;
    }();
    return s_path;
}

std::string contentsOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Looks at everything and keeps nothing.
struct CountingHandler {
    static constexpr std::size_t max_object_size = std::size_t(-1);
    static constexpr std::size_t max_array_size = std::size_t(-1);
    static constexpr std::size_t max_key_size = std::size_t(-1);
    static constexpr std::size_t max_string_size = std::size_t(-1);
    using Code = json::error_code;
    using View = json::string_view;

    std::size_t events = 0;

    bool count() noexcept { return ++events, true; }
    bool on_document_begin(Code&) { return true; }
    bool on_document_end(Code&) { return true; }
    bool on_object_begin(Code&) { return count(); }
    bool on_object_end(std::size_t, Code&) { return true; }
    bool on_array_begin(Code&) { return count(); }
    bool on_array_end(std::size_t, Code&) { return true; }
    bool on_key_part(View, std::size_t, Code&) { return true; }
    bool on_key(View, std::size_t, Code&) { return true; }
    bool on_string_part(View, std::size_t, Code&) { return true; }
    bool on_string(View, std::size_t, Code&) { return count(); }
    bool on_number_part(View, Code&) { return true; }
    bool on_int64(std::int64_t, View, Code&) { return count(); }
    bool on_uint64(std::uint64_t, View, Code&) { return count(); }
    bool on_double(double, View, Code&) { return count(); }
    bool on_bool(bool, Code&) { return count(); }
    bool on_null(Code&) { return count(); }
    bool on_comment_part(View, Code&) { return true; }
    bool on_comment(View, Code&) { return true; }
};

void parseOnly(benchmark::State& state) {
    const std::string& path = modelFile();
    for ([[maybe_unused]] auto _ : state) {
        json::basic_parser<CountingHandler> parser{json::parse_options()};
        std::array<char, kChunk> chunk;
        json::error_code code;
        std::FILE* const file = std::fopen(path.c_str(), "rbe");
        while (const std::size_t size = std::fread(chunk.data(), 1, chunk.size(), file))
            parser.write_some(true, chunk.data(), size, code);
        std::fclose(file);
        if (!code) parser.write_some(false, chunk.data(), 0, code);
        if (code || parser.handler().events < kCount) state.SkipWithError("the file is not as expected");
    }
}

void load(benchmark::State& state) {
    const std::string& path = modelFile();
    for ([[maybe_unused]] auto _ : state) {
        auto session = std::make_unique<workbench::Session>(path);
        state.PauseTiming();
        if (session->signals().getCount() != kCount) state.SkipWithError("not everything was loaded");
        session.reset();
        state.ResumeTiming();
    }
}

void save(benchmark::State& state) {
    const std::string copy = directory().file("saved.kestrel.json");
    std::filesystem::copy_file(modelFile(), copy, std::filesystem::copy_options::overwrite_existing);
    workbench::Session session(copy);
    for ([[maybe_unused]] auto _ : state) session.save();
    if (contentsOf(copy) != contentsOf(modelFile())) state.SkipWithError("the saved file differs");
}

// The file written straight from the records.
class Dump {
public:
    explicit Dump(const std::string& path)
        : m_file(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644)) {
        m_text.reserve(2 * kChunk);
    }
    Dump(const Dump&) = delete;
    Dump& operator=(const Dump&) = delete;
    ~Dump() {
        flush();
        ::close(m_file);
    }

    Dump& put(std::string_view text) {
        m_text += text;
        if (m_text.size() >= kChunk) flush();
        return *this;
    }
    Dump& quote(std::string_view text) { return quoteUnits(text); }
    Dump& quote(std::u16string_view text) { return quoteUnits(text); }
    Dump& number(int value) {
        std::array<char, 16> digits{};
        return put({digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr});
    }

private:
    template <class Text>
    Dump& quoteUnits(Text text) {
        m_text += '"';
        for (const auto unit : text) {
            if (unit == '"' || unit == '\\') m_text += '\\';
            m_text += static_cast<char>(unit);
        }
        m_text += '"';
        return *this;
    }
    void flush() {
        if (::write(m_file, m_text.data(), m_text.size()) < 0) throw std::runtime_error("writing failed");
        m_text.clear();
    }

    int m_file;
    std::string m_text;
};

void dumpSignal(Dump& out, const ks_hmi::SignalSpecification& s) {
    out.put("    {\n      \"UUID\": ").quote(s.m_uuid).put(",\n      \"BlockPath_\": ").quote(s.m_blockPath);
    out.put(",\n      \"EID_\": ").quote(s.m_eid).put(",\n      \"SubPath_\": ").quote(s.m_subPath);
    out.put(",\n      \"OutputPortIndex_\": ").number(s.m_outputPortIndex);
    out.put(",\n      \"LogicalPortIndex_\": ").number(s.m_logicalPortIndex);
    out.put(",\n      \"SignalName_\": ").quote(s.m_signalName).put(",\n      \"SubSysPath_\": ").quote(s.m_subSysPath);
    out.put(",\n      \"Decimation_\": ").number(s.m_decimation).put(",\n      \"MaxPoints_\": ").number(s.m_maxPoints);
    out.put(",\n      \"TargetBufferedStreaming_\": ").number(s.m_targetBufferedStreaming);
    out.put(",\n      \"IsFrameBased_\": ").number(s.m_isFrameBased);
    out.put(",\n      \"HideInPLV_\": ").number(s.m_hideInPLV);
    out.put(",\n      \"DomainType_\": ").quote(s.m_domainType).put(",\n      \"DomainParams_\": {}");
    out.put(",\n      \"VisualType_\": ").quote(s.m_visualType).put("\n    }");
}

void dumpModel(const std::string& path, const kestrel::Model& model, const ks_hmi::InstrumentedSignals& set) {
    Dump out(path);
    out.put("{\n  \"kestrelModel\": 1,\n  \"name\": ").quote(model.name()).put(",\n  \"blocks\": [");
    const char* separator = "\n";
    for (const kestrel::Block& block : model.blocks()) {
        out.put(separator).put("    {\"path\": ").quote(block.path).put(", \"eid\": ").quote(block.eid);
        out.put(", \"outputs\": [").quote(block.outputs.front()).put("]}");
        separator = ",\n";
    }
    out.put("\n  ],\n  \"signals\": [");
    separator = "\n";
    for (std::size_t i = 0; i < set.getCount(); ++i) {
        out.put(separator);
        dumpSignal(out, *set.get(i));
        separator = ",\n";
    }
    out.put("\n  ],\n  \"clients\": []\n}\n");
}

void dump(benchmark::State& state) {
    const std::string path = directory().file("dumped.kestrel.json");
    const kestrel::Model model = makeModel(kCount);
    const auto& set = sharedSet(kCount, unresolvedSignal);
    for ([[maybe_unused]] auto _ : state) dumpModel(path, model, set);
    if (contentsOf(path) != contentsOf(modelFile())) state.SkipWithError("the dumped file differs");
}

}  // namespace

void addModelFiles(Suite& suite) {
    Suite::time("model file: bare parse", parseOnly)->Unit(benchmark::kMillisecond);
    Suite::time("model file: load", load)->Unit(benchmark::kMillisecond);
    Suite::time("model file: save", save)->Unit(benchmark::kMillisecond);
    Suite::time("model file: bare dump", dump)->Unit(benchmark::kMillisecond);
    suite.compare(5, "kshmi load of 100000, bare streaming parse", "model file: load", "model file: bare parse",
                  Limit::atMost(5));
    suite.compare(5, "kshmi save of 100000, hand-written dump", "model file: save", "model file: bare dump",
                  Limit::atMost(7));
}

}  // namespace ks_bench
