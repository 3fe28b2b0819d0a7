/* The whole interface from C: canvases on memory of the caller, presentation, recordings, images, models and maps. usage:
   interface FOLDER; files are written into the folder. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "vorna/vorna.h"

static int failures = 0;

static void check(int is_right, const char* what, int line) {
    if (!is_right) {
        fprintf(stderr, "line %d: %s; last message: %s\n", line, what, vorna_last_message());
        ++failures;
    }
}

#define CHECK(condition) check((condition) != 0, #condition, __LINE__)
#define DONE(call) check((call) == VORNA_OK, #call, __LINE__)

enum { WIDTH = 40, HEIGHT = 30, STRIDE = 50 };

struct Shown {
    int count;
    vorna_presentation last;
};

static void show(void* context, const vorna_presentation* presentation) {
    struct Shown* const shown = context;
    ++shown->count;
    shown->last = *presentation;
}

static void draw(vorna_canvas* canvas) {
    static const vorna_point_i triangle[] = {{2, 3, 100}, {30, 5, 200}, {12, 25, 50}};
    static const vorna_point line[] = {{0, 29, 0}, {20, 4, 0}, {39, 28, 0}};
    const vorna_color colors[] = {vorna_rgba(255, 0, 0, 255), vorna_rgba(0, 255, 0, 255), vorna_rgba(0, 0, 255, 255)};
    const vorna_color white = vorna_rgba(255, 255, 255, 255);
    DONE(vorna_begin_picture(canvas, &white));
    DONE(vorna_draw_dci_gouraud_polytriangle(canvas, 3, triangle, colors));
    DONE(vorna_set_attribute(canvas, VORNA_LINE_WIDTH, 2));
    DONE(vorna_set_color(canvas, VORNA_LINE_COLOR, vorna_rgba(40, 40, 40, 255)));
    DONE(vorna_draw_2d_polyline(canvas, 3, line));
    DONE(vorna_end_picture(canvas));
}

/* Two canvases of the same content, one on the caller's memory; the recording of one shows the same. */
static void try_canvases(const char* file) {
    static vorna_color memory[STRIDE * HEIGHT];
    vorna_color pixels[WIDTH * HEIGHT];
    struct Shown shown;
    vorna_canvas_settings settings;
    vorna_canvas *own = NULL, *recorded = NULL;
    vorna_recording *recording = NULL, *again = NULL;
    vorna_image *color = NULL, *depth = NULL, *part = NULL;
    vorna_replay_settings replay;
    vorna_buffer buffer;
    vorna_rectangle window;
    char* text = NULL;
    size_t size = 0, calls = 0;
    vorna_comparison comparison;
    int32_t i;
    const char* line = NULL;
    memset(&shown, 0, sizeof shown);
    DONE(vorna_canvas_settings_init(&settings, sizeof settings));
    settings.width = WIDTH;
    settings.height = HEIGHT;
    settings.depth_buffer = 1;
    settings.pixels = memory;
    settings.stride = 4 * STRIDE;
    DONE(vorna_canvas_create(&settings, &own));
    DONE(vorna_canvas_on_present(own, show, &shown));
    draw(own);
    CHECK(shown.count == 1 && shown.last.area.right == WIDTH - 1 && shown.last.buffer.pixels == memory);
    DONE(vorna_canvas_buffer(own, &buffer));
    CHECK(buffer.pixels == memory && buffer.stride == 4 * STRIDE && buffer.format == VORNA_RGB32);
    DONE(vorna_canvas_window(own, &window));
    CHECK(window.left == 0 && window.right == WIDTH - 1 && window.bottom == 0 && window.top == HEIGHT - 1);
    window.left = 10;
    window.top = 9;
    DONE(vorna_present(own, &window));
    CHECK(shown.count == 2 && shown.last.x == 10 && shown.last.y == 20 && shown.last.buffer.width == 30);
    CHECK(shown.last.buffer.pixels == &memory[20 * STRIDE + 10]);

    settings.pixels = NULL;
    settings.stride = 0;
    settings.records = 1;
    DONE(vorna_canvas_create(&settings, &recorded));
    draw(recorded);
    DONE(vorna_canvas_read_pixels(recorded, pixels, 0));
    for (i = 0; i < HEIGHT; ++i) {
        CHECK(memcmp(&pixels[i * WIDTH], &memory[i * STRIDE], 4 * WIDTH) == 0);
    }
    DONE(vorna_canvas_finish_recording(recorded, &recording));
    CHECK(vorna_canvas_finish_recording(recorded, &again) == VORNA_INVALID_ARGUMENT && again == NULL);
    DONE(vorna_recording_write(recording, file));
    DONE(vorna_recording_text(recording, &text, &size));
    CHECK(strlen(text) == size);
    DONE(vorna_recording_parse(text, size, NULL, &again));
    DONE(vorna_recording_calls(again, &calls));
    CHECK(calls > 3);
    vorna_recording_free(again);
    DONE(vorna_recording_read(file, NULL, &again));
    DONE(vorna_recording_replay(again, NULL, &color, &depth));
    DONE(vorna_image_buffer(color, &buffer));
    CHECK(buffer.width == WIDTH && buffer.height == HEIGHT && memcmp(buffer.pixels, pixels, sizeof pixels) == 0);
    DONE(vorna_image_buffer(depth, &buffer));
    CHECK(buffer.format == VORNA_DEPTH16);
    DONE(vorna_replay_settings_init(&replay, sizeof replay));
    replay.last = 2;
    DONE(vorna_recording_replay(again, &replay, &part, NULL));
    DONE(vorna_image_compare(color, part, NULL, &comparison, &line));
    CHECK(!comparison.is_same && comparison.count > 50 && comparison.most > 50 && strlen(line) > 0);

    /* Another size, without depth buffer. */
    settings.width = 2 * WIDTH;
    settings.depth_buffer = 0;
    DONE(vorna_canvas_configure(recorded, &settings));
    DONE(vorna_canvas_buffer(recorded, &buffer));
    CHECK(buffer.width == 2 * WIDTH);
    CHECK(vorna_canvas_read_depths(recorded, (uint16_t*)memory, 0) == VORNA_INVALID_ARGUMENT);
    vorna_free(text);
    vorna_image_free(color);
    vorna_image_free(depth);
    vorna_image_free(part);
    vorna_recording_free(recording);
    vorna_recording_free(again);
    vorna_canvas_free(own);
    vorna_canvas_free(recorded);
}

