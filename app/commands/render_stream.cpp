// `render` with a model that is read while it is drawn.
#include "app/commands/render_stream.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <string_view>
#include <utility>

#include "app/commands/option_choices.h"
#include "app/commands/part_origin.h"
#include "app/commands/render_model.h"
#include "app/commands/render_plan.h"
#include "drawing/files/helpers.h"
#include "drawing/job/model_style.h"
#include "drawing/job/streamed_drawing.h"

namespace vorna::app {
namespace {

using drawing::model::Triangle_File;

constexpr std::size_t digest_length = 64, outermost_count = 6, number_count = 4 + 3 * outermost_count;

struct Framing_Text {
    std::string digest; // of the file; empty = not known
    drawing::Model_Framing framing;

    std::string text() const {
        std::string text = digest;
        const auto add = [&text](const auto& v) { text += ',' + text_of(v.x) + ',' + text_of(v.y) + ',' + text_of(v.z); };
        add(framing.center);
        text += ',' + text_of(framing.radius);
        std::ranges::for_each(framing.outermost, add);
        return text;
    }
};

Framing_Text parsed_framing(const std::string& text) {
    Framing_Text result;
    std::vector<double> numbers;
    const std::size_t comma = std::min(text.find(','), text.size());
    result.digest = text.substr(0, comma);
    const char *next = text.data() + comma, *const end = text.data() + text.size();
    bool is_right = comma == digest_length && result.digest.find_first_not_of("0123456789abcdef") == std::string::npos;
    while (is_right && next != end) {
        const auto [stop, error] = std::from_chars(next + 1, end, numbers.emplace_back());
        is_right = error == std::errc{} && std::isfinite(numbers.back()) && (stop == end || *stop == ',');
        next = stop;
    }
    if (!is_right || numbers.size() != number_count || !(numbers[3] > 0)) {
        throw drawing::Usage_Error("--framing: expected a digest and " + std::to_string(number_count) +
                                   " numbers, as --plan prints them, found '" + text + "'");
    }
    result.framing.center = {numbers[0], numbers[1], numbers[2]};
    result.framing.radius = numbers[3];
    for (std::size_t i = 4; i < number_count; i += 3) {
        result.framing.outermost.push_back(
            {static_cast<float>(numbers[i]), static_cast<float>(numbers[i + 1]), static_cast<float>(numbers[i + 2])});
    }
    return result;
}

drawing::model::Camera_Settings camera_in(const Render_Options& options, const drawing::Model_Framing& framing,
                                          VT_Int_Pair size) {
    drawing::model::Mesh mesh;
    mesh.center = framing.center;
    mesh.radius = framing.radius;
    return model_camera_of(options, mesh, size);
}

Framing_Text found_framing(const Render_Options& options, const Triangle_File& file, VT_Int_Pair size) {
    const drawing::model::Bounds bounds = bounds_of(file, *options.limits);
    Framing_Text found;
    found.framing.center = bounds.center();
    found.framing.radius = bounds.radius();
    const drawing::model::Camera_Settings camera = camera_in(options, found.framing, size);
    found.framing.outermost = outermost_corners(file, bounds, camera, *options.limits);
    if (has_parts(options)) {
        found.digest = digest_of_file(file.name());
    }
    return found;
}

// The only model, which no one has read yet.
const drawing::Input& plain_input(const std::vector<drawing::Input>& inputs) {
    if (inputs.size() != 1) {
        throw drawing::Usage_Error("--stream: expected one model, found " + std::to_string(inputs.size()));
    }
    if (inputs.front().content) {
        throw drawing::Usage_Error(inputs.front().name +
                                   ": expected a plain file with --stream, found standard input, a compressed file or another "
                                   "format than its name says");
    }
    return inputs.front();
}

void check_shading(const Render_Options& options, const Triangle_File& file) {
    using drawing::model::Shading;
    const Shading shading = options.picture.shading;
    if (shading != Shading::flat && !(file.has_normals() && (shading == Shading::gouraud || shading == Shading::automatic))) {
        throw drawing::Usage_Error(file.name() + ": expected --shading flat, " +
                                   (file.has_normals() ? "or gouraud, " : "or normals of its vertices in the file, ") +
                                   "since the triangles around a vertex are not known with --stream");
    }
}

// A share is drawn as an image of drawn pixels, which are joined before their means are taken.
void set_share(const Render_Options& options, drawing::Job_Settings& settings) {
    if (settings.file != drawing::Image_File::png && options.plan == 0) {
        throw drawing::Usage_Error("--parts-of: expected a PNG file, found another one");
    }
    const std::int32_t n = settings.supersample;
    const std::int32_t count = options.plan > 0 ? options.plan : options.parts_of, first = std::max(options.share, 0);
    if (first >= count) {
        throw drawing::Usage_Error("--part: expected a number from 0 to " + std::to_string(count - 1) + ", found " +
                                   std::to_string(first));
    }
    settings.part.is_whole = false;
    settings.part.size = {settings.part.size.x * n, settings.part.size.y * n};
    settings.part.share = drawing::Triangle_Share{count, first, first + 1, n, settings.transparent};
    settings.file = drawing::Image_File::png;
    settings.supersample = 1;
    if (std::exchange(settings.transparent, false)) {
        settings.background = drawing::Background();
    }
}

} // namespace

void add_stream_options(std::vector<Option>& table, Render_Options& options, const std::string& group) {
    // They need the whole model, or pixels in another form.
    const std::vector<std::string> others{"--tiles-of",   "--record",     "--turntable",  "--edges",        "--edge-color",
                                          "--look",       "--pass",       "--colors",     "--palette",      "--antialias",
                                          "--axes",       "--scale-bar",  "--section",    "--crease",       "--tile-size",
                                          "--tile-times", "--line-width", "--point-size", "--output-folder"};
    const std::vector<Option> own{
        {.names = {"--stream"},
         .text = "Draw one binary STL or PLY of triangles while it is read, in the file's order: it may be larger than memory; "
                 "with flat shading, or by normals of a PLY",
         .target = &options.stream,
         .excludes = others},
        {.names = {"--parts-of"},
         .value = whole_value("N", 1, drawing::most_shares),
         .text = "Draw one of so many parts of the model's triangles, as with --stream, for vorna assemble",
         .target = &options.parts_of,
         .needs = {"--part"},
         .excludes = others},
        {.names = {"--part"},
         .value = whole_value("K", 0, drawing::most_shares - 1),
         .text = "Which part of the triangles, from 0 on",
         .target = &options.share,
         .needs = {"--parts-of"},
         .excludes = {"--plan"}},
        {.names = {"--framing"},
         .value = text_value("TEXT"),
         .text = "Where the model lies, as --plan with --stream prints it; found in the file if not given, which reads it three "
                 "times more",
         .target = &options.framing,
         .needs = {"--parts-of"}}};
    for (Option option : own) {
        option.group = group;
        option.applies_to = Applies_To::models;
        table.push_back(std::move(option));
    }
}

void render_streamed(Render_Options& options, const std::vector<drawing::Input>& inputs, const drawing::Module_Choice& module) {
    const drawing::Input& input = plain_input(inputs);
    const VT_Int_Pair size = image_size_of(options);
    drawing::Job_Settings settings = model_settings_of(options, size, palette_of(options));
    const drawing::Model_Look look = look_of(options, false);
    const Triangle_File file(input.name, input.suffix);
    check_shading(options, file);
    refuse_to_replace(options.models, options);
    const drawing::Load_Limits::Loan memory(*options.limits, input.name,
                                            drawing::model::places_of_batches(*options.limits) * Triangle_File::batch_memory);
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    const Framing_Text framing = options.framing.empty() ? found_framing(options, file, size) : parsed_framing(options.framing);
    const Load_Times times{std::chrono::duration<double, std::milli>(Clock::now() - start).count(), 0};
    drawing::Triangle_Share share;
    if (has_parts(options)) {
        set_share(options, settings);
        share = *settings.part.share;
        options.models_digest = framing.text();
    }
    const drawing::Model_Style style = style_of(options);
    drawing::Streamed_Drawing drawing(file, share, framing.framing, look, style.color.value_or(drawing::default_model_color),
                                      !style.color, camera_in(options, framing.framing, size), *options.limits);
    if (options.plan > 0) {
        settings.part.origin = part_origin(options, share.supersample);
        print_share_plan(options, settings, module, drawing, file.triangle_count(), {"--framing=" + framing.text()});
        return;
    }
    run_job(options, std::move(settings), module, drawing, times, "model");
}

} // namespace vorna::app
