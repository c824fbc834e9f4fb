#pragma once

#include <fmt/format.h>

#include <memory>
#include <string>
#include <vector>

#include "kshmi/print/output.h"
#include "kshmi/tour/temporary_copy.h"
#include "workbench/session/session.h"
#include "workbench/session/signal_source.h"

namespace kshmi {

/// Does the main job on a copy of a model and tells what happens. Everything it says was asked of the
/// library or the host at that moment.
class Tour {
public:
    Tour(const std::string& file, const Output& output) : m_output(output), m_copy(file) {}
    void run();

private:
    /// A source that outlives the loaded model: blocks are found again by element identifier.
    struct Stop {
        std::string eid;
        int port = 0;
        std::uint32_t ssid = 0;     ///< of a chart item, when `port` is 0
        std::u16string activity{};  ///< of a chart item
    };

    // The steps, in order.
    void loadLibrary();
    void openModel();
    void mark();
    void markAgain();
    void saveAndClose();
    void loadAgain();
    void askPorts();
    void askEnginePorts();
    void askActivities();
    void unmarkAndMark();
    void moveBlock();
    void addClients();
    void askClients();
    void renameTwice();
    void bundle();
    void notice();
    void validate();
    void showBlocks();
    void record();

    void observeFirst(const char* type);
    void markStop(const Stop& stop, bool isExcludedFromSave);
    std::vector<Stop> unmarkedPorts(std::size_t most) const;
    std::vector<Stop> unmarkedItems(std::size_t most) const;
    workbench::SignalSource find(const Stop& stop) const;
    std::string nameOf(const Stop& stop) const;
    /// Name of the model's first block with its handle; empty without blocks.
    std::string firstHandle() const;

    void title(const std::string& text);
    template <class... Values>
    void say(fmt::format_string<Values...> format, Values&&... values) const {
        m_output.out << "   " << fmt::format(format, std::forward<Values>(values)...) << '\n';
    }

    const Output& m_output;
    TemporaryCopy m_copy;
    std::unique_ptr<workbench::Session> m_session;
    std::vector<Stop> m_ports;  ///< marked on the way
    std::vector<Stop> m_items;
    std::string m_handleBefore;
    std::u16string m_nameBefore;
    int m_step = 0;
};

}  // namespace kshmi
