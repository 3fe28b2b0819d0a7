// Maps in the formats of GDAL: shapefiles, GeoPackage, KML, GPX, CSV and others. The library reads them in a process of its own,
// from copies in memory.
#include <array>
#include <cctype>
#include <filesystem>
#include <iterator>
#include <new>
#include <system_error>

#include "drawing/files/path.h"
#include "drawing/map/coordinate_system.h"
#include "drawing/map/gdal_layers.h"
#include "drawing/map/gdal_library.h"
#include "drawing/map/map_reader.h"
#include "drawing/map/ogr_style.h"
#include "drawing/map/packed_shapes.h"
#include "drawing/map/simple_style.h"
#include "drawing/model/model_reader.h"
#include "drawing/model/separate_process.h"

namespace vorna::drawing::map {
namespace {

struct Owned_File {
    std::string name, bytes;
};

// A file beside the map that belongs to it, whether its suffix is in lower or upper case. Missing ones are left out.
void add_sibling(const Input& input, const std::string& stem, const std::string& suffix, std::vector<Owned_File>& files,
                 Load_Limits& limits) {
    std::string upper = suffix;
    std::ranges::transform(upper, upper.begin(), [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    for (const std::string& ending : {suffix, upper}) {
        std::filesystem::path path = path_of(input.name);
        path.replace_extension(ending);
        std::error_code none;
        if (std::filesystem::is_regular_file(path, none)) {
            if (!limits.allows(input.name, path.string())) {
                throw Map_Error(outside_message(path.string()));
            }
            files.push_back({stem + '.' + suffix, model::read_file(path.string(), limits)});
            return;
        }
    }
}

// The map's own file and those that belong to it, under names that the library knows.
std::vector<Owned_File> read_files(const Input& input, const Gdal_Format& format, Load_Limits& limits) {
    std::string stem = path_of(input.name).stem().string();
    std::ranges::replace_if(
        stem, [](char c) { return c == '/' || c == '\\' || c == '|' || c == '\0'; }, '_');
    const std::string_view suffix = format.known_as.empty() ? format.suffix : format.known_as;
    std::vector<Owned_File> files;
    files.push_back({stem + '.' + std::string(suffix), input.content ? *input.content : model::read_file(input.name, limits)});
    if (files.front().bytes.empty()) {
        throw Map_Error(input.name + ": expected a map, found an empty file");
    }
    if (!input.content && !format.siblings.empty()) {
        for (const std::string& sibling : parts_between(format.siblings)) {
            add_sibling(input, stem, sibling, files, limits);
        }
    }
    return files;
}

Map unpacked(const std::string& file, const std::string& bytes, const Map_Query& query, std::size_t field_count,
             bool states_styles) {
    const std::size_t own = query.fields.size();
    Shape_Unpacker unpacker(file, bytes);
    Map map;
    for (auto left = unpacker.number<std::uint32_t>(); left > 0; --left) {
        Layer_Facts& layer = map.layers.emplace_back(unpacker.layer());
        if (coordinate_system_of(layer.system) != layer.system && !layer.system.empty()) {
            layer.refusal = layer.system;
        }
    }
    while (!unpacker.at_end()) {
        Shape& shape = map.shapes.emplace_back(unpacker.shape());
        if (shape.layer >= map.layers.size() || shape.values.size() != field_count + 1) {
            throw Map_Error(file + ": expected a map: the library for its format has made none of it");
        }
        const std::span<const Value> values(shape.values);
        set_simple_style(shape, values.subspan(own, simple_style_keys.size()));
        for (const Value& value : values.subspan(own + simple_style_keys.size(), name_keys.size())) {
            shape.name = shape.name.empty() ? text_of(value) : shape.name;
        }
        shape.id = text_of(values[field_count - 1]);
        if (states_styles) {
            set_ogr_style(shape, text_of(values.back()));
        }
        shape.values.resize(own);
    }
    return map;
}

} // namespace

Map read_gdal_map(const Input& input, const Map_Query& query, Load_Limits& limits) {
    const std::string& file = input.name;
    const Gdal_Format& format = *find_gdal_format(input.format->suffix);
    const std::vector<Owned_File> files = read_files(input, format, limits);
    std::vector<Named_Content> contents;
    std::uintmax_t size = 0;
    for (const Owned_File& owned : files) {
        contents.push_back({owned.name, owned.bytes});
        size += owned.bytes.size();
    }
    std::vector<std::string> fields = query.fields;
    fields.insert(fields.end(), simple_style_keys.begin(), simple_style_keys.end());
    fields.insert(fields.end(), name_keys.begin(), name_keys.end());
    fields.emplace_back("id");
    std::string failure, bytes;
    gdal(); // the copy can load nothing
    const auto work = [&](model::Process_Pipe& pipe) {
        try {
            const std::string packed = pack_gdal_layers(file, format, contents, query.layer, fields);
            pipe.write_list(std::string());
            pipe.write_list(packed);
        } catch (const Usage_Error& error) {
            pipe.write_list(std::string(error.what()));
        } catch (const std::bad_alloc&) {
            pipe.write_list(limits.memory_refusal(file));
        }
    };
    const auto take = [&](model::Process_Pipe& pipe) {
        failure = pipe.read_list<std::string>();
        bytes = failure.empty() ? pipe.read_list<std::string>() : bytes;
    };
    try {
        model::run_apart(model::limits_of_reader(limits, size), {}, work, take);
    } catch (const model::Broken_Off& error) {
        throw Map_Error(file + ": expected a map: the library for its format came to its end by " + error.what());
    }
    if (!failure.empty()) {
        throw Map_Error(failure);
    }
    // Lists in memory take up to three times as much as their counts in the message.
    limits.take_memory(file, 3 * bytes.size());
    const Load_Limits::Loan message_memory(limits, file, bytes.size());
    const bool states_styles = format.suffix == "kml" || format.suffix == "kmz";
    return unpacked(file, bytes, query, fields.size(), states_styles);
}

} // namespace vorna::drawing::map
