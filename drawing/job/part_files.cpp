// The parts of an image in files.
#include "drawing/job/part_files.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "drawing/files/path.h"
#include "drawing/files/usage_error.h"
#include "drawing/image/image_formats.h"
#include "drawing/image/sha256.h"

namespace vorna::drawing {
namespace {

constexpr std::uint64_t reader_memory = std::uint64_t{192} << 10; // of an open part, besides two rows

std::uint32_t rows_above(const Image_Part& part) {
    return static_cast<std::uint32_t>(part.size.y - 1 - part.area().top);
}

} // namespace

std::string part_text(const Image_Part& part) {
    if (part.share) {
        const Triangle_Share& share = *part.share;
        return "triangles of part " + std::to_string(share.first) +
               (share.end - share.first > 1 ? " to " + std::to_string(share.end - 1) : "") + " of " +
               std::to_string(share.count) + " of an image of " + std::to_string(part.size.x / share.supersample) + "x" +
               std::to_string(part.size.y / share.supersample);
    }
    return "part " + std::to_string(part.number) + " of " + std::to_string(part.columns) + "x" + std::to_string(part.rows) +
           " of an image of " + std::to_string(part.size.x) + "x" + std::to_string(part.size.y);
}

std::optional<std::string> digest_of_part(const std::string& file, const Image_Part& part) {
    std::error_code none;
    if (!std::filesystem::is_regular_file(path_of(file), none)) {
        return std::nullopt;
    }
    try {
        Part_Reader reader(file);
        const Image_Part& found = reader.part();
        if (!belong_together(found, part) || found.number != part.number || found.area() != part.area() ||
            found.share != part.share) {
            return std::nullopt;
        }
        Sha256 digest;
        std::vector<std::uint8_t> row(reader.form().row_bytes());
        for (std::uint32_t y = 0; y < reader.form().height; ++y) {
            reader.read_row(row.data());
            digest.add(row.data(), row.size());
        }
        return digest.finish();
    } catch (const Usage_Error&) {
        return std::nullopt;
    }
}

Part_Files::Part_Files(const std::vector<std::string>& files) {
    for (const std::string& file : files) {
        if (file == "-") {
            throw Usage_Error("assemble: expected files with names, found standard input");
        }
        add(Part_Reader(file));
    }
    std::int32_t missing = 0;
    while (names_.contains(missing)) {
        ++missing;
    }
    if (missing < std::int64_t{first().columns} * first().rows) {
        Image_Part lost = first();
        lost.number = missing;
        throw Usage_Error("assemble: expected all parts, found no " + part_text(lost));
    }
}

void Part_Files::add(const Part_Reader& reader) {
    const Image_Part& found = reader.part();
    const Image_Form& form = reader.form();
    if (names_.empty()) {
        form_ = form;
        form_.width = static_cast<std::uint32_t>(found.size.x);
        form_.height = static_cast<std::uint32_t>(found.size.y);
        form_.place.clear();
        form_.reducible = true;
        parts_.emplace(found.number, found);
    }
    Image_Part same_origin = found;
    same_origin.origin = first().origin;
    if (!belong_together(same_origin, first())) {
        throw Usage_Error(reader.name() + ": expected a part of the same image, found " + part_text(found));
    }
    if (found.origin != first().origin) {
        throw Usage_Error(reader.name() + ": expected a part of the same inputs, drawn with the same options, as " +
                          names_.begin()->second + ", found one of others");
    }
    if (form.colors != form_.colors || form.opaque != form_.opaque || form.palette != form_.palette ||
        form.pixels_per_metre != form_.pixels_per_metre) {
        throw Usage_Error(reader.name() + ": expected pixels like those of the other parts, found others");
    }
    std::string& name = names_[found.number];
    if (!name.empty()) {
        throw Usage_Error(reader.name() + ": expected each part once, found " + part_text(found) + " in " + name + " too");
    }
    name = reader.name();
    parts_.emplace(found.number, found);
}

Part_Bands::Part_Bands(const std::map<std::int32_t, Image_Part>& parts, const Image_Form& form, const std::string& file) {
    const std::uint32_t block = image_encoder(form)->block_rows();
    std::vector<std::uint32_t> borders{form.height};
    for (const auto& [number, part] : parts) {
        borders.push_back(rows_above(part));
    }
    std::ranges::sort(borders);
    borders.erase(std::unique(borders.begin(), borders.end()), borders.end());
    std::uint32_t from = 0;
    for (const std::uint32_t end : borders) {
        if (end == 0) {
            continue;
        }
        std::vector<std::pair<std::int32_t, std::int32_t>> found; // left column and number
        for (const auto& [number, part] : parts) {
            const VT_Int_Rectangle area = part.area();
            if (rows_above(part) <= from && static_cast<std::uint32_t>(part.size.y - area.bottom) > from) {
                found.emplace_back(area.left, number);
            }
        }
        std::ranges::sort(found);
        std::vector<std::int32_t> row;
        std::int32_t next = 0;
        for (const auto& [left, number] : found) {
            if (left != next) {
                break;
            }
            next = parts.at(number).area().right + 1;
            row.push_back(number);
        }
        if (row.size() != found.size() || static_cast<std::uint32_t>(next) != form.width) {
            throw Usage_Error(file + ": expected parts that cover the image once, found others in row " + std::to_string(from));
        }
        most = std::max(most, static_cast<std::uint32_t>(row.size()));
        while (from < end) {
            from = std::min(from + block, end);
            ends.push_back(from);
            numbers.push_back(row);
        }
    }
}

std::uint64_t Part_Bands::memory(const Image_Form& form) const {
    return most * reader_memory + 2 * form.row_bytes();
}

Part_Source::Part_Source(const Part_Files& files)
    : files_(files), bands_(files.parts(), files.form(), files.names().begin()->second) {
    for (const auto& [number, part] : files.parts()) {
        readers_.emplace(number, nullptr);
    }
    source_.band_ends = bands_.ends;
    source_.parts = bands_.most;
    source_.in_order = true;
    source_.make = [this](unsigned, std::uint32_t band, std::uint32_t place, const Row_Places& rows) {
        if (place < bands_.numbers[band].size()) {
            read(band, place, rows);
        }
    };
}

void Part_Source::read(std::uint32_t band, std::uint32_t place, const Row_Places& rows) {
    const std::int32_t number = bands_.numbers[band][place];
    const Image_Part& part = files_.parts().at(number);
    std::unique_ptr<Part_Reader>& reader = readers_.at(number);
    const std::uint32_t from = band == 0 ? 0 : bands_.ends[band - 1];
    if (from == rows_above(part)) {
        reader = std::make_unique<Part_Reader>(files_.names().at(number));
        const Image_Part& found = reader->part();
        if (!belong_together(found, part) || found.number != number || found.area() != part.area()) {
            throw Usage_Error(reader->name() + ": expected the part that it was, found another one");
        }
    }
    const std::size_t start = static_cast<std::size_t>(part.area().left) * files_.form().pixel_bytes();
    for (std::uint32_t y = from; y < bands_.ends[band]; ++y) {
        reader->read_row(rows(y) + start);
    }
    if (bands_.ends[band] == static_cast<std::uint32_t>(part.size.y - part.area().bottom)) {
        reader = nullptr;
    }
}

} // namespace vorna::drawing
