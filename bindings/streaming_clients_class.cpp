#include "bindings/streaming_clients_class.h"

#include "bindings/streaming_clients_methods.h"
#include "bindings/streaming_clients_properties.h"

namespace ks_hmi_foundation {

void StreamingClientsCOSClassInfo::defineMembers(hos::COSClass& hostClass) const {
    hostClass.addProperty(std::make_unique<ClientsModelPI>(this));
    hostClass.addProperty(std::make_unique<ClientsCountPI>(this));
    hostClass.addProperty(std::make_unique<ClientsPersistencePI>(this));
    hostClass.addMethod(std::make_unique<StreamingClientsConstructor>());
    hostClass.addMethod(std::make_unique<StreamingClientsAdd>());
    hostClass.addMethod(std::make_unique<StreamingClientsSet>());
    hostClass.addMethod(std::make_unique<StreamingClientsRemove>());
    hostClass.addMethod(std::make_unique<StreamingClientsGet>());
}

void StreamingClientsGet::invoke(hos::Invocation& call) const {
    const auto& set = self(call);
    const auto client = set.share(elementIndex(call, 1, set.getCount()));
    setResult(call, client->getHOSObject(set.getModelName()));
}

}  // namespace ks_hmi_foundation
