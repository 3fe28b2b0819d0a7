// STL, text and binary: loose triangles, joined where their corners are equal.
#include <algorithm>
#include <atomic>
#include <cmath>
#include <utility>

#include "drawing/files/helpers.h"
#include "drawing/files/memory_allowance.h"
#include "drawing/model/bytes.h"
#include "drawing/model/model_reader.h"
#include "drawing/model/places.h"
#include "drawing/model/plain_line.h"
#include "drawing/model/text_cursor.h"
#include "drawing/model/text_pieces.h"
#include "drawing/model/vectors.h"

namespace vorna::drawing::model {
namespace {

constexpr std::size_t binary_header = 84;
constexpr std::size_t binary_facet = 50;
constexpr std::string_view solid = "solid";
constexpr std::uint64_t facet_memory = vertex_memory + triangle_memory; // most share two corners with others

// Joins corners at equal places.
Mesh joined_corners(const std::vector<VT_Vector>& corners, unsigned threads) {
    Places places = find_places(corners, threads);
    Mesh mesh;
    mesh.triangles = std::move(places.numbers);
    mesh.positions.resize(places.count());
    share_range(places.count(), threads, [&](std::size_t first, std::size_t end) {
        for (std::size_t place = first; place < end; ++place) {
            mesh.positions[place] = corners[places.firsts[place]] + VT_Vector{0, 0, 0}; // turns -0 into 0
        }
    });
    return mesh;
}

bool is_finite(const VT_Vector& corner) {
    return std::isfinite(corner.x) && std::isfinite(corner.y) && std::isfinite(corner.z);
}

Mesh read_binary(const std::string& file, std::string_view content, Load_Limits& limits) {
    if (content.size() < binary_header) {
        throw Cut_Off_Error(file + ": byte " + std::to_string(content.size()) +
                            ": expected a header of 84 bytes, found the end of the file");
    }
    const std::uint64_t count = load<std::uint32_t, std::endian::little>(content.data() + 80);
    if (content.size() < binary_header + count * binary_facet) {
        throw Cut_Off_Error(file + ": byte " + std::to_string(content.size()) + ": expected " + std::to_string(count) +
                            " facets of 50 bytes, found the end of the file");
    }
    limits.take_memory(file, count * facet_memory);
    const auto place_of = [](std::size_t corner) { return binary_header + corner / 3 * binary_facet + 12 + corner % 3 * 12; };
    std::vector<VT_Vector> corners(3 * count);
    std::atomic<bool> are_finite = true;
    share_range(count, limits.threads(), [&](std::size_t first, std::size_t end) {
        bool all = true;
        for (std::size_t corner = 3 * first; corner < 3 * end; ++corner) {
            const char* const place = content.data() + place_of(corner);
            corners[corner] = {load<float, std::endian::little>(place), load<float, std::endian::little>(place + 4),
                               load<float, std::endian::little>(place + 8)};
            all = all && is_finite(corners[corner]);
        }
        if (!all) {
            are_finite = false;
        }
    });
    if (!are_finite) {
        const auto found = std::ranges::find_if_not(corners, is_finite);
        throw Model_Error(file + ": byte " + std::to_string(place_of(static_cast<std::size_t>(found - corners.begin()))) +
                          ": expected three finite coordinates");
    }
    return joined_corners(corners, limits.threads());
}

// The facets that begin in a piece of a text, written as most programs do.
struct Facets {
    std::vector<VT_Vector> corners;
    const char* start = nullptr; // of the first facet; behind the piece's end where there is none
    const char* end = nullptr;   // behind the last one
    std::uint32_t lines = 0;     // from start to end

    // rest: from the piece on to the end of the text.
    void read(std::string_view piece, std::string_view rest) {
        corners.clear();
        start = end = nullptr;
        lines = 0;
        Plain_Line line(rest.data(), rest.data() + rest.size());
        const char* const piece_end = piece.data() + piece.size();
        while (line.place() < piece_end && !line.starts_with("facet")) {
            line.skip();
        }
        line.skip_blanks();
        start = end = line.place();
        while (end < piece_end && read_facet(line)) {
            end = line.place();
            lines += lines_of_facet;
        }
        corners.resize(lines / lines_of_facet * 3);
    }

private:
    static constexpr std::uint32_t lines_of_facet = 7;

