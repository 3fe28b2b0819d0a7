// Light on surfaces. Plain loops over columns of floats, which compilers turn into vector code.
#include "drawing/model/lighting.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "drawing/model/vectors.h"

namespace vorna::drawing::model {
namespace {

// How far the key light reaches beyond the horizon of the form.
constexpr float wrap = 0.30F;
constexpr float key_light = 0.72F;
constexpr float viewer_light = 0.10F;
constexpr float sky_light = 0.30F;
constexpr float ground_light = 0.07F;
constexpr float fill_light = 0.08F;
constexpr float highlight = 0.16F;
// Of black forms, above; lighter ones have less.
constexpr float rim_light = 0.12F;
constexpr float least_scattering = 0.03F;
// What metal reflects: sky and ground with a soft horizon, and the key light as a bright field.
constexpr float mirrored_sky = 0.85F, mirrored_ground = 0.10F, mirrored_key = 0.9F;

float intensity(std::uint8_t channel) {
    const float value = static_cast<float>(channel) / 255.0F;
    return value * value;
}

float positive(float value) {
    return value > 0.0F ? value : 0.0F;
}

std::uint32_t channel(float light) {
    return static_cast<std::uint32_t>(static_cast<std::int32_t>(std::sqrt(light < 1.0F ? light : 1.0F) * 255.0F + 0.5F));
}

// The alpha of white that turns a pixel of so much light into one with the added light too. Not more than it takes on black:
// dark places of light textures stay dark.
std::uint32_t overlay(float added, float light) {
    const float below = light < 1.0F ? light : 1.0F, value = std::sqrt(below);
    const float share = (std::sqrt(below + added) - value) / (1.0F - value + 1e-6F), most = std::sqrt(added);
    const float alpha = share < most ? share : most;
    return static_cast<std::uint32_t>(static_cast<std::int32_t>((alpha < 1.0F ? alpha : 1.0F) * 255.0F + 0.5F));
}

// cosine to the power of 4 n, nearly, by a division instead.
float power(float cosine, float n) {
    const float lobe = cosine / (n - n * cosine + cosine), squared = lobe * lobe;
    return squared * squared;
}

struct Plain_Finish {
    static constexpr bool is_plain = true;
};

struct Finish_Each {
    static constexpr bool is_plain = false;
    const float *lit, *mirror, *highlight, *sharpness, *red, *green, *blue, *texture_lightness;
};

struct One_Color {
    float r, g, b;
    float red(std::size_t) const { return r; }
    float green(std::size_t) const { return g; }
    float blue(std::size_t) const { return b; }
};

struct Color_Each {
    const float *r, *g, *b;
    float red(std::size_t i) const { return r[i]; }
    float green(std::size_t i) const { return g[i]; }
    float blue(std::size_t i) const { return b[i]; }
};

std::uint32_t word_of(float red, float green, float blue) {
    return 0xFF000000U | channel(red) << 16 | channel(green) << 8 | channel(blue);
}

// How a normal n is seen by the lights: along a direction whose part towards the viewer is w, it counts n . direction * along +
// w * toward_viewer.
struct Seen {
    float along, toward_viewer;
};

struct Front_Normals {
    Seen operator()(float, float, float, std::size_t) const { return {1.0F, 0.0F}; }
};

// Far behind the horizon the normal is turned round; near it, it is mirrored on the plane of the horizon.
struct Back_Normals {
    VT_Vector eye;
    float eye_weight;
    const float* distances;

