// One font of a file, with its letters' outlines: FreeType opens it, HarfBuzz shapes its texts.
#include "drawing/map/font_face.h"

#include <cstddef>
#include <stdexcept>

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

#include "drawing/files/input_file.h"
#include "drawing/files/setting_names.h"
#include "drawing/map/text_libraries.h"

namespace vorna::drawing::map {
namespace {

constexpr int curve_steps = 6;
constexpr std::uint64_t glyph_steps = 100;
constexpr std::size_t largest_font = std::size_t{128} << 20;

// Makes an outline into paths; curves become short lines.
struct Outline_Pen {
    Face& outline;
    double unit;

    Position place(const FT_Vector* v) const { return {static_cast<double>(v->x) * unit, static_cast<double>(v->y) * unit}; }
    static int move_to(const FT_Vector* to, void* pen) {
        auto& self = *static_cast<Outline_Pen*>(pen);
        self.outline.push_back({self.place(to)});
        return 0;
    }
    static int line_to(const FT_Vector* to, void* pen) {
        auto& self = *static_cast<Outline_Pen*>(pen);
        self.outline.back().push_back(self.place(to));
        return 0;
    }
    static int conic_to(const FT_Vector* control, const FT_Vector* to, void* pen) {
        auto& self = *static_cast<Outline_Pen*>(pen);
        const Position a = self.outline.back().back(), b = self.place(control), c = self.place(to);
        for (int i = 1; i <= curve_steps; ++i) {
            const double t = static_cast<double>(i) / curve_steps, u = 1 - t;
            self.outline.back().push_back(
                {u * u * a.x + 2 * u * t * b.x + t * t * c.x, u * u * a.y + 2 * u * t * b.y + t * t * c.y});
        }
        return 0;
    }
    static int cubic_to(const FT_Vector* first, const FT_Vector* second, const FT_Vector* to, void* pen) {
        auto& self = *static_cast<Outline_Pen*>(pen);
        const Position a = self.outline.back().back(), b = self.place(first), c = self.place(second), d = self.place(to);
        for (int i = 1; i <= curve_steps; ++i) {
            const double t = static_cast<double>(i) / curve_steps, u = 1 - t;
            const double p = u * u * u, q = 3 * u * u * t, r = 3 * u * t * t, s = t * t * t;
            self.outline.back().push_back({p * a.x + q * b.x + r * c.x + s * d.x, p * a.y + q * b.y + r * c.y + s * d.y});
        }
        return 0;
    }
};

} // namespace

// What the libraries hold of the font.
struct Font_Face::Library {
    FT_Library freetype = nullptr;
    FT_Face face = nullptr;
    const Harfbuzz* shaper = nullptr; // null: it does not know the font
    void* font = nullptr;
    void* buffer = nullptr;

