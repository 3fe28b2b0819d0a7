// How the formats of files to draw are recognised by their contents.
#include "drawing/job/content_tests.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstdint>
#include <cstring>

namespace vorna::drawing {
namespace {

constexpr std::string_view blanks = " \t\r\n";

std::string_view without_blanks(std::string_view text) {
    const std::size_t start = text.find_first_not_of(blanks);
    return start == text.npos ? std::string_view() : text.substr(start, text.find_last_not_of(blanks) - start + 1);
}

std::string_view first_word(std::string_view text) {
    text = without_blanks(text);
    return text.substr(0, text.find_first_of(blanks));
}

// The next line without blanks around it.
std::string_view take_line(std::string_view& text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return without_blanks(line);
}

// The name of a document's first element without its prefix; empty for other texts.
std::string_view first_element(std::string_view text) {
    if (const std::size_t first = text.find_first_not_of(blanks); first == text.npos || text[first] != '<') {
        return {};
    }
    for (std::size_t at = text.find('<'); at + 1 < text.size(); at = text.find('<', at + 1)) {
        if (text.compare(at, 4, "<!--") == 0) {
            at = std::min(text.find("-->", at), text.size() - 1);
        } else if (text[at + 1] != '?' && text[at + 1] != '!') {
            std::string_view name = text.substr(at + 1);
            name = name.substr(0, name.find_first_of(" \t\r\n/>"));
            return name.substr(name.find(':') + 1);
        }
    }
    return {};
}

} // namespace

bool is_kml(const Content_Probe& content) {
    return first_element(content.text) == "kml";
}

bool is_gpx(const Content_Probe& content) {
    return first_element(content.text) == "gpx";
}

bool is_gml(const Content_Probe& content) {
    return content.text.substr(0, 4096).find("http://www.opengis.net/gml") != content.text.npos &&
           !first_element(content.text).empty();
}

// Pairs of lines, the first of them a number; 999 is a comment.
bool is_dxf(const Content_Probe& probe) {
    std::string_view content = probe.text;
    std::string_view code = take_line(content), value = take_line(content);
    while (code == "999") {
        code = take_line(content);
        value = take_line(content);
    }
    return code == "0" && value == "SECTION";
}

// Binary files may begin in any way, so their size decides.
bool is_stl(const Content_Probe& probe) {
    const std::string_view content = probe.text;
    constexpr std::size_t header = 84, facet = 50;
    std::uint32_t count = 0;
    if (content.size() >= header) {
        std::memcpy(&count, content.data() + 80, sizeof count);
        if constexpr (std::endian::native == std::endian::big) {
            count = count >> 24 | (count >> 8 & 0xFF00) | (count & 0xFF00) << 8 | count << 24;
        }
        if (count > 0 && header + facet * std::uint64_t{count} == content.size()) {
            return true;
        }
    }
    return first_word(content.substr(0, 256)) == "solid";
}

// The first line that says something has a vertex, a name or a material.
bool is_obj(const Content_Probe& probe) {
    std::string_view content = probe.text;
    constexpr std::array known{"v", "vn", "vt", "vp", "f", "o", "g", "s", "mtllib", "usemtl"};
    while (!content.empty()) {
        const std::string_view word = first_word(take_line(content));
        if (!word.empty() && word.front() != '#') {
            return std::ranges::find(known, word) != known.end();
        }
    }
    return false;
}

// Faces are 3DFACE entities and polylines that are meshes; what stands in blocks counts once, wherever they are placed.
bool is_dxf_model(std::string_view text) {
    constexpr std::array shapes{"LINE",  "LWPOLYLINE", "CIRCLE", "ARC",  "ELLIPSE", "SPLINE",
                                "POINT", "SOLID",      "HATCH",  "TEXT", "MTEXT",   "DIMENSION"};
    std::size_t faces = 0, others = 0;
    bool in_polyline = false, is_whole = false;
    while (!text.empty()) {
        const std::string_view code = take_line(text), value = take_line(text);
        if (code == "0") {
            in_polyline = value == "POLYLINE";
            is_whole = is_whole || value == "EOF";
            faces += value == "3DFACE";
            others += std::ranges::find(shapes, value) != shapes.end();
        } else if (in_polyline && code == "70") {
            constexpr unsigned mesh = 16, faces_of_vertices = 64;
            unsigned flags = 0;
            std::from_chars(value.data(), value.data() + value.size(), flags);
            ++((flags & (mesh | faces_of_vertices)) != 0 ? faces : others);
        }
    }
    return is_whole && faces > others; // the reader of drawings says where a file is cut off
}

} // namespace vorna::drawing
