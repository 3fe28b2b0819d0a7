// The features of a GeoJSON text, read in one pass.
#include "drawing/map/geojson_features.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <utility>

#include "drawing/files/interruption.h"
#include "drawing/files/json_memory.h"
#include "drawing/files/text_encoding.h"
#include "drawing/map/coordinate_lists.h"
#include "drawing/map/json_scanner.h"
#include "drawing/map/simple_style.h"

namespace vorna::drawing::map {
namespace {

using Json = nlohmann::ordered_json;
using String = Json_Scanner::String;

bool is_number(std::string_view token) {
    return !token.empty() && (token[0] == '-' || (token[0] >= '0' && token[0] <= '9'));
}

bool is_whole(std::string_view token) {
    return token.find_first_of(".eE") == token.npos;
}

// token: of a valid value. The same as of a document's value.
Value value_of(std::string_view token) {
    if (is_number(token)) {
        double number = 0;
        Json_Scanner(token).read_number(number);
        return number;
    }
    if (token.starts_with('"')) {
        return token.find('\\') == token.npos ? std::string(token.substr(1, token.size() - 2))
                                              : Json::parse(token).get<std::string>();
    }
    return token == "true" ? Value(1.0) : token == "false" ? Value(0.0) : Value();
}

// Numbers as the library prints them.
std::string text_of_token(std::string_view token) {
    constexpr std::size_t most_digits = 18;
    if (!is_number(token)) {
        return text_of(value_of(token));
    }
    return token.size() <= most_digits && token[0] != '-' && is_whole(token) ? std::string(token) : Json::parse(token).dump();
}

// The properties of a feature that its shape has, by their keys: of names, of styles, and the query's fields.
class Property_Tokens {
public:
    static constexpr std::size_t first_style = name_keys.size(), first_field = first_style + simple_style_keys.size();

    explicit Property_Tokens(const std::vector<std::string>& fields) : keys_(name_keys.begin(), name_keys.end()) {
        keys_.insert(keys_.end(), simple_style_keys.begin(), simple_style_keys.end());
        keys_.insert(keys_.end(), fields.begin(), fields.end());
        for (const std::string& key : keys_) {
            firsts_.push_back(index_of(key));
        }
        tokens_.resize(keys_.size());
    }

    void clear() {
        std::ranges::fill(tokens_, std::string_view());
        count_ = 0;
    }
    // Where the token of the next member belongs; null: nowhere. Most features have the keys of the one before, in its order.
    std::string_view* place_of(std::string_view key) {
        if (count_ == last_.size()) {
            last_.emplace_back(key, index_of(key));
        }
        auto& [last_key, index] = last_[count_++];
        if (last_key != key) {
            last_key = key;
            index = index_of(key);
        }
        return index < tokens_.size() ? &tokens_[index] : nullptr;
    }
    // Empty: the feature has no such property.
    std::string_view operator[](std::size_t index) const { return tokens_[firsts_[index]]; }
    std::size_t size() const { return tokens_.size(); }

private:
    std::size_t index_of(std::string_view key) const {
        return static_cast<std::size_t>(std::ranges::find(keys_, key) - keys_.begin());
    }

    std::vector<std::string> keys_;
    std::vector<std::size_t> firsts_;      // the first of equal keys
    std::vector<std::string_view> tokens_; // of the first of equal keys
    std::vector<std::pair<std::string_view, std::size_t>> last_;
    std::size_t count_ = 0; // of members so far
};

class Feature_Reader {
public:
    Feature_Reader(std::string_view text, const Map_Query& query, const Load_Limits& limits, Geojson_Features& features)
        : text_(text), scanner_(without_byte_order_mark(text)), limits_(limits), values_per_feature_(query.fields.size()),
          tokens_(query.fields), features_(features) {}

    bool read() {
        const char* copied = text_.data();
        bool has_features = false;
        scanner_.skip_space();
        const bool is_sound = scanner_.read_object([&](const String& key) {
            if (key.has_escape || key.text != "features") {
                return !key.has_escape && scanner_.skip_value();
            }
            features_.rest.append(copied, scanner_.place()).append("[]");
            const bool is_first = !std::exchange(has_features, true);
            const bool is_read = is_first && scanner_.read_array([this] { return read_feature(); });
            copied = scanner_.place();
            return is_read;
        });
        scanner_.skip_space();
        features_.rest.append(copied, text_.data() + text_.size());
        return is_sound && has_features && scanner_.at_end();
    }

    // Of lines and faces, and of several points.
    std::uint64_t position_count() const { return position_count_; }
    std::uint64_t value_memory() const { return values_per_feature_ * features_.shapes.size() * sizeof(Value); }

private:
    // Stores the token of the value at the scanner's place, unless there is one of the same key.
    bool read_token(std::string_view& token) {
        const char* const start = scanner_.place();
        const bool is_first = token.empty();
        const bool is_sound = scanner_.skip_value();
        token = {start, static_cast<std::size_t>(scanner_.place() - start)};
        return is_first && is_sound;
    }

