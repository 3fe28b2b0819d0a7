// What GML and FlatGeobuf files state about their coordinate systems.
#include "drawing/map/stated_system.h"

#include <cstddef>
#include <cstdint>

#include "drawing/map/coordinate_system.h"

namespace vorna::drawing::map {
namespace {

Stated_System system_of_gml(const std::string& text) {
    constexpr std::string_view old_form = "http://www.opengis.net/gml/srs/epsg.xml#";
    // These forms have the axes in the order of the system's definition; others have eastings first.
    const bool is_defined_order = text.starts_with("urn:") || text.find("/def/crs/") != text.npos;
    const auto system = coordinate_system_of(text.starts_with(old_form) ? "EPSG:" + text.substr(old_form.size()) : text);
    if (!system || (is_defined_order && !system->empty())) {
        return {"", text, std::nullopt}; // the order of its axes is in PROJ's database
    }
    const bool is_longitude_first = text.ends_with("84"); // OGC:CRS84 is the only one of degrees
    return {*system, "", is_defined_order ? std::optional(!is_longitude_first) : std::nullopt};
}

// All geometries must state the same.
std::optional<Stated_System> stated_by_gml(std::string_view bytes) {
    constexpr std::string_view attribute = "srsName=";
    std::string found;
    for (std::size_t at = bytes.find(attribute); at != bytes.npos; at = bytes.find(attribute, at)) {
        at += attribute.size();
        const char quote = at < bytes.size() ? bytes[at] : '\0';
        const std::size_t end = quote == '"' || quote == '\'' ? bytes.find(quote, at + 1) : bytes.npos;
        if (end == bytes.npos) {
            continue;
        }
        const std::string_view text = bytes.substr(at + 1, end - at - 1);
        if (!found.empty() && text != found) {
            return Stated_System{"", found + " and " + std::string(text), std::nullopt};
        }
        found = text;
    }
    return found.empty() ? std::nullopt : std::optional(system_of_gml(found));
}

// A number of a FlatBuffer, little endian; 0 beyond its end.
std::size_t number_at(std::string_view bytes, std::size_t at, std::size_t size) {
    std::size_t number = 0;
    for (std::size_t i = 0; i < size && at < bytes.size() && i < bytes.size() - at; ++i) {
        number |= std::size_t{static_cast<std::uint8_t>(bytes[at + i])} << (8 * i);
    }
    return number;
}

// Where a table has its field; 0 without it. A table starts with the distance back to the list of its fields' offsets, which
// starts with its own size.
std::size_t place_of_field(std::string_view bytes, std::size_t table, std::size_t field) {
    const std::size_t list = table - number_at(bytes, table, 4), entry = 4 + 2 * field;
    if (list > bytes.size() || entry >= number_at(bytes, list, 2)) {
        return 0;
    }
    const std::size_t offset = number_at(bytes, list + entry, 2);
    return offset == 0 ? 0 : table + offset;
}

std::optional<Stated_System> stated_by_flatgeobuf(std::string_view bytes) {
    constexpr std::size_t head = 12, system_field = 10, authority_field = 0, code_field = 1;
    const std::size_t place = place_of_field(bytes, head + number_at(bytes, head, 4), system_field);
    if (place == 0) {
        return std::nullopt;
    }
    const std::size_t table = place + number_at(bytes, place, 4);
    const std::size_t authority = place_of_field(bytes, table, authority_field), code = place_of_field(bytes, table, code_field);
    const std::size_t number = code == 0 ? 0 : number_at(bytes, code, 4);
    if (number == 0) {
        return std::nullopt;
    }
    std::string name = "EPSG";
    if (authority != 0) {
        const std::size_t text = authority + number_at(bytes, authority, 4);
        name = text < bytes.size() && bytes.size() - text > 4 ? bytes.substr(text + 4, number_at(bytes, text, 4)) : "";
    }
    const std::string text = name + ':' + std::to_string(number);
    const auto system = coordinate_system_of(text);
    return Stated_System{system.value_or(""), system ? "" : text, std::nullopt};
}

} // namespace

std::optional<Stated_System> stated_system(std::string_view suffix, std::string_view bytes) {
    return suffix == "gml" ? stated_by_gml(bytes) : suffix == "fgb" ? stated_by_flatgeobuf(bytes) : std::nullopt;
}

} // namespace vorna::drawing::map
