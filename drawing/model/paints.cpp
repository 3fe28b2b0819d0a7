// Materials ready for drawing.
#include "drawing/model/paints.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <map>
#include <set>
#include <tuple>

#include "drawing/model/model_reader.h"

namespace vorna::drawing::model {
namespace {

// The image, and its memory.
std::pair<Image, Load_Limits::Loan> image_of(const Image_Source& source, Load_Limits& limits) {
    constexpr std::uint64_t pixel_steps = 2; // to decode and to resample it
    Load_Limits::Loan loan;
    const auto take = [&](std::uint64_t pixels) {
        limits.take_work(source.name, pixel_steps * pixels);
        loan = Load_Limits::Loan(limits, source.name, 4 * pixels);
    };
    if (source.width > 0) {
        take(static_cast<std::uint64_t>(source.width) * static_cast<std::uint64_t>(source.height));
        Image image(source.width, source.height);
        std::memcpy(image.pixels.data(), source.bytes.data(), std::min(source.bytes.size(), 4 * image.pixels.size()));
        return {std::move(image), std::move(loan)};
    }
    const std::string read = source.embedded ? std::string() : read_reference(source.model, source.name, limits);
    Image image = decode_image(source.embedded ? source.bytes : read, take);
    return {std::move(image), std::move(loan)};
}

// One line: how many of all textures, and the first reasons.
std::string left_out_text(const std::map<std::uint32_t, std::string>& reasons, std::size_t all) {
    constexpr std::size_t most_told = 3;
    std::string text = std::to_string(reasons.size()) + " of " + std::to_string(all) + (all == 1 ? " texture" : " textures") +
                       (reasons.size() == 1 ? " is left out: " : " are left out: ");
    std::size_t told = 0;
    for (const auto& [image, reason] : reasons) {
        if (told == most_told) {
            return text + "; and " + std::to_string(reasons.size() - told) + " more";
        }
        text += (told++ > 0 ? "; " : "") + reason;
    }
    return text;
}

Image white_image(std::int32_t width, std::int32_t height) {
    Image image(width, height);
    std::ranges::fill(image.pixels, VT_RGB32{255, 255, 255, 255});
    return image;
}

// Multiplies the light of the colours by what occlusion leaves: about half of the light comes from the surroundings.
void darken(Image& image, const Image& occlusion, float strength) {
    constexpr float surroundings = 0.5F;
    std::array<std::uint32_t, 256> factors; // of 65536, for values that are roots of light
    for (std::size_t value = 0; value < factors.size(); ++value) {
        const float taken = surroundings * std::clamp(strength, 0.0F, 1.0F) * (1 - static_cast<float>(value) / 255);
        factors[value] = static_cast<std::uint32_t>(std::sqrt(1 - taken) * 65536.0F + 0.5F);
    }
    for (std::size_t i = 0; i < image.pixels.size(); ++i) {
        const std::uint32_t factor = factors[occlusion.pixels[i].red];
        const auto scaled = [factor](std::uint8_t channel) {
            return static_cast<std::uint8_t>((channel * factor + 32768) >> 16);
        };
        VT_RGB32& pixel = image.pixels[i];
        pixel = {scaled(pixel.blue), scaled(pixel.green), scaled(pixel.red), pixel.alpha};
    }
}

void make_transparent(Image& image, const Image& opacity) {
    const bool by_alpha = std::ranges::any_of(opacity.pixels, [](const VT_RGB32& pixel) { return pixel.alpha < 255; });
    for (std::size_t i = 0; i < image.pixels.size(); ++i) {
        const std::uint32_t part = by_alpha ? opacity.pixels[i].alpha : opacity.pixels[i].green;
        image.pixels[i].alpha = static_cast<std::uint8_t>((image.pixels[i].alpha * part + 127) / 255);
    }
}

// Alpha is the largest channel, and colours are divided by it: blended with it, light is added to what is dark.
Image as_overlay(const Image& image) {
    Image overlay(image.width, image.height);
    std::ranges::transform(image.pixels, overlay.pixels.begin(), [](const VT_RGB32& pixel) {
        const std::uint8_t most = std::max({pixel.blue, pixel.green, pixel.red});
        const auto divided = [most](std::uint8_t channel) {
            return static_cast<std::uint8_t>((channel * 255 + most / 2) / std::max<int>(most, 1));
        };
        return VT_RGB32{divided(pixel.blue), divided(pixel.green), divided(pixel.red), most};
    });
    return overlay;
}

// The factor of an emission image, likewise.
VT_RGB32 overlay_color(const std::array<float, 3>& light) {
    const auto root = [](float value) {
        return static_cast<std::uint8_t>(std::sqrt(std::clamp(value, 0.0F, 1.0F)) * 255.0F + 0.5F);
    };
    Image factor(1, 1);
    factor.pixels[0] = {root(light[2]), root(light[1]), root(light[0]), 255};
    return as_overlay(factor).pixels[0];
}

class Paint_Loader {
public:
    Paint_Loader(const Mesh& mesh, Load_Limits& limits)
        : mesh_(mesh), limits_(limits), is_used_(mesh.materials.size(), mesh.triangle_materials.empty()) {
        for (const std::uint32_t material : mesh.triangle_materials) {
            if (material != no_material) {
                is_used_[material] = true;
            }
        }
    }

