// Draws the same calls with the model and with the renderer's kernel sets.
#include "tests/support/comparison.h"

#include <sstream>

#include "vorna/draw.h"

namespace {

std::string listed(const std::vector<std::string>& names) {
    std::string list = names.empty() ? " nothing of the host" : "";
    for (const std::string& name : names) {
        list += " " + name;
    }
    return list;
}

} // namespace

void draw(Test_Renderer& renderer, const Call& call) {
    VT_Renderer_Data& data = *renderer;
    const VT_Rendition& rendition = *call.rendition;
    renderer.set_z_write(call.z_write);
    renderer.set_z_test(call.z_test);
    const bool is_dc = !call.floating_points.empty();
    const VT_DCI_Point* const points = call.points.data();
    const VT_Point* const floating_points = call.floating_points.data();
    const VT_RGB32* const colors = call.colors.data();
    const auto count = static_cast<std::int32_t>(call.points.size());
    if (call.shape != Shape::strip) {
        const bool is_device = call.shape == Shape::device_line;
        if (call.kind == Call_Kind::flat) {
            is_device ? VD_Draw_DCI_Polyline(data, rendition, count, points)
                      : VD_Draw_2DI_Polyline(data, rendition, count, points);
        } else if (call.kind == Call_Kind::colorized) {
            is_device ? VD_Draw_DCI_Colorized_Polyline(data, rendition, count, points, colors, call.single_color)
                      : VD_Draw_2DI_Colorized_Polyline(data, rendition, count, points, colors, call.single_color);
        } else {
            is_device ? VD_Draw_DCI_Gouraud_Polyline(data, rendition, count, points, colors)
                      : VD_Draw_2DI_Gouraud_Polyline(data, rendition, count, points, colors);
        }
        return;
    }
    switch (call.kind) {
    case Call_Kind::dot:
        VD_Draw_DCI_Dot(data, rendition, points, call.colors.empty() ? nullptr : colors);
        break;
    case Call_Kind::marker:
        if (call.single_color || !call.colors.empty()) {
            VD_Draw_2DI_Colorized_Polymarker(data, rendition, count, points, call.colors.empty() ? nullptr : colors,
                                             call.single_color);
        } else {
            VD_Draw_2DI_Polymarker(data, rendition, count, points);
        }
        break;
    case Call_Kind::flat:
        is_dc ? VD_Draw_DC_Polytriangle(data, rendition, count, floating_points)
              : VD_Draw_DCI_Polytriangle(data, rendition, count, points);
        break;
    case Call_Kind::colorized:
        is_dc ? VD_Draw_DC_Colorized_Polytriangle(data, rendition, count, floating_points, colors, call.single_color)
              : VD_Draw_DCI_Colorized_Polytriangle(data, rendition, count, points, colors, call.single_color);
        break;
    case Call_Kind::gouraud:
        is_dc ? VD_Draw_DC_Gouraud_Polytriangle(data, rendition, count, floating_points, colors)
              : VD_Draw_DCI_Gouraud_Polytriangle(data, rendition, count, points, colors);
        break;
    case Call_Kind::draw_window:
        VD_Draw_Window(data, rendition);
        renderer.color().renew_padding();
        break;
    case Call_Kind::clear_depth:
        VD_Clear_Depth_Rectangle(data, rendition);
        if (renderer.depth()) {
            renderer.depth()->renew_padding();
        }
        break;
    }
}

model::Model::Handed_Over draw(model::Model& model, const Call& call) {
    const VT_Rendition& rendition = *call.rendition;
    model.z_write = call.z_write;
    model.z_test = call.z_test;
    if (call.shape != Shape::strip) {
        const model::Line_Kind kind = call.kind == Call_Kind::flat        ? model::Line_Kind::flat
                                      : call.kind == Call_Kind::colorized ? model::Line_Kind::colorized
                                                                          : model::Line_Kind::gouraud;
        const std::vector<VT_RGB32> line_color{rendition.line.color};
        const bool flat = call.kind == Call_Kind::flat;
        const auto strokes =
            model::strokes_between(call.points, flat ? line_color : call.colors, kind, flat || call.single_color);
        return call.shape == Shape::device_line ? model.draw_dci_polyline(rendition, kind, strokes)
                                                : model.draw_2di_polyline(rendition, kind, strokes);
    }
    switch (call.kind) {
    case Call_Kind::dot:
        return model.draw_dot(rendition, call.points[0], call.colors.empty() ? nullptr : call.colors.data());
    case Call_Kind::marker:
        return model.draw_polymarker(rendition, call.points, call.colors, call.single_color);
    case Call_Kind::flat:
        return model.draw_polytriangle(rendition, call.points);
    case Call_Kind::colorized:
        return model.draw_colorized_polytriangle(rendition, call.points, call.colors, call.single_color);
    case Call_Kind::gouraud:
        return model.draw_gouraud_polytriangle(rendition, call.points, call.colors);
    case Call_Kind::draw_window:
        return model.draw_window(rendition);
    case Call_Kind::clear_depth:
        model.clear_depth_rectangle(rendition);
        break;
    }
    return {};
}

