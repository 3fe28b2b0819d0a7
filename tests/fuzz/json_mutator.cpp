// Changes of JSON and CBOR documents that leave them documents.
#include "tests/fuzz/json_mutator.h"

#include <algorithm>
#include <string>
#include <vector>

#include "tests/fuzz/fuzzing.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

namespace fuzzing {

using Json = nlohmann::ordered_json;
using vorna::app::check::Random;

Json odd_number(Random& random) {
    constexpr std::int64_t limits[] = {-2147483648, -2147483647, 2147483647, 2147483646, 1073741824, -1073741824, 65535, 65536,
                                       32767,       32768,       -32768,     16383,      16384,      255,         256,   -1};
    constexpr double fractions[] = {0.5, -0.5, 1e-300, 1e300, -1e300, 3.4e38, 1e-40, 1e10, -1e10, 0.999, 90.0, 180.0, -180.0};
    switch (random.number(0, 9)) {
    case 0:
    case 1:
        return random.one_of(limits);
    case 2:
        return random.one_of(fractions);
    case 3:
        return random.number(-1000, 1000);
    case 4:
        return random.number(-64000, 64000) / 1000.0;
    default:
        return random.number(0, 64);
    }
}

namespace {

constexpr std::size_t most_nodes = 4000;

bool is_cbor(std::string_view bytes) {
    return vocabulary.is_cbor && vocabulary.is_cbor(bytes);
}

// Discarded when the bytes are no document.
Json parsed(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes = text_of(data, size);
    return is_cbor(bytes) ? vocabulary.read_cbor(bytes) : Json::parse(bytes, nullptr, false);
}

// Writes the document into a block of `most` bytes. Returns the number of bytes, 0 when they do not suffice.
std::size_t print(const Json& document, bool as_cbor, std::uint8_t* data, std::size_t most) {
    std::string bytes;
    if (as_cbor) {
        Json::to_cbor(document, bytes);
    } else {
        bytes = document.dump(-1, ' ', false, Json::error_handler_t::replace);
    }
    if (bytes.size() > most) {
        return 0;
    }
    std::ranges::copy(bytes, data);
    return bytes.size();
}

// Numbers of 1 to 12 bytes, or of another size.
void change_bytes(std::vector<std::uint8_t>& bytes, Random& random) {
    constexpr std::size_t sizes[] = {1, 2, 4, 8, 12, 24};
    const std::size_t size = random.one_of(sizes);
    const auto place = [&] {
        const auto number = static_cast<std::size_t>(random.number(0, static_cast<std::int32_t>(bytes.size() / size)));
        return static_cast<std::ptrdiff_t>(number * size);
    };
    switch (bytes.empty() ? 0 : random.number(0, 3)) {
    case 0: {
        std::vector<std::uint8_t> more(size);
        std::ranges::generate(more, [&] { return random.chance(50) ? random.byte() : std::uint8_t{0}; });
        bytes.insert(bytes.begin() + place(), more.begin(), more.end());
        break;
    }
    case 1: {
        const auto start = bytes.begin() + place();
        bytes.erase(start, start + std::min(static_cast<std::ptrdiff_t>(size), bytes.end() - start));
        break;
    }
    default:
        bytes[static_cast<std::size_t>(random.number(0, static_cast<std::int32_t>(bytes.size()) - 1))] = random.byte();
    }
}

void collect(Json& value, std::vector<Json*>& nodes) {
    if (nodes.size() < most_nodes) {
        nodes.push_back(&value);
        for (Json& inner : value) {
            if (value.is_structured()) {
                collect(inner, nodes);
            }
        }
    }
}

Json small_value(Random& random) {
    switch (random.number(0, vocabulary.is_cbor ? 7 : 6)) {
    case 0:
        return nullptr;
    case 7: {
        std::vector<std::uint8_t> bytes;
        change_bytes(bytes, random);
        return Json::binary(std::move(bytes));
    }
    case 1:
        return random.chance(50);
    case 2:
        return Json::array();
    case 3:
        return Json::object();
    case 4:
        return std::string(random.one_of(vocabulary.words));
    default:
        return odd_number(random);
    }
}

// The place of an element; the container has one.
Json::iterator element_of(Json& container, Random& random) {
    auto place = container.begin();
    std::advance(place, random.number(0, static_cast<std::int32_t>(container.size()) - 1));
    return place;
}

void change_scalar(Json& value, Random& random) {
    if (value.is_number_integer() && random.chance(40)) {
        value = static_cast<std::int64_t>(static_cast<std::uint64_t>(value.get<std::int64_t>()) +
                                          static_cast<std::uint64_t>(std::int64_t{random.number(-2, 2)}));
    } else if (value.is_number()) {
        value = odd_number(random);
    } else if (value.is_boolean()) {
        value = !value.get<bool>();
    } else if (value.is_binary() && random.chance(90)) {
        change_bytes(value.get_binary(), random);
    } else if (value.is_string() && !value.get_ref<std::string&>().empty() && random.chance(50)) {
        auto& text = value.get_ref<std::string&>();
        constexpr std::string_view characters = "0123456789abcdefABCDEF# ";
        text[static_cast<std::size_t>(random.number(0, static_cast<std::int32_t>(text.size()) - 1))] = random.one_of(characters);
    } else {
        value = small_value(random);
    }
}

void change(Json& document, Random& random) {
    std::vector<Json*> nodes;
    collect(document, nodes);
    Json& node = *random.one_of(nodes);
    switch (random.number(0, 9)) {
    case 0:
        node = Json(*random.one_of(nodes));
        break;
    case 1:
        node = small_value(random);
        break;
    case 2:
        if (node.is_structured() && !node.empty()) {
            node.erase(element_of(node, random));
        }
        break;
    case 3:
        if (node.is_array() && !node.empty()) {
            const Json copy = *element_of(node, random);
            node.insert(element_of(node, random), copy);
        }
        break;
    case 4:
        if (node.is_object()) {
            const Json value = random.chance(50) ? *random.one_of(nodes) : small_value(random);
            node[std::string(random.one_of(vocabulary.keys))] = value;
        }
        break;
    case 5:
    case 6:
        if (const auto list = document.is_object() ? document.find(vocabulary.list) : document.end();
            document.is_object() && list != document.end() && list->is_array()) {
            const Json element = vocabulary.new_element(random);
            list->insert(list->begin() + random.number(0, static_cast<std::int32_t>(list->size())), element);
        }
        break;
    default:
        if (!node.is_structured()) {
            change_scalar(node, random);
        }
    }
}

} // namespace

} // namespace fuzzing

