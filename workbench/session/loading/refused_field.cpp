#include "workbench/session/loading/refused_field.h"

#include <cstdint>
#include <variant>

#include "host/services.h"

namespace workbench {

RefusedField refusedField(const resource_core::BaseMsgID& id) {
    RefusedField refused;
    const bool namesField = id.key() == "MissingField" || id.key() == "InvalidFieldValue";
    if (id.catalogue() != "plv_hmi_foundation:errors" || !namesField || id.arguments().size() != 2) return refused;
    if (const auto* field = std::get_if<std::string>(id.arguments().data())) refused.field = *field;
    if (const auto* element = std::get_if<std::int64_t>(&id.arguments()[1]))
        refused.element = static_cast<std::size_t>(*element);
    return refused;
}

std::string refusalText(const kssvIException& refusal, std::size_t position) {
    const resource_core::BaseMsgID& id = refusal.messageId();
    const auto number = static_cast<std::int64_t>(position + 1);
    const resource_core::BaseMsgID renumbered(id.catalogue(), id.key(), {id.arguments().at(0), number});
    try {
        kssvThrowIExceptionFromDiagnostic(kssvCreateDiagnostic(renumbered, std::string()), nullptr);
    } catch (const kssvIException& exception) {
        return exception.what();
    }
    return refusal.what();
}

}  // namespace workbench
