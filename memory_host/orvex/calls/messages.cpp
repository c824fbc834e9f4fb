#include "host/messages.h"

#include <utility>

namespace resource_core {

BaseMsgID::BaseMsgID(std::string catalogue, std::string key, std::vector<Argument> arguments)
    : m_arguments(std::move(arguments)), m_catalogue(std::move(catalogue)), m_key(std::move(key)) {}

BaseMsgID::BaseMsgID(const BaseMsgID&) = default;
BaseMsgID& BaseMsgID::operator=(const BaseMsgID&) = default;
BaseMsgID::~BaseMsgID() = default;

const std::vector<BaseMsgID::Argument>& BaseMsgID::arguments() const noexcept { return m_arguments; }
const std::string& BaseMsgID::catalogue() const noexcept { return m_catalogue; }
const std::string& BaseMsgID::key() const noexcept { return m_key; }

}  // namespace resource_core

struct kssvIException::State {
    resource_core::BaseMsgID id;
    std::string text;
};

kssvIException::kssvIException(resource_core::BaseMsgID id, std::string text)
    : m_state(std::make_shared<const State>(State{id, std::move(text)})) {}

kssvIException::kssvIException(const kssvIException&) noexcept = default;
kssvIException::~kssvIException() = default;

const resource_core::BaseMsgID& kssvIException::messageId() const noexcept { return m_state->id; }
const char* kssvIException::what() const noexcept { return m_state->text.c_str(); }
