// Images of a model from any number of cameras.
#include <cstring>
#include <optional>
#include <utility>

#include "drawing/image/image_file.h"
#include "drawing/image_maker.h"
#include "drawing/job/model_style.h"
#include "drawing/model/scene_renderer.h"
#include "drawing/model/textured_scene.h"
#include "drawing/settings_checks.h"

namespace vorna::drawing {
namespace {

constexpr VT_RGB32 black = model::color_of_number(0);

// Copies the kept pixels of a window into the rows of an image. convert(from, pixels, to) is called for each row.
template <class Pixel, class Convert>
void copy_rows(const Raster& drawn, const VT_Int_Rectangle& window, const VT_Int_Rectangle& kept, const Image_Samples& image,
               const Convert& convert) {
    const Raster rows = cut(drawn, window, kept);
    for (std::int32_t row = 0; row < rows.height; ++row) {
        const std::int64_t first = std::int64_t{image.height - 1 - kept.top + row} * image.width + kept.left;
        convert(rows.top + row * rows.row_bytes, rows.width, reinterpret_cast<Pixel*>(image.bytes.get()) + first);
    }
}

} // namespace

// Passes are drawings of their own, because they show faces alone and are not supersampled.
struct Model_Images::Content {
    struct Pass {
        Job_Settings job;
        std::unique_ptr<Model_Drawing> drawing;
    };

    Pass make_pass(const Model_Style& style, const model::Camera_Settings& camera, VT_Int_Pair size);
    Pass& numbered(const model::Camera_Settings& camera, VT_Int_Pair size);
    Pass& textured(const model::Camera_Settings& camera, VT_Int_Pair size);
    void draw_pass(Pass& pass, const model::Camera_Settings& camera, VT_Int_Pair size, Image_Samples* depths,
                   Image_Samples* faces) const;
    void take_numbers(const std::uint8_t* from, std::int32_t count, std::int32_t* to) const;

