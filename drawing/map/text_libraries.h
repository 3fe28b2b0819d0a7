// HarfBuzz, FriBidi and fontconfig, loaded when a text needs them. The functions are declared here, since their signatures are
// the same in all versions and a build needs no headers then.
#pragma once

#include <cstdint>

namespace vorna::drawing::map {

struct Glyph_Info {
    std::uint32_t glyph, mask, cluster, own[2];
};

// In the font's units.
struct Glyph_Position {
    std::int32_t x_advance, y_advance, x_offset, y_offset;
    std::uint32_t own;
};

#define VORNA_HARFBUZZ_FUNCTIONS(LIST)                                                                                           \
    LIST(void*, hb_blob_create, (const char* bytes, unsigned size, int mode, void* user, void (*destroy)(void*)))                \
    LIST(void, hb_blob_destroy, (void* blob))                                                                                    \
    LIST(void*, hb_face_create, (void* blob, unsigned index))                                                                    \
    LIST(void, hb_face_destroy, (void* face))                                                                                    \
    LIST(void*, hb_font_create, (void* face))                                                                                    \
    LIST(void, hb_font_destroy, (void* font))                                                                                    \
    LIST(void, hb_ot_font_set_funcs, (void* font))                                                                               \
    LIST(void*, hb_buffer_create, ())                                                                                            \
    LIST(void, hb_buffer_destroy, (void* buffer))                                                                                \
    LIST(void, hb_buffer_reset, (void* buffer))                                                                                  \
    LIST(void, hb_buffer_add_utf32, (void* buffer, const char32_t* text, int size, unsigned first, int count))                   \
    LIST(void, hb_buffer_set_direction, (void* buffer, int direction))                                                           \
    LIST(void, hb_buffer_set_script, (void* buffer, std::uint32_t script))                                                       \
    LIST(void, hb_buffer_set_language, (void* buffer, const void* language))                                                     \
    LIST(const void*, hb_language_from_string, (const char* name, int size))                                                     \
    LIST(void, hb_shape, (void* font, void* buffer, const void* features, unsigned count))                                       \
    LIST(const Glyph_Info*, hb_buffer_get_glyph_infos, (void* buffer, unsigned* count))                                          \
    LIST(const Glyph_Position*, hb_buffer_get_glyph_positions, (void* buffer, unsigned* count))                                  \
    LIST(void*, hb_unicode_funcs_get_default, ())                                                                                \
    LIST(std::uint32_t, hb_unicode_script, (void* functions, char32_t character))

#define VORNA_FRIBIDI_FUNCTIONS(LIST)                                                                                            \
    LIST(std::int8_t, fribidi_log2vis,                                                                                           \
         (const char32_t* text, int size, std::uint32_t* base, char32_t* visual, int* to_visual, int* to_logical,                \
          std::int8_t* levels))

#define VORNA_FONTCONFIG_FUNCTIONS(LIST)                                                                                         \
    LIST(int, FcInit, ())                                                                                                        \
    LIST(void*, FcPatternCreate, ())                                                                                             \
    LIST(void*, FcNameParse, (const unsigned char* name))                                                                        \
    LIST(void, FcPatternDestroy, (void* pattern))                                                                                \
    LIST(int, FcPatternAddString, (void* pattern, const char* object, const unsigned char* value))                               \
    LIST(int, FcPatternAddBool, (void* pattern, const char* object, int value))                                                  \
    LIST(int, FcPatternAddCharSet, (void* pattern, const char* object, const void* set))                                         \
    LIST(int, FcPatternGetString, (const void* pattern, const char* object, int number, unsigned char** value))                  \
    LIST(int, FcPatternGetInteger, (const void* pattern, const char* object, int number, int* value))                            \
    LIST(void*, FcCharSetCreate, ())                                                                                             \
    LIST(int, FcCharSetAddChar, (void* set, char32_t character))                                                                 \
    LIST(void, FcCharSetDestroy, (void* set))                                                                                    \
    LIST(int, FcConfigSubstitute, (void* configuration, void* pattern, int kind))                                                \
    LIST(void, FcDefaultSubstitute, (void* pattern))                                                                             \
    LIST(void*, FcFontMatch, (void* configuration, void* pattern, int* result))

#define VORNA_DECLARE_FUNCTION(result, function, arguments) result(*function) arguments;

// Shapes texts: joins and orders letters as their scripts do.
struct Harfbuzz {
    VORNA_HARFBUZZ_FUNCTIONS(VORNA_DECLARE_FUNCTION)
};

// Finds the directions of texts.
struct Fribidi {
    VORNA_FRIBIDI_FUNCTIONS(VORNA_DECLARE_FUNCTION)
};

// Finds fonts.
struct Fontconfig {
    VORNA_FONTCONFIG_FUNCTIONS(VORNA_DECLARE_FUNCTION)
};

#undef VORNA_DECLARE_FUNCTION

// Null where the library is missing. Each is loaded at the first call and stays until the process ends.
const Harfbuzz* harfbuzz();
const Fribidi* fribidi();
const Fontconfig* fontconfig();

} // namespace vorna::drawing::map
