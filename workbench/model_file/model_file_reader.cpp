#include <fmt/format.h>

#include <cstdint>
#include <utility>

#include "host/messages.h"
#include "workbench/model_file/model_file.h"
#include "workbench/model_file/model_file_parts.h"
#include "workbench/model_file/model_file_shapes.h"
#include "workbench/model_file/plain_record.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"
#include "workbench/values/host_value_builder.h"
#include "workbench/values/number_text.h"

namespace workbench {

namespace {

using shapes::Kind;
using shapes::Place;
using shapes::Rule;

// Follows the document's structure and hands what it finds to the parts.
class ModelFileReader final : public JsonSink {
public:
    ModelFileReader(const JsonFile& file, const FaultSink* faults, ModelSink* sink)
        : m_file(file), m_parts(file, faults, sink, [this] { return pointer(); }) {}
    ModelFileParts& parts() noexcept { return m_parts; }

    void beginObject() override { begin(Kind::object, &JsonSink::beginObject); }
    void beginArray() override { begin(Kind::array, &JsonSink::beginArray); }
    void endObject() override { end(&JsonSink::endObject); }
    void endArray() override { end(&JsonSink::endArray); }
    void key(std::string_view name) override;
    void string(std::string_view text) override;
    void number(std::string_view text) override;
    void boolean(bool value) override;
    void null() override {
        if (!inValue()) failKind("null");
        build([&] { m_value.null(); });
    }
    std::size_t takeElement(std::string_view text, std::size_t& line) override;

private:
    struct Frame {
        Place place;
        bool isArray;
        std::uint32_t keysSeen = 0;
        std::size_t position = 0;  // of the element in an array; of the key in the rules; behind the record's field
        std::size_t field = 0;     // of a record
        std::string key{};
    };

    const Rule& expected() const noexcept;
    bool inValue() const noexcept { return m_valueDepth > 0 || expected().kind == Kind::value; }
    void begin(Kind kind, void (JsonSink::*event)());
    void end(void (JsonSink::*event)());
    void enter(Place place, bool isArray);
    void leave();
    void recordKey(Frame& frame, std::string_view name);
    void takeSignal(std::size_t& line);
    template <class Event>
    void build(Event event);
    void deliverValue();
    // Steps to the next element when the current place is an array.
    void advance() noexcept {
        if (!m_frames.empty() && m_frames.back().isArray) ++m_frames.back().position;
    }
    std::string pointer() const;
    [[noreturn]] void failKind(const std::string& found) const;

