// What a single call does to pixels, and which rules keep it from them.
#include "drawing/recording/call_probe.h"

#include <algorithm>
#include <iterator>

#include "drawing/recording/opaque.h"

namespace vorna::drawing::recording {

namespace {

constexpr std::uint16_t farthest_depth = 0xFFFF;

constexpr std::uint32_t alpha_bits = 0xFF000000;

// The same colour with every bit changed, in the pixel's format. Alpha stays, because blending and merging store an opaque one
// even where they leave the colour as it is.
std::uint32_t opposite(const Pixel_Value& value) {
    return value.kind == Pixel_Value::Kind::index ? ~value.color & 0xFF : value.color ^ ~alpha_bits;
}

// Two values of which no stored colour is both, and no depth.
Pixel_Value probing(const Pixel_Value& value, bool first, bool keeps_alpha) {
    Pixel_Value made = value;
    made.color = first ? 0x5AA5C33C : ~0x5AA5C33CU;
    made.color = keeps_alpha ? (made.color & ~alpha_bits) | (value.color & alpha_bits) : made.color;
    made.color &= value.kind == Pixel_Value::Kind::index ? 0xFF : 0xFFFFFFFF;
    made.depth = first ? 0x5AC3 : 0xA53C;
    return made;
}

bool is_depth_call(const Call& call) {
    const auto* const image = std::get_if<Placed_Image>(&call.arguments);
    return std::holds_alternative<Depth_Clear>(call.arguments) || std::holds_alternative<Depth_Write>(call.arguments) ||
           (image && image->image && image->image->format == Buffer_Format::depth16);
}

bool has_gaps(const Window_Fill* fill) {
    return fill && fill->fill.value_or(face_pattern::solid) != face_pattern::solid;
}

} // namespace

Call_Probe::Call_Probe(const Recording& recording, const Module_Choice& module, const Replay_Settings& settings,
                       std::int32_t first_row, std::int32_t last_row)
    : recording_(recording), scratch_(recording, module, settings, first_row, last_row), depth_write_(recording.zbuffer_write),
      depth_test_(recording.zbuffer_test) {
}

void Call_Probe::begin() {
    scratch_.begin();
}

void Call_Probe::set_up(std::size_t call) {
    const Arguments& arguments = recording_.calls[call].arguments;
    if (const auto* const write = std::get_if<ZBuffer_Write>(&arguments)) {
        depth_write_ = write->value;
    } else if (const auto* const test = std::get_if<ZBuffer_Test>(&arguments)) {
        depth_test_ = test->value;
    } else {
        opaque_materials_.clear(); // renditions are made anew
    }
    scratch_.make(call);
}

void Call_Probe::examine(std::size_t number, std::span<Probed_Pixel> pixels) {
    std::vector<std::uint32_t> in_question, unchanged;
    for (std::uint32_t i = 0; i < pixels.size(); ++i) {
        (pixels[i].before == pixels[i].after ? unchanged : in_question).push_back(i);
    }
    std::optional<Lifted_Call> call;
    if (!unchanged.empty()) {
        call.emplace(lifted(number));
        // A smoothed line stores an opaque alpha beside itself too, where it covers nothing.
        const bool is_smoothed = (call->rendition->line.flags & line_flag::smoothed) != 0;
        const std::vector<std::uint32_t> in_shape =
            touched(*call, call->arguments(), call->rendition, pixels, unchanged, is_smoothed);
        in_question.insert(in_question.end(), in_shape.begin(), in_shape.end());
    }
    if (in_question.empty()) {
        return;
    }
    const std::vector<std::uint32_t> untouched = find_drawn(number, pixels, in_question);
    if (!untouched.empty()) {
        find_refusals(*call, pixels, untouched);
    }
}

// By the call as it is, over the opposite colour. Returns the pixels that it leaves alone.
std::vector<std::uint32_t> Call_Probe::find_drawn(std::size_t number, std::span<Probed_Pixel> pixels,
                                                  const std::vector<std::uint32_t>& numbers) {
    const bool writes_depths = is_depth_call(recording_.calls[number]);
    for (const std::uint32_t i : numbers) {
        Pixel_Value other = pixels[i].before;
        other.color = opposite(other);
        other.depth = writes_depths ? static_cast<std::uint16_t>(~other.depth) : other.depth;
        scratch_.set(pixels[i].place, other);
    }
    scratch_.make(number);
    std::vector<std::uint32_t> untouched;
    for (const std::uint32_t i : numbers) {
        Probed_Pixel& pixel = pixels[i];
        const Pixel_Value drawn = scratch_.value(pixel.place);
        const bool stores_depth =
            writes_depths && drawn.has_depth && drawn.depth != static_cast<std::uint16_t>(~pixel.before.depth);
        pixel.writes_color = drawn.color != opposite(pixel.before) || pixel.before.color != pixel.after.color;
        if (pixel.before == pixel.after && !pixel.writes_color && !stores_depth) {
            untouched.push_back(i);
        } else {
            pixel.outcome = pixel.writes_color && drawn.color != pixel.after.color ? Outcome::blended : Outcome::drawn;
        }
    }
    return untouched;
}

VT_Reference<const VT_Basic_Material> Call_Probe::opaque_version(const VT_Reference<const VT_Basic_Material>& material) {
    if (!material) {
        return nullptr;
    }
    const auto [known, is_new] = opaque_materials_.try_emplace(material.get());
    if (is_new) {
        known->second = opaque(*material);
    }
    return known->second;
}

Call_Probe::Lifted_Call Call_Probe::lifted(std::size_t number) {
    const Call& call = recording_.calls[number];
    const VT_Reference<VT_Rendition> own = scratch_.replayer().rendition_of(number);
    Lifted_Call made{.number = number,
                     .own_arguments = call.arguments,
                     .own = own,
                     .rendition = new VT_Rendition(*own),
                     .writes_depths = is_depth_call(call)};
    VT_Rendition& rendition = *made.rendition;
    const auto note = [&made](std::uint8_t alpha) { made.has_alpha |= alpha != opaque_alpha; };
    for_each_alpha(call.arguments, note);
    for_each_own_alpha(*own, note);
    if (const auto material = opaque_version(own->face.material)) {
        rendition.face.material = material;
        made.has_alpha = true;
    }
    if (const auto types = own->line.line_types ? opaque(*own->line.line_types) : nullptr) {
        rendition.line.line_types = types;
        made.has_alpha = true;
    }
    if (made.has_alpha || std::holds_alternative<Window_Fill>(call.arguments)) {
        made.changed_arguments = call.arguments;
        const auto remove = [](std::uint8_t& alpha) { alpha = opaque_alpha; };
        for_each_alpha(*made.changed_arguments, remove);
        for_each_own_alpha(rendition, remove);
        if (auto* const fill = std::get_if<Window_Fill>(&*made.changed_arguments)) {
            fill->fill.reset();
        }
    }
    rendition.clip.hard_clip = scratch_.session().window();
    rendition.clip.complex_clip = nullptr;
    rendition.clip.depth_test = false;
    rendition.face.pattern = face_pattern::solid;
    rendition.face.flags &= ~(face_flag::opaque_pattern | face_flag::inverted_pattern);
    rendition.face.mode = rendition.line.mode = rendition.marker.mode = 0;
    if (has_rule(made, Rule::depth) || own->line.mode == merge_drawing_mode) {
        rendition.line.flags &= ~line_flag::smoothed; // the line is drawn unsmoothed, which is another shape
    }
    return made;
}

bool Call_Probe::has_rule(const Lifted_Call& call, Rule rule) const {
    const VT_Rendition& own = *call.own;
    const VT_Int_Rectangle& open = call.rendition->clip.hard_clip;
    switch (rule) {
    case Rule::clip:
        return common_part(own.clip.hard_clip, open) != open;
    case Rule::mask:
        return own.clip.complex_clip != nullptr;
    case Rule::pattern:
        return own.face.pattern != face_pattern::solid || own.face.flags != call.rendition->face.flags ||
               has_gaps(std::get_if<Window_Fill>(&call.own_arguments));
    case Rule::depth:
        return own.clip.depth_test && scratch_.has_depth() && !call.writes_depths;
    case Rule::alpha:
        return call.has_alpha;
    case Rule::mode:
        return own.face.mode != 0 || own.line.mode != 0 || own.marker.mode != 0;
    }
    return false;
}

std::vector<std::uint32_t> Call_Probe::touched(const Lifted_Call& call, const Arguments& arguments,
                                               const VT_Reference<VT_Rendition>& rendition, std::span<const Probed_Pixel> pixels,
                                               const std::vector<std::uint32_t>& numbers, bool keeps_alpha) {
    // No opaque colour is stored with the alpha of the first one.
    const bool one_is_enough = !keeps_alpha && !call.has_alpha && !call.writes_depths &&
                               !std::holds_alternative<Window_Fill>(call.own_arguments) &&
                               pixels[numbers.front()].before.kind == Pixel_Value::Kind::color;
    std::vector<std::uint32_t> found, remaining = numbers;
    for (const bool is_first : {true, false}) {
        const auto value_under = [&](const Probed_Pixel& pixel) {
            Pixel_Value value = probing(pixel.before, is_first, keeps_alpha);
            value.depth = call.writes_depths ? value.depth : pixel.before.depth;
            return value;
        };
        for (const std::uint32_t i : remaining) {
            scratch_.set(pixels[i].place, value_under(pixels[i]));
        }
        scratch_.replayer().draw_as(call.number, arguments, rendition);
        std::erase_if(remaining, [&](std::uint32_t i) {
            const Pixel_Value drawn = scratch_.value(pixels[i].place), under = value_under(pixels[i]);
            const bool is_touched =
                drawn.color != under.color || (call.writes_depths && drawn.has_depth && drawn.depth != under.depth);
            if (is_touched) {
                found.push_back(i);
            }
            return is_touched;
        });
        if (remaining.empty() || one_is_enough) {
            break;
        }
    }
    std::ranges::sort(found);
    return found;
}

std::vector<std::uint32_t> Call_Probe::touched_under(const Lifted_Call& call, Rule rule, std::span<const Probed_Pixel> pixels,
                                                     const std::vector<std::uint32_t>& numbers) {
    const VT_Reference<VT_Rendition> rendition(new VT_Rendition(*call.rendition));
    const VT_Rendition& own = *call.own;
    bool has_own_arguments = false;
    switch (rule) {
    case Rule::clip:
        rendition->clip.hard_clip = own.clip.hard_clip;
        break;
    case Rule::mask:
        rendition->clip.complex_clip = own.clip.complex_clip;
        break;
    case Rule::pattern:
        rendition->face.pattern = own.face.pattern;
        rendition->face.flags = own.face.flags;
        has_own_arguments = std::holds_alternative<Window_Fill>(call.own_arguments);
        break;
    case Rule::depth:
        rendition->clip.depth_test = true;
        break;
    case Rule::alpha:
        rendition->face.color = own.face.color;
        rendition->face.contrast_color = own.face.contrast_color;
        rendition->face.material = own.face.material;
        rendition->line.color = own.line.color;
        rendition->line.contrast_color = own.line.contrast_color;
        rendition->line.line_types = own.line.line_types;
        rendition->marker.color = own.marker.color;
        has_own_arguments = true;
        break;
    case Rule::mode:
        rendition->face.mode = own.face.mode;
        rendition->line.mode = own.line.mode;
        rendition->marker.mode = own.marker.mode;
        break;
    }
    return touched(call, has_own_arguments ? call.own_arguments : call.arguments(), rendition, pixels, numbers,
                   rule == Rule::alpha || rule == Rule::mode);
}

// Over the farthest depth, which everything passes whose depth has 16 bits.
void Call_Probe::find_shape_depths(const Lifted_Call& call, std::span<Probed_Pixel> pixels,
                                   const std::vector<std::uint32_t>& numbers) {
    for (const std::uint32_t i : numbers) {
        Pixel_Value value = pixels[i].before;
        value.depth = farthest_depth;
        scratch_.set(pixels[i].place, value);
    }
    const VT_Reference<VT_Rendition> rendition(new VT_Rendition(*call.rendition));
    rendition->clip.depth_test = true;
    Canvas& canvas = scratch_.session().canvas();
    canvas.set_depth_write(true);
    canvas.set_depth_test(Depth_Test::nearer_or_equal);
    scratch_.replayer().draw_as(call.number, call.arguments(), rendition);
    canvas.set_depth_write(depth_write_);
    canvas.set_depth_test(Depth_Test{depth_test_});
    for (const std::uint32_t i : numbers) {
        pixels[i].shape_depth = scratch_.value(pixels[i].place).depth;
    }
}

void Call_Probe::find_refusals(const Lifted_Call& call, std::span<Probed_Pixel> pixels,
                               const std::vector<std::uint32_t>& in_shape) {
    for (const std::uint32_t i : in_shape) {
        pixels[i].outcome = Outcome::refused;
    }
    for (int r = 0; r < rule_count; ++r) {
        const Rule rule{static_cast<std::uint8_t>(r)};
        if (!has_rule(call, rule)) {
            continue;
        }
        const std::vector<std::uint32_t> passed = touched_under(call, rule, pixels, in_shape);
        std::vector<std::uint32_t> refused;
        std::ranges::set_difference(in_shape, passed, std::back_inserter(refused));
        for (const std::uint32_t i : refused) {
            pixels[i].rules.add(rule);
        }
        if (rule == Rule::depth && !refused.empty()) {
            find_shape_depths(call, pixels, refused);
        }
    }
}

} // namespace vorna::drawing::recording
