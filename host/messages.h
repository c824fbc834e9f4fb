#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "host/api.h"

namespace resource_core {

/// A message identifier: typed arguments, the catalogue that holds the text, and the text's key.
class OX_API BaseMsgID {
public:
    using Argument = std::variant<std::int64_t, std::string, std::u16string>;

    BaseMsgID(std::string catalogue, std::string key, std::vector<Argument> arguments = {});
    BaseMsgID(const BaseMsgID&);
    BaseMsgID& operator=(const BaseMsgID&);
    virtual ~BaseMsgID();

    const std::vector<Argument>& arguments() const noexcept;
    const std::string& catalogue() const noexcept;
    const std::string& key() const noexcept;

private:
    std::vector<Argument> m_arguments;
    std::string m_catalogue;
    std::string m_key;
};

}  // namespace resource_core

/// The host's exception: a message identifier and the catalogue's text for it.
class OX_API kssvIException : public std::exception {
public:
    kssvIException(resource_core::BaseMsgID id, std::string text);
    kssvIException(const kssvIException&) noexcept;
    ~kssvIException() override;

    const resource_core::BaseMsgID& messageId() const noexcept;
    /// The localised text, UTF-8.
    const char* what() const noexcept override;

private:
    struct State;
    std::shared_ptr<const State> m_state;
};
