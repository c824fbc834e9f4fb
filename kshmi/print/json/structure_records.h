#pragma once

#include <string>

#include "workbench/change/renumbering.h"
#include "workbench/json/json_object.h"

/// What a model consists of, as members of JSON objects: the same names and forms in every command. `from` is what the
/// thing was called before, or empty.
namespace kshmi {

/// A block by its full path.
void appendBlock(workbench::JsonObject& object, const std::u16string& block, const std::u16string& from = {});
/// A port of the block, with the number that it had if it had another.
void appendPort(workbench::JsonObject& object, const std::u16string& block, const workbench::PortChange& port);
/// A chart's state or datum.
void appendItem(workbench::JsonObject& object, const std::u16string& block, const std::u16string& item,
                const std::u16string& from = {});
/// A model by its name.
void appendModel(workbench::JsonObject& object, const std::u16string& name, const std::u16string& from);

}  // namespace kshmi