/* Colours and depths as files and back; every format that there is. */
static void try_images(const char* file) {
    static const char* const suffixes[] = {"png", "pdf", "ppm", "raw"};
    const int32_t formats[] = {VORNA_RGB32, VORNA_DEPTH16};
    vorna_image *image = NULL, *again = NULL;
    vorna_buffer buffer, other;
    vorna_tolerance tolerance;
    void* bytes = NULL;
    size_t size = 0, i, k;
    vorna_comparison comparison;
    char digest[65], digest_again[65];
    for (i = 0; i < 2; ++i) {
        DONE(vorna_image_create(33, 21, formats[i], &image));
        DONE(vorna_image_buffer(image, &buffer));
        for (k = 0; k < buffer.stride * 21; ++k) {
            ((uint8_t*)buffer.pixels)[k] = (uint8_t)(k * k / 7);
        }
        DONE(vorna_image_write(image, file));
        DONE(vorna_image_read(file, NULL, &again));
        DONE(vorna_image_compare(image, again, NULL, &comparison, NULL));
        CHECK(comparison.is_same);
        DONE(vorna_image_buffer(again, &other));
        CHECK(other.format == formats[i] && memcmp(other.pixels, buffer.pixels, buffer.stride * 21) == 0);
        DONE(vorna_image_digest(image, digest));
        DONE(vorna_image_digest(again, digest_again));
        CHECK(strlen(digest) == 64 && strcmp(digest, digest_again) == 0);
        ((uint8_t*)other.pixels)[8] ^= 4;
        DONE(vorna_image_compare(image, again, NULL, &comparison, NULL));
        CHECK(!comparison.is_same);
        tolerance.difference = formats[i] == VORNA_RGB32 ? 4 : 4 * 257;
        tolerance.count = 1;
        DONE(vorna_image_compare(image, again, &tolerance, &comparison, NULL));
        CHECK(comparison.is_same);
        tolerance.difference = 3;
        DONE(vorna_image_compare(image, again, &tolerance, &comparison, NULL));
        CHECK(!comparison.is_same);
        vorna_image_free(again);
        DONE(vorna_image_encode(image, &bytes, &size));
        DONE(vorna_image_decode(bytes, size, NULL, &again));
        DONE(vorna_image_compare(image, again, NULL, &comparison, NULL));
        CHECK(comparison.is_same);
        vorna_image_free(again);
        vorna_free(bytes);
        for (k = 0; k < buffer.stride * 21; ++k) {
            ((uint8_t*)buffer.pixels)[k] |= k % 4 == 3 ? 255 : 0; /* opaque */
        }
        for (k = 0; k < sizeof suffixes / sizeof *suffixes; ++k) {
            char name[4200];
            sprintf(name, "%s.%s", file, suffixes[k]);
            CHECK(vorna_image_write(image, name) == (formats[i] == VORNA_RGB32 || k == 0 ? VORNA_OK : VORNA_INVALID_INPUT));
        }
        vorna_image_free(image);
    }
    CHECK(vorna_image_write(NULL, file) == VORNA_INVALID_ARGUMENT);
}

