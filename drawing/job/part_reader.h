// Files with parts of images, read row by row.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "drawing/image/image_form.h"
#include "drawing/image/png_layout.h"
#include "drawing/job/image_part.h"

namespace vorna::drawing {

// A file that `render --tiles-of` has written. Everything throws Usage_Error that names the file.
class Part_Reader {
public:
    // Reads what comes before the rows.
    explicit Part_Reader(const std::string& name);
    Part_Reader(const Part_Reader&) = delete;
    Part_Reader& operator=(const Part_Reader&) = delete;
    ~Part_Reader();

    const std::string& name() const noexcept { return name_; }
    const Image_Part& part() const noexcept { return part_; }
    // Of the samples that read_row gives.
    const Image_Form& form() const noexcept { return form_; }
    // The next row from the top down, of as many as the form says.
    void read_row(std::uint8_t* samples);

private:
    struct Close {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };
    struct Inflation;

    [[noreturn]] void fail(const std::string& reason) const;
    void read(void* bytes, std::size_t count);
    std::uint32_t read_number();
    void begin_chunk();
    std::string chunk_content();
    void end_chunk();
    void read_head();
    void inflate_row();
    void undo_filter();
    void read_end();

    std::string name_;
    std::unique_ptr<std::FILE, Close> file_;
    Image_Part part_;
    Image_Form form_;
    std::optional<Png_Layout> layout_; // of the rows in the file
    // Of the chunk under way.
    std::string type_;
    std::uint32_t left_ = 0;
    std::uint32_t checksum_ = 0;

    std::unique_ptr<Inflation> inflation_;
    std::vector<std::uint8_t> packed_;
    std::vector<std::uint8_t> row_, above_; // the filter's number and a pixel of zeros before the samples
    std::uint32_t rows_read_ = 0;
};

} // namespace vorna::drawing
