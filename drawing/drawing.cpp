// The drawing library: models and maps, from files or arrays, as images.
#include "drawing/drawing.h"

#include <algorithm>
#include <csignal>
#include <stdexcept>
#include <utility>

#include "drawing/files/input.h"
#include "drawing/files/interruption.h"
#include "drawing/job/formats.h"
#include "drawing/job/job.h"
#include "drawing/job/map_drawing.h"
#include "drawing/job/model_style.h"
#include "drawing/model/model_reader.h"
#include "drawing/settings_checks.h"
#include "vorna/module.h"

namespace vorna::drawing {
namespace {

std::shared_ptr<Load_Limits> limits_of(const Reading& reading) {
    check(reading);
    return std::make_shared<Load_Limits>(reading.max_memory > 0 ? std::optional(reading.max_memory) : std::nullopt,
                                         reading.outside_of_folder, reading.threads);
}

std::int32_t supersample_of_model(const Image_Settings& settings) {
    if (settings.supersample != 0) {
        return settings.supersample;
    }
    return settings.indexed || settings.smooth_lines ? 1 : default_supersample(settings.size);
}

std::int32_t supersample_of_map(const Image_Settings& settings) {
    return settings.supersample != 0 ? settings.supersample : 1;
}

Job_Settings job_settings_of(const Image_Settings& settings, VT_Int_Pair size, std::int32_t supersample, std::string input) {
    check(settings, size, supersample);
    Job_Settings job;
    job.part.size = size;
    job.supersample = supersample;
    job.threads = settings.threads;
    job.max_memory = settings.max_memory;
    job.background = settings.background;
    job.transparent = settings.transparent;
    job.allow_empty = settings.allow_empty;
    job.input = std::move(input);
    return job;
}

Module_Choice module_of(const Image_Settings& settings) {
    return {settings.module.empty() ? Module::installed_path() : settings.module, {}};
}

} // namespace

struct Model::Content {
    std::shared_ptr<Load_Limits> limits;
    std::string name;
    model::Mesh mesh;
};

struct Map::Content {
    Content(const Input& input, const map::Map_Settings& settings, const std::shared_ptr<Load_Limits>& limits)
        : name(input.name) {
        if (!is_map(input)) {
            throw Usage_Error(name + ": expected a map or drawing");
        }
        check(settings);
        const auto overlay = open_overlay(settings, *limits);
        scene = std::make_shared<map::Map_Scene>(input, overlay, settings, VT_RGB32{255, 255, 255, 255}, limits);
    }

