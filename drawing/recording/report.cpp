// Reports of replays as JSON.
#include <cstring>
#include <nlohmann/json.hpp>

#include "drawing/image/image_file.h"
#include "drawing/recording/replay.h"

namespace vorna::drawing::recording {

namespace {

using Json = nlohmann::ordered_json;

Json json_of_pixel(Buffer_Format format, const std::uint8_t* pixel) {
    switch (format) {
    case Buffer_Format::index8:
        return *pixel;
    case Buffer_Format::depth16: {
        std::uint16_t depth;
        std::memcpy(&depth, pixel, sizeof depth);
        return depth;
    }
    default:
        return {pixel[2], pixel[1], pixel[0], pixel[3]};
    }
}

Json json_of(const Report::Read& read) {
    if (!read.image) {
        return nullptr;
    }
    const VT_Shared_Image& image = *read.image;
    Json rows = Json::array();
    for (std::int32_t r = 0; r < image.height(); ++r) {
        Json row = Json::array();
        for (std::int32_t c = 0; c < image.width(); ++c) {
            row.push_back(json_of_pixel(image.format(), image.row(r) + c * vorna::bytes_per_pixel(image.format())));
        }
        rows.push_back(std::move(row));
    }
    return {{"call", read.call},
            {"width", image.width()},
            {"height", image.height()},
            {"format", static_cast<std::int32_t>(image.format())},
            {"rows", std::move(rows)}};
}

Json json_of(const VT_DCI_Point& point) {
    return {point.x, point.y, point.z};
}

} // namespace

std::string json_of(const Report& report) {
    Json standard = Json::array();
    for (const Report::Standard& drawn : report.standard) {
        standard.push_back({drawn.call, drawn.function});
    }
    Json reads = Json::array();
    for (const Report::Read& read : report.reads) {
        reads.push_back(json_of(read));
    }
    Json presented = Json::array();
    for (const Report::Presented& shown : report.presented) {
        presented.push_back({json_of(shown.top_left), json_of(shown.bottom_right), shown.x, shown.y});
    }
    return Json{{"standard", standard}, {"reads", reads}, {"presented", presented}}.dump() + '\n';
}

} // namespace vorna::drawing::recording
