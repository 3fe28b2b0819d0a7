// Materials ready for drawing.
#include "drawing/model/paints.h"

#include <algorithm>
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

// A single white texel, for translucent surfaces without a texture: palette images blend textures only.
Image white_texel() {
    Image image(1, 1);
    image.pixels[0] = {255, 255, 255, 255};
    return image;
}

} // namespace

// Materials share a texture unless something in them asks for another one.
std::pair<Textures, std::vector<Paint>> load_paints(const Mesh& mesh, std::vector<std::string>& warnings, Load_Limits& limits) {
    Textures textures;
    std::vector<Paint> paints;
    std::map<std::tuple<std::uint32_t, Wrap, Wrap, Transparency, bool, float>, Texture*> known;
    std::map<std::uint32_t, std::string> left_out; // why, by image
    const auto texture_of = [&](const Material& material) -> Texture* {
        const auto [found, is_new] = known.try_emplace(
            {material.image, material.wrap_u, material.wrap_v, material.transparency, material.opacity < 1, material.cut_off},
            nullptr);
        if (is_new && material.image != no_image) {
            const Image_Source& source = mesh.images[material.image];
            try {
                textures.push_back(std::make_unique<Texture>(source.name, image_of(source, limits).first, material, limits));
                found->second = textures.back().get();
            } catch (const Image_Error& error) {
                left_out.try_emplace(material.image, source.name + ": " + error.what());
            } catch (const Model_Error& error) {
                left_out.try_emplace(material.image, error.what());
            }
        } else if (is_new && material.opacity < 1) {
            textures.push_back(std::make_unique<Texture>("", white_texel(), material, limits));
            found->second = textures.back().get();
        }
        return found->second;
    };
    for (const Material& material : mesh.materials) {
        Paint paint{texture_of(material)};
        if (!paint.texture && material.opacity < 1) {
            Material plain = material;
            plain.image = no_image;
            paint.texture = texture_of(plain);
        }
        if (paint.texture && paint.texture->transparency() == Transparency::blended) {
            paint.alpha = static_cast<std::uint8_t>(std::clamp(material.opacity, 0.0F, 1.0F) * 255 + 0.5F);
            paint.translucent = true;
        }
        paints.push_back(paint);
    }
    paints.emplace_back();
    if (!left_out.empty()) {
        std::set<std::uint32_t> named;
        std::ranges::for_each(mesh.materials, [&](const Material& material) { named.insert(material.image); });
        named.erase(no_image);
        warnings.push_back(left_out_text(left_out, named.size()));
    }
    return {std::move(textures), std::move(paints)};
}

} // namespace vorna::drawing::model