Comparison::Comparison(const Renderer_Setup& setup) : model_(setup) {
    for (const std::string& kernels : available_kernel_sets()) {
        renderers_.push_back(std::make_unique<Test_Renderer>(setup, kernels));
    }
    // Equal in all renderers as far as dithering looks at them.
    for (std::int32_t row = 0; row < setup.size.y; ++row) {
        model_.row_addresses[static_cast<std::size_t>(row)] =
            reinterpret_cast<std::uintptr_t>(renderers_.front()->color().rows[row]);
    }
}

void Comparison::set_contents(const std::vector<std::uint32_t>& colors, const std::vector<std::uint16_t>& depths) {
    std::size_t i = 0;
    for (std::int32_t row = 0; row < model_.setup.size.y; ++row) {
        for (std::int32_t column = 0; column < model_.setup.size.x; ++column, ++i) {
            model_.color.at(column, row) = colors[i];
            model_.depth.at(column, row) = depths[i];
            for (const auto& renderer : renderers_) {
                renderer->color().set_pixel(column, row, colors[i]);
                if (renderer->depth()) {
                    renderer->depth()->set_pixel(column, row, depths[i]);
                }
            }
        }
    }
}

std::string Comparison::draw(const Call& call) {
    const std::vector<std::string> handed_over = ::draw(model_, call);
    for (std::size_t i = 0; i < renderers_.size(); ++i) {
        Test_Renderer& renderer = *renderers_[i];
        ::draw(renderer, call);
        const std::vector<std::string> seen = renderer.take_handed_over();
        std::string difference;
        if (seen != handed_over) {
            difference = "reached" + listed(seen) + " instead of" + listed(handed_over);
        } else {
            // What the host draws is its own affair; the model goes on from there.
            if (!handed_over.empty() && i == 0) {
                adopt(renderer);
            }
            difference = difference_from(renderer);
        }
        if (!difference.empty()) {
            return "kernel set " + available_kernel_sets()[i] + " " + difference;
        }
    }
    return {};
}

std::string Comparison::difference_from(Test_Renderer& renderer) const {
    const VT_Int_Pair size = model_.setup.size;
    const auto find = [&](const char* what, const Guarded_Buffer& buffer, const model::Plane& plane) -> std::string {
        for (std::int32_t row = 0; row < size.y; ++row) {
            for (std::int32_t column = 0; column < size.x; ++column) {
                if (buffer.pixel(column, row) != plane.at(column, row)) {
                    std::ostringstream out;
                    out << "has " << what << " 0x" << std::hex << buffer.pixel(column, row) << " instead of 0x"
                        << plane.at(column, row) << std::dec << " at column " << column << ", row " << row << " (device "
                        << column + model_.setup.origin.x << ", " << row + model_.setup.origin.y << ")";
                    return out.str();
                }
            }
        }
        return buffer.broken_guard();
    };
    std::string difference = find("colour", renderer.color(), model_.color);
    if (difference.empty() && renderer.depth()) {
        difference = find("depth", *renderer.depth(), model_.depth);
    }
    return difference;
}

void Comparison::adopt(Test_Renderer& renderer) {
    for (std::int32_t row = 0; row < model_.setup.size.y; ++row) {
        for (std::int32_t column = 0; column < model_.setup.size.x; ++column) {
            model_.color.at(column, row) = renderer.color().pixel(column, row);
            if (renderer.depth()) {
                model_.depth.at(column, row) = renderer.depth()->pixel(column, row);
            }
        }
    }
}