    void load() {
        for (std::size_t m = 0; m < mesh_.materials.size(); ++m) {
            images_.clear();
            paints_.by_material.push_back(is_used_[m] ? paint_of(mesh_.materials[m]) : Paint());
        }
        paints_.by_material.emplace_back();
        const bool apart = std::ranges::any_of(paints_.by_material, &Paint::highlights_apart);
        paints_.white = apart ? texture("", white_image(1, 1), {.transparency = Transparency::blended}) : nullptr;
    }
    Paints take() { return std::move(paints_); }

    std::string warning() const {
        std::set<std::uint32_t> named;
        for (std::size_t m = 0; m < mesh_.materials.size(); ++m) {
            if (is_used_[m]) {
                std::ranges::for_each(mesh_.materials[m].all_images(), [&](std::uint32_t image) { named.insert(image); });
            }
        }
        named.erase(no_image);
        return left_out_.empty() ? "" : left_out_text(left_out_, named.size());
    }

private:
    // What a texture depends on: the colour, occlusion and opacity images or the emission image, and how they are drawn.
    using Texture_Key = std::tuple<std::array<std::uint32_t, 3>, float, std::array<Wrap, 2>, Transparency, bool, float>;

    // Null where there is none or it cannot be read.
    const Image* image(std::uint32_t number) {
        if (number == no_image) {
            return nullptr;
        }
        const auto [found, is_new] = images_.try_emplace(number);
        if (is_new) {
            const Image_Source& source = mesh_.images[number];
            try {
                found->second = image_of(source, limits_);
            } catch (const Image_Error& error) {
                left_out_.try_emplace(number, source.name + ": " + error.what());
            } catch (const Model_Error& error) {
                left_out_.try_emplace(number, error.what());
            }
        }
        return found->second.first.pixels.empty() ? nullptr : &found->second.first;
    }

    Texture* texture(const std::string& name, const Image& image, const Material& material) {
        return paints_.textures.emplace_back(std::make_unique<Texture>(name, image, material, limits_)).get();
    }

    Texture* color_texture(const Material& material) {
        const auto [found, is_new] = textures_.try_emplace({{material.image, material.images.occlusion, material.images.opacity},
                                                            material.occlusion,
                                                            {material.wrap_u, material.wrap_v},
                                                            material.transparency,
                                                            material.opacity < 1,
                                                            material.cut_off});
        if (is_new) {
            found->second = new_color_texture(material);
        }
        return found->second;
    }

    Texture* new_color_texture(const Material& material) {
        const std::array<std::uint32_t, 3> numbers{material.image, material.images.occlusion, material.images.opacity};
        std::array<const Image*, 3> parts;
        std::ranges::transform(numbers, parts.begin(), [this](std::uint32_t number) { return image(number); });
        const auto* const first = std::ranges::find_if(parts, [](const Image* part) { return part != nullptr; });
        if (first == parts.end()) {
            // Palette images blend textures only.
            return material.opacity < 1 ? texture("", white_image(1, 1), material) : nullptr;
        }
        const std::string& name = mesh_.images[numbers[static_cast<std::size_t>(first - parts.begin())]].name;
        const auto [base, occlusion, opacity] = parts;
        if (!occlusion && !opacity) {
            return texture(name, *base, material);
        }
        const std::int32_t width = (*first)->width, height = (*first)->height;
        const std::uint64_t pixels = (*first)->pixels.size();
        const Load_Limits::Loan memory(limits_, name, 8 * pixels);
        limits_.take_work(name, 4 * pixels);
        Image joined = base ? *base : white_image(width, height);
        const auto sized = [&](const Image& part) { return resampled(part, width, height, material.wrap_u, material.wrap_v); };
        if (occlusion) {
            darken(joined, sized(*occlusion), material.occlusion);
        }
        if (opacity && numbers[2] != numbers[0]) {
            make_transparent(joined, sized(*opacity));
        }
        return texture(name, joined, material);
    }

