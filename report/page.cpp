#include "report/page.h"

#include "report/assets.h"
#include "report/html.h"
#include "report/policy.h"
#include "report/sections/sections.h"

namespace report {

namespace {

constexpr std::string_view kIcon =
    "data:image/svg+xml,%3Csvg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 16 16'%3E%3Ccircle cx='8' cy='8' r='5' "
    "fill='%230e7a64'/%3E%3C/svg%3E";

void writeHead(Html& html, const Contents& contents) {
    html.add(
        "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
        "<meta http-equiv=\"Content-Security-Policy\" content=\"{}\">\n"
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
        "<meta name=\"color-scheme\" content=\"light dark\">\n"
        "<meta name=\"referrer\" content=\"no-referrer\">\n",
        Markup{contentPolicy()});
    html.add("<title>{} - report</title>\n<link rel=\"icon\" href=\"{}\">\n<style>{}</style>\n</head>\n<body>\n",
             contents.session.model().name(), kIcon, Markup{std::string(styleSheet())});
}

// Shown by the script, which alone gives it something to do.
void writeTools(Html& html, bool hasRun) {
    html.add(
        "<div role=\"search\" class=\"tools\" id=\"tools\" hidden>\n"
        "<input type=\"search\" id=\"find\" placeholder=\"Search names, paths, clients\" "
        "aria-label=\"Search the report\" aria-keyshortcuts=\"/\" autocomplete=\"off\" spellcheck=\"false\">\n");
    for (const std::string_view filter : {"clients", "findings", "observed", "recorded"})
        if (hasRun || filter != "recorded")
            html.add("<label><input type=\"checkbox\" data-filter=\"{0}\"> {0}</label>\n", filter);
    html.add("<output id=\"found\" role=\"status\"></output>\n</div>\n");
}

}  // namespace

void writePage(const Contents& contents, const workbench::TextSink& sink) {
    const PageIndex index(contents);
    Html html(sink);
    writeHead(html, contents);
    writeSummary(html, contents, index);
    writeTools(html, contents.run != nullptr);
    html.add("<main>\n");
    writeFindings(html, contents, index);
    writeRun(html, contents, index);
    writeSignals(html, contents, index);
    writeOthers(html, index);
    writeStrays(html, contents, index);
    writeParked(html, contents);
    writeBlocks(html, contents, index);
    html.add("</main>\n<script>{}</script>\n</body>\n</html>\n", Markup{std::string(script())});
    html.flush();
}

}  // namespace report
