#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tests/kshmi/kshmi_test.h"

namespace report::testing {

/// What is wrong with the structure of a page: tags that do not match, identifiers that are there twice, links into
/// the page that lead nowhere. Looks at what a browser takes for markup.
class Structure {
public:
    explicit Structure(std::string_view html) {
        for (std::size_t at = html.find('<'); at != html.npos; at = html.find('<', at)) at = readTag(html, at);
        for (const std::string& tag : m_open) m_faults.push_back(tag + " is open at the end");
        for (const std::string& link : m_links)
            if (!m_ids.contains(link)) m_faults.push_back("#" + link + " leads nowhere");
    }

    const std::vector<std::string>& faults() const { return m_faults; }
    std::size_t count(const std::string& tag) const { return m_counts.contains(tag) ? m_counts.at(tag) : 0; }

private:
    std::size_t readTag(std::string_view html, std::size_t at) {
        std::size_t end = at + 1;
        for (char quote = 0; end < html.size() && (quote != 0 || html[end] != '>'); ++end)
            if (html[end] == '"') quote = quote == 0 ? '"' : '\0';
        const std::string_view inside = html.substr(at + 1, end - at - 1);
        if (inside.starts_with('!')) return end;
        if (inside.starts_with('/')) {
            if (m_open.empty() || m_open.back() != inside.substr(1))
                m_faults.push_back("stray </" + std::string(inside.substr(1)) + ">");
            if (!m_open.empty()) m_open.pop_back();
            return end;
        }
        const std::string tag(inside.substr(0, inside.find_first_of(" \n/")));
        ++m_counts[tag];
        readAttributes(inside);
        if (!isVoid(tag) && !inside.ends_with('/')) m_open.push_back(tag);
        if (tag == "style" || tag == "script") return html.find("</" + tag + ">", end);
        return end;
    }

    void readAttributes(std::string_view inside) {
        if (const std::string id = valueOf(inside, " id=\""); !id.empty() && !m_ids.insert(id).second)
            m_faults.push_back("two of #" + id);
        if (const std::string link = valueOf(inside, " href=\"#"); !link.empty()) m_links.push_back(link);
    }

    static std::string valueOf(std::string_view inside, std::string_view name) {
        const std::size_t at = inside.find(name);
        if (at == inside.npos) return {};
        const std::string_view rest = inside.substr(at + name.size());
        return std::string(rest.substr(0, rest.find('"')));
    }

    static bool isVoid(std::string_view tag) {
        return tag == "meta" || tag == "link" || tag == "input" || tag == "wbr";
    }

    std::vector<std::string> m_open;
    std::vector<std::string> m_links;
    std::set<std::string> m_ids;
    std::map<std::string, std::size_t> m_counts;
    std::vector<std::string> m_faults;
};

/// The page of the model file, checked; empty when there is none.
class PageTest : public kshmi::testing::KshmiTest {
protected:
    std::string page(const std::string& model, const std::vector<std::string>& more = {}) const {
        std::vector<std::string> words{"report", write(model), "-o", "-"};
        words.insert(words.end(), more.begin(), more.end());
        const kshmi::testing::Finished finished = run(words);
        EXPECT_EQ(finished.code, 0) << finished.err;
        EXPECT_EQ(Structure(finished.out).faults(), std::vector<std::string>());
        return finished.out;
    }
    static std::size_t count(const std::string& text, const std::string& part) {
        std::size_t found = 0;
        for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1)) ++found;
        return found;
    }
};

}  // namespace report::testing
