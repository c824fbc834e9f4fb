#include "report/plot/text_changes.h"

#include <vector>

#include "report/plot/axis.h"
#include "workbench/text/columns.h"

namespace report {

using namespace workbench;

namespace {

constexpr std::size_t kMostChanges = 20;
constexpr std::size_t kLongestText = 120;

std::vector<std::size_t> changesOf(const RecordedColumn& column) {
    std::vector<std::size_t> changes;
    for (std::size_t i = 0; i < column.texts.size(); ++i)
        if (i == 0 || column.texts[i] != column.texts[i - 1]) changes.push_back(i);
    return changes;
}

void writeText(Html& html, const std::string& text) {
    if (text.empty())
        html.add("<td class=\"none\">empty</td>");
    else
        html.add("<td>{}</td>", Name(shortened(text, kLongestText)));
}

}  // namespace

void writeTextChanges(Html& html, const RecordedColumn& column, std::string_view what) {
    const std::vector<std::size_t> changes = changesOf(column);
    html.add("<figcaption><div>");
    if (!what.empty()) html.add("<i class=\"which\">{}</i>", Name(what));
    html.add("<i>{}</i><i>{}</i></div></figcaption>\n",
             changes.size() == 1 ? "no change" : countedText(changes.size() - 1, "change"),
             countedText(column.times.size(), "sample"));
    html.add("<table>");
    for (std::size_t i = 0; i < changes.size() && i < kMostChanges; ++i) {
        html.add("<tr><th scope=\"row\">{} s</th>", numberText(column.times[changes[i]]));
        writeText(html, column.texts[changes[i]]);
        html.add("</tr>");
    }
    html.add("</table>");
    if (changes.size() > kMostChanges)
        html.add("<p class=\"none\">and {} more</p>", countedText(changes.size() - kMostChanges, "change"));
}

}  // namespace report
