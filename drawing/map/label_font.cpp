// Texts as letters: fonts and their fallbacks, directions and shaping.
#include "drawing/map/label_font.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <new>
#include <optional>
#include <span>
#include <string_view>
#include <system_error>
#include <unordered_map>

#include "drawing/files/path.h"
#include "drawing/files/setting_names.h"
#include "drawing/map/font_face.h"
#include "drawing/map/text_libraries.h"

namespace vorna::drawing::map {
namespace {

// In the package fonts-dejavu-core.
constexpr const char* default_font = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
constexpr std::size_t most_fonts = 16;

// Removes the next character; 0 for invalid UTF-8.
char32_t next_character(std::string_view& text) {
    const auto first = static_cast<unsigned char>(text.front());
    text.remove_prefix(1);
    const int more = first < 0x80 ? 0 : first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : first >= 0xC0 ? 1 : -1;
    if (more < 0) {
        return 0;
    }
    char32_t character = more == 0 ? first : first & (0x3FU >> more);
    for (int i = 0; i < more; ++i) {
        if (text.empty() || (static_cast<unsigned char>(text.front()) & 0xC0) != 0x80) {
            return 0;
        }
        character = character << 6 | (static_cast<unsigned char>(text.front()) & 0x3F);
        text.remove_prefix(1);
    }
    return character;
}

std::u32string characters_of(const std::string& text) {
    std::u32string characters;
    for (std::string_view rest = text; !rest.empty() && characters.size() < Label_Font::longest_text;) {
        if (const char32_t c = next_character(rest); c != 0 && c <= 0x10FFFF) {
            characters += c < ' ' || c == 0x7F ? U' ' : c;
        }
    }
    return characters;
}

bool in_ranges(char32_t c, std::span<const std::array<char32_t, 2>> ranges) {
    return std::ranges::any_of(ranges, [c](const auto& range) { return range[0] <= c && c <= range[1]; });
}

// Letters that are written from right to left, and marks that change directions.
bool may_be_leftward(char32_t c) {
    static constexpr std::array<char32_t, 2> ranges[]{{0x590, 0x8FF},   {0x200E, 0x200F}, {0x202A, 0x202E},   {0x2066, 0x2069},
                                                      {0xFB1D, 0xFDFF}, {0xFE70, 0xFEFF}, {0x10800, 0x10FFF}, {0x1E800, 0x1EFFF}};
    return in_ranges(c, ranges);
}

// Scripts whose letters stand side by side as they are.
bool needs_shaping(char32_t c) {
    static constexpr std::array<char32_t, 2> ranges[]{
        {0, 0x2FF},       {0x370, 0x482},   {0x48A, 0x58F},   {0x10A0, 0x10FF},   {0x1D00, 0x1DBF},  {0x1E00, 0x20CF},
        {0x2100, 0x2DDF}, {0x2E00, 0x3029}, {0x3030, 0x3098}, {0x309B, 0xA4CF},   {0xA640, 0xA66E},  {0xA700, 0xA7FF},
        {0xAC00, 0xD7A3}, {0xF900, 0xFB1C}, {0xFF00, 0xFFEF}, {0x1F000, 0x1FAFF}, {0x20000, 0x3FFFF}};
    return !in_ranges(c, ranges);
}

// Joiners, marks of direction and the like, which have no shape of their own.
bool is_invisible(char32_t c) {
    static constexpr std::array<char32_t, 2> ranges[]{{0xAD, 0xAD},     {0x200B, 0x200F}, {0x2028, 0x202E},  {0x2060, 0x206F},
                                                      {0xFE00, 0xFE0F}, {0xFEFF, 0xFEFF}, {0xE0000, 0xE0FFF}};
    return in_ranges(c, ranges);
}

struct Font_Place {
    std::string file, family;
    int index = 0;
};

// What fontconfig finds for the pattern, which ends here.
std::optional<Font_Place> matched(const Fontconfig& library, void* pattern) {
    // The languages of the environment make no difference.
    library.FcPatternAddString(pattern, "lang", reinterpret_cast<const unsigned char*>("en"));
    library.FcPatternAddBool(pattern, "scalable", 1);
    library.FcConfigSubstitute(nullptr, pattern, 0);
    library.FcDefaultSubstitute(pattern);
    int outcome = 0;
    void* match = library.FcFontMatch(nullptr, pattern, &outcome);
    library.FcPatternDestroy(pattern);
    std::optional<Font_Place> place;
    unsigned char *file = nullptr, *family = nullptr;
    if (match && library.FcPatternGetString(match, "file", 0, &file) == 0) {
        place.emplace().file = reinterpret_cast<const char*>(file);
        library.FcPatternGetInteger(match, "index", 0, &place->index);
        if (library.FcPatternGetString(match, "family", 0, &family) == 0) {
            place->family = reinterpret_cast<const char*>(family);
        }
    }
    if (match) {
        library.FcPatternDestroy(match);
    }
    return place;
}

bool is_file(const std::string& name) {
    std::error_code error;
    return std::filesystem::exists(path_of(name), error);
}

// Fontconfig always finds some font: one of another family is not what was asked for.
Font_Place place_of(const std::string& name) {
    if (name.empty() ? is_file(default_font) : is_file(name)) {
        return {name.empty() ? default_font : name, "", 0};
    }
    const std::string family = name.empty() ? "DejaVu Sans" : name.substr(0, name.find(':'));
    if (const Fontconfig* library = name.find('/') == name.npos ? fontconfig() : nullptr) {
        const std::string pattern = name.empty() ? family : name;
        if (void* parsed = library->FcNameParse(reinterpret_cast<const unsigned char*>(pattern.c_str()))) {
            const auto place = matched(*library, parsed);
            if (place && (name.empty() || place->family == family)) {
                return *place;
            }
        }
    }
    throw Usage_Error(name_of(Setting::font) + ": " + (name.empty() ? default_font : name) +
                      ": cannot be read: No such file or directory" +
                      (name.empty() ? "; it is in the package fonts-dejavu-core" : ""));
}

class Font_With_Fallbacks final : public Label_Font {
public:
    Font_With_Fallbacks(const std::string& name, Load_Limits& limits) {
        const Font_Place place = place_of(name);
        fonts_.push_back(std::make_unique<Font_Face>(place.file, place.index, limits));
        if (fonts_[0]->has(U'H')) {
            std::vector<Shaped_Glyph> glyphs;
            fonts_[0]->shape({U"H", 0, 1, latin, false}, glyphs);
            for (const Path& ring : fonts_[0]->outline(glyphs.at(0).glyph, place.file, limits)) {
                std::ranges::for_each(ring, [&](Position p) { height_ = std::max(height_, p.y); });
            }
        }
    }

