// A recording as a page for a browser.
//
// The page is markup, style and script from files beside this one. What the script shows is a JSON document in the page; files
// and values are Base64, and texts that are not the page's own are escaped. The policy allows this style and this script alone,
// and nothing from elsewhere.
#include "drawing/report/report_page.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "drawing/comparison/quoting.h"
#include "drawing/image/sha256.h"
#include "drawing/report/page_content.h"
#include "drawing/report/page_parts.h"

namespace vorna::drawing::report {

namespace {

using Json = nlohmann::ordered_json;
using comparison::base64;
using comparison::markup_escaped;

std::string data_block(const char* id, const char* type, const std::string& content) {
    return std::string("<script id=\"") + id + "\" type=\"" + type + "\">" + content + "</script>\n";
}

// Script elements end at the first "</script", also inside of a string.
std::string script_data(const Json& json) {
    const std::string text = json.dump(-1, ' ', true, Json::error_handler_t::replace);
    std::string escaped;
    for (const char c : text) {
        if (c == '<') {
            escaped += "\\u003c";
        } else {
            escaped += c;
        }
    }
    return escaped;
}

// What a policy calls the content of an element.
std::string source_of(std::string_view content) {
    Sha256 sum;
    sum.add(reinterpret_cast<const std::uint8_t*>(content.data()), content.size());
    const std::string digits = sum.finish();
    std::string bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        std::uint8_t byte = 0;
        std::from_chars(digits.data() + i, digits.data() + i + 2, byte, 16);
        bytes += static_cast<char>(byte);
    }
    return "'sha256-" + base64(bytes) + "'";
}

std::string image_element(const char* attributes, const std::string& png) {
    return std::string("<img ") + attributes + " src=\"data:image/png;base64," + base64(png) + "\">";
}

// What stands in the place of a comment of the markup.
std::string part(std::string_view name, const Page_Settings& settings, const Page_Content& content) {
    if (name == "policy") {
        return "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; img-src data:; style-src " +
               source_of(page_style) + "; script-src " + source_of(page_script) + "\">";
    }
    if (name == "style" || name == "script") {
        const std::string tag(name);
        return '<' + tag + '>' + std::string(name == "style" ? page_style : page_script) + "</" + tag + '>';
    }
    if (name == "note") {
        return settings.note.empty() ? "" : "<p class=\"note\">" + markup_escaped(settings.note) + "</p>";
    }
    if (name == "images") {
        return image_element("alt=\"colours\"", content.color_png) +
               (content.depth_png.empty() ? "" : image_element("alt=\"depths\" hidden", content.depth_png));
    }
    if (name == "data") {
        return data_block("data", "application/json", script_data(content.json)) +
               (content.values.empty() ? "" : data_block("values", "text/plain", base64(content.values))) +
               (content.file.empty() ? "" : data_block("file", "text/plain", base64(content.file))) +
               (content.atlas_png.empty() ? "" : image_element("id=\"atlas\" alt=\"thumbnails\" hidden", content.atlas_png));
    }
    return markup_escaped(name == "name"       ? settings.name
                          : name == "facts"    ? content.facts
                          : name == "document" ? content.document
                                               : content.limits);
}

} // namespace

Page_Counts write_page(const recording::Recording& recording, const Module_Choice& module, const Page_Settings& settings,
                       const recording::Report_Sink& write) {
    const Page_Content content = page_content(recording, module, settings);
    Page_Counts counts = content.counts;
    const auto write_counted = [&](std::string_view bytes) {
        counts.bytes += bytes.size();
        write(bytes);
    };
    for (std::string_view rest = page_markup; !rest.empty();) {
        const std::size_t start = std::min(rest.find("<!--"), rest.size());
        write_counted(rest.substr(0, start));
        rest.remove_prefix(start);
        if (!rest.empty()) {
            const std::size_t end = rest.find("-->");
            write_counted(part(rest.substr(4, end - 4), settings, content));
            rest.remove_prefix(end + 3);
        }
    }
    return counts;
}

} // namespace vorna::drawing::report