// Plain changes for one input in eight, and for what is no document.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most, unsigned seed) {
    using namespace fuzzing;
    Random random(seed);
    if (!random.chance(12)) {
        Json document = parsed(data, size);
        if (!document.is_discarded()) {
            // Bytes would not come back from text, while CBOR holds all that text does.
            const bool as_cbor = is_cbor(text_of(data, size)) || (vocabulary.is_cbor && document.is_object() && random.chance(5));
            for (int changes = random.number(1, 4); changes > 0; --changes) {
                change(document, random);
            }
            if (const std::size_t printed = print(document, as_cbor, data, most); printed > 0) {
                return printed;
            }
        }
    }
    return LLVMFuzzerMutate(data, size, most);
}

// Elements of one document's list among those of the other.
extern "C" std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* first, std::size_t first_size, const std::uint8_t* second,
                                                 std::size_t second_size, std::uint8_t* out, std::size_t most, unsigned seed) {
    using namespace fuzzing;
    Random random(seed);
    Json document = parsed(first, first_size);
    const Json other = parsed(second, second_size);
    const std::string list(vocabulary.list);
    const auto has_list = [&](const Json& json) {
        return json.is_object() && json.contains(list) && json[list].is_array() && !json[list].empty();
    };
    if (!has_list(document) || !has_list(other)) {
        return 0;
    }
    for (int i = random.number(1, 8); i > 0; --i) {
        auto into = element_of(document[list], random);
        const Json& from = other[list];
        document[list].insert(into, from[static_cast<std::size_t>(random.number(0, static_cast<std::int32_t>(from.size()) - 1))]);
    }
    return print(document, is_cbor(text_of(first, first_size)) || is_cbor(text_of(second, second_size)), out, most);
}