    Library() {
        if (FT_Init_FreeType(&freetype) != 0) {
            throw std::runtime_error("FreeType cannot be used");
        }
    }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    ~Library() {
        if (shaper) {
            shaper->hb_buffer_destroy(buffer);
            shaper->hb_font_destroy(font);
        }
        FT_Done_FreeType(freetype); // and all its faces
    }
};

Font_Face::Font_Face(const std::string& file, int index, Load_Limits& limits)
    : bytes_(read_input(file, limits, largest_font)), library_(new Library) {
    Library& own = *library_;
    if (FT_New_Memory_Face(own.freetype, reinterpret_cast<const FT_Byte*>(bytes_.data()), static_cast<FT_Long>(bytes_.size()),
                           index, &own.face) != 0 ||
        !FT_IS_SCALABLE(own.face) || own.face->units_per_EM == 0) {
        throw Usage_Error(name_of(Setting::font) + ": expected a font with outlines, found none in " + file);
    }
    unit_ = 1.0 / own.face->units_per_EM;
    if (const Harfbuzz* library = FT_IS_SFNT(own.face) ? harfbuzz() : nullptr) {
        constexpr int read_only = 1;
        void* blob = library->hb_blob_create(bytes_.data(), static_cast<unsigned>(bytes_.size()), read_only, nullptr, nullptr);
        void* face = library->hb_face_create(blob, static_cast<unsigned>(index));
        library->hb_blob_destroy(blob);
        own.font = library->hb_font_create(face);
        library->hb_face_destroy(face);
        library->hb_ot_font_set_funcs(own.font);
        own.buffer = library->hb_buffer_create();
        own.shaper = library;
    }
}

Font_Face::~Font_Face() = default;

bool Font_Face::has(char32_t character) const {
    return FT_Get_Char_Index(library_->face, character) != 0;
}

void Font_Face::shape(const Text_Run& run, std::vector<Shaped_Glyph>& glyphs) const {
    const Harfbuzz* shaper = library_->shaper;
    if (!shaper) {
        shape_simply(run, glyphs);
        return;
    }
    constexpr int rightwards = 4, leftwards = 5;
    void* buffer = library_->buffer;
    shaper->hb_buffer_reset(buffer);
    shaper->hb_buffer_add_utf32(buffer, run.text.data(), static_cast<int>(run.text.size()), static_cast<unsigned>(run.first),
                                static_cast<int>(run.count));
    shaper->hb_buffer_set_direction(buffer, run.leftwards ? leftwards : rightwards);
    shaper->hb_buffer_set_script(buffer, run.script);
    shaper->hb_buffer_set_language(buffer, shaper->hb_language_from_string("und", -1)); // not the environment's
    shaper->hb_shape(library_->font, buffer, nullptr, 0);
    unsigned count = 0;
    const Glyph_Info* infos = shaper->hb_buffer_get_glyph_infos(buffer, &count);
    const Glyph_Position* positions = shaper->hb_buffer_get_glyph_positions(buffer, &count);
    for (unsigned i = 0; i < count; ++i) {
        glyphs.push_back({infos[i].glyph,
                          infos[i].cluster,
                          {positions[i].x_offset * unit_, positions[i].y_offset * unit_},
                          positions[i].x_advance * unit_});
    }
}

void Font_Face::shape_simply(const Text_Run& run, std::vector<Shaped_Glyph>& glyphs) const {
    const FT_Face face = library_->face;
    FT_UInt before = 0;
    for (std::size_t i = 0; i < run.count; ++i) {
        const std::size_t at = run.leftwards ? run.first + run.count - 1 - i : run.first + i;
        const FT_UInt glyph = FT_Get_Char_Index(face, run.text[at]);
        FT_Vector kerning{0, 0};
        if (glyph == 0 || FT_Load_Glyph(face, glyph, FT_LOAD_NO_SCALE) != 0) {
            continue;
        }
        if (before != 0 && FT_Get_Kerning(face, before, glyph, FT_KERNING_UNSCALED, &kerning) == 0) {
            glyphs.back().advance += static_cast<double>(kerning.x) * unit_;
        }
        before = glyph;
        glyphs.push_back({glyph, static_cast<std::uint32_t>(at), {}, static_cast<double>(face->glyph->advance.x) * unit_});
    }
}

const Face& Font_Face::outline(std::uint32_t glyph, const std::string& file, Load_Limits& limits) {
    const auto [found, is_new] = outlines_.try_emplace(glyph);
    if (is_new && FT_Load_Glyph(library_->face, glyph, FT_LOAD_NO_SCALE) == 0) {
        constexpr FT_Outline_Funcs pen_functions{
            Outline_Pen::move_to, Outline_Pen::line_to, Outline_Pen::conic_to, Outline_Pen::cubic_to, 0, 0};
        FT_Outline& outline = library_->face->glyph->outline;
        limits.take_work(file, glyph_steps);
        limits.take_memory(file, sizeof(Position) * curve_steps * static_cast<std::uint64_t>(outline.n_points));
        Outline_Pen pen{found->second, unit_};
        FT_Outline_Decompose(&outline, &pen_functions, &pen);
    }
    return found->second;
}

} // namespace vorna::drawing::map
