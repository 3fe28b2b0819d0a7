// What a recording consists of: counts, sizes and bounds.
#include "drawing/recording/summary.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <set>
#include <type_traits>
#include <utility>

#include "drawing/files/printable.h"
#include "drawing/recording/call_kinds.h"

namespace vorna::drawing::recording {

namespace {

// Calls visit(points) with the call's list of points, if it has one.
template <class Visit> void with_points(const Call& call, Visit visit) {
    std::visit(
        [&](const auto& arguments) {
            if constexpr (requires { arguments.points.size(); }) {
                visit(arguments.points);
            }
        },
        call.arguments);
}

void add_bounds(Summary& summary, double x, double y, double z) {
    const double place[] = {x, y, z};
    for (std::size_t i = 0; i < 3; ++i) {
        summary.low[i] = std::min(summary.low[i], place[i]);
        summary.high[i] = std::max(summary.high[i], place[i]);
    }
}

// The configuration with defaults filled in.
struct In_Force {
    explicit In_Force(const Configuration& c)
        : width(c.window.width.value_or(64)), height(c.window.height.value_or(64)),
          origin(c.window.origin.value_or(VT_Int_Pair{})), color_system(c.color_system.value_or(1)),
          buffer_depth(c.buffer_depth.value_or(16)), alpha_blending(c.alpha_blending.value_or(false)) {}

