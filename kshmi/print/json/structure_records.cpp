#include "kshmi/print/json/structure_records.h"

#include <string_view>

namespace kshmi {

using workbench::JsonObject;

namespace {

void appendFrom(JsonObject& object, const std::u16string& from) {
    if (!from.empty()) object.text("from", from);
}

}  // namespace

void appendBlock(JsonObject& object, const std::u16string& block, const std::u16string& from) {
    object.text("kind", std::string_view("block")).text("block", block);
    appendFrom(object, from);
}

void appendPort(JsonObject& object, const std::u16string& block, const workbench::PortChange& port) {
    object.text("kind", std::string_view("port")).text("block", block);
    object.number("port", port.to == 0 ? port.from : port.to).text("portName", port.name);
    if (port.to != 0 && port.from != 0) object.number("from", port.from);
}

void appendItem(JsonObject& object, const std::u16string& block, const std::u16string& item,
                const std::u16string& from) {
    object.text("kind", std::string_view("item")).text("block", block).text("item", item);
    appendFrom(object, from);
}

void appendModel(JsonObject& object, const std::u16string& name, const std::u16string& from) {
    object.text("kind", std::string_view("model")).text("name", name).text("from", from);
}

}  // namespace kshmi
