// The materials of an OBJ model, from the libraries that it names.
#include "drawing/model/obj_materials.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "drawing/files/text_encoding.h"
#include "drawing/model/model_reader.h"

namespace vorna::drawing::model {
namespace {

// Up to three finite numbers; what follows is left alone, so that other ways to state a value do no harm.
std::size_t read_numbers(Text_Cursor& cursor, std::array<float, 3>& into) {
    for (std::size_t i = 0; i < into.size(); ++i) {
        Text_Cursor ahead = cursor;
        const std::string_view word = ahead.word();
        float value = 0;
        const auto [stop, error] = std::from_chars(word.data(), word.data() + word.size(), value);
        if (error != std::errc{} || stop != word.data() + word.size() || !std::isfinite(value)) {
            return i;
        }
        cursor = ahead;
        into[i] = value;
    }
    return into.size();
}

// One number stands for all channels.
std::optional<std::array<float, 3>> read_color(Text_Cursor& cursor) {
    std::array<float, 3> color{};
    const std::size_t count = read_numbers(cursor, color);
    if (count == 1) {
        color[1] = color[2] = color[0];
    }
    return count == 1 || count == 3 ? std::optional(color) : std::nullopt;
}

std::optional<float> read_number(Text_Cursor& cursor) {
    std::array<float, 3> numbers{};
    return read_numbers(cursor, numbers) > 0 ? std::optional(numbers[0]) : std::nullopt;
}

// Names may hold "#" themselves, so that the whole of a line's end is tried first.
std::string_view without_comment(std::string_view name) {
    const std::size_t comment = std::min(name.find(" #"), name.find("\t#"));
    const std::string_view before = name.substr(0, comment);
    return before.substr(0, before.find_last_not_of(" \t") + 1);
}

bool has_library_suffix(std::string_view name) {
    constexpr std::string_view suffix = ".mtl";
    return name.size() > suffix.size() && is_keyword(name.substr(name.size() - suffix.size()), suffix);
}

std::uint8_t channel(float value) {
    return static_cast<std::uint8_t>(std::clamp(value, 0.0F, 1.0F) * 255.0F + 0.5F);
}

} // namespace

// A name ends where a file of that name is there, or with the libraries' suffix.
void Obj_Materials::read_libraries(std::string_view names) {
    constexpr std::size_t longest_name = 4096;
    if (lists_.contains(names)) {
        return; // a short file can name long libraries as often as it likes
    }
    lists_.emplace(names);
    if (const auto whole = files_.find(model_, std::string(names))) {
        read_library(*whole);
        return;
    }
    std::string name;
    Text_Cursor cursor(model_, names);
    for (std::string_view word = cursor.word(); !word.empty() && word[0] != '#' && name.size() <= longest_name;
         word = cursor.word()) {
        name.append(name.empty() ? "" : " ").append(word);
        const auto found = files_.find(model_, name);
        if (found || has_library_suffix(name)) {
            read_library(found ? *found : files_.path(model_, name));
            name.clear();
        }
    }
    if (!name.empty()) {
        read_library(files_.path(model_, name));
    }
}

void Obj_Materials::read_library(const std::string& library) {
    if (!libraries_.insert(library).second) {
        return;
    }
    const std::size_t first = materials_.size();
    try {
        std::string content = read_reference(model_, library, limits_);
        if (is_utf16(content)) {
            limits_.take_memory(library, content.size() / 2 * 3);
            content = utf8_from_utf16(content);
        }
        read_materials(library, without_byte_order_mark(content));
    } catch (const Model_Error& error) {
        mesh_.warnings.push_back(error.what());
    }
    for (std::size_t m = first; m < materials_.size(); ++m) {
        materials_[m].material.finish = materials_[m].finish();
    }
}

// The first of the lines that cannot be read stands for all.
void Obj_Materials::read_materials(const std::string& library, std::string_view content) {
    std::string problem;
    std::size_t others = 0;
    bool is_begun = false;
    for (Text_Cursor cursor(library, content); !cursor.at_end(); cursor.next_line()) {
        const std::string_view keyword = cursor.word();
        if (keyword == "newmtl") {
            add(cursor.rest_of_line());
            is_begun = true;
        } else if (is_begun) {
            try {
                read_property(library, cursor, keyword, materials_.back());
            } catch (const Model_Error& error) {
                if (problem.empty()) {
                    problem = error.what();
                } else {
                    ++others;
                }
            }
        }
    }
    if (!problem.empty()) {
        const std::string more = others > 0 ? " and " + std::to_string(others) + " more" : "";
        mesh_.warnings.push_back(problem + "; this line" + more + " left out");
    }
}

void Obj_Materials::add(std::string_view name) {
    const auto number = static_cast<std::uint32_t>(materials_.size());
    materials_.emplace_back();
    numbers_[std::string(name)] = number;
    numbers_.try_emplace(std::string(without_comment(name)), number);
}

std::uint32_t Obj_Materials::find(std::string_view name) const {
    auto found = numbers_.find(name);
    if (found == numbers_.end()) {
        found = numbers_.find(without_comment(name));
    }
    return found == numbers_.end() ? no_material : found->second;
}

void Obj_Materials::read_property(const std::string& library, Text_Cursor& cursor, std::string_view keyword, Entry& into) {
    const auto read_vector = [&cursor] {
        std::array<float, 3> vector{};
        std::ranges::generate(vector, [&cursor] { return cursor.number("a colour channel"); });
        return vector;
    };
    if (keyword == "Kd") {
        into.phong.diffuse = read_vector();
        into.has_color = true;
    } else if (keyword == "Ks") {
        into.phong.specular = read_color(cursor);
    } else if (keyword == "Ke") {
        into.phong.emission = read_color(cursor).value_or(into.phong.emission);
    } else if (keyword == "Ns") {
        into.phong.exponent = read_number(cursor);
    } else if (keyword == "Pm") {
        into.metal = read_number(cursor);
    } else if (keyword == "Pr") {
        into.roughness = read_number(cursor);
    } else if (keyword == "illum") {
        into.illumination = static_cast<int>(std::clamp(read_number(cursor).value_or(2), 0.0F, 10.0F));
    } else if (keyword == "d") {
        into.material.opacity = shown_opacity(cursor.number("an opacity"));
    } else if (keyword == "Tr") {
        into.material.opacity = shown_opacity(1 - cursor.number("a transparency"));
    } else if (keyword == "map_Kd") {
        read_map(library, cursor, into, into.material.image);
    } else if (keyword == "map_Ke") {
        read_map(library, cursor, into, into.material.images.emission);
    } else if (keyword == "map_Pm") {
        read_map(library, cursor, into, into.material.images.metal);
    } else if (keyword == "map_Pr") {
        read_map(library, cursor, into, into.material.images.roughness);
    } else if (keyword == "map_d") {
        read_map(library, cursor, into, into.material.images.opacity);
    }
}

// Options, then the image's name, which may hold blanks.
void Obj_Materials::read_map(const std::string& library, Text_Cursor& cursor, Entry& into, std::uint32_t& image) {
    const bool is_color = &image == &into.material.image;
    for (;;) {
        cursor.skip_blanks();
        Text_Cursor ahead = cursor;
        const std::string_view option = ahead.word();
        if (option.size() < 2 || option[0] != '-') {
            break;
        }
        cursor = ahead;
        if (option == "-clamp") {
            if (cursor.word() == "on" && is_color) {
                into.material.wrap_u = into.material.wrap_v = Wrap::clamp;
            }
        } else if (option == "-s" || option == "-o" || option == "-t") {
            std::array<float, 2>* const pair = option == "-s" ? &into.scale : option == "-o" ? &into.shift : nullptr;
            std::array<float, 3> numbers{};
            const std::size_t count = read_numbers(cursor, numbers);
            if (pair && is_color) {
                std::copy_n(numbers.begin(), std::min(count, pair->size()), pair->begin());
            }
        } else {
            cursor.word();
            if (option == "-mm") {
                cursor.word();
            }
        }
    }
    if (const std::string_view name = cursor.rest_of_line(); !name.empty()) {
        limits_.take_work(model_, mesh_.images.size());
        const auto whole = files_.find(library, std::string(name));
        const std::string path = whole ? *whole : files_.path(library, std::string(without_comment(name)));
        image = image_number(mesh_, path, model_);
    }
}

Finish Obj_Materials::Entry::finish() {
    constexpr float usual_roughness = 0.5F;
    Phong shown = phong;
    if (illumination <= 1) {
        shown.specular = std::array<float, 3>{};
    }
    if (material.image != no_image || !has_color) {
        shown.diffuse = {1, 1, 1}; // the image or the default colour
    }
    Finish finish = finish_of(shown);
    const Surface_Images& images = material.images;
    if (images.emission != no_image) {
        // Black beside an image stands for nothing said, as for colours.
        const bool is_black = finish.emission == std::array<float, 3>{};
        material.emission = is_black ? std::array{1.0F, 1.0F, 1.0F} : finish.emission;
        finish.emission = {};
    }
    const bool has_images = images.metal != no_image || images.roughness != no_image;
    if (metal || roughness || has_images) {
        const std::array<float, 3> emission = finish.emission;
        material.metal = metal.value_or(images.metal != no_image ? 1.0F : 0.0F);
        material.roughness = roughness.value_or(images.roughness != no_image ? 1.0F : usual_roughness);
        finish = finish_of_metal(images.metal != no_image ? 0 : material.metal,
                                 images.roughness != no_image ? usual_roughness : material.roughness);
        finish.emission = emission;
    } else if (has_color && material.image == no_image) {
        phong.diffuse = shown.diffuse;
    }
    return finish;
}

// Black under an image stands for no colour: exporters write it, and the image would not show.
VT_RGB32 Obj_Materials::color_of(std::uint32_t material) const {
    constexpr VT_RGB32 black{0, 0, 0, 255}, unknown{0, 0, 0, 0};
    if (material == no_material || !materials_[material].has_color) {
        return unknown;
    }
    const auto& [red, green, blue] = materials_[material].phong.diffuse;
    const VT_RGB32 color{channel(blue), channel(green), channel(red), 255};
    return materials_[material].material.image != no_image && color == black ? unknown : color;
}

Texture_Point Obj_Materials::mapped(const Texture_Point& given, std::uint32_t material) const {
    const Entry& known = materials_[material];
    return {given.u * known.scale[0] + known.shift[0], given.v * known.scale[1] + known.shift[1]};
}

void Obj_Materials::finish() const {
    for (const Entry& known : materials_) {
        mesh_.materials.push_back(known.material);
    }
}

} // namespace vorna::drawing::model