    Seen operator()(float nx, float ny, float nz, std::size_t i) const {
        constexpr float horizon = 0.35F;
        const float behind = positive(eye_weight * distances[i] - (nx * eye.x + ny * eye.y + nz * eye.z));
        const float turned = behind * (1.0F / horizon) < 1.0F ? behind * (1.0F / horizon) : 1.0F;
        return {1.0F - 2.0F * turned, 2.0F * behind * (1.0F - turned)};
    }
};

} // namespace

void Surfaces::resize(std::size_t count) {
    normals = Vector_Columns(count);
    distances.resize(count);
}

void Surfaces::set(std::size_t i, const VT_Vector& normal, const VT_Vector& place) noexcept {
    normals.set(i, normal);
    distances[i] = dot(normal, place);
}

void Surfaces::add_color(VT_RGB32 color) {
    const float r = intensity(color.red), g = intensity(color.green), b = intensity(color.blue);
    const float darkness = 1.0F - std::max({r, g, b});
    const float added = least_scattering * darkness * darkness;
    red.push_back(r + added);
    green.push_back(g + added);
    blue.push_back(b + added);
}

// A colour that is not lit becomes emission.
void Surfaces::add_finish(const Finish& finish, VT_RGB32 color, float lightness_of_texture) {
    const float shown = finish.lit ? 0.0F : 1.0F;
    lit.push_back(1.0F - shown);
    mirror.push_back(finish.mirror);
    highlight.push_back(finish.highlight);
    sharpness.push_back(finish.sharpness);
    red_emission.push_back(finish.emission[0] + shown * intensity(color.red));
    green_emission.push_back(finish.emission[1] + shown * intensity(color.green));
    blue_emission.push_back(finish.emission[2] + shown * intensity(color.blue));
    texture_lightness.push_back(lightness_of_texture);
}

bool Surfaces::face_viewer(std::size_t i, const Camera& camera) const noexcept {
    return dot(normals[i], narrowed(camera.eye)) > (camera.eye_is_place ? distances[i] : 0.0F);
}

void Surfaces::face_viewer(std::size_t first, std::size_t count, const Camera& camera, std::uint8_t* facing) const noexcept {
    const VT_Vector eye = narrowed(camera.eye);
    const float *nx = normals.x.data() + first, *ny = normals.y.data() + first, *nz = normals.z.data() + first,
                *distance = distances.data() + first;
    const float weight = camera.eye_is_place ? 1.0F : 0.0F;
    for (std::size_t i = 0; i < count; ++i) {
        facing[i] = nx[i] * eye.x + ny[i] * eye.y + nz[i] * eye.z > weight * distance[i];
    }
}

Lighting::Lighting(const Camera& camera, VT_Vector_D direction, double specular)
    : highlight_(static_cast<float>(highlight * specular)) {
    direction.normalize();
    const auto in_model = [&](const VT_Vector_D& v) {
        return narrowed(camera.right * v.x + camera.up * v.y + camera.toward * v.z);
    };
    VT_Vector_D half_way = direction + VT_Vector_D{0, 0, 1};
    half_way.normalize();
    // From the other side of the viewer than the key light, at half its height.
    VT_Vector_D fill{-direction.x, 0.5 * direction.y, std::max(direction.z, 0.4)};
    fill.normalize();
    fill_ = in_model(fill);
    fill_toward_viewer_ = static_cast<float>(fill.z);
    key_ = in_model(direction);
    half_way_ = in_model(half_way);
    sky_ = in_model({0, 1, 0});
    viewer_ = in_model({0, 0, 1});
    key_toward_viewer_ = static_cast<float>(direction.z);
    half_way_toward_viewer_ = static_cast<float>(half_way.z);
    const double eye_scale = 1 / length(camera.eye);
    eye_ = narrowed(camera.eye * eye_scale);
    eye_weight_ = camera.eye_is_place ? static_cast<float>(eye_scale) : 0.0F;
}

template <class Seen_Normal, class Base, class Finishes>
void Lighting::shade_with(const Surfaces& surfaces, Stretch stretch, const Seen_Normal& seen_normal, const Base& base,
                          const Finishes& finishes, std::span<VT_RGB32> colors) const {
    // Words are gathered in blocks: a loop over floats and words alone is one that compilers vectorise.
    constexpr std::size_t block = 256;
    std::array<std::uint32_t, block> words;
    const VT_Vector key = key_, fill = fill_, half_way = half_way_, sky = sky_, viewer = viewer_;
    const float key_toward_viewer = key_toward_viewer_, fill_toward_viewer = fill_toward_viewer_,
                half_way_toward_viewer = half_way_toward_viewer_, highlights = highlight_;
    constexpr float plain_power = 24.0F / 4;
    for (std::size_t start = stretch.first; start < stretch.end; start += block) {
        const std::size_t count = std::min(block, stretch.end - start);
        const float *nx = surfaces.normals.x.data() + start, *ny = surfaces.normals.y.data() + start,
                    *nz = surfaces.normals.z.data() + start;
        for (std::size_t i = 0; i < count; ++i) {
            const Seen seen = seen_normal(nx[i], ny[i], nz[i], start + i);
            const float toward_key =
                seen.along * (nx[i] * key.x + ny[i] * key.y + nz[i] * key.z) + seen.toward_viewer * key_toward_viewer;
            const float toward_half_way = positive(seen.along * (nx[i] * half_way.x + ny[i] * half_way.y + nz[i] * half_way.z) +
                                                   seen.toward_viewer * half_way_toward_viewer);
            const float toward_sky = seen.along * (nx[i] * sky.x + ny[i] * sky.y + nz[i] * sky.z);
            const float toward_viewer =
                seen.along * (nx[i] * viewer.x + ny[i] * viewer.y + nz[i] * viewer.z) + seen.toward_viewer;
            const float toward_fill =
                seen.along * (nx[i] * fill.x + ny[i] * fill.y + nz[i] * fill.z) + seen.toward_viewer * fill_toward_viewer;
            const float facing = positive(toward_viewer), upward = 0.5F + 0.5F * toward_sky;
            const float lit = positive((toward_key + wrap) * (1.0F / (1.0F + wrap)));
            const float diffuse = key_light * lit + fill_light * positive(toward_fill) + viewer_light * facing + ground_light +
                                  (sky_light - ground_light) * upward;
            const float r = base.red(start + i), g = base.green(start + i), b = base.blue(start + i);
            const float lightest = std::max(r, std::max(g, b));
            const float away = positive(1.0F - facing);
            const float outline = rim_light * upward * (away * away * away);
            if constexpr (Finishes::is_plain) {
                const float added = highlights * power(toward_half_way, plain_power) + outline * positive(1.0F - lightest);
                words[i] = word_of(r * diffuse + added, g * diffuse + added, b * diffuse + added);
            } else {
                const std::size_t at = start + i;
                // Directions in which the viewer's ray is reflected: upwards, and towards the key light.
                const float mirror_up = 2.0F * facing * toward_sky,
                            mirror_key = positive(2.0F * facing * toward_key - key_toward_viewer);
                const float height = std::min(positive(0.5F + 1.2F * mirror_up), 1.0F);
                const float surroundings = mirrored_ground +
                                           (mirrored_sky - mirrored_ground) * (height * height * (3.0F - 2.0F * height)) +
                                           mirrored_key * power(mirror_key, 2.0F);
                const float mirror = finishes.mirror[at], lit_share = finishes.lit[at];
                const float glossy = highlights * finishes.highlight[at] * power(toward_half_way, 0.25F * finishes.sharpness[at]);
                // Of metal the highlight has the surface's colour.
                const float reflected = lit_share * (diffuse + mirror * (surroundings - diffuse) + mirror * glossy);
                const float texture = finishes.texture_lightness[at],
                            shown = texture < 0.0F ? lightest : lightest * texture * texture;
                const float light = lit_share * ((1.0F - mirror) * glossy + outline * positive(1.0F - shown));
                const float added = texture < 0.0F ? light : 0.0F;
                const std::uint32_t alpha = texture < 0.0F ? 255 : overlay(light, shown * reflected);
                words[i] = (word_of(r * reflected + added + finishes.red[at], g * reflected + added + finishes.green[at],
                                    b * reflected + added + finishes.blue[at]) &
                            0xFFFFFFU) |
                           alpha << 24;
            }
        }
        std::transform(words.begin(), words.begin() + static_cast<std::ptrdiff_t>(count),
                       colors.begin() + static_cast<std::ptrdiff_t>(start), vorna::color_of);
    }
}

template <class Seen_Normal>
void Lighting::shade(const Surfaces& surfaces, Stretch stretch, const Seen_Normal& seen, std::span<VT_RGB32> colors) const {
    if (surfaces.has_one_color()) {
        shade_with(surfaces, stretch, seen, One_Color{surfaces.red[0], surfaces.green[0], surfaces.blue[0]}, Plain_Finish{},
                   colors);
        return;
    }
    const Color_Each base{surfaces.red.data(), surfaces.green.data(), surfaces.blue.data()};
    if (surfaces.lit.empty()) {
        shade_with(surfaces, stretch, seen, base, Plain_Finish{}, colors);
    } else {
        shade_with(surfaces, stretch, seen, base,
                   Finish_Each{surfaces.lit.data(), surfaces.mirror.data(), surfaces.highlight.data(), surfaces.sharpness.data(),
                               surfaces.red_emission.data(), surfaces.green_emission.data(), surfaces.blue_emission.data(),
                               surfaces.texture_lightness.data()},
                   colors);
    }
}

void Lighting::shade_fronts(const Surfaces& surfaces, std::size_t first, std::size_t end, std::span<VT_RGB32> colors) const {
    shade(surfaces, {first, end}, Front_Normals{}, colors);
}

void Lighting::shade_backs(const Surfaces& surfaces, std::size_t first, std::size_t end, std::span<VT_RGB32> colors) const {
    shade(surfaces, {first, end}, Back_Normals{eye_, eye_weight_, surfaces.distances.data()}, colors);
}

} // namespace vorna::drawing::model
