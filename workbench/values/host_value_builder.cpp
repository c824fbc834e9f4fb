#include "workbench/values/host_value_builder.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include "workbench/text/error.h"
#include "workbench/text/text.h"
#include "workbench/values/class_names.h"
#include "workbench/values/number_text.h"

namespace workbench {

namespace {

bool isContainer(hvClassID classId) { return classId == hvCELL_CLASS || classId == hvSTRUCT_CLASS; }

HvArrayPtr structOf(const std::vector<std::size_t>& size, const std::vector<std::string>& names,
                    std::vector<HvArrayPtr>& values) {
    std::vector<const char*> texts;
    texts.reserve(names.size());
    for (const std::string& name : names) texts.push_back(name.c_str());
    HvArrayPtr result(hvCreateStructArray(size.size(), size.data(), static_cast<int>(texts.size()), texts.data()));
    for (std::size_t i = 0; i < values.size(); ++i)
        if (values[i]) hvSetField(result.get(), i / texts.size(), texts[i % texts.size()], values[i].release());
    return result;
}

HvArrayPtr cellOf(const std::vector<std::size_t>& size, std::vector<HvArrayPtr>& values) {
    HvArrayPtr result(hvCreateCellArray(size.size(), size.data()));
    for (std::size_t i = 0; i < values.size(); ++i)
        if (values[i]) hvSetCell(result.get(), i, values[i].release());
    return result;
}

template <class T>
void narrowInto(hvArray* value, const std::vector<std::uint64_t>& bits) {
    auto* const data = static_cast<char*>(hvGetDataForWriting(value));
    for (std::size_t i = 0; i < bits.size(); ++i) {
        const auto element = static_cast<T>(bits[i]);
        std::memcpy(data + i * sizeof(T), &element, sizeof(T));
    }
}

HvArrayPtr numbersOf(hvClassID classId, const std::vector<std::size_t>& size, const std::vector<std::uint64_t>& bits) {
    HvArrayPtr result(matrix::create_numeric(size, classId, hvREAL));
    if (bits.empty()) return result;
    switch (elementSize(classId)) {
        case sizeof(std::uint8_t):
            narrowInto<std::uint8_t>(result.get(), bits);
            break;
        case sizeof(std::uint16_t):
            narrowInto<std::uint16_t>(result.get(), bits);
            break;
        case sizeof(std::uint32_t):
            narrowInto<std::uint32_t>(result.get(), bits);
            break;
        default:
            narrowInto<std::uint64_t>(result.get(), bits);
    }
    return result;
}

// Throws when the elements given are not as many as the size says, times `perElement`.
void checkCount(const std::vector<std::size_t>& size, std::size_t perElement, std::size_t given) {
    std::size_t wanted = perElement;
    const bool isEmpty = std::find(size.begin(), size.end(), 0U) != size.end();
    if (isEmpty) wanted = 0;
    for (const std::size_t length : size) {
        if (wanted == 0) break;
        if (length > std::numeric_limits<std::size_t>::max() / wanted) throw Error("\"size\" is too large");
        wanted *= length;
    }
    if (wanted != given)
        throw Error(fmt::format("\"data\" has {} and \"size\" needs {}", counted(given, "element"), wanted));
}

void checkNames(const std::vector<std::string>& names) {
    std::vector<std::string_view> sorted(names.begin(), names.end());
    std::sort(sorted.begin(), sorted.end());
    if (const auto twice = std::adjacent_find(sorted.begin(), sorted.end()); twice != sorted.end())
        throw Error(fmt::format("the key {} appears twice; remove one", inQuotes(*twice)));
    for (const std::string& name : names) {
        if (name.empty()) throw Error("a key is empty; name the field");
        if (name.find('\0') != std::string::npos)
            throw Error(fmt::format("the key {} contains a NUL character", inQuotes(name)));
    }
}

}  // namespace

HostValueBuilder::Node* HostValueBuilder::taggedTop() noexcept {
    Node* const node = top();
    const bool takesScalars =
        node && node->kind == Kind::tagged && !(node->isListOpen && node->member == Member::values);
    return takesScalars ? node : nullptr;
}

void HostValueBuilder::deliver(HvArrayPtr value) {
    if (Node* const node = top()) {
        node->values.push_back(std::move(value));
        return;
    }
    m_result = std::move(value);
    m_isComplete = true;
}

void HostValueBuilder::beginLevel() {
    // What a file may nest, less the levels in front of a value of a parked client, where it may come to be.
    constexpr std::size_t kMost = 251;
    if (++m_levels > kMost) throw Error(fmt::format("more than {} levels of nesting in one value", kMost));
}

void HostValueBuilder::beginObject() {
    beginLevel();
    if (taggedTop()) throw Error("an object appears where a member of a \"$class\" object is expected");
    m_stack.push_back(Node{.kind = Kind::plainStruct});
}

void HostValueBuilder::key(std::string_view name) {
    Node& node = m_stack.back();
    if (node.kind == Kind::tagged) return taggedKey(node, name);
    if (node.names.empty() && name == "$class") {
        node.kind = Kind::tagged;
        node.member = Member::className;
        return;
    }
    if (node.names.empty() && name.starts_with('$'))
        throw Error(fmt::format("the key {} is unknown; an object that starts with \"$\" needs \"$class\" first",
                                inQuotes(name)));
    node.names.emplace_back(name);
}

void HostValueBuilder::taggedKey(Node& node, std::string_view name) {
    const auto use = [&](Member member, bool& wasThere) {
        if (wasThere) throw Error(fmt::format("the key {} appears twice; remove one", inQuotes(name)));
        wasThere = true;
        node.member = member;
    };
    bool hasFields = !node.names.empty();
    if (name == "size")
        use(Member::size, node.hasSize);
    else if (name == "data")
        use(isContainer(node.classId) ? Member::values : Member::elements, node.hasData);
    else if (name == "fields" && node.classId == hvSTRUCT_CLASS)
        use(Member::fields, hasFields);
    else
        throw Error(
            fmt::format("the key {} is unknown for \"$class\": \"{}\"", inQuotes(name), nameOfClass(node.classId)));
}

void HostValueBuilder::endObject() {
    --m_levels;
    Node node = std::move(m_stack.back());
    m_stack.pop_back();
    deliver(build(node));
}

void HostValueBuilder::beginArray() {
    beginLevel();
    Node* const node = taggedTop();
    if (!node) {
        m_stack.push_back(Node{.kind = Kind::cell});
        return;
    }
    if (node->isListOpen || node->member == Member::className)
        throw Error("an array appears where a member of a \"$class\" object is expected");
    node->isListOpen = true;
}

void HostValueBuilder::endArray() {
    --m_levels;
    Node& node = m_stack.back();
    if (node.kind == Kind::tagged) {
        node.isListOpen = false;
        node.member = Member::none;
        return;
    }
    Node cell = std::move(node);
    m_stack.pop_back();
    deliver(cellOf({cell.values.size(), 1}, cell.values));
}

void HostValueBuilder::string(std::string_view text) {
    if (Node* const node = taggedTop()) return taggedString(*node, text);
    deliver(HvArrayPtr(matrix::create(text.data(), text.size())));
}

void HostValueBuilder::taggedString(Node& node, std::string_view text) {
    if (node.member == Member::className) {
        node.classId = classOfName(text);
        if (node.classId == hvUNKNOWN_CLASS)
            throw Error(fmt::format("the class {} is unknown; use one of {}", inQuotes(text), classNames()));
        node.member = Member::none;
    } else if (node.isListOpen && node.member == Member::fields) {
        node.names.emplace_back(text);
    } else if (node.isListOpen && node.member == Member::elements) {
        node.bits.push_back(elementOfText(node.classId, text));
    } else if (!node.isListOpen && node.member == Member::elements && node.classId == hvCHAR_CLASS) {
        for (const char16_t unit : toUtf16(text)) node.bits.push_back(unit);
    } else {
        throw Error(fmt::format("the text {} appears where an array is expected", inQuotes(text)));
    }
}

void HostValueBuilder::number(std::string_view text) {
    Node* const node = taggedTop();
    if (!node) return deliver(HvArrayPtr(hvCreateDoubleScalar(exactNumberOfText(text))));
    if (node->isListOpen && node->member == Member::size)
        node->size.push_back(lengthOfText(text));
    else if (node->isListOpen && node->member == Member::elements)
        node->bits.push_back(elementOfNumber(node->classId, text));
    else
        throw Error(fmt::format("the number {} appears where an array or a text is expected", text));
}

void HostValueBuilder::boolean(bool value) {
    Node* const node = taggedTop();
    if (!node) return deliver(HvArrayPtr(hvCreateLogicalScalar(value)));
    if (!node->isListOpen || node->member != Member::elements || node->classId != hvLOGICAL_CLASS)
        throw Error(std::string(value ? "true" : "false") + " appears where an array, a text or a number is expected");
    node->bits.push_back(value ? 1U : 0U);
}

void HostValueBuilder::null() {
    if (taggedTop()) throw Error("null appears where a member of a \"$class\" object is expected");
    deliver(nullptr);
}

HvArrayPtr HostValueBuilder::build(Node& node) {
    checkNames(node.names);
    if (node.kind == Kind::plainStruct) return structOf({1, 1}, node.names, node.values);
    if (node.size.size() < 2) throw Error("a \"$class\" object needs \"size\" with two lengths or more");
    if (!node.hasData) throw Error("a \"$class\" object needs \"data\"");
    if (node.classId == hvSTRUCT_CLASS) {
        checkCount(node.size, node.names.size(), node.values.size());
        return structOf(node.size, node.names, node.values);
    }
    if (node.classId == hvCELL_CLASS) {
        checkCount(node.size, 1, node.values.size());
        return cellOf(node.size, node.values);
    }
    checkCount(node.size, 1, node.bits.size());
    return numbersOf(node.classId, node.size, node.bits);
}

HvArrayPtr HostValueBuilder::take() noexcept {
    m_isComplete = false;
    return std::move(m_result);
}

std::string HostValueBuilder::pointer() const {
    std::string result;
    for (const Node& node : m_stack) {
        if (node.kind == Kind::plainStruct && !node.names.empty()) result += pointerToken(node.names.back());
        if (node.kind == Kind::cell) result += "/" + std::to_string(node.values.size());
        if (node.kind == Kind::tagged && node.member == Member::values)
            result += "/data/" + std::to_string(node.values.size());
    }
    return result;
}

HvArrayPtr hostValueOf(const std::string& name, const std::string& json) {
    JsonFile text = JsonFile::ofText(name, json);
    HostValueBuilder builder;
    try {
        text.read(builder);
    } catch (const Error& error) {
        if (!error.place().file.empty()) throw;
        text.fail(builder.pointer(), error.text());
    }
    return builder.take();
}

}  // namespace workbench
