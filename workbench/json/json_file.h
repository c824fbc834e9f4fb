#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "workbench/files/file_version.h"
#include "workbench/json/plain_element.h"

namespace workbench {

/// Receives a JSON document piece by piece. Texts are UTF-8 and valid during the call only.
class JsonSink {
public:
    virtual ~JsonSink() = default;
    virtual void beginObject() = 0;
    virtual void key(std::string_view name) = 0;
    virtual void endObject() = 0;
    virtual void beginArray() = 0;
    virtual void endArray() = 0;
    virtual void string(std::string_view text) = 0;
    /// The number as it is written in the file.
    virtual void number(std::string_view text) = 0;
    virtual void boolean(bool value) = 0;
    virtual void null() = 0;
    /// `text` starts with an array's next element, in a place of its own on the line `line`. A sink that takes the
    /// element by itself, with the comma and the end of the line behind it, answers how long that is, and leaves the
    /// line behind it in `line`; 0 otherwise, and it is told piece by piece.
    virtual std::size_t takeElement([[maybe_unused]] std::string_view text, [[maybe_unused]] std::size_t& line) {
        return 0;
    }
};

/// A file that holds one JSON document.
class JsonFile {
public:
    /// Opens the file. Throws `Error` when it cannot be read.
    explicit JsonFile(std::string path);
    /// A text instead of a file, which must stay until it has been read; `name` stands for the path in messages.
    static JsonFile ofText(std::string name, const std::string& text) { return {std::move(name), text}; }
    static JsonFile ofText(std::string name, std::string&& text) = delete;

    /// Reads the document from front to end and hands it to `sink`; no more than a chunk of a file is in
    /// memory. Throws `Error` with line and column for what is not JSON, and when reading fails. What
    /// the sink throws passes through.
    void read(JsonSink& sink);

    const std::string& path() const noexcept { return m_path; }
    /// Of the file as it is now; nothing for a text.
    std::optional<FileVersion> version() const noexcept;
    /// 1-based; while `read` runs, the line of what the sink is receiving.
    std::size_t line() const noexcept { return m_line; }
    /// Throws `Error` for a place in the line that is being read.
    [[noreturn]] void fail(const std::string& pointer, const std::string& text) const;

private:
    struct Closer {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };
    JsonFile(std::string name, const std::string& text) : m_path(std::move(name)), m_text(text) {}
    template <class Parser>
    void readChunk(Parser& parser, JsonSink& sink, PlainElement& element, std::string_view chunk);
    template <class Parser>
    void feed(Parser& parser, std::string_view piece, bool more);
    [[noreturn]] void fail(const std::string& text) const;
    [[noreturn]] void failSyntax(const std::string& what, std::size_t column) const;

    std::string m_path;
    std::unique_ptr<std::FILE, Closer> m_file;  ///< null when there is a text instead
    std::string_view m_text;
    std::size_t m_line = 1;
    std::size_t m_column = 0;  ///< bytes of the line that were fed
    char m_before = 0;         ///< the last character that was fed and is no blank
    bool m_isInText = false;   ///< of a line that was fed in part
};

}  // namespace workbench
