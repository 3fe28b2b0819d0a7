// Documents, JSON or CBOR, from untrusted sources.
#include "drawing/recording/document.h"

#include <utility>
#include <vector>

#include "drawing/files/json_release.h"
#include "drawing/files/printable.h"

namespace vorna::drawing::recording {

namespace {

using nlohmann::json;

constexpr std::size_t deepest_nesting = 32;

// Builds the document and keeps the path of the current value.
class Document_Builder {
public:
    using Exception = nlohmann::detail::exception;

    explicit Document_Builder(const std::function<void(std::size_t)>& take_memory) : take_memory_(take_memory) {}

    json take() { return std::move(*document_); }

    bool null() { return add(nullptr); }
    bool boolean(bool value) { return add(value); }
    bool number_integer(json::number_integer_t value) { return add(value); }
    bool number_unsigned(json::number_unsigned_t value) { return add(value); }
    bool number_float(json::number_float_t value, const std::string&) { return add(value); }
    bool string(std::string& value) {
        require_utf8(value);
        return add(std::move(value));
    }
    bool binary(json::binary_t& bytes) {
        count(bytes.size());
        return add(std::move(bytes));
    }

    bool start_object(std::size_t) { return open(json::object()); }
    bool start_array(std::size_t) { return open(json::array()); }
    bool end_object() { return close(); }
    bool end_array() { return close(); }

    bool key(std::string& name) {
        require_utf8(name);
        Level& level = open_.back();
        level.key = name;
        count(member_bytes + name.size());
        if (level.value->contains(name)) {
            throw Recording_Error(path() + ": given twice");
        }
        return true;
    }

    bool parse_error(std::size_t, const std::string&, const Exception& error) {
        // The library's own classification stands in brackets before the message.
        const std::string_view text = error.what();
        const std::size_t start = text.find("] ");
        throw Recording_Error(path() + (open_.empty() ? "" : ": ") +
                              std::string(start == text.npos ? text : text.substr(start + 2)));
    }

private:
    struct Level {
        json* value;
        std::string key; // of an object: the member that is being read
    };

    // Bytes beside those of the value itself, with the room that growing lists keep ready.
    static constexpr std::size_t value_bytes = 28, container_bytes = 72, member_bytes = 112;

    // In blocks, since most values are small.
    void count(std::size_t bytes) {
        constexpr std::size_t block = std::size_t{1} << 20;
        counted_ += bytes;
        if (counted_ >= block && take_memory_) {
            take_memory_(std::exchange(counted_, 0));
        }
    }

    // The library does not look at texts of CBOR documents, and writes no others.
    void require_utf8(const std::string& text) const {
        if (!is_utf8(text)) {
            throw Recording_Error(path() + (path().empty() ? "" : ": ") + "expected text in UTF-8");
        }
    }

    bool add(json value) {
        count(value_bytes + (value.is_string() ? value.get_ref<const std::string&>().size() : 0));
        place(std::move(value));
        return true;
    }

    bool open(json value) {
        if (open_.size() == deepest_nesting) {
            throw Recording_Error(path() + ": nested too deeply");
        }
        count(container_bytes);
        open_.push_back({place(std::move(value)), {}});
        return true;
    }

    bool close() {
        open_.pop_back();
        return true;
    }

    json* place(json value) {
        if (open_.empty()) {
            *document_ = std::move(value);
            return &*document_;
        }
        json& parent = *open_.back().value;
        if (parent.is_array()) {
            parent.push_back(std::move(value));
            return &parent.back();
        }
        return &(parent[open_.back().key] = std::move(value));
    }

    std::string path() const {
        std::string path;
        for (const Level& level : open_) {
            if (level.value->is_array()) {
                // An open element has its place already, one that could not be read has not.
                const std::size_t index = level.value->size() - (&level == &open_.back() ? 0 : 1);
                path += '[' + std::to_string(index) + ']';
            } else if (!level.key.empty()) {
                path += (path.empty() ? "" : ".") + level.key;
            }
        }
        return path;
    }

    const std::function<void(std::size_t)>& take_memory_;
    std::size_t counted_ = 0;
    Released_Json<json> document_;
    std::vector<Level> open_;
};

// Strings in chunks could be nested, and the library follows them by recursion. Heads stand one after the other, whatever holds
// what.
void refuse_chunks(std::string_view bytes) {
    constexpr unsigned byte_string = 2, text_string = 3, least_with_argument = 24, least_reserved = 28, unknown_length = 31;
    for (std::size_t place = 0; place < bytes.size();) {
        const auto head = static_cast<std::uint8_t>(bytes[place++]);
        const unsigned type = head >> 5, information = head & 31U;
        const bool is_string = type == byte_string || type == text_string;
        if (is_string && information == unknown_length) {
            throw Recording_Error("expected strings whose length is told, found one in chunks at byte " +
                                  std::to_string(place - 1));
        }
        std::uint64_t argument = information;
        if (information >= least_with_argument && information < least_reserved) {
            argument = 0;
            for (unsigned left = 1U << (information - least_with_argument); left > 0 && place < bytes.size(); --left) {
                argument = argument << 8 | static_cast<std::uint8_t>(bytes[place++]);
            }
        }
        if (is_string) {
            if (argument > bytes.size() - place) {
                return; // the document ends too early
            }
            place += argument;
        }
    }
}

} // namespace

bool is_cbor(std::string_view bytes) noexcept {
    // The major type of maps; the text of a JSON document does not begin so.
    constexpr unsigned map = 5;
    return !bytes.empty() && static_cast<std::uint8_t>(bytes.front()) >> 5 == map;
}

json parse_document(std::string_view bytes, const std::function<void(std::size_t)>& take_memory) {
    const std::function<void(std::size_t)> none;
    Document_Builder builder(is_cbor(bytes) ? take_memory : none);
    if (is_cbor(bytes)) {
        refuse_chunks(bytes);
        json::sax_parse(bytes, &builder, json::input_format_t::cbor);
        return builder.take();
    }
    const std::size_t first = bytes.find_first_not_of("\xEF\xBB\xBF \t\r\n");
    if (first != bytes.npos && bytes[first] != '{' && bytes[first] != '[') {
        throw Recording_Error("expected a recording, which is a JSON or CBOR document, found another kind of file");
    }
    json::sax_parse(bytes, &builder);
    return builder.take();
}

} // namespace vorna::drawing::recording
