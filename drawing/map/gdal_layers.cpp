// The layers of a file that GDAL reads, as bytes.
#include "drawing/map/gdal_layers.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "drawing/files/setting_names.h"
#include "drawing/map/coordinate_system.h"
#include "drawing/map/gdal_library.h"
#include "drawing/map/map_reader.h"
#include "drawing/map/packed_shapes.h"
#include "drawing/map/stated_system.h"

namespace vorna::drawing::map {
namespace {

// No driver that reaches a network or starts a program, and none whose files name others.
constexpr Gdal_Format formats[] = {
    {"shp", "OGRShape", "shx,dbf,prj,cpg"},
    {"gpkg", "OGRGeoPackage", ""},
    {"kml", "OGRLIBKML,OGRKML", ""},
    {"kmz", "OGRLIBKML", ""},
    {"gpx", "OGRGPX", ""},
    {"csv", "OGRCSV", ""},
    {"geojsonl", "OGRGeoJSONSeq", ""},
    {"geojsons", "OGRGeoJSONSeq", ""},
    {"ndjson", "OGRGeoJSONSeq", "", "geojsonl"},
    {"jsonl", "OGRGeoJSONSeq", "", "geojsonl"},
    {"fgb", "OGRFlatGeobuf", ""},
    {"gml", "OGRGML", "xsd,gfs"},
    {"mif", "OGRTAB", "mid"},
    {"tab", "OGRTAB", "dat,map,id,ind"},
};

// The numbers of the library.
constexpr unsigned opens_vectors = 4;
constexpr int no_geometry = 100, failure_level = 3;
enum Kind { point = 1, line = 2, polygon = 3, multipolygon = 6, triangle = 17 };
enum Field_Type { integer = 0, real = 2, integer_64 = 12 };

constexpr std::array csv_options{"X_POSSIBLE_NAMES=lon,lng,long,longitude,x,easting,*_lon,*_lng,*longitude",
                                 "Y_POSSIBLE_NAMES=lat,latitude,y,northing,*_lat,*latitude",
                                 "GEOM_POSSIBLE_NAMES=wkt,geom,geometry,the_geom",
                                 "AUTODETECT_TYPE=YES",
                                 "EMPTY_STRING_AS_NULL=YES",
                                 static_cast<const char*>(nullptr)};

// The first failure since it was cleared.
std::string failure;

void note_failure(int level, int, const char* message) {
    if (level >= failure_level && failure.empty()) {
        failure = message;
    }
}

constexpr std::string_view folder = "/vsimem/map/";

std::string failure_text() {
    std::string text = failure;
    for (std::size_t at = text.find(folder); at != text.npos; at = text.find(folder)) {
        text.erase(at, folder.size());
    }
    std::ranges::replace(text, '\n', ' ');
    return text.empty() ? "its contents are of another kind" : text;
}

Path path_of(Gdal_Geometry geometry) {
    const int count = gdal().OGR_G_GetPointCount(geometry);
    Path path(static_cast<std::size_t>(std::max(count, 0)));
    if (!path.empty()) {
        constexpr int stride = sizeof(Position);
        gdal().OGR_G_GetPoints(geometry, &path.data()->x, stride, &path.data()->y, stride, nullptr, 0);
    }
    return path;
}

void append_rings(Gdal_Geometry polygon, Face& face) {
    for (int i = 0, count = gdal().OGR_G_GetGeometryCount(polygon); i < count; ++i) {
        Path ring = path_of(gdal().OGR_G_GetGeometryRef(polygon, i));
        if (ring.size() > 1 && ring.front() == ring.back()) {
            ring.pop_back();
        }
        face.push_back(std::move(ring));
    }
}

void append(Gdal_Geometry geometry, Shape& shape, int depth = 0) {
    constexpr int deepest = 32;
    if (gdal().OGR_G_IsEmpty(geometry)) {
        return;
    }
    if (depth > deepest) {
        failure = "a collection of geometries nests more than 32 levels deep";
        return;
    }
    // Types with heights and measures are a flag or some thousands away.
    const int kind = (gdal().OGR_G_GetGeometryType(geometry) & 0x7FFFFFFF) % 1000;
    const int parts = gdal().OGR_G_GetGeometryCount(geometry);
    if (kind == point) {
        const Path path = path_of(geometry);
        shape.points.insert(shape.points.end(), path.begin(), path.end());
    } else if (kind == line) {
        shape.lines.push_back(path_of(geometry));
    } else if (kind == polygon || kind == triangle) {
        append_rings(geometry, shape.faces.emplace_back());
    } else if (kind == multipolygon) {
        Face& face = shape.faces.emplace_back();
        for (int i = 0; i < parts; ++i) {
            append_rings(gdal().OGR_G_GetGeometryRef(geometry, i), face);
        }
    } else {
        for (int i = 0; i < parts; ++i) {
            append(gdal().OGR_G_GetGeometryRef(geometry, i), shape, depth + 1);
        }
    }
}

void append_geometry(Gdal_Feature feature, Shape& shape) {
    Gdal_Geometry geometry = gdal().OGR_F_GetGeometryRef(feature);
    if (geometry && gdal().OGR_G_HasCurveGeometry(geometry, 0)) {
        Gdal_Geometry straight = gdal().OGR_G_GetLinearGeometry(geometry, 0, nullptr);
        append(straight, shape);
        gdal().OGR_G_DestroyGeometry(straight);
    } else if (geometry) {
        append(geometry, shape);
    }
}

Layer_Facts facts_of(Gdal_Layer layer) {
    Layer_Facts facts;
    facts.name = gdal().OGR_L_GetName(layer);
    Gdal_Definition definition = gdal().OGR_L_GetLayerDefn(layer);
    for (int i = 0, count = gdal().OGR_FD_GetFieldCount(definition); i < count; ++i) {
        Gdal_Definition field = gdal().OGR_FD_GetFieldDefn(definition, i);
        const int type = gdal().OGR_Fld_GetType(field);
        const bool is_number = type == integer || type == real || type == integer_64;
        facts.fields.push_back({gdal().OGR_Fld_GetNameRef(field), is_number ? "number" : "text"});
    }
    Gdal_System system = gdal().OGR_L_GetSpatialRef(layer);
    if (!system) {
        // Failures of the part of the library that makes coordinate systems name it.
        facts.refusal = failure.find("PROJ") != failure.npos ? failure : "";
        return facts;
    }
    const char* authority = gdal().OSRGetAuthorityName(system, nullptr);
    const char* code = gdal().OSRGetAuthorityCode(system, nullptr);
    char* text = nullptr;
    std::optional<std::string> found;
    if (authority && code) {
        found = coordinate_system_of(std::string(authority) + ':' + code);
    } else if (gdal().OSRExportToProj4(system, &text) == 0 && text) {
        found = coordinate_system_of(text);
    }
    const char* name = gdal().OSRGetName(system);
    facts.system = found.value_or("");
    facts.refusal = found || !name || !*name ? "" : name; // without a name: not known either
    return facts;
}

Value value_of(Gdal_Feature feature, int field, const Layer_Facts& layer) {
    if (field < 0 || !gdal().OGR_F_IsFieldSetAndNotNull(feature, field)) {
        return {};
    }
    if (layer.fields[static_cast<std::size_t>(field)].type == "number") {
        return gdal().OGR_F_GetFieldAsDouble(feature, field);
    }
    return std::string(gdal().OGR_F_GetFieldAsString(feature, field));
}

Gdal_Dataset open(const std::string& file, const Gdal_Format& format, std::span<const Named_Content> files) {
    const Gdal_Library& library = gdal();
    library.CPLSetErrorHandler(note_failure);
    for (const auto& [name, value] :
         {std::pair("GDAL_DRIVER_PATH", "disable"), {"SHAPE_RESTORE_SHX", "YES"}, {"CPL_DEBUG", "OFF"}}) {
        library.CPLSetConfigOption(name, value);
    }
    for (const std::string& driver : parts_between(format.drivers)) {
        if (const auto add = library.find_driver(driver.c_str())) {
            add();
        }
    }
    for (const Named_Content& content : files) {
        auto* bytes = reinterpret_cast<unsigned char*>(const_cast<char*>(content.bytes.data())); // this process's own copy
        library.VSIFCloseL(
            library.VSIFileFromMemBuffer((std::string(folder) + content.name).c_str(), bytes, content.bytes.size(), 0));
    }
    const std::string name = std::string(folder) + files.front().name;
    Gdal_Dataset dataset =
        library.GDALOpenEx(name.c_str(), opens_vectors, nullptr, format.suffix == "csv" ? csv_options.data() : nullptr, nullptr);
    if (!dataset) {
        throw Map_Error(file + ": expected a map in the format " + std::string(format.suffix) + ": " + failure_text());
    }
    return dataset;
}

std::vector<Gdal_Layer> chosen_layers(const std::string& file, Gdal_Dataset dataset, const std::string& wanted) {
    std::vector<Gdal_Layer> all, chosen;
    for (int i = 0, count = gdal().GDALDatasetGetLayerCount(dataset); i < count; ++i) {
        all.push_back(gdal().GDALDatasetGetLayer(dataset, i));
    }
    const auto named = [&](std::string_view name) {
        return std::ranges::find_if(all, [&](Gdal_Layer layer) { return name == gdal().OGR_L_GetName(layer); });
    };
    if (wanted.empty()) {
        // The points of routes and tracks, which are layers of their own, are lines too.
        std::ranges::copy_if(all, std::back_inserter(chosen), [](Gdal_Layer layer) {
            const std::string_view name = gdal().OGR_L_GetName(layer);
            return gdal().OGR_L_GetGeomType(layer) != no_geometry && name != "route_points" && name != "track_points";
        });
        if (chosen.empty()) {
            throw Map_Error(file + ": expected " +
                            (all.empty() ? "a layer, found none"
                                         : "a layer with geometry, found values only; points need columns such as lon and lat"));
        }
        return chosen;
    }
    for (const std::string& name : named(wanted) != all.end() ? std::vector{wanted} : parts_between(wanted)) {
        if (named(name) == all.end()) {
            std::string names;
            for (Gdal_Layer layer : all) {
                names.append(names.empty() ? "" : ", ").append(gdal().OGR_L_GetName(layer));
            }
            throw Map_Error(name_of(Setting::layer) + ": expected one of " + names + ", found '" + name + "'");
        }
        chosen.push_back(*named(name));
    }
    return chosen;
}

void pack_shapes(Gdal_Layer layer, const Layer_Facts& facts, std::uint32_t number, std::span<const std::string> fields,
                 Shape_Packer& packer) {
    Gdal_Definition definition = gdal().OGR_L_GetLayerDefn(layer);
    std::vector<int> numbers;
    for (const std::string& field : fields) {
        numbers.push_back(gdal().OGR_FD_GetFieldIndex(definition, field.c_str()));
    }
    gdal().OGR_L_ResetReading(layer);
    while (Gdal_Feature feature = gdal().OGR_L_GetNextFeature(layer)) {
        Shape shape;
        shape.layer = number;
        append_geometry(feature, shape);
        for (const int field : numbers) {
            shape.values.push_back(value_of(feature, field, facts));
        }
        packer.add(shape);
        gdal().OGR_F_Destroy(feature);
    }
}

} // namespace

const Gdal_Format* find_gdal_format(std::string_view suffix) {
    const auto* found = std::ranges::find(formats, suffix, &Gdal_Format::suffix);
    return found == std::end(formats) ? nullptr : found;
}

std::string pack_gdal_layers(const std::string& file, const Gdal_Format& format, std::span<const Named_Content> files,
                             const std::string& layers, std::span<const std::string> fields) {
    const std::optional<Stated_System> stated = stated_system(format.suffix, files.front().bytes);
    if (stated && stated->north_first) {
        gdal().CPLSetConfigOption("GML_SWAP_COORDINATES", *stated->north_first ? "YES" : "NO");
    }
    Gdal_Dataset dataset = open(file, format, files);
    const std::vector<Gdal_Layer> chosen = chosen_layers(file, dataset, layers);
    Shape_Packer packer;
    packer.add(static_cast<std::uint32_t>(chosen.size()));
    std::vector<Layer_Facts> facts;
    for (Gdal_Layer layer : chosen) {
        Layer_Facts& found = facts.emplace_back(facts_of(layer));
        if (stated) {
            found.system = stated->system;
            found.refusal = stated->refusal;
        }
        packer.add(found);
    }
    failure.clear(); // a coordinate system that the library does not find is no failure
    for (std::size_t i = 0; i < chosen.size(); ++i) {
        pack_shapes(chosen[i], facts[i], static_cast<std::uint32_t>(i), fields, packer);
        if (!failure.empty()) {
            throw Map_Error(file + ": layer " + facts[i].name + ": expected shapes to the end: " + failure_text());
        }
    }
    return packer.bytes();
}

} // namespace vorna::drawing::map
