#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

/// What may stand where in a model file.
namespace workbench::shapes {

/// The objects and arrays that a model file is made of.
enum class Place : std::uint8_t {
    nowhere,
    document,
    origin,
    goneBlocks,
    goneBlock,
    blocks,
    block,
    outputs,
    chart,
    states,
    state,
    dataItems,
    datum,
    signals,
    signal,
    clients,
    client,
    parked,
    parkedMark,
    parkedSignal,
    parkedClients,
    parkedClient,
};

enum class Kind : std::uint8_t { text, number, boolean, object, array, value };

/// What is expected at one position.
struct Rule {
    std::string_view key;  ///< empty for an array's elements
    Kind kind;
    Place place = Place::nowhere;  ///< of an object or array
    bool isRequired = true;
};

/// The keys of an object. Empty for arrays, and for signals and clients, whose keys the library names.
std::span<const Rule> keysOf(Place object) noexcept;
/// What an array's elements are.
const Rule& elementOf(Place array) noexcept;

/// Whether the object is a signal or a client, parked or not.
constexpr bool isRecord(Place object) noexcept {
    return object == Place::signal || object == Place::client || object == Place::parkedSignal ||
           object == Place::parkedClient;
}

/// "a text", "an array", ...
const char* describe(Kind kind) noexcept;

}  // namespace workbench::shapes
