#include "report/sections/sections.h"

namespace report {

void openSection(Html& html, std::string_view id, std::string_view title, std::size_t count) {
    html.add("<section id=\"{}\"><h2>{}", id, title);
    if (count > 0) html.add(" <span data-of=\"{}\">{}</span>", grouped(count), grouped(count));
    html.add("</h2>\n");
}

void closeSection(Html& html) { html.add("</section>\n"); }

}  // namespace report
