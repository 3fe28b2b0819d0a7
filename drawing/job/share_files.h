// The files with shares of a model's triangles, joined row by row.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "drawing/image/pixel_finish.h"
#include "drawing/job/image_part.h"
#include "drawing/job/image_stream.h"
#include "drawing/job/part_reader.h"

namespace vorna::drawing {

// Whether a file has a share of the triangles. Throws Usage_Error for a file that is no part of an image.
bool holds_share(const std::string& file);

class Share_Files {
public:
    // The files in any order. all: whether they must have all triangles; else they need only follow one another and make a file
    // with a larger share. Throws Usage_Error for files that do not belong together.
    Share_Files(const std::vector<std::string>& files, bool all);

    // Of the joined file.
    const Image_Form& form() const noexcept { return form_; }
    Image_Form& form() noexcept { return form_; }
    // Once: the readers stand behind the last row then.
    Row_Source source();
    std::uint64_t memory() const; // that reading takes, roughly

private:
    void check_order() const;
    void read_rows(std::uint32_t first, std::uint32_t end, const Row_Places& rows);
    void join_row();
    void finish_row(std::uint8_t* samples);

    std::vector<std::unique_ptr<Part_Reader>> readers_; // in the order of the triangles
    Image_Part part_;                                   // of the joined file
    bool all_;
    Image_Form form_;
    std::unique_ptr<Pixel_Finish> finish_;
    std::vector<std::uint8_t> row_, later_;
    std::vector<VT_RGB32> pixels_, black_pixels_; // of the drawn rows of one row
};

} // namespace vorna::drawing
