// Shapes as bytes, on their way between two processes.
#include "drawing/map/packed_shapes.h"

namespace vorna::drawing::map {

void Shape_Packer::add(const std::string& text) {
    add(text.size());
    bytes_ += text;
}

void Shape_Packer::add(const Path& path) {
    add(path.size());
    bytes_.append(reinterpret_cast<const char*>(path.data()), path.size() * sizeof(Position));
}

void Shape_Packer::add(const Value& value) {
    add(static_cast<char>(value.index()));
    if (const auto* number = std::get_if<double>(&value)) {
        add(*number);
    } else if (const auto* text = std::get_if<std::string>(&value)) {
        add(*text);
    }
}

void Shape_Packer::add(const Shape& shape) {
    add(shape.layer);
    add(shape.faces.size());
    for (const Face& face : shape.faces) {
        add(face.size());
        for (const Path& ring : face) {
            add(ring);
        }
    }
    add(shape.lines.size());
    for (const Path& line : shape.lines) {
        add(line);
    }
    add(shape.points);
    add(shape.values.size());
    for (const Value& value : shape.values) {
        add(value);
    }
}

void Shape_Packer::add(const Layer_Facts& layer) {
    for (const std::string* text : {&layer.name, &layer.system, &layer.refusal}) {
        add(*text);
    }
    add(layer.fields.size());
    for (const Field_Facts& field : layer.fields) {
        add(field.name);
        add(field.type);
    }
}

std::string_view Shape_Unpacker::take(std::size_t count) {
    if (count > bytes_.size()) {
        throw Map_Error(file_ + ": expected a map: the library for its format has made none of it");
    }
    const std::string_view taken = bytes_.substr(0, count);
    bytes_.remove_prefix(count);
    return taken;
}

std::size_t Shape_Unpacker::count(std::size_t size) {
    const auto found = number<std::size_t>();
    return found <= bytes_.size() / size ? found : take(bytes_.size() + 1).size();
}

std::string Shape_Unpacker::text() {
    return std::string(take(count(1)));
}

Path Shape_Unpacker::path() {
    Path path(count(sizeof(Position)));
    const std::string_view bytes = take(path.size() * sizeof(Position));
    if (!path.empty()) {
        std::memcpy(path.data(), bytes.data(), bytes.size());
    }
    return path;
}

Value Shape_Unpacker::value() {
    const auto kind = number<char>();
    return kind == 1 ? Value(number<double>()) : kind == 2 ? Value(text()) : Value();
}

Shape Shape_Unpacker::shape() {
    constexpr std::size_t least_path = sizeof(std::size_t);
    Shape shape;
    shape.layer = number<std::uint32_t>();
    shape.faces.resize(count(least_path));
    for (Face& face : shape.faces) {
        face.resize(count(least_path));
        for (Path& ring : face) {
            ring = path();
        }
    }
    shape.lines.resize(count(least_path));
    for (Path& line : shape.lines) {
        line = path();
    }
    shape.points = path();
    shape.values.resize(count(1));
    for (Value& found : shape.values) {
        found = value();
    }
    return shape;
}

Layer_Facts Shape_Unpacker::layer() {
    Layer_Facts layer;
    for (std::string* found : {&layer.name, &layer.system, &layer.refusal}) {
        *found = text();
    }
    layer.fields.resize(count(2 * sizeof(std::size_t)));
    for (Field_Facts& field : layer.fields) {
        field.name = text();
        field.type = text();
    }
    return layer;
}

} // namespace vorna::drawing::map
