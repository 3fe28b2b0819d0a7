// Labels by FreeType.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <string_view>
#include <system_error>

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

#include "drawing/files/path.h"
#include "drawing/files/setting_names.h"
#include "drawing/map/label_font.h"

namespace vorna::drawing::map {
namespace {

// In the package fonts-dejavu-core.
constexpr const char* default_font = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
constexpr double unit = 1.0 / 64; // of FreeType's coordinates, in pixels
constexpr int curve_steps = 6;

// Removes the next character; 0 for invalid UTF-8.
std::uint32_t next_character(std::string_view& text) {
    const auto first = static_cast<unsigned char>(text.front());
    text.remove_prefix(1);
    const int more = first < 0x80 ? 0 : first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : first >= 0xC0 ? 1 : -1;
    if (more < 0) {
        return 0;
    }
    std::uint32_t character = more == 0 ? first : first & (0x3FU >> more);
    for (int i = 0; i < more; ++i) {
        if (text.empty() || (static_cast<unsigned char>(text.front()) & 0xC0) != 0x80) {
            return 0;
        }
        character = character << 6 | (static_cast<unsigned char>(text.front()) & 0x3F);
        text.remove_prefix(1);
    }
    return character;
}

// Makes an outline into paths; curves become short lines.
struct Pen {
    Face& outline;
    double shift;

    Position place(const FT_Vector* v) const {
        return {static_cast<double>(v->x) * unit + shift, static_cast<double>(v->y) * unit};
    }
    static int move_to(const FT_Vector* to, void* pen) {
        auto& self = *static_cast<Pen*>(pen);
        self.outline.push_back({self.place(to)});
        return 0;
    }
    static int line_to(const FT_Vector* to, void* pen) {
        auto& self = *static_cast<Pen*>(pen);
        self.outline.back().push_back(self.place(to));
        return 0;
    }
    static int conic_to(const FT_Vector* control, const FT_Vector* to, void* pen) {
        auto& self = *static_cast<Pen*>(pen);
        const Position a = self.outline.back().back(), b = self.place(control), c = self.place(to);
        for (int i = 1; i <= curve_steps; ++i) {
            const double t = static_cast<double>(i) / curve_steps, u = 1 - t;
            self.outline.back().push_back(
                {u * u * a.x + 2 * u * t * b.x + t * t * c.x, u * u * a.y + 2 * u * t * b.y + t * t * c.y});
        }
        return 0;
    }
    static int cubic_to(const FT_Vector* first, const FT_Vector* second, const FT_Vector* to, void* pen) {
        auto& self = *static_cast<Pen*>(pen);
        const Position a = self.outline.back().back(), b = self.place(first), c = self.place(second), d = self.place(to);
        for (int i = 1; i <= curve_steps; ++i) {
            const double t = static_cast<double>(i) / curve_steps, u = 1 - t;
            const double p = u * u * u, q = 3 * u * u * t, r = 3 * u * t * t, s = t * t * t;
            self.outline.back().push_back({p * a.x + q * b.x + r * c.x + s * d.x, p * a.y + q * b.y + r * c.y + s * d.y});
        }
        return 0;
    }
};

class Freetype_Font final : public Label_Font {
public:
    Freetype_Font(const std::string& file, int size) {
        const std::string name = file.empty() ? default_font : file;
        if (std::error_code error; !std::filesystem::exists(path_of(name), error)) {
            throw Usage_Error(name_of(Setting::font) + ": " + name + ": cannot be read: No such file or directory");
        }
        if (FT_Init_FreeType(&library_) != 0) {
            throw std::runtime_error("FreeType cannot be used");
        }
        if (FT_New_Face(library_, name.c_str(), 0, &face_) != 0 || !FT_IS_SCALABLE(face_) ||
            FT_Set_Pixel_Sizes(face_, 0, static_cast<FT_UInt>(size)) != 0) {
            FT_Done_FreeType(library_); // and all its faces
            throw Usage_Error(name_of(Setting::font) + ": expected a font with outlines, found none in " + name);
        }
    }
    Freetype_Font(const Freetype_Font&) = delete;
    Freetype_Font& operator=(const Freetype_Font&) = delete;
    ~Freetype_Font() override { FT_Done_FreeType(library_); }

    Text text_of(const std::string& text, double most_width, const std::string& file, Load_Limits& limits) const override {
        constexpr std::uint64_t character_steps = 20, glyph_steps = 100;
        constexpr FT_Outline_Funcs pen_functions{Pen::move_to, Pen::line_to, Pen::conic_to, Pen::cubic_to, 0, 0};
        Text result{{}, 0};
        FT_UInt before = 0;
        for (std::string_view rest = text; !rest.empty() && result.width <= most_width;) {
            limits.take_work(file, character_steps);
            const std::uint32_t character = next_character(rest);
            const FT_UInt glyph = character ? FT_Get_Char_Index(face_, character) : 0;
            FT_Vector kerning{0, 0};
            // Hinting for two-colour images fits outlines to whole pixels.
            if (glyph == 0 || FT_Load_Glyph(face_, glyph, FT_LOAD_TARGET_MONO | FT_LOAD_NO_BITMAP) != 0) {
                continue;
            }
            if (before != 0 && FT_Get_Kerning(face_, before, glyph, FT_KERNING_DEFAULT, &kerning) == 0) {
                result.width += static_cast<double>(kerning.x) * unit;
            }
            before = glyph;
            limits.take_work(file, glyph_steps);
            limits.take_memory(file, sizeof(Position) * curve_steps * static_cast<std::uint64_t>(face_->glyph->outline.n_points));
            Pen pen{result.outline, result.width};
            FT_Outline_Decompose(&face_->glyph->outline, &pen_functions, &pen);
            result.width += static_cast<double>(face_->glyph->advance.x) * unit;
        }
        return result;
    }

    double height() const override {
        double top = 0;
        Load_Limits limits;
        for (const Path& ring : text_of("H", INFINITY, "H", limits).outline) {
            std::ranges::for_each(ring, [&](Position p) { top = std::max(top, p.y); });
        }
        return top;
    }

private:
    FT_Library library_ = nullptr;
    FT_Face face_ = nullptr;
};

} // namespace

std::unique_ptr<Label_Font> load_label_font(const std::string& file, int size) {
    return std::make_unique<Freetype_Font>(file, size);
}

} // namespace vorna::drawing::map