    std::int32_t width, height;
    VT_Int_Pair origin;
    std::int32_t color_system, buffer_depth;
    bool alpha_blending;
};

std::string line(const char* name, const std::string& text) {
    return "  " + std::string(name) + std::string(14 - std::string_view(name).size(), ' ') + text + '\n';
}

std::string size_text(std::int32_t width, std::int32_t height) {
    return std::to_string(width) + " x " + std::to_string(height);
}

std::string number_text(double number) {
    char text[32];
    std::snprintf(text, sizeof text, "%.7g", number);
    return text;
}

std::string palette_text(const std::optional<Palette>& palette) {
    if (!palette) {
        return "the default one";
    }
    std::string text = palette->colors ? std::to_string(palette->colors->size()) + " colours" : "the default colours";
    if (palette->cube && *palette->cube) {
        const VT_Int_RGB& levels = (*palette->cube)->levels;
        text += ", cube of " + std::to_string(levels.red) + " x " + std::to_string(levels.green) + " x " +
                std::to_string(levels.blue) + " at " + std::to_string((*palette->cube)->base);
    }
    return text;
}

std::string setting_text(const Option_Setting& setting) {
    if (const bool* value = std::get_if<bool>(&setting)) {
        return *value ? "on" : "off";
    }
    if (const std::int32_t* value = std::get_if<std::int32_t>(&setting)) {
        return std::to_string(*value);
    }
    const auto& color = std::get<VT_Int_RGB>(setting);
    return std::to_string(color.red) + ',' + std::to_string(color.green) + ',' + std::to_string(color.blue);
}

const char* pieces_name(std::string_view call) {
    return call.ends_with("polytriangle") ? "triangles" : call.ends_with("polyline") ? "segments" : nullptr;
}

} // namespace

std::size_t points_of(const Call& call) {
    std::size_t count = 0;
    with_points(call, [&](const auto& points) { count = points.size(); });
    return count;
}

Summary summary_of(const Recording& recording) {
    Summary summary;
    std::fill(summary.low, summary.low + 3, std::numeric_limits<double>::infinity());
    std::fill(summary.high, summary.high + 3, -std::numeric_limits<double>::infinity());
    std::set<const Rendition*> renditions;
    std::set<const void*> textures, clips;
    for (const Call& call : recording.calls) {
        Summary::Calls& calls = summary.calls[call.kind->name];
        const std::size_t points = points_of(call);
        ++calls.count;
        calls.points += points;
        calls.pieces += pieces_name(call.kind->name) ? colors_of(*call.kind, points, false) : 0;
        summary.points += points;
        with_points(call, [&](const auto& list) {
            for (const auto& point : list) {
                add_bounds(summary, static_cast<double>(point.x), static_cast<double>(point.y), static_cast<double>(point.z));
            }
        });
        const bool draws = position_of(*call.kind) < std::size(detail::slot_names);
        if (!draws || !renditions.insert(call.rendition.get()).second) {
            continue;
        }
        const Rendition rendition = call.rendition ? overlaid(recording.rendition, *call.rendition) : recording.rendition;
        const auto& texture = rendition.face.texture;
        if (texture && texture->texels && textures.insert(texture->texels->get()).second) {
            summary.textures.push_back({texture->width.value_or(0), texture->height.value_or(0)});
        }
        if (const auto& clip = rendition.complex_clip; clip && *clip && clips.insert((**clip).get()).second) {
            ++summary.complex_clips;
        }
    }
    summary.renditions = renditions.size();
    return summary;
}

std::string text_of(const Recording& recording) {
    const In_Force in_force(recording.configuration);
    const Summary summary = summary_of(recording);
    std::string window = size_text(in_force.width, in_force.height) + " pixels at [" + std::to_string(in_force.origin.x) + ", " +
                         std::to_string(in_force.origin.y) + "]";
    if (const auto& shown = recording.output) {
        window += ", shown " + size_text(shown->right - shown->left + 1, shown->top - shown->bottom + 1);
    }
    std::string text = line("window", window);
    text += line("pixels", std::string(in_force.color_system == 1 ? "32-bit colours" : "8-bit indices") +
                               (in_force.buffer_depth < 1 ? ", no depth buffer" : ", depth buffer") +
                               (in_force.alpha_blending ? ", alpha blending" : ""));
    if (in_force.color_system != 1 || recording.configuration.palette) {
        text += line("palette", palette_text(recording.configuration.palette));
    }
    for (const auto& [name, setting] : recording.configuration.options) {
        text += line("option", printable(name) + ": " + setting_text(setting));
    }
    text += line("renditions", std::to_string(summary.renditions));
    if (summary.complex_clips > 0) {
        text += line("complex clips", std::to_string(summary.complex_clips));
    }
    for (const VT_Int_Pair& size : summary.textures) {
        text += line("texture", size_text(size.x, size.y));
    }
    if (summary.points > 0) {
        std::string bounds = std::to_string(summary.points);
        for (std::size_t i = 0; i < 3; ++i) {
            bounds += std::string(", ") + "xyz"[i] + " " + number_text(summary.low[i]) + " to " + number_text(summary.high[i]);
        }
        text += line("points", bounds);
    }
    text += line("calls", std::to_string(recording.calls.size()));
    for (const auto& [name, calls] : summary.calls) {
        char columns[128];
        std::snprintf(columns, sizeof columns, "%10zu  %-34.*s", calls.count, static_cast<int>(name.size()), name.data());
        std::string row = columns;
        if (calls.points > 0) {
            row += std::to_string(calls.points) + " points";
        }
        if (const char* pieces = pieces_name(name); pieces && calls.points > 0) {
            row += ", " + std::to_string(calls.pieces) + ' ' + pieces;
        }
        text += row.substr(0, row.find_last_not_of(' ') + 1) + '\n';
    }
    return text;
}

void add_summary(Json_Text& json, const Recording& recording) {
    const In_Force in_force(recording.configuration);
    const Summary summary = summary_of(recording);
    json.name("window");
    json.start_object();
    json.member("width", in_force.width);
    json.member("height", in_force.height);
    json.list("origin", {in_force.origin.x, in_force.origin.y});
    json.end_object();
    json.member("color_system", in_force.color_system);
    json.member("buffer_depth", in_force.buffer_depth);
    json.member("alpha_blending", in_force.alpha_blending);
    json.member("renditions", summary.renditions);
    json.member("complex_clips", summary.complex_clips);
    json.name("textures");
    json.start_list();
    for (const VT_Int_Pair& size : summary.textures) {
        json.start_list();
        json.value(size.x);
        json.value(size.y);
        json.end_list();
    }
    json.end_list();
    json.member("points", summary.points);
    json.name("bounds");
    if (summary.points > 0) {
        json.start_object();
        for (std::size_t i = 0; i < 3; ++i) {
            json.list(std::string(1, "xyz"[i]), {summary.low[i], summary.high[i]});
        }
        json.end_object();
    } else {
        json.value(nullptr);
    }
    json.name("calls");
    json.start_list();
    for (const auto& [name, of_kind] : summary.calls) {
        json.start_object();
        json.member("call", name);
        json.member("count", of_kind.count);
        json.member("points", of_kind.points);
        if (const char* pieces = pieces_name(name)) {
            json.member(pieces, of_kind.pieces);
        }
        json.end_object();
    }
    json.end_list();
}

} // namespace vorna::drawing::recording
