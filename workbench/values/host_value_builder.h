#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/hv_array.h"
#include "workbench/json/json_file.h"

namespace workbench {

/// Builds one host value from its JSON form, as docs/model-file.md maps them. Throws `Error`, with
/// text only, for what is not such a form; the builder is then of no further use.
class HostValueBuilder final : public JsonSink {
public:
    void beginObject() override;
    void key(std::string_view name) override;
    void endObject() override;
    void beginArray() override;
    void endArray() override;
    void string(std::string_view text) override;
    void number(std::string_view text) override;
    void boolean(bool value) override;
    void null() override;

    bool isComplete() const noexcept { return m_isComplete; }
    /// The value, null for JSON's null; the builder is then ready for another one.
    HvArrayPtr take() noexcept;
    /// JSON pointer, below the value, of what is being built.
    std::string pointer() const;

private:
    enum class Kind : std::uint8_t { plainStruct, cell, tagged };
    /// The member of a tagged object that is being read.
    enum class Member : std::uint8_t { none, className, size, fields, elements, values };

    struct Node {
        Kind kind;
        Member member = Member::none;
        bool isListOpen = false;
        hvClassID classId = hvUNKNOWN_CLASS;
        bool hasSize = false;
        bool hasData = false;
        std::vector<std::size_t> size{};
        std::vector<std::string> names{};   ///< of a struct's fields
        std::vector<HvArrayPtr> values{};   ///< of a struct or a cell array
        std::vector<std::uint64_t> bits{};  ///< of a numeric, logical or character array
    };

    Node* top() noexcept { return m_stack.empty() ? nullptr : &m_stack.back(); }
    /// The tagged object whose lists or members take the next scalar; null when the scalar is a value.
    Node* taggedTop() noexcept;
    void beginLevel();
    void deliver(HvArrayPtr value);
    void taggedKey(Node& node, std::string_view name);
    void taggedString(Node& node, std::string_view text);
    static HvArrayPtr build(Node& node);

    std::vector<Node> m_stack;
    std::size_t m_levels = 0;  ///< of objects and arrays that are open
    HvArrayPtr m_result;
    bool m_isComplete = false;
};

/// The value that a whole JSON text is; `name` stands for its file in messages. Throws `Error` for what is none.
HvArrayPtr hostValueOf(const std::string& name, const std::string& json);

}  // namespace workbench