    Text text_of(const std::string& text, double size, double most_width, const std::string& file, Load_Limits& limits) override;
    void note(const std::string& text, Load_Limits& limits) override;
    double height() const override { return height_ > 0 ? height_ : usual_height; }
    std::vector<std::string> warnings() const override;

private:
    static constexpr std::uint32_t latin = 0x4C61746E; // "Latn", as HarfBuzz numbers it
    static constexpr double usual_height = 0.7;
    static constexpr std::size_t none = SIZE_MAX;

    // Characters with what decides which run they belong to.
    struct Characters {
        std::u32string text;
        std::vector<std::size_t> fonts;
        std::vector<std::uint32_t> scripts;
        std::vector<std::int8_t> levels; // odd: from right to left
    };

    std::size_t font_for(char32_t c, std::size_t before, Load_Limits& limits);
    std::size_t fallback_for(char32_t c, Load_Limits& limits);
    Characters characters_with_fonts(const std::string& text, Load_Limits& limits);
    void find_levels(Characters& characters);

    std::vector<std::unique_ptr<Font_Face>> fonts_; // the first is the given one
    std::vector<Font_Place> fallbacks_;             // of the others
    std::unordered_map<char32_t, std::size_t> fallback_of_;
    double height_ = 0;
    std::vector<bool> noted_; // by character
    std::u32string unshown_;
    bool lacks_fontconfig_ = false, lacks_fribidi_ = false, lacks_harfbuzz_ = false;
};

// Characters without a shape, and those that the font before has where the first one lacks them, stay with that font.
std::size_t Font_With_Fallbacks::font_for(char32_t c, std::size_t before, Load_Limits& limits) {
    if (is_invisible(c)) {
        return before;
    }
    if (fonts_[0]->has(c)) {
        return 0;
    }
    if (before < fonts_.size() && fonts_[before]->has(c)) {
        return before;
    }
    const auto [found, is_new] = fallback_of_.try_emplace(c, none);
    if (is_new) {
        found->second = fallback_for(c, limits);
        if (found->second == none) {
            unshown_ += c;
        }
    }
    return found->second;
}

std::size_t Font_With_Fallbacks::fallback_for(char32_t c, Load_Limits& limits) {
    const Fontconfig* library = fontconfig();
    if (!library) {
        lacks_fontconfig_ = true;
        return none;
    }
    void* set = library->FcCharSetCreate();
    library->FcCharSetAddChar(set, c);
    void* pattern = library->FcPatternCreate();
    library->FcPatternAddString(pattern, "family", reinterpret_cast<const unsigned char*>("sans-serif"));
    library->FcPatternAddCharSet(pattern, "charset", set);
    library->FcCharSetDestroy(set);
    const std::optional<Font_Place> place = matched(*library, pattern);
    if (!place) {
        return none;
    }
    const auto same = [&](const Font_Place& known) { return known.file == place->file && known.index == place->index; };
    const auto known = std::ranges::find_if(fallbacks_, same);
    std::size_t number = 1 + static_cast<std::size_t>(known - fallbacks_.begin());
    if (known == fallbacks_.end()) {
        if (fonts_.size() >= most_fonts) {
            return none;
        }
        try {
            fonts_.push_back(std::make_unique<Font_Face>(place->file, place->index, limits));
        } catch (const Load_Error&) {
            throw;
        } catch (const Usage_Error&) {
            return none; // a font of the system that is damaged is as good as none
        }
        fallbacks_.push_back(*place);
        number = fonts_.size() - 1;
    }
    return fonts_[number]->has(c) ? number : none;
}

void Font_With_Fallbacks::note(const std::string& text, Load_Limits& limits) {
    noted_.resize(0x110000);
    for (const char32_t c : characters_of(text)) {
        if (!noted_[c]) {
            noted_[c] = true;
            font_for(c, 0, limits);
            lacks_harfbuzz_ = lacks_harfbuzz_ || (needs_shaping(c) && !harfbuzz());
            lacks_fribidi_ = lacks_fribidi_ || (may_be_leftward(c) && !fribidi());
        }
    }
}

Font_With_Fallbacks::Characters Font_With_Fallbacks::characters_with_fonts(const std::string& text, Load_Limits& limits) {
    Characters result;
    const Harfbuzz* shaper = harfbuzz();
    void* unicode = shaper ? shaper->hb_unicode_funcs_get_default() : nullptr;
    constexpr std::uint32_t common = 0x5A797979, inherited = 0x5A696E68; // "Zyyy" and "Zinh"
    std::size_t before = 0;
    for (const char32_t c : characters_of(text)) {
        const std::size_t font = font_for(c, before, limits);
        if (font == none) {
            continue;
        }
        before = font;
        result.text += c;
        result.fonts.push_back(font);
        std::uint32_t script = shaper ? shaper->hb_unicode_script(unicode, c) : latin;
        // Signs of all scripts belong to the letters before them, at the start to those after them.
        if (script == common || script == inherited) {
            script = result.scripts.empty() ? common : result.scripts.back();
        } else if (!result.scripts.empty() && result.scripts.back() == common) {
            std::ranges::fill(result.scripts, script);
        }
        result.scripts.push_back(script);
    }
    return result;
}

void Font_With_Fallbacks::find_levels(Characters& characters) {
    characters.levels.assign(characters.text.size(), 0);
    if (std::ranges::none_of(characters.text, may_be_leftward)) {
        return;
    }
    const Fribidi* library = fribidi();
    constexpr std::uint32_t by_first_letter = 0x40;
    std::uint32_t base = by_first_letter;
    if (library && library->fribidi_log2vis(characters.text.data(), static_cast<int>(characters.text.size()), &base, nullptr,
                                            nullptr, nullptr, characters.levels.data()) == 0) {
        throw std::bad_alloc();
    }
}

Text Font_With_Fallbacks::text_of(const std::string& text, double size, double most_width, const std::string& file,
                                  Load_Limits& limits) {
    constexpr std::uint64_t character_steps = 50;
    limits.take_work(file, character_steps * std::min(text.size(), longest_text));
    Characters characters = characters_with_fonts(text, limits);
    find_levels(characters);
    struct Run {
        std::size_t first, count;
        std::int8_t level;
    };
    std::vector<Run> runs;
    for (std::size_t i = 0; i < characters.text.size(); ++i) {
        const bool goes_on = i > 0 && characters.fonts[i] == characters.fonts[i - 1] &&
                             characters.scripts[i] == characters.scripts[i - 1] && characters.levels[i] == runs.back().level;
        if (goes_on) {
            ++runs.back().count;
        } else {
            runs.push_back({i, 1, characters.levels[i]});
        }
    }
    // From the highest level to the lowest odd one, runs of this level and above change their order.
    const auto highest = runs.empty() ? runs.end() : std::ranges::max_element(runs, {}, &Run::level);
    for (int level = runs.empty() ? 0 : highest->level; level > 0; --level) {
        for (auto at = runs.begin(); at != runs.end();) {
            const auto first = std::find_if(at, runs.end(), [=](const Run& run) { return run.level >= level; });
            at = std::find_if(first, runs.end(), [=](const Run& run) { return run.level < level; });
            std::reverse(first, at);
        }
    }
    Text result{{}, size, 0};
    std::vector<Shaped_Glyph> glyphs;
    for (const Run& run : runs) {
        if (result.width > most_width) {
            break;
        }
        Font_Face& font = *fonts_[characters.fonts[run.first]];
        glyphs.clear();
        font.shape({characters.text, run.first, run.count, characters.scripts[run.first], run.level % 2 == 1}, glyphs);
        limits.take_memory(file, glyphs.size() * sizeof(Letter));
        for (std::size_t i = 0, next = 0; i < glyphs.size(); i = next) {
            const double start = result.width;
            const std::size_t first_letter = result.letters.size();
            for (next = i; next < glyphs.size() && glyphs[next].cluster == glyphs[i].cluster; ++next) {
                const Shaped_Glyph& glyph = glyphs[next];
                const Face& outline = font.outline(glyph.glyph, file, limits);
                if (!outline.empty()) {
                    result.letters.push_back({&outline, {result.width + glyph.offset.x * size, glyph.offset.y * size}, 0, 0});
                }
                result.width += glyph.advance * size;
            }
            for (std::size_t letter = first_letter; letter < result.letters.size(); ++letter) {
                result.letters[letter].start = start;
                result.letters[letter].end = result.width;
            }
        }
    }
    return result;
}

std::vector<std::string> Font_With_Fallbacks::warnings() const {
    std::vector<std::string> lines;
    if (lacks_harfbuzz_) {
        lines.emplace_back("texts: letters that change with their neighbours need HarfBuzz, which cannot be loaded; Debian's "
                           "package libharfbuzz0b has it");
    }
    if (lacks_fribidi_) {
        lines.emplace_back("texts: letters that are written from right to left need FriBidi, which cannot be loaded; Debian's "
                           "package libfribidi0 has it");
    }
    if (!unshown_.empty()) {
        constexpr std::size_t most_named = 5;
        std::string named;
        for (const char32_t c : std::u32string_view(unshown_).substr(0, most_named)) {
            std::array<char, 16> code;
            std::snprintf(code.data(), code.size(), "U+%04X", static_cast<unsigned>(c));
            named += (named.empty() ? "" : ", ") + std::string(code.data());
        }
        const std::size_t others = unshown_.size() - std::min(unshown_.size(), most_named);
        lines.push_back(
            "texts: not drawn, since no font has them: " + named +
            (others > 0 ? " and " + std::to_string(others) + (others == 1 ? " other character" : " other characters") : "") +
            (lacks_fontconfig_ ? "; other fonts are found by fontconfig, which cannot be loaded; Debian's package "
                                 "libfontconfig1 has it"
                               : ""));
    }
    return lines;
}

} // namespace

std::unique_ptr<Label_Font> load_label_font(const std::string& name, Load_Limits& limits) {
    return std::make_unique<Font_With_Fallbacks>(name, limits);
}

} // namespace vorna::drawing::map