    // What is not there, or lets light through, shines so much less. holes: how the colour's texture is drawn.
    Texture* emission_texture(const Material& material, Transparency holes) {
        const bool covers = holes == Transparency::none;
        constexpr float no_occlusion = -1; // tells these keys from those of colours
        const auto [found, is_new] = textures_.try_emplace(
            {{material.images.emission, covers ? no_image : material.image, covers ? no_image : material.images.opacity},
             no_occlusion,
             {material.wrap_u, material.wrap_v},
             holes,
             false,
             covers ? 0 : material.cut_off});
        if (is_new) {
            if (const Image* const light = image(material.images.emission)) {
                Material overlay = material;
                overlay.transparency = Transparency::blended;
                const std::string& name = mesh_.images[material.images.emission].name;
                const Load_Limits::Loan memory(limits_, name, (covers ? 4 : 12) * light->pixels.size());
                Image shown = as_overlay(*light);
                if (!covers) {
                    limits_.take_work(name, 4 * light->pixels.size());
                    make_holes(shown, material, holes);
                }
                found->second = texture(name, shown, overlay);
            }
        }
        return found->second;
    }

    // Multiplies alpha by that of the material's colour and opacity images.
    void make_holes(Image& shown, const Material& material, Transparency holes) {
        Image cover = white_image(shown.width, shown.height);
        const auto sized = [&](const Image& part) {
            return resampled(part, shown.width, shown.height, material.wrap_u, material.wrap_v);
        };
        if (const Image* const base = image(material.image)) {
            cover = sized(*base);
        }
        if (const Image* const opacity = material.images.opacity != material.image ? image(material.images.opacity) : nullptr) {
            make_transparent(cover, sized(*opacity));
        }
        const float least = 255 * material.cut_off;
        for (std::size_t i = 0; i < shown.pixels.size(); ++i) {
            const std::uint8_t stated = cover.pixels[i].alpha;
            const int alpha = holes == Transparency::blended ? stated : static_cast<float>(stated) < least ? 0 : 255;
            shown.pixels[i].alpha = static_cast<std::uint8_t>((shown.pixels[i].alpha * alpha + 127) / 255);
        }
    }

    const Area_Means* means(std::uint32_t number, Area_Means::Channel channel, const Material& material) {
        const auto [found, is_new] = means_.try_emplace({number, channel, material.wrap_u, material.wrap_v});
        if (is_new) {
            if (const Image* const from = image(number)) {
                paints_.means.push_back(std::make_unique<Area_Means>(*from, channel, material.wrap_u, material.wrap_v));
                found->second = paints_.means.back().get();
            }
        }
        return found->second;
    }

    Paint paint_of(const Material& material) {
        Paint paint{color_texture(material)};
        const Transparency transparency = paint.texture ? paint.texture->transparency() : Transparency::none;
        if (transparency == Transparency::blended) {
            paint.alpha = static_cast<std::uint8_t>(std::clamp(material.opacity, 0.0F, 1.0F) * 255 + 0.5F);
            paint.translucent = true;
        }
        paint.highlights_apart =
            paint.texture && material.finish.lit && (transparency == Transparency::none || paint.texture->name().empty());
        paint.emission_color = overlay_color(material.emission);
        paint.emission_color.alpha = static_cast<std::uint8_t>((paint.emission_color.alpha * paint.alpha + 127) / 255);
        if (paint.emission_color.alpha > 0) {
            paint.emission = emission_texture(material, transparency);
        }
        paint.lightness = means(material.image, Area_Means::Channel::lightest, material);
        paint.metal = means(material.images.metal, Area_Means::Channel::blue, material);
        paint.roughness = means(material.images.roughness, Area_Means::Channel::green, material);
        return paint;
    }

    const Mesh& mesh_;
    Load_Limits& limits_;
    std::vector<bool> is_used_; // by faces, of the materials
    Paints paints_;
    std::map<std::uint32_t, std::pair<Image, Load_Limits::Loan>> images_; // of one material, by number
    std::map<std::uint32_t, std::string> left_out_;                       // why, by image
    std::map<Texture_Key, Texture*> textures_;
    std::map<std::tuple<std::uint32_t, Area_Means::Channel, Wrap, Wrap>, const Area_Means*> means_;
};

} // namespace

Paints load_paints(const Mesh& mesh, std::vector<std::string>& warnings, Load_Limits& limits) {
    Paint_Loader loader(mesh, limits);
    loader.load();
    if (std::string warning = loader.warning(); !warning.empty()) {
        warnings.push_back(std::move(warning));
    }
    return loader.take();
}

Finish finish_at(const Material& material, const Paint& paint, const Texture_Area& area) {
    if (!paint.metal && !paint.roughness) {
        return material.finish;
    }
    Finish finish = finish_of_metal(paint.metal ? material.metal * paint.metal->of(area) : material.metal,
                                    paint.roughness ? material.roughness * paint.roughness->of(area) : material.roughness);
    finish.lit = material.finish.lit;
    finish.emission = material.finish.emission;
    return finish;
}

} // namespace vorna::drawing::model
