// STL, text and binary: loose triangles, joined where their corners are equal.
#include <bit>
#include <cstring>

#include "drawing/files/memory_allowance.h"
#include "drawing/model/bytes.h"
#include "drawing/model/model_reader.h"
#include "drawing/model/text_cursor.h"
#include "drawing/model/tuple_table.h"

namespace vorna::drawing::model {
namespace {

constexpr std::size_t binary_header = 84;
constexpr std::size_t binary_facet = 50;
constexpr std::string_view solid = "solid";
constexpr std::uint64_t facet_memory = vertex_memory + triangle_memory; // most share two corners with others

class Corner_Joiner {
public:
    void add(VT_Vector corner) {
        waiting_.push_back(words_of(corner));
        if (waiting_.size() == most_waiting) {
            join();
        }
    }

    // Corners that follow.
    void reserve(std::size_t corners) { triangles_.reserve(corners); }

    Mesh take_mesh() {
        join();
        Mesh mesh;
        mesh.triangles = std::move(triangles_);
        mesh.positions.reserve(table_.keys().size());
        for (const auto& [x, y, z] : table_.keys()) {
            mesh.positions.push_back({std::bit_cast<float>(x), std::bit_cast<float>(y), std::bit_cast<float>(z)});
        }
        return mesh;
    }

private:
    static constexpr std::size_t most_waiting = 1024;

    void join() {
        table_.append_indices(waiting_, triangles_);
        waiting_.clear();
    }

    Triple_Table table_;
    std::vector<Triple_Table::Tuple> waiting_; // corners that have no number yet
    std::vector<std::uint32_t> triangles_;
};

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
    Corner_Joiner joiner;
    joiner.reserve(3 * count);
    for (std::uint64_t facet = 0; facet < count; ++facet) {
        const std::size_t corners = binary_header + facet * binary_facet + 12;
        for (std::size_t place = corners; place < corners + 36; place += 12) {
            const VT_Vector corner{load<float, std::endian::little>(content.data() + place),
                                   load<float, std::endian::little>(content.data() + place + 4),
                                   load<float, std::endian::little>(content.data() + place + 8)};
            if (!std::isfinite(corner.x) || !std::isfinite(corner.y) || !std::isfinite(corner.z)) {
                throw Model_Error(file + ": byte " + std::to_string(place) + ": expected three finite coordinates");
            }
            joiner.add(corner);
        }
    }
    return joiner.take_mesh();
}

class Text_Reader {
public:
    Text_Reader(const std::string& file, std::string_view content, Load_Limits& limits)
        : memory_(limits, file), cursor_(file, content) {}

    Mesh read() {
        expect(solid);
        cursor_.next_line();
        for (;;) {
            cursor_.skip_space();
            if (cursor_.at_end()) {
                return joiner_.take_mesh();
            }
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

private:
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
            joiner_.add({x, y, z});
        }
        expect("endloop");
        expect("endfacet");
    }

    Memory_Allowance memory_;
    Text_Cursor cursor_;
    Corner_Joiner joiner_;
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
