// The drawing library: models and maps, from files or arrays, as images.
#include "drawing/drawing.h"

#include <numeric>
#include <utility>

#include "drawing/files/input.h"
#include "drawing/files/interruption.h"
#include "drawing/image_maker.h"
#include "drawing/job/formats.h"
#include "drawing/job/map_sources.h"
#include "drawing/model/model_reader.h"
#include "drawing/model/section.h"
#include "drawing/settings_checks.h"

namespace vorna::drawing {
namespace {

std::shared_ptr<Load_Limits> limits_of(const Reading& reading) {
    check(reading);
    return std::make_shared<Load_Limits>(reading.max_memory > 0 ? std::optional(reading.max_memory) : std::nullopt,
                                         reading.outside_of_folder, reading.threads);
}

// The numbers of the triangles that are not degenerate, through all meshes; empty when all are.
std::vector<std::uint32_t> kept_triangles(const std::vector<model::Mesh>& meshes) {
    std::vector<std::uint32_t> kept;
    std::uint32_t count = 0;
    bool any_dropped = false;
    for (const model::Mesh& mesh : meshes) {
        for (std::size_t t = 0; t < mesh.triangle_count(); ++t, ++count) {
            const std::uint32_t* corner = &mesh.triangles[3 * t];
            const bool is_kept = corner[0] != corner[1] && corner[1] != corner[2] && corner[2] != corner[0];
            if (!is_kept && !any_dropped) {
                kept.resize(count);
                std::iota(kept.begin(), kept.end(), 0U);
                any_dropped = true;
            } else if (is_kept && any_dropped) {
                kept.push_back(count);
            }
        }
    }
    return kept;
}

} // namespace

Map::Content::Content(std::vector<Input> inputs, const map::Map_Settings& settings, const std::shared_ptr<Load_Limits>& limits) {
    if (inputs.empty()) {
        throw Usage_Error("inputs: expected one or more");
    }
    for (const Input& input : inputs) {
        if (!is_map(input)) {
            throw Usage_Error(input.name + ": expected a map or drawing");
        }
    }
    check(settings);
    name = inputs.front().name;
    map::Map_Settings whole = settings;
    const std::vector<map::Map_Source> sources = open_map_sources(std::move(inputs), whole, *limits);
    const auto overlay = open_overlay(whole, *limits);
    scene = std::make_shared<map::Map_Scene>(sources, overlay, whole, VT_RGB32{255, 255, 255, 255}, limits);
}

Model::Model(const std::vector<std::string>& files, const Reading& reading)
    : content_(new Content(limits_of(reading), files.empty() ? std::string() : files.front())) {
    if (files.empty()) {
        throw Usage_Error("files: expected one or more");
    }
    std::vector<Input> inputs;
    inputs.reserve(files.size());
    for (const std::string& file : files) {
        inputs.push_back(open_input(file, reading.input_format, *content_->limits));
    }
    content_->up_axis = up_axis_of(inputs.front());
    model::Mesh& mesh = content_->mesh;
    mesh = model::load_models(inputs, *content_->limits, reading.accepts_no_triangles, reading.crease);
    mesh.warnings.insert(mesh.warnings.begin(), mesh.notes.begin(), mesh.notes.end());
    if (reading.section && !mesh.is_empty()) {
        model::cut_open(mesh, *reading.section, content_->name, *content_->limits);
    }
}

Model::Model(model::Mesh mesh) : content_(new Content(limits_of({}), "mesh")) {
    std::vector<model::Mesh> meshes;
    meshes.push_back(std::move(mesh));
    *this = Model(std::move(meshes));
}

Model::Model(std::vector<model::Mesh> meshes, const Reading& reading) : content_(new Content(limits_of(reading), "mesh")) {
    if (meshes.empty()) {
        throw Usage_Error("meshes: expected one or more");
    }
    std::vector<std::string> names;
    for (const model::Mesh& mesh : meshes) {
        names.push_back(meshes.size() == 1 ? "mesh" : "mesh " + std::to_string(names.size()));
        if (!model::is_consistent(mesh)) {
            throw Usage_Error(names.back() + ": expected lists that belong together and finite places");
        }
    }
    content_->given_numbers = kept_triangles(meshes);
    content_->mesh =
        model::joined_mesh(std::move(meshes), names, reading.accepts_no_triangles, reading.crease, content_->limits->threads());
    if (reading.section && !content_->mesh.is_empty()) {
        std::vector<std::uint32_t> origins;
        model::cut_open(content_->mesh, *reading.section, names.front(), *content_->limits, &origins);
        for (std::uint32_t& origin : origins) {
            origin = content_->given_numbers.empty() ? origin : content_->given_numbers[origin];
        }
        content_->given_numbers = std::move(origins);
    }
}

Model::Model(Model&&) noexcept = default;
Model& Model::operator=(Model&&) noexcept = default;
Model::~Model() = default;

std::size_t Model::triangle_count() const {
    return content_->mesh.triangle_count();
}

std::size_t Model::line_count() const {
    return content_->mesh.line_count();
}

std::size_t Model::point_count() const {
    return content_->mesh.points.size();
}

model::Up_Axis Model::up_axis() const {
    return content_->up_axis;
}

const std::vector<std::string>& Model::warnings() const {
    return content_->mesh.warnings;
}

Map::Map(const std::vector<Map_Input>& inputs, const map::Map_Settings& settings, const Reading& reading) {
    const std::shared_ptr<Load_Limits> limits = limits_of(reading);
    std::vector<Input> opened;
    for (const Map_Input& input : inputs) {
        opened.push_back(input.format.empty() ? open_input(input.name, reading.input_format, *limits)
                                              : Input{input.name, input.format, find_format(input.format), input.text});
    }
    content_ = std::make_unique<Content>(std::move(opened), settings, limits);
}

Map::Map(const std::string& file, const map::Map_Settings& settings, const Reading& reading)
    : Map(std::vector<Map_Input>{{file, {}, {}}}, settings, reading) {
}

Map::Map(const std::string& name, const std::string& format, std::string text, const map::Map_Settings& settings,
         const Reading& reading)
    : Map(std::vector<Map_Input>{{name, format, std::move(text)}}, settings, reading) {
}

Map::Map(Map&&) noexcept = default;
Map& Map::operator=(Map&&) noexcept = default;
Map::~Map() = default;

std::vector<std::string> Map::warnings() const {
    return content_->scene->warnings();
}

void set_stop_check(bool (*is_asked_to_stop)()) noexcept {
    Interruption::set_stop_check(is_asked_to_stop);
}

double half_tangent_of_view(double degrees) {
    return model::half_tangent_of(degrees);
}

Image make_image(const Model& model, const Model_View& view, const Image_Settings& settings, std::vector<std::string>* warnings) {
    return Image_Maker(model, view, settings, warnings).image();
}

Image make_image(const Map& map, const Image_Settings& settings) {
    return Image_Maker(map, settings).image();
}

Image_Samples make_samples(const Map& map, const Image_Settings& settings) {
    return Image_Maker(map, settings).samples();
}

std::string write_image(const std::string& file, const Model& model, const Model_View& view, const Image_Settings& settings,
                        std::vector<std::string>* warnings) {
    return Image_Maker(model, view, settings, warnings).write(file);
}

std::string write_image(const std::string& file, const Map& map, const Image_Settings& settings) {
    return Image_Maker(map, settings).write(file);
}

} // namespace vorna::drawing