    // Room for as many features as the text has if they are as long as the ones so far. Returns whether the memory suffices.
    bool make_room() {
        constexpr std::size_t features_before = 1024;
        std::vector<Shape>& shapes = features_.shapes;
        if (shapes.size() % features_before != 0) {
            return true;
        }
        Interruption::check();
        if (shapes.size() == features_before) {
            const auto read = static_cast<std::size_t>(scanner_.place() - text_.data());
            shapes.reserve(features_before + (text_.size() - read) / (read / features_before + 1) * 17 / 16);
        }
        return value_memory() + values_per_feature_ * features_before * sizeof(Value) <= limits_.memory_left();
    }

    bool read_feature() {
        if (!make_room()) {
            return false;
        }
        Shape& shape = features_.shapes.emplace_back();
        std::string_view type, id;
        bool has_geometry = false, has_properties = false;
        const bool is_sound = scanner_.read_object([&](const String& key) {
            if (key.has_escape) {
                return false;
            }
            if (key.text == "type") {
                return read_token(type);
            }
            if (key.text == "id") {
                return read_token(id);
            }
            if (key.text == "geometry") {
                return !std::exchange(has_geometry, true) && read_geometry(shape);
            }
            if (key.text == "properties") {
                return !std::exchange(has_properties, true) && read_properties(shape);
            }
            return scanner_.skip_value();
        });
        if (!is_sound || !has_geometry || type != "\"Feature\"") {
            return false;
        }
        if (!id.empty()) {
            shape.id = text_of_token(id);
        }
        return true;
    }

    bool read_geometry(Shape& shape) {
        if (scanner_.is_at('n')) {
            return scanner_.skip_value();
        }
        std::string_view type;
        bool has_coordinates = false;
        lists_.clear();
        const bool is_sound = scanner_.read_object([&](const String& key) {
            if (key.has_escape) {
                return false;
            }
            if (key.text == "type") {
                return read_token(type);
            }
            return key.text != "coordinates" ? scanner_.skip_value()
                                             : !std::exchange(has_coordinates, true) && lists_.read(scanner_);
        });
        if (!is_sound || !has_coordinates || !type.starts_with('"') ||
            !lists_.add_to(shape, type.substr(1, type.size() - 2), 0)) {
            return false;
        }
        position_count_ += lists_.position_count(0);
        return true;
    }

    bool read_properties(Shape& shape) {
        if (scanner_.is_at('n')) {
            return scanner_.skip_value();
        }
        tokens_.clear();
        const bool is_sound = scanner_.read_object([&](const String& key) {
            std::string_view* const token = key.has_escape ? nullptr : tokens_.place_of(key.text);
            return !key.has_escape && (token ? read_token(*token) : scanner_.skip_value());
        });
        if (!is_sound) {
            return false;
        }
        for (std::size_t i = 0; i < Property_Tokens::first_style && shape.name.empty(); ++i) {
            shape.name = text_of_token(tokens_[i]);
        }
        std::array<Value, simple_style_keys.size()> style;
        bool has_style = false;
        for (std::size_t i = 0; i < style.size(); ++i) {
            const std::string_view token = tokens_[Property_Tokens::first_style + i];
            if (!token.empty()) {
                style[i] = value_of(token);
                has_style = true;
            }
        }
        if (has_style) {
            set_simple_style(shape, style);
        }
        for (std::size_t i = Property_Tokens::first_field; i < tokens_.size(); ++i) {
            shape.values.push_back(value_of(tokens_[i]));
        }
        return true;
    }

    std::string_view text_;
    Json_Scanner scanner_;
    const Load_Limits& limits_;
    std::size_t values_per_feature_;
    Property_Tokens tokens_;
    Geojson_Features& features_;
    Coordinate_Lists lists_; // of one geometry
    std::uint64_t position_count_ = 0;
};

} // namespace

std::optional<Geojson_Features> read_features(const std::string& file, std::string_view text, const Map_Query& query,
                                              Load_Limits& limits) {
    if (query.lists_fields || text.find("FeatureCollection\"") == text.npos) {
        return std::nullopt;
    }
    // The shortest feature becomes a shape of seven times its size, in a list that has three times the room while it grows.
    const std::uint64_t memory = 2 * coordinate_memory(text);
    if (memory > limits.memory_left()) {
        return std::nullopt;
    }
    Geojson_Features features;
    features.memory = Load_Limits::Loan(limits, file, memory);
    Feature_Reader reader(text, query, limits, features);
    if (!reader.read()) {
        return std::nullopt;
    }
    const std::uint64_t kept = reader.position_count() * sizeof(Position) + reader.value_memory();
    if (kept + json_memory(features.rest) > limits.memory_left()) {
        return std::nullopt; // the reader with lists borrows half of it
    }
    limits.take_memory(file, kept);
    limits.take_work(file, reader.position_count());
    return features;
}

} // namespace vorna::drawing::map