    const JsonFile& m_file;
    ModelFileParts m_parts;
    std::vector<Frame> m_frames;
    HostValueBuilder m_value;
    std::size_t m_valueDepth = 0;
    PlainRecord m_signal;
};

const Rule& ModelFileReader::expected() const noexcept {
    static constexpr Rule kTop{"", Kind::object, Place::document};
    static constexpr Rule kRecordField{"", Kind::value};
    if (m_frames.empty()) return kTop;
    const Frame& frame = m_frames.back();
    if (frame.isArray) return shapes::elementOf(frame.place);
    return shapes::isRecord(frame.place) ? kRecordField : shapes::keysOf(frame.place)[frame.position];
}

void ModelFileReader::begin(Kind kind, void (JsonSink::*event)()) {
    if (inValue()) {
        ++m_valueDepth;
        return build([&] { (m_value.*event)(); });
    }
    const Rule& rule = expected();
    if (rule.kind != kind) failKind(shapes::describe(kind));
    enter(rule.place, kind == Kind::array);
}

void ModelFileReader::end(void (JsonSink::*event)()) {
    if (m_valueDepth == 0) return leave();
    --m_valueDepth;
    build([&] { (m_value.*event)(); });
}

void ModelFileReader::enter(Place place, bool isArray) {
    m_frames.push_back(Frame{.place = place, .isArray = isArray});
    m_parts.begin(place);
}

void ModelFileReader::leave() {
    const Frame frame = std::move(m_frames.back());
    m_frames.pop_back();
    const auto rules = shapes::keysOf(frame.place);
    for (std::size_t i = 0; !frame.isArray && i < rules.size(); ++i)
        if (rules[i].isRequired && (frame.keysSeen & (1U << i)) == 0)
            m_file.fail(pointer(), fmt::format("the key {} is missing; add it", inQuotes(rules[i].key)));
    m_parts.end(frame.place);
    advance();
}

void ModelFileReader::key(std::string_view name) {
    if (m_valueDepth > 0) return build([&] { m_value.key(name); });
    Frame& frame = m_frames.back();
    frame.key = name;
    if (shapes::isRecord(frame.place)) return recordKey(frame, name);
    const auto rules = shapes::keysOf(frame.place);
    for (frame.position = 0; frame.position < rules.size(); ++frame.position)
        if (rules[frame.position].key == name) break;
    if (frame.position == rules.size()) m_file.fail(pointer(), "this key is unknown; remove it");
    const std::uint32_t bit = 1U << frame.position;
    if (frame.keysSeen & bit) m_file.fail(pointer(), "this key appears twice; remove one");
    frame.keysSeen |= bit;
}

void ModelFileReader::recordKey(Frame& frame, std::string_view name) {
    RecordTable& table = m_parts.records(frame.place);
    // The fields mostly come in their order.
    const std::optional<std::size_t> number = fieldNumber(table.kind(), name, frame.position);
    if (!number) m_file.fail(pointer(), "this key is unknown; remove it");
    if (table.hasField(*number)) m_file.fail(pointer(), "this key appears twice; remove one");
    table.noteField(*number);
    frame.field = *number;
    frame.position = *number + 1;
}

void ModelFileReader::string(std::string_view text) {
    if (inValue()) return build([&] { m_value.string(text); });
    if (expected().kind != Kind::text) failKind("the text " + inQuotes(text));
    if (text.find('\0') != std::string_view::npos) m_file.fail(pointer(), "contains a NUL character; remove it");
    m_parts.setText(m_frames.back().place, m_frames.back().key, toUtf16(text));
    advance();
}

void ModelFileReader::boolean(bool value) {
    if (inValue()) return build([&] { m_value.boolean(value); });
    if (expected().kind != Kind::boolean) failKind("true or false");
    m_parts.setFlag(m_frames.back().place, value);
}

void ModelFileReader::number(std::string_view text) {
    if (inValue()) return build([&] { m_value.number(text); });
    if (expected().kind != Kind::number) failKind("the number " + std::string(text));
    double value = 0.0;
    try {
        value = numberOfText(text);
    } catch (const Error& error) {
        m_file.fail(pointer(), error.what());
    }
    m_parts.setNumber(m_frames.back().place, value);
}

template <class Event>
void ModelFileReader::build(Event event) {
    try {
        event();
        if (m_value.isComplete()) deliverValue();
    } catch (const Error& error) {
        m_file.fail(pointer() + m_value.pointer(), error.what());
    } catch (const kssvIException& refusal) {
        m_file.fail(pointer() + m_value.pointer(), refusal.what());
    }
}

void ModelFileReader::deliverValue() {
    const Frame& frame = m_frames.back();
    m_parts.setField(frame.place, frame.field, m_value.take());
    advance();
}

std::size_t ModelFileReader::takeElement(std::string_view text, std::size_t& line) {
    const bool isSignal = m_valueDepth == 0 && !m_frames.empty() && m_frames.back().place == Place::signals;
    if (!isSignal || !m_signal.scan(text)) return 0;
    takeSignal(line);
    return m_signal.size();
}

// A field a line, between one for each bracket.
void ModelFileReader::takeSignal(std::size_t& line) {
    RecordTable& table = m_parts.records(Place::signal);
    table.begin();
    std::size_t field = 0;
    try {
        for (; field < m_signal.fields(); ++field) {
            ++line;
            table.takeField(m_signal, field);
        }
    } catch (const kssvIException& refusal) {
        m_file.fail(pointer() + pointerToken(fieldsOf(RecordKind::signal)[field]), refusal.what());
    }
    if (m_signal.hasMarkedName()) {
        ++line;
        table.takeField(m_signal, RecordLines::kMarkedName);
    }
    ++line;
    m_parts.end(Place::signal);
    ++line;
    advance();
}

std::string ModelFileReader::pointer() const {
    std::string result;
    for (const Frame& frame : m_frames)
        result += frame.isArray ? "/" + std::to_string(frame.position) : pointerToken(frame.key);
    return result;
}

void ModelFileReader::failKind(const std::string& found) const {
    m_file.fail(pointer(),
                fmt::format("{} appears where {} is expected; correct it", found, shapes::describe(expected().kind)));
}

ModelFile readDocument(JsonFile file, const FaultSink* faults = nullptr) {
    const auto version = file.version();
    ModelFileReader reader(file, faults, nullptr);
    file.read(reader);
    ModelFile result = reader.parts().finish();
    result.version = version;
    return result;
}

RestOfModelFile readDocument(JsonFile file, ModelSink& sink) {
    const auto version = file.version();
    ModelFileReader reader(file, nullptr, &sink);
    file.read(reader);
    RestOfModelFile result = reader.parts().finishRest();
    result.version = version;
    return result;
}

}  // namespace

ModelFile newModelFile(const std::u16string& name) {
    try {
        return {kestrel::Model(name), emptyRecords(RecordKind::signal), emptyRecords(RecordKind::client), {}, {}};
    } catch (const kestrel::ModelError& refusal) {
        throw Error(fmt::format("{} Give another name.", refusal.what()));
    }
}

ModelFile readModelFile(const std::string& path) {
    if (path == kStandardStream) return readModelText(calledInMessages(path), readStandardInput());
    return readDocument(JsonFile(path));
}

ModelFile readModelText(const std::string& name, const std::string& text) {
    return readDocument(JsonFile::ofText(name, text));
}

ModelFile readModelFile(const std::string& path, const FaultSink& faults) {
    if (path == kStandardStream) return readModelText(calledInMessages(path), readStandardInput(), faults);
    return readDocument(JsonFile(path), &faults);
}

ModelFile readModelText(const std::string& name, const std::string& text, const FaultSink& faults) {
    return readDocument(JsonFile::ofText(name, text), &faults);
}

RestOfModelFile readModelFile(const std::string& path, ModelSink& sink) {
    if (path == kStandardStream) return readModelText(calledInMessages(path), readStandardInput(), sink);
    return readDocument(JsonFile(path), sink);
}

RestOfModelFile readModelText(const std::string& name, const std::string& text, ModelSink& sink) {
    return readDocument(JsonFile::ofText(name, text), sink);
}

}  // namespace workbench
