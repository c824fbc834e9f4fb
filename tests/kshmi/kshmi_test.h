#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "kshmi/commands/command_line.h"
#include "memory_host/orvex/account/ledger.h"
#include "memory_host/orvex/account/scope_errors.h"
#include "workbench/session/host_process.h"

namespace kshmi::testing {

/// Leaves the host when all tests are done: nothing may live then.
class HostProcess final : public ::testing::Environment {
public:
    void TearDown() override {
        EXPECT_EQ(workbench::leaveHost(), "");
        EXPECT_EQ(orvex::liveCounts(), orvex::LedgerCounts{}) << orvex::describeLive();
        EXPECT_EQ(orvex::scopeErrors(), std::vector<std::string>());
    }
};
inline const auto* const kHostProcess = ::testing::AddGlobalTestEnvironment(new HostProcess);

struct Finished {
    int code;
    std::string out;
    std::string err;
};

/// Standard input reads that file while it lives.
class StandardInput {
public:
    explicit StandardInput(const std::string& file) : m_before(::dup(STDIN_FILENO)) {
        const int input = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
        EXPECT_EQ(::dup2(input, STDIN_FILENO), STDIN_FILENO);
        ::close(input);
    }
    StandardInput(const StandardInput&) = delete;
    StandardInput& operator=(const StandardInput&) = delete;
    ~StandardInput() {
        ::dup2(m_before, STDIN_FILENO);
        ::close(m_before);
    }

private:
    int m_before;
};

/// A directory for files, and the tool.
class KshmiTest : public ::testing::Test {
protected:
    KshmiTest() {
        std::string name = (std::filesystem::temp_directory_path() / "kshmi-test-XXXXXX").string();
        m_directory = ::mkdtemp(name.data());
    }
    ~KshmiTest() override { std::filesystem::remove_all(m_directory); }

    std::string path(const std::string& name = "model.json") const { return m_directory + "/" + name; }
    std::string write(const std::string& text, const std::string& name = "model.json") const {
        std::ofstream(path(name), std::ios::binary) << text;
        return path(name);
    }
    std::string read(const std::string& name = "model.json") const {
        std::ifstream file(path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    std::size_t fileCount() const {
        const std::filesystem::directory_iterator files(m_directory);
        return static_cast<std::size_t>(std::distance(begin(files), end(files)));
    }
    static Finished run(std::vector<std::string> arguments) {
        std::ostringstream out;
        std::ostringstream err;
        const int code = runCommandLine(std::move(arguments), {out, err});
        return {code, out.str(), err.str()};
    }
    /// Runs a command line with the model's file behind the command; a word with spaces stands in quotes.
    Finished runOn(const std::string& line) const {
        std::istringstream in(line);
        std::vector<std::string> words;
        for (std::string word; in >> std::quoted(word);) words.push_back(word);
        words.insert(words.begin() + 1, path());
        return run(std::move(words));
    }
    /// The line ends with that code and says this.
    void expectSaid(const std::string& line, int code, const std::string& said) const {
        const Finished finished = runOn(line);
        EXPECT_EQ(finished.code, code) << line << '\n' << finished.err;
        expectParts(finished.out + finished.err, {said});
    }
    static void expectParts(const std::string& text, const std::vector<std::string>& parts) {
        for (const std::string& part : parts) EXPECT_NE(text.find(part), std::string::npos) << part << "\nin\n" << text;
    }

private:
    std::string m_directory;
};

inline std::string replaced(std::string text, const std::string& what, const std::string& with) {
    const std::size_t at = text.find(what);
    EXPECT_NE(at, std::string::npos) << what;
    return at == std::string::npos ? text : text.replace(at, what.size(), with);
}

inline bool contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

/// A model in canonical form: a block with ':' in its name, a chart, a port signal and a chart signal,
/// a client of the port signal and a client that is both of a deprecated kind and dangling.
inline const std::string kModel = R"({
  "kestrelModel": 1,
  "name": "m",
  "blocks": [
    {"path": "A", "eid": "1", "outputs": ["y", "valid"]},
    {"path": "A/B:1", "eid": "2", "outputs": ["y"]},
    {"path": "A/B", "eid": "3", "outputs": ["p", "q"]},
    {"path": "Logic", "eid": "4", "outputs": [], "chart": {"states": [{"path": "On/Fast", "ssid": 4}, {"path": "Both", "ssid": 5}], "data": [{"name": "limit", "ssid": 7}, {"name": "Both", "ssid": 8}]}}
  ],
  "signals": [
    {
      "UUID": "u-1",
      "BlockPath_": "A",
      "EID_": "1",
      "SubPath_": "",
      "OutputPortIndex_": 1,
      "LogicalPortIndex_": 0,
      "SignalName_": "speed \"ü\"",
      "SubSysPath_": "",
      "Decimation_": 2,
      "MaxPoints_": 100,
      "TargetBufferedStreaming_": 0,
      "IsFrameBased_": 1,
      "HideInPLV_": 0,
      "DomainType_": "",
      "DomainParams_": {},
      "VisualType_": "scope"
    },
    {
      "UUID": "u-2",
      "BlockPath_": "Logic",
      "EID_": "4",
      "SubPath_": "On/Fast",
      "OutputPortIndex_": 0,
      "LogicalPortIndex_": 0,
      "SignalName_": "",
      "SubSysPath_": "",
      "Decimation_": 1,
      "MaxPoints_": 0,
      "TargetBufferedStreaming_": 0,
      "IsFrameBased_": 0,
      "HideInPLV_": 0,
      "DomainType_": "cw_state",
      "DomainParams_": {"Activity": "Self", "SSID": "4"},
      "VisualType_": ""
    }
  ],
  "clients": [
    {
      "UUID": "c-1",
      "ModelPath_": ["A"],
      "ModelPathEID_": ["1"],
      "SourceModel_": "m",
      "SignalUUID_": "u-1",
      "ObserverType_": "ks_scope_observer",
      "ObserverParams_": {"ModelName": "m", "range": {"$class": "double", "size": [1, 2], "data": ["NaN", 1]}},
      "UpdateRate_": 1,
      "DimensionChannel_": 4294967295,
      "ObserveImaginaryPart_": true,
      "BusLeafPath_": "bus.leaf"
    },
    {
      "UUID": "c-2",
      "ModelPath_": [],
      "ModelPathEID_": [],
      "SourceModel_": "",
      "SignalUUID_": "u-9",
      "ObserverType_": "hmi_web_widget_observer",
      "ObserverParams_": [null, -0.0, "x"],
      "UpdateRate_": 0,
      "DimensionChannel_": 1,
      "ObserveImaginaryPart_": false,
      "BusLeafPath_": ""
    }
  ]
}
)";

}  // namespace kshmi::testing
