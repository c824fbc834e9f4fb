#include "workbench/model_file/model_file_shapes.h"

#include <array>

namespace workbench::shapes {

namespace {

constexpr std::array<Rule, 7> kDocument{{{"kestrelModel", Kind::number},
                                         {"name", Kind::text},
                                         {"origin", Kind::object, Place::origin, false},
                                         {"blocks", Kind::array, Place::blocks},
                                         {"signals", Kind::array, Place::signals, false},
                                         {"clients", Kind::array, Place::clients, false},
                                         {"parked", Kind::array, Place::parked, false}}};
constexpr std::array<Rule, 5> kParked{{{"signal", Kind::object, Place::parkedSignal},
                                       {"clients", Kind::array, Place::parkedClients},
                                       {"lost", Kind::text},
                                       {"unsure", Kind::boolean, Place::nowhere, false},
                                       {"from", Kind::text}}};
constexpr std::array<Rule, 6> kOrigin{{{"kind", Kind::text},
                                       {"version", Kind::text},
                                       {"file", Kind::text},
                                       {"hash", Kind::text},
                                       {"locals", Kind::boolean, Place::nowhere, false},
                                       {"gone", Kind::array, Place::goneBlocks, false}}};
constexpr std::array<Rule, 2> kGoneBlock{{{"source", Kind::text}, {"eid", Kind::text}}};
constexpr std::array<Rule, 5> kBlock{{{"path", Kind::text},
                                      {"eid", Kind::text},
                                      {"source", Kind::text, Place::nowhere, false},
                                      {"outputs", Kind::array, Place::outputs},
                                      {"chart", Kind::object, Place::chart, false}}};
constexpr std::array<Rule, 2> kChart{
    {{"states", Kind::array, Place::states, false}, {"data", Kind::array, Place::dataItems, false}}};
constexpr std::array<Rule, 2> kState{{{"path", Kind::text}, {"ssid", Kind::number}}};
constexpr std::array<Rule, 2> kDatum{{{"name", Kind::text}, {"ssid", Kind::number}}};

constexpr Rule kText{"", Kind::text};
constexpr Rule kGoneElement{"", Kind::object, Place::goneBlock};
constexpr Rule kBlockElement{"", Kind::object, Place::block};
constexpr Rule kStateElement{"", Kind::object, Place::state};
constexpr Rule kDatumElement{"", Kind::object, Place::datum};
constexpr Rule kSignalElement{"", Kind::object, Place::signal};
constexpr Rule kClientElement{"", Kind::object, Place::client};
constexpr Rule kParkedElement{"", Kind::object, Place::parkedMark};
constexpr Rule kParkedClientElement{"", Kind::object, Place::parkedClient};

}  // namespace

std::span<const Rule> keysOf(Place object) noexcept {
    switch (object) {
        case Place::document:
            return kDocument;
        case Place::origin:
            return kOrigin;
        case Place::goneBlock:
            return kGoneBlock;
        case Place::block:
            return kBlock;
        case Place::chart:
            return kChart;
        case Place::state:
            return kState;
        case Place::datum:
            return kDatum;
        case Place::parkedMark:
            return kParked;
        default:
            return {};
    }
}

const Rule& elementOf(Place array) noexcept {
    switch (array) {
        case Place::goneBlocks:
            return kGoneElement;
        case Place::blocks:
            return kBlockElement;
        case Place::outputs:
            return kText;
        case Place::states:
            return kStateElement;
        case Place::dataItems:
            return kDatumElement;
        case Place::signals:
            return kSignalElement;
        case Place::parked:
            return kParkedElement;
        case Place::parkedClients:
            return kParkedClientElement;
        default:
            return kClientElement;
    }
}

const char* describe(Kind kind) noexcept {
    switch (kind) {
        case Kind::text:
            return "a text";
        case Kind::number:
            return "a number";
        case Kind::boolean:
            return "true or false";
        case Kind::object:
            return "an object";
        case Kind::array:
            return "an array";
        case Kind::value:
            break;
    }
    return "a value";
}

}  // namespace workbench::shapes
