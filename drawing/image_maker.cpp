// One image of the library as a job.
#include "drawing/image_maker.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "drawing/files/interruption.h"
#include "drawing/job/model_style.h"
#include "drawing/job/print_size.h"
#include "drawing/settings_checks.h"
#include "vorna/module.h"

namespace vorna::drawing {
namespace {

std::int32_t supersample_of_model(const Image_Settings& settings, VT_Int_Pair size) {
    if (settings.supersample != 0) {
        return settings.supersample;
    }
    return settings.indexed || settings.smooth_lines ? 1 : default_supersample(size);
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
    job.other_memory = settings.other_memory;
    job.background = settings.background;
    job.transparent = settings.transparent;
    job.allow_empty = settings.allow_empty;
    job.pixels_per_metre = settings.print.pixels_per_metre();
    job.input = std::move(input);
    return job;
}

std::vector<VT_RGB32> colors_of_rows(const std::string& palette) {
    std::vector<VT_RGB32> colors;
    for (std::size_t i = 0; i + 2 < palette.size(); i += 3) {
        const auto level = [&](std::size_t c) { return static_cast<std::uint8_t>(palette[i + c]); };
        colors.push_back({level(2), level(1), level(0), 255});
    }
    return colors;
}

} // namespace

std::uint64_t pixels_of(VT_Int_Pair size) noexcept {
    return static_cast<std::uint64_t>(size.x) * static_cast<std::uint64_t>(size.y);
}

VT_Int_Pair size_of(const Image_Settings& settings) {
    check(settings.print);
    return paper_pixels(settings.print).value_or(settings.size);
}

Module_Choice module_of(const Image_Settings& settings) {
    return {settings.module.empty() ? Module::installed_path() : settings.module, {}};
}

model::Camera_Settings checked_camera(const model::Camera_Settings& camera, const model::Mesh& mesh, VT_Int_Pair size,
                                      const Print_Settings& print) {
    auto found = camera_of_mesh(camera, mesh, size);
    if (!found) {
        throw Usage_Error("camera: expected two places apart and another direction that points up");
    }
    if (!print.scale.empty() && (camera.projection != model::Projection::orthographic || camera.zoom != 1)) {
        throw Usage_Error("scale: expected a camera without perspective and zoom");
    }
    set_scale(*found, print, mesh, size);
    return *found;
}

Image_Maker::Image_Maker(const Model& model, const Model_View& view, const Image_Settings& settings,
                         std::vector<std::string>* warnings) {
    check(view);
    const VT_Int_Pair size = size_of(settings);
    job = job_settings_of(settings, size, supersample_of_model(settings, size), model.content_->name);
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
    const model::Camera_Settings camera = checked_camera(view.camera, mesh, size, settings.print);
    job.background = colors;
    if (settings.indexed) {
        job.palette = new VT_Palette;
    }
    std::vector<std::string> untold;
    Model_Parts parts =
        make_parts(mesh, model.content_->facing(), style, background, *model.content_->limits, warnings ? *warnings : untold);
    module = module_of(settings);
    if (view.studio) {
        parts.add_studio(mesh, model.content_->facing(), module, model.content_->limits->threads());
        job.linear = true;
    }
    drawing =
        std::make_unique<Model_Drawing>(std::move(parts), look_of(style, background, settings.smooth_lines, job.palette), camera);
}

Image_Maker::Image_Maker(const Map& map, const Image_Settings& settings) {
    map::Map_Scene& scene = *map.content_->scene;
    const VT_RGB32 background = settings.transparent ? VT_RGB32{255, 255, 255, 255} : settings.background;
    scene.set_background(background);
    VT_Int_Pair size = size_of(settings);
    const bool is_scaled = !settings.print.scale.empty();
    // A side that is computed from the scale, or from the width.
    const bool is_computed = is_scaled ? size.x == 0 && size.y == 0 : size.y == 0;
    const std::int32_t supersample = supersample_of_map(settings);
    check(settings, {is_computed && is_scaled ? 1 : size.x, is_computed ? 1 : size.y}, supersample);
    auto found =
        std::make_unique<Map_Drawing>(map.content_->scene, Map_Look{background, settings.indexed, settings.smooth_lines});
    if (is_scaled) {
        size = found->set_scale(size, settings.print);
    } else if (is_computed) {
        size = scene.fitted(size).size;
    }
    job = job_settings_of(settings, size, supersample, map.content_->name);
    job.palette = found->palette();
    drawing = std::move(found);
    module = module_of(settings);
}

void Image_Maker::set_size(const Image_Settings& settings, VT_Int_Pair size) {
    const std::int32_t supersample = supersample_of_model(settings, size);
    check(settings, size, supersample);
    job.part.size = size;
    job.supersample = supersample;
}

// The samples are there until the image is made of them.
Image Image_Maker::image() {
    job.kept_memory = pixels_of(job.part.size) * (sizeof(VT_RGB32) + (job.palette ? 1 : 4));
    return Job(job, module, *drawing).make_image();
}

Image_Samples Image_Maker::samples(std::uint64_t more_memory) {
    job.kept_memory = pixels_of(job.part.size) * (job.palette ? 1 : 4) + more_memory;
    Job made(job, module, *drawing);
    const Image_Form& form = made.form();
    const bool indexed = form.colors == Image_Form::Colors::palette;
    Image_Samples image = drawing::make_samples(indexed ? Image_Samples::Kind::indices : Image_Samples::Kind::colors,
                                                static_cast<std::int32_t>(form.width), static_cast<std::int32_t>(form.height));
    image.palette = colors_of_rows(form.palette);
    image.pixels_per_metre = job.pixels_per_metre;
    made.make_samples(image.bytes.get());
    return image;
}

std::string Image_Maker::write(const std::string& file) {
    job.output = file;
    job.hash = true;
    try {
        return Job(job, module, *drawing).write_files().digests.front();
    } catch (const Interrupted& interrupted) {
        Interruption::raise_again(interrupted);
        throw Interruption_Error(file + ": interrupted by a signal");
    }
}

} // namespace vorna::drawing
