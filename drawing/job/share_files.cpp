// The files with shares of a model's triangles.
#include "drawing/job/share_files.h"

#include <algorithm>

#include "drawing/files/usage_error.h"
#include "drawing/job/part_files.h"
#include "drawing/job/share_rows.h"

namespace vorna::drawing {
namespace {

constexpr VT_RGB32 black{0, 0, 0, 255}, white{255, 255, 255, 255};
constexpr std::uint64_t reader_memory = std::uint64_t{192} << 10; // of an open part, besides two rows
constexpr std::uint32_t rows_of_band = 16;

} // namespace

bool holds_share(const std::string& file) {
    return file != "-" && Part_Reader(file).part().share.has_value();
}

Share_Files::Share_Files(const std::vector<std::string>& files, bool all) : all_(all) {
    for (const std::string& file : files) {
        const Part_Reader& reader = *readers_.emplace_back(std::make_unique<Part_Reader>(file));
        const Part_Reader& first = *readers_.front();
        if (!first.part().share) {
            throw Usage_Error(first.name() + ": expected a part of the triangles, found " + part_text(first.part()));
        }
        Image_Part same_origin = reader.part();
        same_origin.origin = first.part().origin;
        if (!belong_together(same_origin, first.part()) || reader.form().pixels_per_metre != first.form().pixels_per_metre) {
            throw Usage_Error(reader.name() + ": expected a part of the same image, found " + part_text(reader.part()));
        }
        if (reader.part().origin != first.part().origin) {
            throw Usage_Error(reader.name() + ": expected a part of the same inputs, drawn with the same options, as " +
                              first.name() + ", found one of others");
        }
    }
    std::ranges::stable_sort(readers_, {}, [](const auto& reader) { return reader->part().share->first; });
    part_ = readers_.front()->part();
    part_.share->end = readers_.back()->part().share->end;
    check_order();
    form_ = readers_.front()->form();
    const Triangle_Share& share = *part_.share;
    if (all) {
        form_.width /= share_columns * static_cast<std::uint32_t>(share.supersample);
        form_.height /= static_cast<std::uint32_t>(share.supersample);
        form_.opaque = !share.transparent;
        form_.reducible = true;
        form_.place.clear();
        finish_ = std::make_unique<Pixel_Finish>(Finish_Settings{share.supersample, share.transparent});
        pixels_.resize(static_cast<std::size_t>(part_.size.x) * static_cast<std::size_t>(share.supersample));
        black_pixels_.resize(share.transparent ? pixels_.size() : 0);
    } else {
        form_.place = part_.bytes();
    }
    row_.resize(readers_.front()->form().row_bytes());
    later_.resize(row_.size());
}

void Share_Files::check_order() const {
    const auto expected = [this](std::int32_t first) {
        Image_Part part = part_;
        part.share->first = first;
        part.share->end = first + 1;
        return part_text(part);
    };
    std::int32_t next = all_ ? 0 : part_.share->first;
    for (std::size_t i = 0; i < readers_.size(); ++i) {
        const Triangle_Share& share = *readers_[i]->part().share;
        if (share.first < next) {
            throw Usage_Error(readers_[i]->name() + ": expected each part once, found " + part_text(readers_[i]->part()) +
                              ", which lies in " + readers_[i - 1]->name() + " too");
        }
        if (share.first > next) {
            throw Usage_Error("assemble: expected all parts, found no " + expected(next));
        }
        next = share.end;
    }
    if (all_ && next < part_.share->count) {
        throw Usage_Error("assemble: expected all parts, found no " + expected(next));
    }
}

std::uint64_t Share_Files::memory() const {
    return readers_.size() * (reader_memory + 2 * row_.size()) + 2 * row_.size() +
           (pixels_.size() + black_pixels_.size()) * 2 * sizeof(VT_RGB32);
}

void Share_Files::join_row() {
    readers_.front()->read_row(row_.data());
    for (std::size_t i = 1; i < readers_.size(); ++i) {
        readers_[i]->read_row(later_.data());
        draw_share_over(row_, later_);
    }
}

void Share_Files::finish_row(std::uint8_t* samples) {
    const auto width = static_cast<std::size_t>(part_.size.x);
    const bool transparent = part_.share->transparent;
    const auto raster = [&](const std::vector<VT_RGB32>& pixels) {
        return Raster{reinterpret_cast<const std::uint8_t*>(pixels.data()), static_cast<std::ptrdiff_t>(width * sizeof(VT_RGB32)),
                      part_.size.x, part_.share->supersample};
    };
    for (std::size_t start = 0; start < pixels_.size(); start += width) {
        join_row();
        load_share_colors(row_, transparent ? &white : nullptr, &pixels_[start]);
        if (transparent) {
            load_share_colors(row_, &black, &black_pixels_[start]);
        }
    }
    if (transparent) {
        finish_->keep(raster(black_pixels_));
    }
    finish_->store_row(raster(pixels_), 0, {0, 0}, samples);
}

void Share_Files::read_rows(std::uint32_t first, std::uint32_t end, const Row_Places& rows) {
    for (std::uint32_t y = first; y < end; ++y) {
        if (all_) {
            finish_row(rows(y));
        } else {
            join_row();
            std::ranges::copy(row_, rows(y));
        }
    }
}

Row_Source Share_Files::source() {
    Row_Source source;
    for (std::uint32_t end = 0; end < form_.height;) {
        end = std::min(end + rows_of_band, form_.height);
        source.band_ends.push_back(end);
    }
    source.in_order = true;
    source.make = [this, ends = source.band_ends](unsigned, std::uint32_t band, std::uint32_t, const Row_Places& rows) {
        read_rows(band == 0 ? 0 : ends[band - 1], ends[band], rows);
    };
    return source;
}

} // namespace vorna::drawing
