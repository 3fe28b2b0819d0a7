// Recordings, as JSON or CBOR, plain or compressed: read, and when they are valid written, read again and replayed.
#include <array>
#include <cstring>
#include <span>

#include "drawing/recording/call_kinds.h"
#include "drawing/recording/document.h"
#include "drawing/recording/document_comparison.h"
#include "drawing/recording/history_report.h"
#include "drawing/recording/pixel_history.h"
#include "drawing/recording/recording_file.h"
#include "drawing/recording/recording_reader.h"
#include "drawing/recording/recording_writer.h"
#include "drawing/recording/replay.h"
#include "drawing/recording/session.h"
#include "drawing/recording/step_views.h"
#include "tests/fuzz/guarded_buffers.h"
#include "tests/fuzz/json_mutator.h"

namespace {

using vorna::app::check::Random;
using Json = nlohmann::ordered_json;

constexpr std::string_view keys[] = {"picture",
                                     "window",
                                     "width",
                                     "height",
                                     "origin",
                                     "local_coordinates",
                                     "color_system",
                                     "buffer_depth",
                                     "alpha_blending",
                                     "palette",
                                     "colors",
                                     "cube",
                                     "base",
                                     "levels",
                                     "options",
                                     "zbuffer_write",
                                     "zbuffer_test",
                                     "rendition",
                                     "renditions",
                                     "texels",
                                     "complex_clips",
                                     "output",
                                     "calls",
                                     "call",
                                     "points",
                                     "single",
                                     "parameters",
                                     "color",
                                     "index",
                                     "start",
                                     "end",
                                     "center",
                                     "radii",
                                     "rotation",
                                     "pixels",
                                     "image",
                                     "format",
                                     "rectangle",
                                     "fill",
                                     "top_left",
                                     "bottom_right",
                                     "depths",
                                     "value",
                                     "hard_clip",
                                     "depth_test",
                                     "drawing_mode",
                                     "flags",
                                     "complex_clip",
                                     "window_offset",
                                     "face",
                                     "contrast_color",
                                     "contrast_index",
                                     "pattern",
                                     "bitmap",
                                     "rows",
                                     "texture",
                                     "matrix",
                                     "mode",
                                     "line",
                                     "weight",
                                     "style",
                                     "line_types",
                                     "per_segment",
                                     "scale",
                                     "types",
                                     "kind",
                                     "leading",
                                     "trailing",
                                     "elements",
                                     "cap",
                                     "join",
                                     "marker",
                                     "symbol",
                                     "size",
                                     "standard",
                                     "point",
                                     "Margin",
                                     "Use Mask",
                                     "Clip Phase",
                                     "Enable Tiling",
                                     "Merge Control Background Color",
                                     "Force Merge Control On",
                                     "Mask Cache",
                                     "Color Buffer",
                                     "Depth Buffer",
                                     "ZBuffer Write"};

constexpr std::size_t kind_count = std::size(vorna::drawing::recording::call_kinds);

constexpr auto words = [] {
    std::array<std::string_view, kind_count + 3> list{};
    for (std::size_t i = 0; i < kind_count; ++i) {
        list[i] = vorna::drawing::recording::call_kinds[i].name;
    }
    list[kind_count] = "0110";
    list[kind_count + 1] = "ff0000ff00ff0080";
    list[kind_count + 2] = "00ff";
    return list;
}();

Json color(Random& random) {
    Json list = {random.byte(), random.byte(), random.byte()};
    if (random.chance(30)) {
        list.push_back(random.byte());
    }
    return list;
}

Json colors(Random& random, std::int32_t count) {
    Json list = Json::array();
    for (std::int32_t i = 0; i < count; ++i) {
        list.push_back(color(random));
    }
    return list;
}

// Inside most windows, or anywhere.
Json place(Random& random, bool anywhere, int dimensions = 2) {
    Json point;
    for (int i = 0; i < dimensions; ++i) {
        point.push_back(anywhere && random.chance(30) ? fuzzing::odd_number(random) : Json(random.number(0, 31)));
    }
    return point;
}

Json rendition(Random& random) {
    Json result = Json::object();
    if (random.chance(40)) {
        result["face"] = {{"color", color(random)}, {"pattern", random.number(0, 90)}, {"flags", random.number(0, 63)}};
    }
    if (random.chance(40)) {
        result["line"] = {{"color", color(random)},       {"weight", random.number(0, 8)}, {"style", random.number(0, 6)},
                          {"flags", random.number(0, 3)}, {"cap", random.number(0, 3)},    {"join", random.number(0, 3)}};
    }
    if (random.chance(20)) {
        result["marker"] = {{"color", color(random)}, {"symbol", random.number(0, 9)}, {"size", random.number(0, 12)}};
    }
    if (random.chance(20)) {
        result["hard_clip"] = {random.number(-5, 20), random.number(0, 70), random.number(-5, 20), random.number(0, 70)};
    }
    if (random.chance(20)) {
        result["drawing_mode"] = random.number(0, 1) * 20;
        result["flags"] = random.number(0, 15);
    }
    if (random.chance(20)) {
        result["complex_clip"] = Json::array({Json::array({place(random, true), place(random, false), place(random, false)})});
    }
    if (random.chance(15)) {
        result["line"]["line_types"] = {
            {"per_segment", random.chance(50)},
            {"scale", random.number(0, 4)},
            {"types",
             {{{"kind", random.number(0, 8)},
               {"width", random.number(0, 4)},
               {"elements", {{random.number(0, 9), random.number(-1, 1)}, {random.number(0, 9), random.number(-1, 1)}}}}}}};
    }
    if (random.chance(15)) {
        const std::int32_t width = 1 << random.number(0, 3), height = random.number(1, 4);
        result["face"]["texture"] = {{"width", width}, {"height", height}, {"texels", colors(random, width * height)}};
    }
    return result;
}

Json points(Random& random, std::string_view name, std::int32_t count) {
    const bool anywhere = !name.starts_with("draw_dc") || random.chance(3);
    const bool whole = name.find("2di") != name.npos || name.find("dci") != name.npos;
    Json list = Json::array();
    for (std::int32_t i = 0; i < count; ++i) {
        Json point = place(random, anywhere, random.number(2, 3));
        for (Json& coordinate : point) {
            if (!whole && random.chance(30)) {
                coordinate = random.number(0, 32000) / 1024.0;
            } else if (whole && coordinate.is_number_float()) {
                coordinate = random.number(-40000, 40000);
            }
        }
        list.push_back(std::move(point));
    }
    return list;
}

Json rows(Random& random, std::int32_t columns, std::int32_t count, bool of_colors) {
    Json list = Json::array();
    for (std::int32_t r = 0; r < count; ++r) {
        Json row = of_colors ? colors(random, columns) : Json::array();
        for (std::int32_t c = 0; c < columns && !of_colors; ++c) {
            row.push_back(random.byte());
        }
        list.push_back(std::move(row));
    }
    return list;
}

void add_image(Random& random, std::string_view name, Json& call) {
    const std::int32_t left = random.number(0, 20), top = random.number(5, 31), width = random.number(1, 12),
                       height = random.number(1, 5);
    const Json upper{left, top}, lower{left + width - 1, top - height + 1};
    if (name == "draw_dci_image") {
        const bool in_colors = random.chance(60);
        call["start"] = place(random, true);
        call["start"] = {random.number(-9, 40), random.number(-9, 40)};
        call["image"] = {{"format", in_colors ? 2 : 1},
                         {"width", width},
                         {"height", height},
                         {"pixels", rows(random, width, height, in_colors)}};
    } else if (name.starts_with("draw_")) {
        call["start"] = upper;
        call["end"] = lower;
        call["pixels"] = rows(random, width, height, name == "draw_dci_rgb32_image");
    } else {
        call["top_left"] = upper;
        call["bottom_right"] = lower;
        if (name.starts_with("write_")) {
            call["depths"] = rows(random, width, height, false);
        } else {
            call["format"] = random.number(1, 9);
        }
    }
}

// A call with all that it needs.
Json new_call(Random& random) {
    const std::string_view name =
        vorna::drawing::recording::call_kinds[static_cast<std::size_t>(random.number(0, kind_count - 1))].name;
    Json call{{"call", std::string(name)}};
    const std::int32_t count = random.number(1, 7);
    if (name == "establish") {
        call["window"] = {{"width", random.number(1, 64)}, {"height", random.number(1, 64)}};
        call["buffer_depth"] = random.number(0, 1) * 16;
        call["color_system"] = random.number(0, 1);
        call["alpha_blending"] = random.chance(50);
        call["options"] = {{"Use Mask", random.chance(50)}, {"Enable Tiling", random.chance(30)}};
        return call;
    }
    if (name.starts_with("set_")) {
        call["value"] = name == "set_zbuffer_test" ? Json(random.number(0, 6)) : Json(random.chance(50));
        return call;
    }
    if (name == "present" || name == "draw_window" || name == "clear_depth_rectangle") {
        call["rectangle"] = {random.number(0, 15), random.number(15, 31), random.number(0, 15), random.number(15, 31)};
        if (name == "draw_window") {
            call["color"] = color(random);
            call["fill"] = random.number(0, 90);
        }
    } else if (name.find("image") != name.npos || name == "write_depth_rectangle") {
        add_image(random, name, call);
    } else if (name == "draw_dci_dot") {
        call["point"] = place(random, false);
    } else if (name.find("ellip") != name.npos) {
        call["center"] = {random.number(8, 24), random.number(8, 24)};
        call["radii"] = {random.number(0, 12), random.number(0, 12)};
        if (random.chance(50)) {
            call["start"] = random.number(-7000, 7000) / 1000.0;
            call["rotation"] = random.number(-7000, 7000) / 1000.0;
        }
    } else {
        call["points"] = points(random, name, count);
        if (name.find("colorized") != name.npos || name.find("gouraud") != name.npos || name.find("textured") != name.npos) {
            call["colors"] = colors(random, count);
        }
        if (name.find("textured") != name.npos) {
            for (std::int32_t i = 0; i < count; ++i) {
                call["parameters"].push_back({random.number(-2000, 2000) / 1000.0, random.number(0, 1000) / 1000.0});
            }
        }
    }
    if (name != "present" && random.chance(50)) {
        call["rendition"] = rendition(random);
    }
    if (name != "present" && random.chance(10)) {
        call["standard"] = true;
    }
    return call;
}

// Text and CBOR hold the same, to the last bit.
void write(const vorna::drawing::recording::Recording& recording) {
    using namespace vorna::drawing::recording;
    const std::string text = json_of(recording);
    if (json_of(read_recording(text)) != text || json_of(read_recording(cbor_of(recording))) != text) {
        fuzzing::fail("a recording that was written and read is another one");
    }
}

// The history of a pixel ends with what the replay left there.
void require_history(const vorna::drawing::recording::Recording& recording, vorna::drawing::Session& session,
                     std::int32_t largest_side, std::size_t choice) {
    using namespace vorna::drawing::recording;
    const Replay_Histories histories(recording, fuzzing::renderer_module(), {.replay = {.largest_side = largest_side}});
    const VT_Int_Pair size = histories.image_size();
    const VT_Int_Pair pixel{static_cast<std::int32_t>(choice % static_cast<std::size_t>(size.x)),
                            static_cast<std::int32_t>(choice % static_cast<std::size_t>(size.y))};
    const Pixel_History history = histories.of_pixels(std::span(&pixel, 1))[0];
    write_text(recording, {history}, [](std::string_view) {});
    const VT_Int_Rectangle window = session.window();
    const std::uint8_t* const row = session.color_buffer().rows[history.device.y - window.bottom];
    const std::int32_t column = history.device.x - window.left;
    // Dithered indices depend on how rows are aligned, which the guarded buffers choose.
    const bool has_indices = history.last.kind == Pixel_Value::Kind::index || may_have_indices_in_colors(recording);
    const bool is_same = has_indices || std::memcmp(&history.last.color, row + std::ptrdiff_t{4} * column, 4) == 0;
    if (!is_same) {
        fuzzing::fail("the history of a pixel ends with another colour than the replay");
    }
}

// A position looks the same whichever way it is gone to.
void require_steps(const vorna::drawing::recording::Recording& recording, std::int32_t largest_side, std::size_t choice) {
    using namespace vorna::drawing::recording;
    const Replay_Settings replay{.largest_side = largest_side};
    Recording_Steps straight(recording, fuzzing::renderer_module(), {.replay = replay, .memory = 0});
    Recording_Steps back(recording, fuzzing::renderer_module(),
                         {.replay = replay, .memory = std::uint64_t{1} << 22, .interval = 0, .has_heat = true});
    const std::size_t position = choice % (straight.calls() + 1);
    straight.go_to(position);
    back.go_to(back.calls());
    back.go_to(position);
    const auto bytes_of = [](const vorna::drawing::Raster& raster) {
        return raster.top ? vorna::drawing::raw_bytes_of(raster) : std::string();
    };
    if (bytes_of(straight.colors()) != bytes_of(back.colors()) || bytes_of(straight.depths()) != bytes_of(back.depths())) {
        fuzzing::fail("a position that is gone back to looks different");
    }
    for (const Step_View view : {Step_View::colors, Step_View::depths, Step_View::mask, Step_View::overdraw, Step_View::cost}) {
        image_of(back, view);
    }
}

void replay(std::string_view text) {
    using namespace vorna::drawing::recording;
    constexpr std::uint64_t most_memory = std::uint64_t{1} << 28;
    vorna::drawing::Load_Limits limits(most_memory);
    const Recording recording = read_document("recording", std::string(text), limits);
    if (const Document_Difference difference = compare_documents(recording, recording);
        !difference.setup.empty() || difference.call) {
        fuzzing::fail("a recording differs from itself");
    }
    write(recording);
    fuzzing::Guarded_Buffers buffers({static_cast<std::int32_t>(text.size() % 3), static_cast<std::int32_t>(text.size() % 5)});
    vorna::drawing::Session session(fuzzing::renderer_module());
    session.renderer().buffer_creation = buffers.callback();
    Replay_Settings settings;
    settings.largest_side = 384;
    settings.after_call = [&](std::size_t call) {
        buffers.check(recording.calls[call].kind->name == "draw_window" ||
                      recording.calls[call].kind->name == "clear_depth_rectangle");
    };
    json_of(replay(recording, session, settings));
    require_history(recording, session, settings.largest_side, text.size());
    require_steps(recording, settings.largest_side, text.size());
}

// By the reader of recordings, which limits how deeply documents nest.
Json read_cbor(std::string_view bytes) {
    try {
        return vorna::drawing::recording::parse_document(bytes);
    } catch (const vorna::drawing::recording::Recording_Error&) {
        return Json::value_t::discarded;
    }
}

} // namespace

const fuzzing::Vocabulary fuzzing::vocabulary{keys, words, "calls", new_call, read_cbor, vorna::drawing::recording::is_cbor};

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Recordings that a replay refuses give an error that has no class of its own.
    fuzzing::try_out<std::runtime_error>([&] { replay(fuzzing::text_of(data, size)); });
    return 0;
}
