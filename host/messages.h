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
    using Argument = std::variant<std::int64_t, std::string, std::u16string>;  ///< A number, UTF-8, or UTF-16.

    BaseMsgID(std::string catalogue, std::string key, std::vector<Argument> arguments = {});  ///< Looks nothing up.
    BaseMsgID(const BaseMsgID&);             ///< Copies all three parts.
    BaseMsgID& operator=(const BaseMsgID&);  ///< As the copy constructor.
    virtual ~BaseMsgID();

    const std::vector<Argument>& arguments() const noexcept;  ///< In the order of the text's places {0}, {1}, ...
    const std::string& catalogue() const noexcept;            ///< Such as "plv_hmi_foundation:errors".
    const std::string& key() const noexcept;                  ///< Such as "InvalidElementIndex".

private:
    std::vector<Argument> m_arguments;
    std::string m_catalogue;
    std::string m_key;
};

}  // namespace resource_core

/// The host's exception: a message identifier and the catalogue's text for it.
class OX_API kssvIException : public std::exception {
public:
    kssvIException(resource_core::BaseMsgID id, std::string text);  ///< `text` is UTF-8, ready to be shown.
    kssvIException(const kssvIException&) noexcept;  ///< Shares what the other holds, so that copying cannot fail.
    ~kssvIException() override;

    const resource_core::BaseMsgID& messageId() const noexcept;  ///< Valid while this exception or a copy of it lives.
    /// The localised text, UTF-8.
    const char* what() const noexcept override;

private:
    struct State;
    std::shared_ptr<const State> m_state;
};