    std::string name;
    std::shared_ptr<map::Map_Scene> scene;
};

Model::Model(const std::vector<std::string>& files, const Reading& reading)
    : content_(new Content{limits_of(reading), files.empty() ? std::string() : files.front(), {}}) {
    if (files.empty()) {
        throw Usage_Error("files: expected one or more");
    }
    std::vector<Input> inputs;
    for (const std::string& file : files) {
        inputs.push_back(open_input(file, "", *content_->limits));
    }
    model::Mesh& mesh = content_->mesh;
    mesh = model::load_models(inputs, *content_->limits, reading.accepts_no_triangles, reading.crease);
    mesh.warnings.insert(mesh.warnings.begin(), mesh.notes.begin(), mesh.notes.end());
}

Model::Model(model::Mesh mesh) : content_(new Content{limits_of({}), "mesh", std::move(mesh)}) {
    if (!model::is_consistent(content_->mesh)) {
        throw Usage_Error("mesh: expected lists that belong together and finite places");
    }
    model::finish_mesh(content_->mesh, "mesh", {}, content_->limits->threads());
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

const std::vector<std::string>& Model::warnings() const {
    return content_->mesh.warnings;
}

Map::Map(const std::string& file, const map::Map_Settings& settings, const Reading& reading) {
    const std::shared_ptr<Load_Limits> limits = limits_of(reading);
    content_ = std::make_unique<Content>(open_input(file, "", *limits), settings, limits);
}

Map::Map(const std::string& name, const std::string& format, std::string text, const map::Map_Settings& settings,
         const Reading& reading)
    : content_(
          std::make_unique<Content>(Input{name, format, find_format(format), std::move(text)}, settings, limits_of(reading))) {
}

Map::Map(Map&&) noexcept = default;
Map& Map::operator=(Map&&) noexcept = default;
Map::~Map() = default;

std::vector<std::string> Map::warnings() const {
    return content_->scene->warnings();
}

// A drawing and its job, for one image.
struct Image_Maker {
    Image_Maker(const Model& model, const Model_View& view, const Image_Settings& settings, std::vector<std::string>* warnings) {
        check(view);
        job = job_settings_of(settings, settings.size, supersample_of_model(settings), model.content_->name);
        const model::Mesh& mesh = model.content_->mesh;
        const Background colors(settings.background, settings.lower_background.value_or(settings.background));
        const std::optional<Background> background = settings.transparent ? std::nullopt : std::optional(colors);
        Model_Style style = view;
        if (view.studio) {
            if (settings.indexed) {
                throw Usage_Error("studio: expected 32 bits a pixel");
            }
            style.look.tint = model::Tint::own;
        }
        const auto camera = camera_of_mesh(view.camera, mesh, settings.size);
        if (!camera) {
            throw Usage_Error("camera: expected two places apart and another direction that points up");
        }
        job.background = colors;
        if (settings.indexed) {
            job.palette = new VT_Palette;
        }
        std::vector<std::string> untold;
        Model_Parts parts = make_parts(mesh, style, background, *model.content_->limits, warnings ? *warnings : untold);
        module = module_of(settings);
        if (view.studio) {
            parts.add_studio(mesh, module, model.content_->limits->threads());
            job.linear = true;
        }
        drawing = std::make_unique<Model_Drawing>(std::move(parts),
                                                  look_of(style, background, settings.smooth_lines, job.palette), *camera);
    }

    Image_Maker(const Map& map, const Image_Settings& settings) {
        map::Map_Scene& scene = *map.content_->scene;
        const VT_RGB32 background = settings.transparent ? VT_RGB32{255, 255, 255, 255} : settings.background;
        scene.set_background(background);
        VT_Int_Pair size = settings.size;
        const std::int32_t supersample = supersample_of_map(settings);
        check(settings, {size.x, std::max(size.y, 1)}, supersample);
        if (size.y == 0) {
            size = scene.fitted(size).size;
        }
        job = job_settings_of(settings, size, supersample, map.content_->name);
        auto found =
            std::make_unique<Map_Drawing>(map.content_->scene, Map_Look{background, settings.indexed, settings.smooth_lines});
        job.palette = found->palette();
        drawing = std::move(found);
        module = module_of(settings);
    }

    Image image() { return Job(job, module, *drawing).make_image(); }

    // The signal that waited comes now.
    std::string write(const std::string& file) {
        job.output = file;
        job.hash = true;
        try {
            return Job(job, module, *drawing).write_files().digests.front();
        } catch (const Interrupted& interrupted) {
            std::raise(interrupted.signal);
            throw Interruption_Error(file + ": interrupted by a signal");
        }
    }

    Job_Settings job;
    Module_Choice module;
    std::unique_ptr<Drawing> drawing;
};

Image make_image(const Model& model, const Model_View& view, const Image_Settings& settings, std::vector<std::string>* warnings) {
    return Image_Maker(model, view, settings, warnings).image();
}

Image make_image(const Map& map, const Image_Settings& settings) {
    return Image_Maker(map, settings).image();
}

std::string write_image(const std::string& file, const Model& model, const Model_View& view, const Image_Settings& settings,
                        std::vector<std::string>* warnings) {
    return Image_Maker(model, view, settings, warnings).write(file);
}

std::string write_image(const std::string& file, const Map& map, const Image_Settings& settings) {
    return Image_Maker(map, settings).write(file);
}

} // namespace vorna::drawing