/* A square of two triangles with a texture, and a map. */
static void try_models_and_maps(const char* file) {
    static const vorna_point corners[] = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
    static const vorna_texture_point places[] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    static const uint32_t triangles[] = {0, 1, 2, 0, 2, 3};
    static const char islands[] = "{\"type\": \"Polygon\", \"coordinates\": [[[-20, -10], [25, -12], [8, 30], [-20, -10]]]}";
    vorna_mesh mesh;
    vorna_view view;
    vorna_image_settings settings;
    vorna_map_settings map_settings;
    vorna_model* model = NULL;
    vorna_map* map = NULL;
    static int32_t faces[64 * 48];
    int32_t i, found[3] = {0, 0, 0};
    double nearest = 0, farthest = 0;
    vorna_scene* scene = NULL;
    vorna_image *texture = NULL, *image = NULL, *again = NULL, *color = NULL, *depth = NULL;
    vorna_buffer buffer;
    size_t counts[3], warnings = 7;
    vorna_comparison comparison;
    char digest[65], digest_again[65];
    const char* line;
    DONE(vorna_image_create(2, 2, VORNA_RGB32, &texture));
    DONE(vorna_image_buffer(texture, &buffer));
    memset(buffer.pixels, 200, buffer.stride);
    DONE(vorna_mesh_init(&mesh, sizeof mesh));
    mesh.vertex_count = 4;
    mesh.positions = corners;
    mesh.texture_points = places;
    mesh.texture = texture;
    mesh.triangle_count = 2;
    mesh.triangles = triangles;
    DONE(vorna_model_create(&mesh, &model));
    DONE(vorna_model_counts(model, &counts[0], &counts[1], &counts[2]));
    CHECK(counts[0] == 2 && counts[1] == 0 && counts[2] == 0);
    DONE(vorna_model_warning_count(model, &warnings));
    CHECK(warnings == 0 && vorna_model_warning(model, 0, &line) == VORNA_INVALID_ARGUMENT);
    DONE(vorna_view_init(&view, sizeof view));
    DONE(vorna_image_settings_init(&settings, sizeof settings));
    view.view = VORNA_FRONT;
    settings.width = 64;
    settings.height = 48;
    settings.threads = 1;
    DONE(vorna_model_render(model, &view, &settings, &image));
    DONE(vorna_model_render_file(model, &view, &settings, file, digest));
    DONE(vorna_image_digest(image, digest_again));
    CHECK(strcmp(digest, digest_again) == 0);
    view.view = VORNA_BACK;
    view.has_aim = 1;
    view.eye.z = 5;
    view.upward.y = 1;
    DONE(vorna_model_render(model, &view, &settings, &again));
    DONE(vorna_image_compare(image, again, NULL, &comparison, NULL));
    CHECK(!comparison.is_same);
    DONE(vorna_scene_create(model, &view, &settings, &scene));
    DONE(vorna_scene_draw(scene, &view, 64, 48, &color, &depth, faces, &nearest, &farthest));
    DONE(vorna_image_compare(again, color, NULL, &comparison, NULL));
    CHECK(comparison.is_same);
    DONE(vorna_image_buffer(depth, &buffer));
    CHECK(buffer.format == VORNA_DEPTH16 && nearest > 0 && nearest <= 5 && farthest >= 5);
    /* The lower right corner of the square belongs to the first triangle, the upper left one to the second. */
    CHECK(faces[0] == -1 && ((uint16_t*)buffer.pixels)[0] == 65535);
    for (i = 0; i < 64 * 48; ++i) {
        CHECK(faces[i] >= -1 && faces[i] <= 1);
        found[faces[i] + 1] = 1;
    }
    CHECK(found[0] && found[1] && found[2]);
    vorna_image_free(color);
    CHECK(vorna_scene_draw(scene, &view, 64, 48, NULL, NULL, NULL, NULL, NULL) == VORNA_INVALID_ARGUMENT);
    CHECK(vorna_scene_draw(scene, &view, 0, 48, &color, NULL, NULL, NULL, NULL) == VORNA_INVALID_INPUT);
    vorna_scene_free(scene);
    vorna_image_free(depth);
    vorna_image_free(again);
    view.zoom = -1;
    CHECK(vorna_model_render(model, &view, &settings, &again) == VORNA_INVALID_INPUT && again == NULL);
    CHECK(strstr(vorna_last_message(), "camera.zoom: expected 0.01 to 1000") != NULL);
    vorna_image_free(image);

    DONE(vorna_map_settings_init(&map_settings, sizeof map_settings));
    map_settings.graticule = 10;
    DONE(vorna_map_parse("json", islands, strlen(islands), &map_settings, NULL, &map));
    settings.height = 0;
    DONE(vorna_map_render(map, &settings, &image));
    DONE(vorna_map_render_file(map, &settings, file, digest));
    DONE(vorna_image_digest(image, digest_again));
    CHECK(strcmp(digest, digest_again) == 0);
    DONE(vorna_image_buffer(image, &buffer));
    CHECK(buffer.width == 64 && buffer.height > 10);
    vorna_map_free(map);
    vorna_image_free(image);
    vorna_image_free(texture);
    vorna_model_free(model);
}

int main(int count, char** arguments) {
    char file[4096];
    if (count != 2 || strlen(arguments[1]) > 4000) {
        return 2;
    }
    CHECK(vorna_version_number() == VORNA_VERSION && strcmp(vorna_version(), VORNA_VERSION_TEXT) == 0);
    CHECK(strcmp(vorna_last_message(), "") == 0);
    sprintf(file, "%s/recording.json.gz", arguments[1]);
    try_canvases(file);
    sprintf(file, "%s/image.png", arguments[1]);
    try_images(file);
    sprintf(file, "%s/model.png", arguments[1]);
    try_models_and_maps(file);
    return failures > 0;
}
