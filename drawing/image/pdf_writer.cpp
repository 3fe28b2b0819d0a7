// PDF files of one page with an image, whose rows are compressed as those of PNG files are.
#include "drawing/image/pdf_writer.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace vorna::drawing {

namespace {

constexpr double points_per_pixel = 0.75, largest_page = 14400;
constexpr double points_per_metre = 72 / 0.0254;

// Without trailing zeros, and with a point in every locale.
std::string decimal(double value) {
    const auto thousandths = static_cast<long long>(value * 1000 + 0.5);
    std::string digits = std::to_string(thousandths % 1000);
    digits.insert(0, 3 - digits.size(), '0');
    return std::to_string(thousandths / 1000) + '.' + digits;
}

std::string hexadecimal(const std::string& bytes) {
    std::string text;
    for (const char byte : bytes) {
        text += "0123456789abcdef"[static_cast<std::uint8_t>(byte) >> 4];
        text += "0123456789abcdef"[static_cast<std::uint8_t>(byte) & 0xF];
    }
    return text;
}

} // namespace

void Pdf_Encoder::begin_object(std::string& text) {
    places_.push_back(size_ + text.size());
    text += std::to_string(places_.size()) + " 0 obj\n";
}

std::string Pdf_Encoder::head() {
    const double points = form().pixels_per_metre > 0 ? points_per_metre / form().pixels_per_metre : points_per_pixel;
    const double scale = std::min(points, largest_page / static_cast<double>(std::max(form().width, form().height)));
    const std::string width = decimal(form().width * scale), height = decimal(form().height * scale);
    const std::string columns = std::to_string(form().width), bits = std::to_string(layout().sample_bits());
    const bool indexed = layout().colors() == Png_Layout::Colors::palette;
    const std::string draw = "q " + width + " 0 0 " + height + " 0 0 cm /Image Do Q\n";
    const std::string space = indexed ? "[/Indexed /DeviceRGB " + std::to_string(layout().palette().size() / 3 - 1) + " <" +
                                            hexadecimal(layout().palette()) + ">]"
                                      : "/DeviceRGB";
    std::string text = "%PDF-1.5\n%\xE2\xE3\xCF\xD3\n"; // bytes that no text has
    begin_object(text);
    text += "<< /Type /Catalog /Pages 2 0 R >>\nendobj\n";
    begin_object(text);
    text += "<< /Type /Pages /Kids [3 0 R] /Count 1 >>\nendobj\n";
    begin_object(text);
    text += "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 " + width + ' ' + height +
            "] /Contents 4 0 R /Resources << /XObject << /Image 5 0 R >> >> >>\nendobj\n";
    begin_object(text);
    text += "<< /Length " + std::to_string(draw.size()) + " >>\nstream\n" + draw + "endstream\nendobj\n";
    begin_object(text);
    text += "<< /Type /XObject /Subtype /Image /Width " + columns + " /Height " + std::to_string(form().height) +
            " /ColorSpace " + space + " /BitsPerComponent " + bits +
            " /Filter /FlateDecode /DecodeParms << /Predictor 15 /Colors " + (indexed ? "1" : "3") + " /BitsPerComponent " +
            bits + " /Columns " + columns + " >> /Length 6 0 R >>\nstream\n";
    size_ += text.size();
    return text;
}

std::string Pdf_Encoder::join(const Sample_Rows& rows, Packed_Rows packed) {
    std::string bytes = joined(rows, packed);
    size_ += bytes.size();
    content_ += bytes.size();
    return bytes;
}

std::string Pdf_Encoder::tail() {
    std::string text = "\nendstream\nendobj\n";
    begin_object(text);
    text += std::to_string(content_) + "\nendobj\n";
    const std::uint64_t table = size_ + text.size();
    const std::string count = std::to_string(places_.size() + 1);
    text += "xref\n0 " + count + "\n0000000000 65535 f \n";
    for (const std::uint64_t place : places_) {
        const std::string digits = std::to_string(place);
        text += std::string(10 - std::min<std::size_t>(digits.size(), 10), '0') + digits + " 00000 n \n";
    }
    return text + "trailer\n<< /Size " + count + " /Root 1 0 R >>\nstartxref\n" + std::to_string(table) + "\n%%EOF\n";
}

} // namespace vorna::drawing
