// What is left of a PLY file in pieces of records, for threads that read them side by side. A piece is read without knowing what
// comes before it, as far as its records have the usual form: in a text one line each, in binary files all of the same length.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>
#include <vector>

#include "drawing/model/plain_line.h"
#include "drawing/model/ply_header.h"
#include "drawing/model/text_pieces.h"

namespace vorna::drawing::model {

template <class Values> class Ply_Pieces;

template <> class Ply_Pieces<Text_Values> {
public:
    class Reader {
    public:
        Reader(std::string_view piece, const char* text_end) : line_(piece.data(), text_end), end_(piece.data() + piece.size()) {}

        bool at_end() const noexcept { return line_.place() >= end_; }
        bool number(Scalar, double& value) noexcept {
            float read = 0;
            const bool is_read = line_.number(read);
            value = static_cast<double>(read);
            return is_read;
        }
        bool count(Scalar, std::uint32_t& value) noexcept { return line_.integer(value); }
        // So many numbers, appended to the list. False also for those that are not below the limit.
        bool indices(Scalar, std::uint32_t count, std::size_t limit, std::vector<std::uint32_t>& list) {
            if (count > most_indices) {
                return false;
            }
            for (std::uint32_t i = 0; i < count; ++i) {
                std::uint32_t index = 0;
                if (!line_.integer(index) || index >= limit) {
                    return false;
                }
                list.push_back(index);
            }
            return true;
        }
        bool finish_record() noexcept { return line_.finish(); }

    private:
        static constexpr std::uint32_t most_indices = Text_Pieces::usual_size / 2; // of a line, which may be longer than a piece

        Plain_Line line_;
        const char* end_;
    };

    static constexpr std::uint64_t piece_bytes = 2 * Text_Pieces::usual_size; // at the most, but for very long lines

    // list_length: of the only list of each record; lines tell it themselves.
    Ply_Pieces(Text_Values& values, const Ply_Element&, std::uint32_t) : text_(values.rest()), pieces_(text_) {}

    std::size_t count() const noexcept { return pieces_.count(); }
    Reader reader(std::size_t piece) const { return {pieces_[piece], text_.data() + text_.size()}; }
    // Moves behind so many records of a piece that begins at the next value.
    void move(Text_Values& values, std::size_t piece, std::size_t records) const {
        Plain_Line line(pieces_[piece].data(), text_.data() + text_.size());
        for (std::size_t i = 0; i < records; ++i) {
            line.skip();
        }
        values.move(line.place(), static_cast<std::int64_t>(records));
    }

private:
    std::string_view text_;
    Text_Pieces pieces_;
};

template <std::endian Order> class Ply_Pieces<Binary_Values<Order>> {
public:
    class Reader {
    public:
        Reader(std::string_view piece, std::uint32_t list_length)
            : place_(piece.data()), end_(piece.data() + piece.size()), list_length_(list_length) {}

        bool at_end() const noexcept { return place_ == end_; }
        bool number(Scalar scalar, double& value) noexcept {
            return with_type(scalar, [&](auto type) {
                value = static_cast<double>(take<decltype(type)>());
                return true;
            });
        }
        bool count(Scalar scalar, std::uint32_t& value) noexcept {
            return with_type(scalar, [&](auto type) {
                const auto read = take<decltype(type)>();
                value = list_length_;
                return std::is_integral_v<decltype(type)> && static_cast<double>(read) == list_length_;
            });
        }
        bool indices(Scalar scalar, std::uint32_t count, std::size_t limit, std::vector<std::uint32_t>& list) {
            return with_type(scalar, [&](auto type) {
                if constexpr (std::is_integral_v<decltype(type)>) {
                    const std::size_t first = list.size();
                    list.resize(first + count);
                    bool all = true;
                    for (std::size_t i = first; i < list.size(); ++i) {
                        list[i] = static_cast<std::uint32_t>(take<decltype(type)>());
                        all = all && list[i] < limit;
                    }
                    return all;
                }
                return false;
            });
        }
        bool finish_record() const noexcept { return true; }

    private:
        template <class Number> Number take() noexcept {
            const char* const start = place_;
            place_ += sizeof(Number);
            return load<Number, Order>(start);
        }

        const char* place_;
        const char* end_;
        std::uint32_t list_length_;
    };

    static constexpr std::uint64_t piece_bytes = Text_Pieces::usual_size;

    Ply_Pieces(const Binary_Values<Order>& values, const Ply_Element& element, std::uint32_t list_length)
        : list_length_(list_length) {
        for (const Ply_Property& property : element.properties) {
            record_size_ +=
                property.count ? size_of(*property.count) + list_length * size_of(property.scalar) : size_of(property.scalar);
        }
        piece_size_ = piece_bytes / record_size_ * record_size_;
        const std::uint64_t records =
            std::min<std::uint64_t>(static_cast<std::uint64_t>(element.count), values.rest().size() / record_size_);
        bytes_ = values.rest().substr(0, records * record_size_);
    }

    // None when a record is longer than a piece may be.
    std::size_t count() const noexcept { return piece_size_ == 0 ? 0 : (bytes_.size() + piece_size_ - 1) / piece_size_; }
    Reader reader(std::size_t piece) const { return {bytes_.substr(piece * piece_size_, piece_size_), list_length_}; }
    void move(Binary_Values<Order>& values, std::size_t, std::size_t records) const { values.skip(records * record_size_); }

private:
    std::string_view bytes_;
    std::uint32_t list_length_;
    std::size_t record_size_ = 0, piece_size_ = 0;
};

} // namespace vorna::drawing::model
