#include "memory_host/kestrel/host_values.h"

#include <optional>
#include <utility>
#include <variant>
#include <vector>

#include "host/text.h"
#include "memory_host/orvex/calls/call_by_name.h"
#include "memory_host/orvex/calls/errors.h"
#include "memory_host/orvex/objects/object_system.h"
#include "memory_host/orvex/objects/script_object.h"
#include "memory_host/orvex/objects/types.h"
#include "memory_host/orvex/values/hv_array_impl.h"

namespace kestrel {

HvArrayPtr emptyText() { return makeText(u""); }

std::u16string textProperty(const hvArray* object, const char* name) {
    return textOf(HvArrayPtr(hvGetPropertyShared(object, 0, name)).get());
}

double numberProperty(const hvArray* object, const char* name) {
    const HvArrayPtr value(hvGetPropertyShared(object, 0, name));
    return hvIsEmpty(value.get()) ? 0.0 : hvGetScalar(value.get());
}

std::string quoted(std::u16string_view text) { return "\"" + fl::i18n::to_string(std::u16string(text)) + "\""; }

HvArrayPtr callForOne(std::string_view name, std::initializer_list<const hvArray*> ins) {
    std::vector<HvArrayPtr> results = orvex::callByName(name, std::span(ins.begin(), ins.size()), 1);
    return std::move(results.front());
}

bool truthAt(const orvex::Call& call, std::size_t position) {
    const hos::COSType type(hos::COSType::Kind::logical, "logical scalar");
    const hvArray* const value = call.ins[position];
    const std::optional<hos::Argument> truth = orvex::convertByType(type, value);
    if (truth) return std::get<bool>(*truth);
    orvex::refuseValue(type, value,
                       "Argument " + std::to_string(position + 1) + " of \"" + std::string(call.name) + "\"");
}

bool isOnChart(const hvArray* signal) {
    const std::u16string domain = textProperty(signal, "DomainType_");
    return domain == u"cw_chart" || domain == u"cw_state" || domain == u"cw_data";
}

void requireInputs(const orvex::Call& call, std::size_t count) {
    if (call.ins.size() == count) return;
    orvex::raise("WrongNumberOfInputs", "Wrong number of arguments for \"" + std::string(call.name) +
                                            "\": " + std::to_string(call.ins.size()) + " given, " +
                                            std::to_string(count) + " needed.");
}

namespace {

// The field that the property is read from; at the property's own position where the struct has the class's order.
const hvArray* fieldFor(const orvex::StructData& data, const std::string& name, std::size_t position) {
    const bool isThere = position < data.names->size() && (*data.names)[position] == name;
    const int field = isThere ? static_cast<int>(position) : data.fieldNumber(name.c_str());
    return field < 0 ? nullptr : data.values[static_cast<std::size_t>(field)].get();
}

}  // namespace

void constructFromStruct(orvex::ScriptObject& self, std::span<const hvArray* const> arguments, std::size_t saved) {
    if (arguments.empty()) return;
    const auto takes = [&] { return "The constructor of class " + self.className() + " takes "; };
    if (arguments.size() != 1) orvex::raise("TooManyInputs", takes() + "one struct.");
    const auto* const data = orvex::payloadOf<orvex::StructData>(arguments.front());
    if (!data || hvGetNumberOfElements(arguments.front()) != 1)
        orvex::raise("TypeMismatch",
                     takes() + "a 1x1 struct, and " + orvex::describeValue(arguments.front()) + " was given.");
    const std::span properties = self.scriptClass().properties;
    for (std::size_t position = 0; position < saved; ++position) {
        const hvArray* const value = fieldFor(*data, properties[position].name, position);
        if (!value)
            orvex::raise("MissingField", "The struct for an object of class " + self.className() +
                                             " has no value in the field \"" + properties[position].name + "\".");
        self.storeAt(position, orvex::shareOf(value));
    }
}

void defineOnce(orvex::ScriptClass definition) {
    if (!orvex::findScriptClass(definition.fullName)) orvex::defineScriptClass(std::move(definition));
}

}  // namespace kestrel
