// The parts of an image in files, and their rows side by side.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "drawing/image/image_form.h"
#include "drawing/job/image_part.h"
#include "drawing/job/image_stream.h"
#include "drawing/job/part_reader.h"

namespace vorna::drawing {

// Which part of which image, for messages.
std::string part_text(const Image_Part& part);

// The digest of the pixels of a file that holds exactly this part, drawn from the same inputs in the same way, undamaged; none
// for every other file and for none.
std::optional<std::string> digest_of_part(const std::string& file, const Image_Part& part);

// Files with all parts of one image.
class Part_Files {
public:
    // Throws Usage_Error when the files are not the parts of one image.
    explicit Part_Files(const std::vector<std::string>& files);

    const Image_Part& first() const noexcept { return parts_.begin()->second; }
    const Image_Form& form() const noexcept { return form_; } // of the whole image
    Image_Form& form() noexcept { return form_; }
    const std::map<std::int32_t, std::string>& names() const noexcept { return names_; } // by number of the part
    const std::map<std::int32_t, Image_Part>& parts() const noexcept { return parts_; }

private:
    void add(const Part_Reader& reader);

    Image_Form form_;
    std::map<std::int32_t, std::string> names_;
    std::map<std::int32_t, Image_Part> parts_;
};

// An image without its pixels: where its parts lie in bands of rows. In a band every part has all rows or none.
struct Part_Bands {
    // Throws Usage_Error when the parts overlap or do not cover the image. file: for its message.
    Part_Bands(const std::map<std::int32_t, Image_Part>& parts, const Image_Form& form, const std::string& file);

    std::vector<std::uint32_t> ends;                    // rows from the top
    std::vector<std::vector<std::int32_t>> numbers;     // by band: its parts from left to right
    std::uint32_t most = 0;                             // of the parts of a band
    std::uint64_t memory(const Image_Form& form) const; // that reading the parts takes, roughly
};

// Reads the parts of a band side by side; files are open from their first row to their last.
class Part_Source {
public:
    // The files must outlive it.
    explicit Part_Source(const Part_Files& files);

    const Row_Source& source() const noexcept { return source_; }
    std::uint64_t memory() const { return bands_.memory(files_.form()); }

private:
    void read(std::uint32_t band, std::uint32_t place, const Row_Places& rows);

    const Part_Files& files_;
    Part_Bands bands_;
    std::map<std::int32_t, std::unique_ptr<Part_Reader>> readers_; // by number; entries of all parts, since threads share it
    Row_Source source_;
};

} // namespace vorna::drawing