    bool read_facet(Plain_Line& line) {
        if (!line.starts_with("facet")) {
            return false;
        }
        line.skip();
        if (!line.accept("outer") || !line.accept("loop") || !line.finish()) {
            return false;
        }
        for (int corner = 0; corner < 3; ++corner) {
            VT_Vector place;
            if (!line.accept("vertex") || !line.number(place.x) || !line.number(place.y) || !line.number(place.z) ||
                !line.finish()) {
                return false;
            }
            corners.push_back(place);
        }
        return line.accept("endloop") && line.finish() && line.accept("endfacet") && line.finish();
    }
};

class Text_Reader {
public:
    Text_Reader(const std::string& file, std::string_view content, Load_Limits& limits)
        : file_(file), content_(content), limits_(limits), memory_(limits, file), cursor_(file, content) {}

    // Threads read the facets of pieces side by side, as long as each piece begins where the one before has ended.
    Mesh read() {
        expect(solid);
        cursor_.next_line();
        constexpr std::uint64_t memory_ratio = 4; // corners for bytes of a text, with the room that growing lists have
        const Text_Pieces pieces(content_);
        const std::uint64_t place_bytes = std::min(2 * Text_Pieces::usual_size, content_.size()) * memory_ratio;
        const std::size_t threads = threads_for_pieces(limits_, place_bytes), places = places_in_order(threads);
        const std::uint64_t memory = places * place_bytes;
        if (memory <= limits_.memory_left()) {
            const Load_Limits::Loan loan(limits_, file_, memory);
            std::vector<Facets> facets(places);
            share_in_order(
                pieces.count(), threads,
                [&](std::size_t piece, std::size_t place) {
                    const std::string_view text = pieces[piece];
                    const auto start = static_cast<std::size_t>(text.data() - content_.data());
                    facets[place].read(text, content_.substr(start));
                },
                [&](std::size_t piece, std::size_t place) {
                    append(facets[place], pieces[piece]);
                    return true;
                });
        }
        read_statements(content_.data() + content_.size());
        return joined_corners(corners_, limits_.threads());
    }

private:
    // Statements between the facets of a piece, and facets that are written otherwise, are read one by one.
    void append(const Facets& facets, std::string_view piece) {
        read_statements(facets.start);
        if (cursor_.place() == facets.start) {
            memory_.take(facet_memory * (facets.corners.size() / 3));
            corners_.insert(corners_.end(), facets.corners.begin(), facets.corners.end());
            cursor_ = cursor_.at(facets.end, cursor_.line() + facets.lines);
        }
        read_statements(piece.data() + piece.size());
    }

    // Those that begin before a place.
    void read_statements(const char* end) {
        for (cursor_.skip_space(); cursor_.place() < end && !cursor_.at_end(); cursor_.skip_space()) {
            const Text_Cursor before = cursor_;
            const std::string_view keyword = cursor_.word();
            if (is_keyword(keyword, "facet")) {
                read_facet();
            } else if (is_keyword(keyword, "endsolid") || is_keyword(keyword, "solid")) {
                cursor_.next_line();
            } else {
                Text_Cursor(before).fail("'facet' or 'endsolid'");
            }
        }
    }

    void expect(std::string_view keyword) {
        cursor_.skip_space();
        const Text_Cursor before = cursor_;
        if (!is_keyword(cursor_.word(), keyword)) {
            Text_Cursor(before).fail(std::string("'").append(keyword).append("'"));
        }
    }

    void read_facet() {
        memory_.take(facet_memory);
        cursor_.next_line(); // The normal follows from the corners.
        expect("outer");
        expect("loop");
        for (int corner = 0; corner < 3; ++corner) {
            expect("vertex");
            const float x = cursor_.number("a vertex coordinate");
            const float y = cursor_.number("a vertex coordinate");
            const float z = cursor_.number("a vertex coordinate");
            corners_.push_back({x, y, z});
        }
        expect("endloop");
        expect("endfacet");
    }

    const std::string& file_;
    std::string_view content_;
    Load_Limits& limits_;
    Memory_Allowance memory_;
    Text_Cursor cursor_;
    std::vector<VT_Vector> corners_;
};

// Binary files may begin with "solid" too, so the size decides first.
bool is_text(std::string_view content) {
    if (content.size() >= binary_header &&
        content.size() ==
            binary_header + binary_facet * std::uint64_t{load<std::uint32_t, std::endian::little>(content.data() + 80)}) {
        return false;
    }
    const std::size_t start = content.find_first_not_of(" \t\r\n");
    return start != std::string_view::npos && is_keyword(content.substr(start, solid.size()), solid);
}

} // namespace

Mesh read_stl(const std::string& file, std::string_view content, Load_Limits& limits) {
    return is_text(content) ? Text_Reader(file, content, limits).read() : read_binary(file, content, limits);
}

} // namespace vorna::drawing::model