    const Model::Content* model;
    const Model* whole;
    Model_View view;
    Image_Settings settings;
    bool has_textured_depths = false;
    std::optional<Image_Maker> colors;
    std::optional<Pass> numbers, texture_depths;
    std::vector<std::string> warnings;
};

Model_Images::Content::Pass Model_Images::Content::make_pass(const Model_Style& style, const model::Camera_Settings& camera,
                                                             VT_Int_Pair size) {
    Model_Parts parts;
    if (!model->mesh.triangles.empty()) {
        parts.faces = make_faces(model->mesh, model->facing(), style, *model->limits, warnings);
    }
    Pass pass;
    pass.drawing = std::make_unique<Model_Drawing>(std::move(parts), look_of(style, Background(black), false, {}),
                                                   checked_camera(camera, model->mesh, size, settings.print));
    pass.job.threads = settings.threads;
    pass.job.max_memory = settings.max_memory;
    pass.job.other_memory = settings.other_memory;
    pass.job.background = Background(black);
    pass.job.allow_empty = true;
    pass.job.input = model->name;
    return pass;
}

Model_Images::Content::Pass& Model_Images::Content::numbered(const model::Camera_Settings& camera, VT_Int_Pair size) {
    if (!numbers) {
        Model_Style style;
        style.look.shading = model::Shading::flat;
        style.look.culling = view.look.culling;
        style.look.tint = model::Tint::numbers;
        numbers = make_pass(style, camera, size);
    }
    return *numbers;
}

// Holes of textures are holes in the depths.
Model_Images::Content::Pass& Model_Images::Content::textured(const model::Camera_Settings& camera, VT_Int_Pair size) {
    if (!texture_depths) {
        Model_Style style = view;
        style.look.tint = model::Tint::own;
        texture_depths = make_pass(style, camera, size);
    }
    return *texture_depths;
}

void Model_Images::Content::take_numbers(const std::uint8_t* from, std::int32_t count, std::int32_t* to) const {
    for (std::int32_t i = 0; i < count; ++i) {
        VT_RGB32 pixel;
        std::memcpy(&pixel, from + std::ptrdiff_t{i} * 4, sizeof pixel);
        to[i] = static_cast<std::int32_t>(model::number_of_color(pixel)) - 1;
    }
    if (!model->given_numbers.empty()) {
        for (std::int32_t i = 0; i < count; ++i) {
            to[i] = to[i] < 0 ? to[i] : static_cast<std::int32_t>(model->given_numbers[static_cast<std::size_t>(to[i])]);
        }
    }
}

void Model_Images::Content::draw_pass(Pass& pass, const model::Camera_Settings& camera, VT_Int_Pair size, Image_Samples* depths,
                                      Image_Samples* faces) const {
    pass.drawing->set_camera(checked_camera(camera, model->mesh, size, settings.print));
    pass.job.part.size = size;
    Job job(pass.job, module_of(settings), *pass.drawing);
    if (depths) {
        *depths = make_samples(Image_Samples::Kind::depths, size.x, size.y);
    }
    if (faces) {
        *faces = make_samples(Image_Samples::Kind::faces, size.x, size.y);
    }
    job.draw_frame([&](Session& session, const VT_Int_Rectangle& window, const VT_Int_Rectangle& kept) {
        if (depths) {
            copy_rows<std::uint16_t>(raster_of(*session.read_depth(kept)), kept, kept, *depths,
                                     [](const std::uint8_t* from, std::int32_t count, std::uint16_t* to) {
                                         std::memcpy(to, from, static_cast<std::size_t>(count) * sizeof *to);
                                     });
        }
        if (faces) {
            copy_rows<std::int32_t>(
                raster_of(session.color_buffer()), window, kept, *faces,
                [this](const std::uint8_t* from, std::int32_t count, std::int32_t* to) { take_numbers(from, count, to); });
        }
    });
}

Model_Images::Model_Images(const Model& model, const Model_View& view, const Image_Settings& settings)
    : content_(new Content{model.content_.get(), &model, view, settings, false, {}, {}, {}, {}}) {
    content_->has_textured_depths = shading_of(view, model.content_->mesh) == model::Shading::textured &&
                                    model::Textured_Scene::has_work(model.content_->mesh);
}

Model_Images::Model_Images(Model_Images&&) noexcept = default;
Model_Images& Model_Images::operator=(Model_Images&&) noexcept = default;
Model_Images::~Model_Images() = default;

Model_Image Model_Images::draw(const model::Camera_Settings& camera, VT_Int_Pair size, const Planes& planes) {
    Content& content = *content_;
    check(camera);
    Image_Settings sized = content.settings;
    sized.size = size;
    sized.print.dpi = sized.print.pixels_per_inch();
    sized.print.paper.clear();
    Model_Image image;
    const auto note_range = [&](const Model_Drawing& drawing) {
        image.near = drawing.camera().near * content.model->mesh.radius;
        image.far = drawing.camera().far * content.model->mesh.radius;
    };
    const std::uint64_t plane_memory =
        pixels_of(size) * ((planes.depths ? sizeof(std::uint16_t) : 0) + (planes.faces ? sizeof(std::int32_t) : 0));
    const std::uint64_t color_memory = planes.colors ? pixels_of(size) * (content.settings.indexed ? 1 : 4) : 0;
    if (planes.colors) {
        if (!content.colors) {
            Model_View view = content.view;
            view.camera = camera;
            content.colors.emplace(*content.whole, view, sized, &content.warnings);
        }
        auto& drawing = static_cast<Model_Drawing&>(*content.colors->drawing);
        drawing.set_camera(checked_camera(camera, content.model->mesh, size, sized.print));
        content.colors->set_size(sized, size);
        image.colors = content.colors->samples(plane_memory);
        note_range(drawing);
    }
    if (planes.depths || planes.faces) {
        check(sized, size, 1);
    }
    const bool together = planes.depths && !content.has_textured_depths;
    if (planes.faces || together) {
        Content::Pass& pass = content.numbered(camera, size);
        pass.job.kept_memory = plane_memory + color_memory;
        content.draw_pass(pass, camera, size, together ? &image.depths : nullptr, planes.faces ? &image.faces : nullptr);
        note_range(*pass.drawing);
    }
    if (planes.depths && !together) {
        Content::Pass& pass = content.textured(camera, size);
        pass.job.kept_memory = plane_memory + color_memory;
        content.draw_pass(pass, camera, size, &image.depths, nullptr);
        note_range(*pass.drawing);
    }
    return image;
}

const std::vector<std::string>& Model_Images::warnings() const {
    return content_->warnings;
}

} // namespace vorna::drawing
